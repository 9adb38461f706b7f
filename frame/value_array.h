// Accessors of variable arrays of integers.
#pragma once

#include "frame/object.h"

namespace frame {

uint64_t array_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t index,
                         uint32_t* err, const FieldRow& field);
void array_get_mem(ork_handle* handle, uint32_t instance, void* object, void* to, uint32_t count,
                   uint32_t* err, const FieldRow& field);
void array_set_mem(ork_handle* handle, uint32_t instance, void* object, const void* from,
                   uint32_t count, uint32_t* err, const FieldRow& field);
void array_set(const Call& call, void* object, uint32_t index, const void* from,
               const FieldRow& field);
void array_set_value(const Call& call, void* object, uint32_t index, uint64_t value,
                     const FieldRow& field);

}  // namespace frame
