// State functions of variable arrays. The getter and the setter of all element bytes, though named
// alike, work on different places: the getter returns the block of element bytes, the setter writes
// to the start of the array's state entry. Callers exist for both.
#pragma once

#include "frame/object.h"

namespace frame {

uint8_t array_whole_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                        const FieldRow& field);
void array_whole_set(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                     uint32_t* err, const FieldRow& field);
void array_states_get(ork_handle* handle, uint32_t instance, void* object, uint8_t** out,
                      uint32_t* err, const FieldRow& field);
void array_states_set(ork_handle* handle, uint32_t instance, void* object, const uint8_t* from,
                      uint32_t count, uint32_t* err, const FieldRow& field);
uint8_t array_state_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                        uint32_t* err, const FieldRow& field);
void array_state_set(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                     uint8_t value, uint32_t* err, const FieldRow& field);

}  // namespace frame
