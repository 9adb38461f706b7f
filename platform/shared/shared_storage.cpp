#include "shared_storage.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <mutex>
#include <new>

#include "orklib/heap.h"
#include "orklib/memory_cost.h"
#include "orklib/variant_block.h"

namespace ork {

struct alignas(std::max_align_t) SharedStorage::Block {
  size_t size;
  uint64_t serial;
  uint32_t tag;
  pid_t process;  // whose account with tawny the block is on
};

namespace {

// Descriptors come first, objects leave room for them.
constexpr size_t descriptor_reserve = size_t{128} << 10;

// What a distance costs here: a node of the map and the allocator's own words.
constexpr size_t node_cost = 48;

// Runs work under the lock. Memory that runs out and a lock whose holder died give refused.
template <typename Work, typename Result>
Result locked(SharedHead& head, Result refused, Work work) noexcept {
  try {
    const std::lock_guard lock(head.lock);
    return work();
  } catch (const std::bad_alloc&) {
    return refused;
  } catch (const boost::interprocess::interprocess_exception&) {
    return refused;
  } catch (const std::system_error&) {
    return refused;
  }
}

uintptr_t number(const void* address) { return reinterpret_cast<uintptr_t>(address); }

}  // namespace

void SharedStorage::serve(ork_handle& handle) {
  handle.shared_alloc_fn = alloc_type;
  handle.type_table_add_fn = add_type;
  handle.type_table_find_fn = find_type;
  handle.alloc_fn = alloc;
  handle.free_fn = release;
  void* pool = static_cast<ork_storage*>(this);
  handle.mem_pool = pool;
  handle.shared_pool = pool;
  handle.type_table = pool;
  handle.hd_mapping = &segment_.head().distances;
}

// ---- Objects ----------------------------------------------------------------

void* SharedStorage::alloc(void* pool, uint32_t, size_t size) { return self(pool).allocate(size); }

void SharedStorage::release(void* pool, uint32_t instance, void* ptr) {
  if (self(pool).segment_.holds(ptr)) {
    self(pool).give_back(ptr);
  } else {
    Heap::release(pool, instance, ptr);
  }
}

// A distance cannot fail to be kept, so memory for those that live objects may still ask for is
// never given to objects.
bool SharedStorage::leaves_reserve(size_t size) const {
  const ork_memory_report& report = segment_.head().report;
  const uint64_t possible = possible_distances(report.live_bytes + size) + 1;
  const uint64_t reserve =
      descriptor_reserve + (possible - std::min(possible, report.live_distances)) * node_cost;
  const size_t available = segment_.memory().get_free_memory();
  return available > reserve && size <= available - reserve;
}

// Under the lock.
void SharedStorage::note_held() const {
  ork_memory_report& report = segment_.head().report;
  report.held_bytes = segment_.memory().get_size() - segment_.memory().get_free_memory();
  report.peak_held_bytes = std::max(report.peak_held_bytes, report.held_bytes);
}

void* SharedStorage::allocate(size_t size) {
  const uint32_t tag = tawny_take_callsite_tag();
  const bool told_to_fail = fail_in_ != 0 && --fail_in_ == 0;
  const bool allowed = allowance.spend(size);
  ork_memory_report& report = segment_.head().report;
  return locked(segment_.head(), static_cast<void*>(nullptr), [&]() -> void* {
    const bool fits = allowed && !told_to_fail && size < segment_.head().size &&
                      leaves_reserve(sizeof(Block) + size);
    const uint64_t serial = report.allocations + 1;
    if (fits && open_frames_ != 0) {
      frame_blocks_.emplace(serial, nullptr);
    }
    void* memory = fits ? segment_.memory().allocate(sizeof(Block) + size, std::nothrow) : nullptr;
    if (memory == nullptr) {
      frame_blocks_.erase(serial);
      report.refusals += 1;
      return nullptr;
    }
    report.allocations = serial;
    report.live_blocks += 1;
    report.live_bytes += size;
    report.peak_bytes = std::max(report.peak_bytes, report.live_bytes);
    note_held();
    void* object = new (memory) Block{size, serial, tag, getpid()} + 1;
    if (open_frames_ != 0) {
      frame_blocks_[serial] = object;
    }
    if (tag != 0) {
      tawny_account(tag, static_cast<int64_t>(size), 1);
    }
    return object;
  });
}

// A block that finds the lock refused stays where it is.
void SharedStorage::give_back(void* ptr) {
  SharedHead& head = segment_.head();
  locked(head, false, [&] {
    Block* block = static_cast<Block*>(ptr) - 1;
    head.distances.erase(head.distances.lower_bound(number(ptr)),
                         head.distances.lower_bound(number(ptr) + block->size));
    head.report.live_distances = head.distances.size();
    head.report.live_blocks -= 1;
    head.report.live_bytes -= block->size;
    if (block->tag != 0 && block->process == getpid()) {
      tawny_account(block->tag, -static_cast<int64_t>(block->size), -1);
    }
    frame_blocks_.erase(block->serial);
    segment_.memory().deallocate(block);
    return true;
  });
}

// A block's serial is greater than that of every block before it, whichever process asked.
uint64_t SharedStorage::begin_frame() {
  open_frames_ += 1;
  return report().allocations;
}

void SharedStorage::end_frame(uint64_t frame, bool give_back) {
  while (give_back && !frame_blocks_.empty() && frame_blocks_.rbegin()->first > frame) {
    const auto newest = std::prev(frame_blocks_.end());
    void* object = newest->second;
    frame_blocks_.erase(newest);
    this->give_back(object);
  }
  open_frames_ -= 1;
  if (open_frames_ == 0) {
    frame_blocks_.clear();
  }
}

ork_memory_report SharedStorage::report() const {
  ork_memory_report broken{};
  broken.error = ENOTRECOVERABLE;
  return locked(segment_.head(), broken, [&] {
    note_held();
    return segment_.head().report;
  });
}

// ---- Distances --------------------------------------------------------------

void SharedStorage::set_distance(const void* object, int32_t distance) noexcept {
  SharedHead& head = segment_.head();
  const bool kept = locked(head, false, [&] {
    head.distances[number(object)] = distance;
    head.report.live_distances = head.distances.size();
    note_held();
    return true;
  });
  if (!kept) {
    std::terminate();
  }
}

std::optional<int32_t> SharedStorage::distance(const void* object) const {
  const SharedHead& head = segment_.head();
  return locked(segment_.head(), std::optional<int32_t>(), [&]() -> std::optional<int32_t> {
    const auto found = head.distances.find(number(object));
    return found != head.distances.end() ? std::optional(found->second) : std::nullopt;
  });
}

void SharedStorage::drop_distance(const void* object) {
  SharedHead& head = segment_.head();
  locked(head, false, [&] {
    head.distances.erase(number(object));
    head.report.live_distances = head.distances.size();
    return true;
  });
}

// ---- Descriptors ------------------------------------------------------------

void* SharedStorage::alloc_type(void* pool, uint32_t, size_t size) {
  Segment& segment = self(pool).segment_;
  return locked(segment.head(), static_cast<void*>(nullptr), [&] {
    return size < segment.head().size ? segment.memory().allocate(size, std::nothrow) : nullptr;
  });
}

ork_type_info* SharedStorage::find_type(void* table, uint32_t, const char* luid_text) {
  SharedHead& head = self(table).segment_.head();
  return locked(head, static_cast<ork_type_info*>(nullptr), [&]() -> ork_type_info* {
    const auto found = head.types.find(std::string_view(luid_text));
    return found != head.types.end() ? found->second : nullptr;
  });
}

// From here on every process may meet the copy, so its variants must not stay in this one's
// library.
uint32_t SharedStorage::add_type(void* table, uint32_t, const char* luid_text,
                                 ork_type_info* copy) {
  Segment& segment = self(table).segment_;
  SharedHead& head = segment.head();
  if (!segment.holds(luid_text) || !segment.holds(copy)) {
    return EINVAL;
  }
  return locked(head, uint32_t{ENOMEM}, [&]() -> uint32_t {
    if (head.types.contains(std::string_view(luid_text))) {
      return EEXIST;
    }
    if (copy->varinfo != nullptr) {
      void* memory = segment.memory().allocate(variant_block_size(copy->varinfo));
      copy->varinfo = write_variant_block(memory, *copy->varinfo, nullptr);
    }
    head.types.emplace(luid_text, copy);
    return 0;
  });
}

void SharedStorage::each_type(const std::function<void(const ork_type_info&)>& visit) const {
  std::vector<const ork_type_info*> types;
  locked(segment_.head(), false, [&] {
    for (const auto& entry : segment_.head().types) {
      types.push_back(entry.second);
    }
    return true;
  });
  std::for_each(types.begin(), types.end(), [&](const ork_type_info* type) { visit(*type); });
}

}  // namespace ork
