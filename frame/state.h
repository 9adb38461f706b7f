// State tracking: one byte per field, in a block beside the object, set to 2 by every write through
// an accessor.
#pragma once

#include "frame/object.h"

namespace frame {

inline constexpr uint8_t touched = 2;

// After a write: the byte goes to 2. False when the handle tracks and the object does not; the
// value stays written.
template <Function F>
bool mark(const Call& call, void* object, const FieldRow& field) {
  if (checked_mode<F>(call.handle, field) != Tracking::on) return true;
  if (!has_flag(object, OBJ_STATE_TRACKED)) {
    call.fail(EINVAL);
    trace::raise<F, Form::not_tracked>(field);
    return false;
  }
  store(call, state_block(call, object, owner(field)) + field.state, touched, nullptr);
  return true;
}

// The block as a reader of single bytes finds it: without tracking information on the handle, an
// object is taken for one of newest layout.
inline uint8_t* seen_state_block(const Call& call, void* object, const RecordRow& record) {
  const bool newest = call.handle->sttr_info == nullptr;
  return state_block(call, object, newest ? record.newest_layout() : layout_of(record, object));
}

// How every state flag function begins: refuses while tracking is off.
template <Function F>
bool tracking_allows(const Call& call, const FieldRow& field) {
  if (call.failed()) return false;
  if (checked_mode<F>(call.handle, field) == Tracking::off) {
    call.fail(EINVAL);
    return false;
  }
  return true;
}
// The two families report an object without state bytes in the reverse order and in other words.
template <Function F>
bool allow_state_read(const Call& call, const void* object, const FieldRow& field) {
  if (!tracking_allows<F>(call, field)) return false;
  if (has_flag(object, OBJ_STATE_TRACKED)) return true;
  call.fail(EINVAL);
  trace::raise<F, Form::non_tracked>(field);
  return false;
}
template <Function F>
bool allow_state_write(const Call& call, const void* object, const FieldRow& field) {
  if (!tracking_allows<F>(call, field)) return false;
  if (has_flag(object, OBJ_STATE_TRACKED)) return true;
  trace::raise<F, Form::not_tracked>(field);
  call.fail(EINVAL);
  return false;
}

uint8_t state_flag_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                       const FieldRow& field);
void state_flag_set(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                    uint32_t* err, const FieldRow& field);

void set_all_state_tracking_flag(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                                 const RecordRow& record);
// Tells the runtime where the embedded records' state bytes lie, for a state block at `block`.
void offset_update(const Call& call, void* object, uint8_t* block, const RecordRow& record);
// The same while the object is being initialized: the headers of embedded records are still zero
// and name no layout, so the walk goes by the newest, which they are about to get.
void initialize_offsets(const Call& call, void* object, uint8_t* block, const RecordRow& record);
void offset_remove(const Call& call, void* object, const RecordRow& record);

// An object never gains state bytes by a copy: what has none may not claim to, nor may the records
// inside it.
void clear_tracking_flags(void* object, const RecordRow& record);

}  // namespace frame
