// Variable arrays: a counter and a pointer in the object, a block of elements of their own, and an
// entry in the state block with one byte for the whole array and a pointer to one byte per element.
// Here is where these lie, and what arrays of values and arrays of records have in common;
// frame/array_storage.h has all that allocates or frees.
//
//   object:       ... counter, pointer ...           block: element 0, element 1, ...
//   state block:  ... whole (1), unused (7), pointer ...    element bytes: one, one, ...
//
// The element bytes may be missing although there are elements, as may the block although there is
// a counter: both after an allocation that failed.
#pragma once

#include "frame/primitives.h"
#include "frame/state.h"

namespace frame {

// of the pointer to the element bytes, in the array's state entry
inline constexpr size_t elements_offset = 8;

// Code that tells the two classes of arrays apart asks for one of them.
constexpr bool is_array_class(Class cls) {
  return cls == Class::value_array || cls == Class::record_array;
}
static_assert(
    [] {
      for (const FieldRow& row : model::field_rows) {
        if ((row.array != model::no_type) != is_array_class(row.cls)) return false;
      }
      return true;
    }(),
    "an array is of values or of records");

inline uint32_t stored_count(const void* object, const FieldRow& field) {
  const uint8_t* counter = byte_at(object, field.counter);
  return with_counter(field.counter_kind, [&](auto primitive) -> uint32_t {
    return load<typename decltype(primitive)::Storage>(counter);
  });
}
inline void* block_of(const void* object, const FieldRow& field) {
  return load<void*>(field_of(object, field));
}
// How many elements a reader may visit: an array whose block could not be allocated has none,
// whatever its counter says.
inline uint32_t usable_count(const void* object, const FieldRow& field) {
  return block_of(object, field) != nullptr ? stored_count(object, field) : 0;
}
inline void* element_at(const void* object, const FieldRow& field, uint64_t index) {
  return static_cast<uint8_t*>(block_of(object, field)) + index * field.width;
}

// Announced. An 8-bit counter keeps the low byte of the count.
inline void store_count(const Call& call, void* object, const FieldRow& field, uint64_t count) {
  uint8_t* counter = byte_at(object, field.counter);
  with_counter(field.counter_kind, [&](auto primitive) {
    store(call, counter, static_cast<typename decltype(primitive)::Storage>(count), object);
  });
}

// The array's entry in the state block.
inline uint8_t* state_entry(const Call& call, void* object, const FieldRow& field) {
  return seen_state_block(call, object, owner(field)) + field.state;
}
// The element bytes that an entry points to, or null. set_all_state_tracking_flag() overwrites the
// pointer with eight equal bytes. No block lies at such an address, so it means null.
inline uint8_t* element_states(const uint8_t* entry) {
  const auto word = load<uint64_t>(entry + elements_offset);
  const bool filled = word == (word & 0xFF) * 0x0101010101010101;
  return filled ? nullptr : reinterpret_cast<uint8_t*>(word);
}

void* array_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index, uint32_t* err,
                const FieldRow& field);
void array_remove_elements(ork_handle* handle, uint32_t instance, void* object,
                           const FieldRow& field);

// A step of all array setters: false, with error and trace, when the handle tracks and the object
// does not.
template <Function F, size_t Nth>
bool tracked_as_asked(const Call& call, const void* object, const FieldRow& field) {
  if (checked_mode<F, Nth>(call.handle, field) != Tracking::on ||
      has_flag(object, OBJ_STATE_TRACKED))
    return true;
  call.fail(EINVAL);
  trace::raise<F, Form::not_tracked, Nth>(field);
  return false;
}
// Marks the whole array and one element.
void touch_element(const Call& call, void* object, uint64_t index, const FieldRow& field);

}  // namespace frame
