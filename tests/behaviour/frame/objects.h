// Objects by hand for tests of the frame.
#pragma once

#include <fwe_ui_wayfind/fwe_ui_wayfind.h>

#include <algorithm>

#include "support/spied.h"

namespace frame {

using namespace kit;

inline constexpr Mode untracked{.tracking = ORK_TRACKING_OFF};
inline constexpr Mode tracked_and_recorded{.tracking = ORK_TRACKING_ON, .recording = true};
inline constexpr Mode shared_and_recorded{.shared = true, .recording = true};

// The address of something that lies at a name's place, for tests that compare announcements.
inline std::string at(const std::string& name, size_t offset) {
  return offset ? name + "+" + std::to_string(offset) : name;
}

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
Count count_of(const SpiedObject& obj, const std::string& field) {
  return load<Count>(obj.field(field));
}

template <class T>
T* pointer_at(const void* address) {
  return load<T*>(address);
}

}  // namespace frame
