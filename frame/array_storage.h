// Storage of variable arrays: the block of elements, and the block of one state byte per element
// that the array's state entry points to. All code that allocates, replaces, hands over or frees
// either stands in this file's source.
//
//   grow     to a larger block that keeps the elements: the setters
//   replace  by a block that keeps nothing: set_mem, unmarshal
//   free     remove_elements, destroy, unmarshal of an empty array
//   detach   the storage has moved to a copy of the object: record_set
#pragma once

#include "frame/array.h"
#include "frame/record_block.h"

namespace frame {

// The runtime's answer, for arrays of values.
size_t width_of(const Call& call, const FieldRow& field);

// Grow the array so that it has an element at `index`. False, with the error set, when memory or
// the object's tracking refuse that.
bool grow_values(const Call& call, void* object, uint32_t index, const FieldRow& field);
bool grow_records(const Call& call, void* object, uint32_t index, const FieldRow& field);

// A block for `count` values in place of the old one; its start is null when there is no memory.
// The counter is the caller's to write.
struct ValueBlock {
  void* start;
  size_t size;
};
ValueBlock replace_values(const Call& call, void* object, uint32_t count, const FieldRow& field);

// Makes the storage fit a counter that has been overwritten from a wire image.
struct Refit {
  uint32_t old_count;  // what the counter said before
  bool reuse;          // keep storage that fits
  bool tracked;        // the handle tracks
  uint8_t* sent;       // the object's state block when the image carries state bytes, else null
};
// False, with the error set, when there is no memory.
bool refit_array(const Call& call, void* object, const Refit& refit, const FieldRow& field);
// After a failure only the first `kept` records of the block are whole: the count ends with them.
void keep_records(const Call& call, void* object, const RecordBlock& block, uint64_t kept,
                  const FieldRow& field);

// Frees the block and `count` elements in it. The counter is the caller's to write.
void free_elements(const Call& call, void* object, uint64_t count, const FieldRow& field);
// The same for an object that is being destroyed.
void destroy_array(const Call& call, void* object, const FieldRow& field);
// After a copy: the blocks now belong to the target alone.
void detach_array(const Call& call, void* from, const RecordRow& record);
// The same for a source whose copy was refused half way, with the records inside it: a block has
// one owner.
void detach_all_arrays(const Call& call, void* from, const RecordRow& record);

// Room for `count` element bytes, of which the first `kept` are old ones. False when there is no
// memory: the array then has none at all, and the error is the caller's to report.
bool grow_element_states(const Call& call, uint8_t* entry, uint64_t count, uint64_t kept);
// The same when nothing is kept.
bool reset_element_states(const Call& call, uint8_t* entry, uint64_t count);
// The count of a tracked object changes while tracking is off: frees bytes that no longer match the
// elements.
void drop_element_states(const Call& call, void* object, const FieldRow& field);
// The same for all arrays of a record and of the records inside it.
void drop_all_element_states(const Call& call, void* object, const RecordRow& record);
// Frees them for an object that is being destroyed; `states` is its state block.
void free_element_states(const Call& call, uint8_t* states, const RecordRow& record);
// After a copy of the state block: the bytes now belong to the target alone.
void detach_element_states(const Call& call, void* from, const RecordRow& record);

}  // namespace frame
