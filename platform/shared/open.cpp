// Storage by name.
#include <sys/mman.h>

#include <cerrno>
#include <new>

#include "orklib/guard.h"
#include "shared_storage.h"
#include "support/export.h"

namespace {

// What goes wrong below is told by number.
template <typename Work>
auto numbered(uint32_t* err, Work work) {
  return ork::guarded(err, [&]() -> decltype(work()) {
    try {
      return work();
    } catch (const std::system_error& failure) {
      *err = static_cast<uint32_t>(failure.code().value());
    } catch (const boost::interprocess::interprocess_exception& failure) {
      const int native = failure.get_native_error();
      *err = static_cast<uint32_t>(native != 0 ? native : ENOMEM);
    }
    return decltype(work())();
  });
}

}  // namespace

extern "C" {

ORK_EXPORT struct ork_storage* ork_storage_open(const char* name, size_t size, void* address,
                                                uint32_t* err) {
  return numbered(err,
                  [&]() -> ork_storage* { return new ork::SharedStorage(name, size, address); });
}

ORK_EXPORT void ork_storage_remove(const char* name, uint32_t* err) {
  numbered(err, [&] { ork::remove_segment(name); });
}

}  // extern "C"
