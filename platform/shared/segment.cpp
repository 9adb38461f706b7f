#include "segment.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/interprocess/shared_memory_object.hpp>
#include <cstring>
#include <memory>
#include <new>

namespace ork {
namespace {

namespace bip = boost::interprocess;

constexpr uint64_t magic =
    0x32304d4853'4b524f;  // "ORKSHM02": the layout of SharedHead, and with it of the memory
constexpr size_t head_size = 4096;
constexpr size_t smallest = size_t{1} << 20;
static_assert(sizeof(SharedHead) <= head_size);

[[noreturn]] void refuse(int number) { throw std::system_error(number, std::generic_category()); }

// POSIX leaves open what a slash means anywhere but in front.
void check(const char* name) {
  const size_t length = std::strlen(name);
  if (length == 0 || length > 250 || std::strchr(name, '/') != nullptr) {
    refuse(EINVAL);
  }
}

// Where memory goes that nobody placed: below what the kernel hands out by itself, in a stretch
// that sanitizers leave to the program as well, with a place for each name so that one process can
// open several.
void* place_of(const char* name) {
  constexpr uintptr_t first = 0x7e90'0000'0000;
  constexpr uintptr_t distance = uintptr_t{1} << 32;
  constexpr uintptr_t places = 64;
  return reinterpret_cast<void*>(first + std::hash<std::string_view>{}(name) % places * distance);
}

// The object behind a name, locked against being made or removed until this goes. Its lock ends
// with its holder.
class LockedObject {
 public:
  LockedObject(const char* name, bool may_create) {
    do {
      object_ = may_create ? bip::shared_memory_object(bip::open_or_create, name, bip::read_write,
                                                       bip::permissions(0600))
                           : bip::shared_memory_object(bip::open_only, name, bip::read_write);
      while (flock(fd(), LOCK_EX) != 0) {
        if (errno != EINTR) {
          refuse(errno);
        }
      }
    } while (status().st_nlink == 0);  // removed between opening and locking
  }

  // A mapping keeps the file open, and with it a lock that nobody took back.
  ~LockedObject() { flock(fd(), LOCK_UN); }
  LockedObject(const LockedObject&) = delete;
  LockedObject& operator=(const LockedObject&) = delete;

  const bip::shared_memory_object& object() const { return object_; }
  size_t size() const { return static_cast<size_t>(status().st_size); }

  // All of it exists from now on: a page that is missing later would be a signal at some store.
  void resize(size_t size) {
    if (ftruncate(fd(), 0) != 0) {
      refuse(errno);
    }
    if (const int result = posix_fallocate(fd(), 0, static_cast<off_t>(size)); result != 0) {
      refuse(result);
    }
  }

 private:
  int fd() const { return object_.get_mapping_handle().handle; }
  struct stat status() const {
    struct stat status {};
    if (fstat(fd(), &status) != 0) {
      refuse(errno);
    }
    return status;
  }

  bip::shared_memory_object object_;
};

bip::mapped_region map_at(const LockedObject& locked, size_t size, void* address) {
  try {
    return bip::mapped_region(locked.object(), bip::read_write, 0, size, address);
  } catch (const bip::interprocess_exception& failure) {
    refuse(failure.get_error_code() == bip::busy_error ? EADDRINUSE : ENOMEM);
  }
}

// The end of the half-made memory of a name that could not be finished.
class Unfinished {
 public:
  explicit Unfinished(const char* name) : name_(name) {}
  ~Unfinished() {
    if (name_ != nullptr) {
      bip::shared_memory_object::remove(name_);
    }
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;
  void finished() { name_ = nullptr; }

 private:
  const char* name_;
};

bip::mapped_region create(LockedObject& locked, const char* name, size_t size, void* address) {
  Unfinished unfinished(name);
  if (size < smallest) {
    refuse(size == 0 ? ENOENT : EINVAL);
  }
  locked.resize(size);
  bip::mapped_region region = map_at(locked, size, address != nullptr ? address : place_of(name));
  auto* bytes = static_cast<char*>(region.get_address());
  SharedMemory memory(bip::create_only, bytes + head_size, size - head_size);
  auto* head = new (bytes) SharedHead(bytes, size, memory.get_segment_manager());
  __atomic_store_n(&head->magic, magic, __ATOMIC_RELEASE);
  unfinished.finished();
  return region;
}

bip::mapped_region attach(const LockedObject& locked, void* address) {
  const bip::mapped_region look(locked.object(), bip::read_only, 0, head_size);
  const auto& head = *static_cast<const SharedHead*>(look.get_address());
  if (head.magic != magic || head.size != locked.size() ||
      (address != nullptr && address != head.address)) {
    refuse(EINVAL);
  }
  return map_at(locked, head.size, head.address);
}

// Memory that its maker did not live to finish has no magic, and is made anew.
bool is_finished(const LockedObject& locked) {
  if (locked.size() < smallest) {
    return false;
  }
  const bip::mapped_region look(locked.object(), bip::read_only, 0, sizeof(uint64_t));
  return *static_cast<const uint64_t*>(look.get_address()) != 0;
}

bip::mapped_region open(const char* name, size_t size, void* address) {
  check(name);
  LockedObject locked(name, size != 0);
  return is_finished(locked) ? attach(locked, address) : create(locked, name, size, address);
}

}  // namespace

Segment::Segment(const char* name, size_t size, void* address)
    : region_(open(name, size, address)),
      memory_(bip::open_only, static_cast<char*>(region_.get_address()) + head_size,
              region_.get_size() - head_size) {}

void remove_segment(const char* name) {
  check(name);
  const LockedObject locked(name, false);
  bip::shared_memory_object::remove(name);
}

}  // namespace ork
