#include "frame/record_block.h"

#include "frame/array_storage.h"
#include "frame/state.h"
#include "frame/whole_record.h"

namespace frame {
namespace {

// The first element that has state bytes; the count when there is none.
uint64_t first_tracked(const RecordBlock& block) {
  uint64_t i = 0;
  while (i < block.count && !has_flag(block.element(i), OBJ_STATE_TRACKED)) ++i;
  return i;
}

// State blocks of the old elements, or null. They begin past the elements that the block was made
// for. An 8-bit counter may have wrapped since, so for those arrays the runtime's offset is used.
const uint8_t* old_states(const Call& call, const RecordBlock& from, const FieldRow& field) {
  const uint64_t i = first_tracked(from);
  if (i == from.count) return nullptr;
  return field.counter_kind == Kind::u_int8 ? mapped_states(call, from.element(i)) - i * from.state
                                            : from.element_state(0);
}

void point_at_states(const Call& call, const RecordBlock& to, uint64_t i, const RecordRow& record) {
  register_states(call, to, i);
  offset_update(call, to.element(i), to.element_state(i), record);
}

// Tracking is off, so the new block has no room for state bytes: frees the old element bytes, and
// removes the offsets and flags that lead to state bytes.
void drop_states(const Call& call, void* from, void* to, const RecordRow& record) {
  const DetachedCall own(call);
  drop_all_element_states(own, from, record);
  offset_remove(own, from, record);
  ork_hd_mapping_destroy(own.handle, own.instance, from, own.err);
  clear_tracking_flags(to, record);
}

// The old place of an element: removes its registrations, tells the hooks that it is gone.
void unregister_element(const Call& call, void* object, void* element, bool tracked,
                        const RecordRow& record) {
  if (tracked) {
    const DetachedCall own(call);
    offset_remove(own, element, record);
    ork_hd_mapping_destroy(own.handle, own.instance, element, own.err);
  }
  contain(call, element, object);
  if (watched(call)) orkdb_plat_set_detach(call.handle, call.instance, element, 0);
}

}  // namespace

uint64_t initialize_elements(const Call& call, const RecordBlock& block, uint64_t first,
                             const RecordRow& record) {
  for (uint64_t i = first; i < block.count; ++i) {
    initialize_element(call, block, i, record);
    if (call.failed()) return i;
  }
  return block.count;
}

// State bytes first, then bodies, then whatever must follow an element to its new place. Tracked
// elements always lie in a block with state bytes.
void move_elements(const Call& call, void* object, const RecordBlock& from, const RecordBlock& to,
                   bool tracked, const FieldRow& field) {
  const RecordRow& record = child_record(field);
  const uint8_t* states = tracked ? old_states(call, from, field) : nullptr;
  if (states != nullptr) memcpy(to.element_state(0), states, from.count * from.state);
  memcpy(to.start, from.start, from.count * from.body);
  for (uint64_t i = 0; i < from.count; ++i) {
    if (tracked) {
      point_at_states(call, to, i, record);
    } else if (has_flag(from.element(i), OBJ_STATE_TRACKED | OBJ_STTR_OFFSET)) {
      drop_states(call, from.element(i), to.element(i), record);
    }
  }
  for (uint64_t i = 0; i < from.count; ++i) {
    post_copyout_cleanup(call, to.element(i), from.element(i), record);
    unregister_element(call, object, from.element(i), tracked, record);
  }
}

void compact_states(const Call& call, const RecordBlock& block, uint64_t kept,
                    const FieldRow& field) {
  const RecordBlock left = record_block(block.start, kept, field);
  if (first_tracked(left) == kept) return;
  announce(call, left.element_state(0), kept * left.state, nullptr);
  memmove(left.element_state(0), block.element_state(0), kept * left.state);
  const DetachedCall own(call);
  for (uint64_t i = 0; i < kept; ++i) point_at_states(own, left, i, child_record(field));
}

}  // namespace frame
