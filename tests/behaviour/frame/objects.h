// Objects by hand for tests of the frame.
#pragma once

#include <fwe_ui_wayfind/fwe_ui_wayfind.h>

#include <algorithm>

#include "support/fixture.h"

namespace frame {

using fixture::bytes;
using fixture::Handle;
using fixture::header;
using fixture::instance;
using fixture::load;
using fixture::Mode;
using fixture::plain;
using fixture::recorded;
using fixture::Snapshot;
using fixture::store;
using fixture::tracked;

inline constexpr Mode untracked{.tracking = ORK_TRACKING_OFF};
inline constexpr Mode tracked_and_recorded{.tracking = ORK_TRACKING_ON, .recording = true};
inline constexpr Mode shared_and_recorded{.shared = true, .recording = true};

inline const wayfind_record& schema(const std::string& record) {
  const auto* const end = wayfind_records + wayfind_record_count;
  const auto* const found =
      std::find_if(wayfind_records, end, [&](const wayfind_record& r) { return record == r.name; });
  if (found == end) {
    throw std::runtime_error("no record " + record);
  }
  return *found;
}

// The address of something that lies at a name's place, for tests that compare announcements.
inline std::string at(const std::string& name, size_t offset) {
  return offset ? name + "+" + std::to_string(offset) : name;
}

// An object of a record type, named in logs by name, its state block by "state" behind it. Converts
// to the pointer that a function wants, and is destroyed at its end.
class Object {
 public:
  Object(Handle& handle, const std::string& record, const std::string& name = "obj")
      : handle_(handle), schema_(schema(record)), told_(*told::record(record)) {
    obj_ = fixture::function<void*(ork_handle*, uint32_t)>(schema_.functions, "_create")(handle,
                                                                                         instance);
    if (!obj_) {
      throw std::runtime_error("no " + record);
    }
    spy::name(obj_, told_.newest().body, name);
    if (handle.tracking()) {
      spy::name(state(), told_.newest().state, name == "obj" ? "state" : name + "_state");
    }
  }
  ~Object() {
    if (obj_) {
      fixture::function<void(ork_handle*, uint32_t, void*)>(schema_.functions, "_destroy")(
          handle_, instance, obj_);
    }
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  template <class T>
  operator T*() const {
    return static_cast<T*>(obj_);
  }
  void* get() const { return obj_; }

  // The object is somebody else's now.
  void* release() { return std::exchange(obj_, nullptr); }

  uint8_t* state() const { return bytes(obj_) + told_.newest().body; }
  uint8_t* field(const std::string& name) const { return bytes(obj_) + told_.field(name).offset; }
  uint8_t& state_of(const std::string& name) const { return state()[told_.field(name).state]; }
  ork_object& head() const { return header(obj_); }
  std::vector<uint8_t> state_bytes() const { return {state(), state() + told_.newest().state}; }

  // Everything, state bytes included.
  Snapshot snapshot() const {
    return Snapshot(obj_, told_.newest().body + (handle_.tracking() ? told_.newest().state : 0));
  }

 private:
  Handle& handle_;
  const wayfind_record& schema_;
  const told::Record& told_;
  void* obj_;
};

// A runtime that answers 43 with this number in the caller's slot; 0 leaves the slot alone.
[[nodiscard]] inline spy::Replacement slot_becomes(uint32_t number) {
  return spy::replace(ork_store_epoch_err, [number](ork_handle*, uint32_t, uint32_t* err) {
    if (number != 0) {
      *err = number;
    }
  });
}

// The array of a record that consists of one: the count field is the first, the array the second.
template <class Count>
Count count_of(const Object& obj, const std::string& field) {
  return load<Count>(obj.field(field));
}

template <class T>
T* pointer_at(const void* address) {
  return load<T*>(address);
}

}  // namespace frame
