// State bytes: one per field, in a block that lies after the object or at a registered offset.
// Every write through an accessor sets the field's byte to 2.
#pragma once

#include "frame/object.h"

namespace frame {

inline constexpr uint8_t touched = 2;

// Marks a field that has been written. False, with EINVAL (22), when the handle tracks and the
// object does not; the value stays written.
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

// The state block as accessors of single bytes locate it: without sttr_info on the handle the
// newest layout is assumed, whatever the header says.
inline uint8_t* seen_state_block(const Call& call, void* object, const RecordRow& record) {
  const bool newest = call.handle->sttr_info == nullptr;
  return state_block(call, object, newest ? record.newest_layout() : layout_of(record, object));
}

// The first step of every state flag function: EINVAL (22) while tracking is off.
template <Function F>
bool tracking_allows(const Call& call, const FieldRow& field) {
  if (call.failed()) return false;
  if (checked_mode<F>(call.handle, field) == Tracking::off) {
    call.fail(EINVAL);
    return false;
  }
  return true;
}
// Getters and setters report an object without state bytes in opposite orders and with different
// texts.
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

// Fills all state bytes of the object and of its elements with one value.
void set_all_state_tracking_flag(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                                 const RecordRow& record);
// Registers with the runtime where the state blocks of embedded records lie, for a state block at
// `block`.
void offset_update(const Call& call, void* object, uint8_t* block, const RecordRow& record);
// The same while the object is being initialized. The headers of embedded records are still zero,
// so this assumes the newest layout, which they are about to get.
void initialize_offsets(const Call& call, void* object, uint8_t* block, const RecordRow& record);
// Removes the registrations again.
void offset_remove(const Call& call, void* object, const RecordRow& record);

// Clears the flags that say where state bytes are, in the object and in the records inside it. A
// copy that replaced a header without them must not claim any.
void clear_tracking_flags(void* object, const RecordRow& record);

}  // namespace frame
