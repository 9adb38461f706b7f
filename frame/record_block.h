// The block of an array of records: all elements, then, if it was allocated with tracking on, their
// state blocks, in the same order.
#pragma once

#include "frame/initialize.h"

namespace frame {

//   element 0, element 1, ..., state block 0, state block 1, ...
//
// Elements are indexed with one stride, whether the block has state blocks or not.
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

// Bytes per element.
inline size_t record_stride(bool tracked, const FieldRow& field) {
  const Layout& layout = child_record(field).newest_layout();
  return tracked ? size_t{layout.body} + layout.state : layout.body;
}
// Distances to state bytes have 32 bits: with tracking on, a block that would need larger ones is
// not allocated.
inline bool states_in_reach(bool tracked, uint64_t count, const FieldRow& field) {
  return !tracked || count * record_stride(true, field) <= INT32_MAX;
}

// Tells the runtime where an element's state block lies.
inline void register_states(const Call& call, const RecordBlock& block, uint64_t i) {
  orklib_update_sttr_offset(call.handle, call.instance, block.element(i), block.distance(i));
}
inline void initialize_element(const Call& call, const RecordBlock& block, uint64_t i,
                               const RecordRow& record) {
  initialize(call, block.element(i), descriptor(record), {1, 0, OBJ_NESTED, block.element_state(i)},
             record);
}
// Initializes elements from `first` on, until one fails. Returns how many are whole.
uint64_t initialize_elements(const Call& call, const RecordBlock& block, uint64_t first,
                             const RecordRow& record);

// Copies the elements of `from` to the larger block `to`, and makes whatever refers to an element
// refer to its new place: state offsets, arrays of the elements, database hooks. `tracked` tells
// whether `to` has room for state blocks.
void move_elements(const Call& call, void* object, const RecordBlock& from, const RecordBlock& to,
                   bool tracked, const FieldRow& field);
// After a partial growth: moves the state blocks of the first `kept` elements down to the end of
// the last of them, and registers their offsets again.
void compact_states(const Call& call, const RecordBlock& block, uint64_t kept,
                    const FieldRow& field);

}  // namespace frame
