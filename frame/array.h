// Variable arrays: a counter and a pointer in the object, a block of elements of their own, and an
// entry in the state block with one byte for the whole array and a block of one byte per element.
#pragma once

#include "frame/primitives.h"
#include "frame/state.h"

namespace frame {

// of the pointer to the element bytes, in the array's state entry
inline constexpr size_t elements_offset = 8;

inline uint32_t count_of(const void* object, const FieldRow& field) {
  const uint8_t* counter = byte_at(object, field.counter);
  return field.counter_kind == Kind::u_int8 ? *counter : load<uint32_t>(counter);
}
inline void* block_of(const void* object, const FieldRow& field) {
  return load<void*>(field_of(object, field));
}

// The element bytes of an array, or null. A fill over the whole state block leaves no pointer: no
// block lies at an address of eight equal bytes.
inline uint8_t* element_states(const uint8_t* entry) {
  const auto word = load<uint64_t>(entry + elements_offset);
  const bool filled = word == (word & 0xFF) * 0x0101010101010101;
  return filled ? nullptr : reinterpret_cast<uint8_t*>(word);
}

// How many elements a reader may visit: an array whose block could not be had has none, whatever
// its counter says.
inline uint32_t element_count(const void* object, const FieldRow& field) {
  return block_of(object, field) != nullptr ? count_of(object, field) : 0;
}
inline void* element_at(const void* object, const FieldRow& field, uint64_t index) {
  return static_cast<uint8_t*>(block_of(object, field)) + index * field.width;
}

// An 8-bit counter keeps the low byte of the count.
inline void store_count(const Call& call, void* object, const FieldRow& field, uint64_t count) {
  uint8_t* counter = byte_at(object, field.counter);
  if (field.counter_kind == Kind::u_int8) {
    store(call, counter, static_cast<uint8_t>(count), object);
  } else {
    store(call, counter, static_cast<uint32_t>(count), object);
  }
}

// The block of an array of records: all elements, then with tracking on their state blocks, one run
// behind the other.
struct RecordBlock {
  uint8_t* start;
  uint64_t count;
  size_t body;
  size_t state;
  uint8_t* element(uint64_t i) const { return start + i * body; }
  uint8_t* element_state(uint64_t i) const { return start + count * body + i * state; }
  int32_t distance(uint64_t i) const { return static_cast<int32_t>(element_state(i) - element(i)); }
};
inline RecordBlock record_block(void* start, uint64_t count, const FieldRow& field) {
  const Layout& layout = child_record(field).newest_layout();
  return {static_cast<uint8_t*>(start), count, layout.body, layout.state};
}
inline size_t record_stride(bool tracked, const FieldRow& field) {
  const Layout& layout = child_record(field).newest_layout();
  return tracked ? size_t{layout.body} + layout.state : layout.body;
}
// Distances to state bytes have 32 bits: with tracking on, an array whose bytes would lie further
// away cannot be had.
inline bool states_in_reach(bool tracked, uint64_t count, const FieldRow& field) {
  return !tracked || count * record_stride(true, field) <= INT32_MAX;
}

// The first element that has state bytes; the count when there is none.
uint64_t first_tracked(const RecordBlock& block);
// After a failure left only the first `kept` elements: their state blocks follow the last of them
// again.
void close_ranks(const Call& call, const RecordBlock& block, uint64_t kept, const FieldRow& field);
// Initialises elements from `first` on, until one fails; gives back how many are whole.
uint64_t initialize_elements(const Call& call, const RecordBlock& block, uint64_t first,
                             const FieldRow& field);
void destroy_elements(const Call& call, void* object, uint64_t count, const FieldRow& field);
// What a record's own destroy does to its array.
void destroy_array(const Call& call, void* object, const FieldRow& field);

// The array's state entry.
uint8_t* state_entry(const Call& call, void* object, const FieldRow& field);
// Makes room for `count` element bytes, keeping `kept` old ones. False when there is no memory: the
// array then has none at all, and the error is left to the caller.
bool replace_element_states(const Call& call, uint8_t* entry, uint64_t count, uint64_t kept);
// The same when nothing is kept: the old bytes go first.
bool renew_element_states(const Call& call, uint8_t* entry, uint64_t count);
// A tracked object whose count changes while tracking is off: bytes that no longer match the
// elements are given back.
void drop_element_states(const Call& call, void* object, const FieldRow& field);

// The same for the arrays of a whole record, those of the records inside it included.
void drop_all_element_states(const Call& call, void* object, const RecordRow& record);

void* array_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index, uint32_t* err,
                const FieldRow& field);
void array_remove_elements(ork_handle* handle, uint32_t instance, void* object,
                           const FieldRow& field);

// Growing: said once per process and field, as an error, for each array that had to move.
void report_reallocation(const FieldRow& field);
// Steps that all array setters share: false after the report when the handle tracks and the object
// does not.
template <Function F, size_t Nth>
bool tracked_as_asked(const Call& call, const void* object, const FieldRow& field) {
  if (tracking<F, Nth>(call.handle, field) != Tracking::on || has_flag(object, OBJ_STATE_TRACKED))
    return true;
  call.fail(EINVAL);
  trace::raise<F, Form::not_tracked, Nth>(field);
  return false;
}
// Marks the whole array and one element.
void touch_element(const Call& call, void* object, uint64_t index, const FieldRow& field);

}  // namespace frame
