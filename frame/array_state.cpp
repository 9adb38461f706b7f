#include "frame/array_state.h"

#include "frame/array.h"

namespace frame {

uint8_t array_whole_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                        const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_read<Function::whole_get>(call, object, field)) return 0;
  return *state_entry(call, object, field);
}

void array_whole_set(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                     uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_write<Function::whole_set>(call, object, field) ||
      !upgrade_and_gate(call, object, field))
    return;
  store(call, state_entry(call, object, field), value, nullptr);
}

void array_states_get(ork_handle* handle, uint32_t instance, void* object, uint8_t** out,
                      uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_read<Function::states_get>(call, object, field)) return;
  *out = element_states(state_entry(call, object, field));
}

// Clamped to the entry: what follows it belongs to other fields or other objects. Unannounced.
void array_states_set(ork_handle* handle, uint32_t instance, void* object, const uint8_t* from,
                      uint32_t count, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_write<Function::states_set>(call, object, field)) return;
  if (count != stored_count(object, field)) return call.fail(ENOENT);
  if (!upgrade_and_gate(call, object, field)) return;
  if (count != 0)
    memcpy(state_entry(call, object, field), from,
           count < model::array_entry_size ? count : model::array_entry_size);
}

uint8_t array_state_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                        uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_read<Function::state_flag_get>(call, object, field)) return 0;
  if (index >= usable_count(object, field)) {
    call.fail(ENOENT);
    return 0;
  }
  // An array whose element bytes are missing reads as untouched.
  const uint8_t* elements = element_states(state_entry(call, object, field));
  return elements == nullptr ? 0 : elements[index];
}

void array_state_set(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                     uint8_t value, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_write<Function::state_flag_set>(call, object, field)) return;
  if (index >= usable_count(object, field)) return call.fail(ENOENT);
  if (!upgrade_and_gate(call, object, field)) return;
  uint8_t* elements = element_states(state_entry(call, object, field));
  if (elements != nullptr) store(call, elements + index, value, nullptr);
}

}  // namespace frame
