// What every operation is given: handle, instance and error slot; and what it does with them:
// reports failures, announces stores, allocates and frees, calls the database hooks.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "ork/orklib.h"

namespace frame {

using std::int32_t;
using std::int8_t;
using std::size_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

inline const char* error_text(uint32_t error) { return strerror(static_cast<int>(error)); }

// Exported functions of the cr form are given the handle alone, and use its cr_instance and
// cr_error.
struct Call {
  ork_handle* handle;
  uint32_t instance;
  uint32_t* err;  // sticky: the first failure of a sequence stays

  bool failed() const { return *err != 0; }
  void fail(uint32_t number) const {
    *err = number;
    ork_store_err(handle, number);
  }
  // EIDRM (43): the variant has no such field or value. The runtime decides whether the slot is
  // written.
  void lacks() const { ork_store_epoch_err(handle, EIDRM, err); }
  uint32_t error() const { return *err; }
  const char* error_text() const { return frame::error_text(*err); }
  // The slot alone: the handle does not hear of it.
  void fail_quietly(uint32_t number) const { *err = number; }
  void clear() const { *err = 0; }
  // Clears the slot if it has `number`, for a caller to whom that is no error. True if it had.
  bool forgive(uint32_t number) const {
    if (*err != number) return false;
    clear();
    return true;
  }
  // Takes over what another call ended with, success too.
  void adopt(uint32_t other) const {
    *err = other;
    if (other != 0) ork_store_err(handle, other);
  }
  // Starts an operation: false, and nothing may happen, while an earlier failure stands. Otherwise
  // clears the handle's last error.
  bool start() const {
    if (failed()) return false;
    ork_clear_last_error(handle);
    return true;
  }
};

// A call with an error slot of its own, for operations that are given none, and for steps whose
// failure must not reach the caller's slot.
class DetachedCall : public Call {
 public:
  DetachedCall(ork_handle* with, uint32_t at) : Call{with, at, &error_} {}
  explicit DetachedCall(const Call& caller) : DetachedCall(caller.handle, caller.instance) {}
  DetachedCall(const DetachedCall&) = delete;
  DetachedCall& operator=(const DetachedCall&) = delete;

 private:
  mutable uint32_t error_ = 0;
};

inline uint8_t* byte_at(void* base, size_t offset) { return static_cast<uint8_t*>(base) + offset; }
inline const uint8_t* byte_at(const void* base, size_t offset) {
  return static_cast<const uint8_t*>(base) + offset;
}

template <class T>
T load(const void* at) {
  T value;
  memcpy(&value, at, sizeof value);
  return value;
}

// Stores without announcing: only into memory that is not a live object yet, or where the runtime
// must not hear of the store.
template <class T>
void put(void* at, T value) {
  memcpy(at, &value, sizeof value);
}

// Storage may be shared between processes, so the runtime is told of every change before it
// happens.
inline void announce(const Call& call, const void* at, size_t length, const void* owner) {
  call.handle->write_notify_fn(call.handle, at, length, call.instance, owner);
}
template <class T>
void store(const Call& call, void* at, T value, const void* owner) {
  announce(call, at, sizeof value, owner);
  put(at, value);
}

// Not cleared. Null when there is no memory, which is the caller's to report.
inline void* allocate(const Call& call, size_t size) {
  return call.handle->alloc_fn(call.handle->mem_pool, call.instance, size);
}
inline void release(const Call& call, void* block) {
  call.handle->free_fn(call.handle->mem_pool, call.instance, block);
}

// Tells the database hook that `child` lies in `parent`. A null parent makes it an entry point.
inline void contain(const Call& call, const void* child, const void* parent) {
  if (call.handle->db_recording != 0) {
    orkdb_record_containment2(call.handle, call.instance, child, parent, 1);
  }
}
// Whether the platform's hooks follow the object: they do for one kind of shared storage only.
inline bool watched(const Call& call) {
  return call.handle->db_recording != 0 && call.instance != ORK_NO_INSTANCE &&
         call.handle->shared_types == 1;
}

}  // namespace frame
