// Accessors of fields that are enums: by value, with a range check of their own. The object in the
// field is read by object_get().
#pragma once

#include "frame/object.h"

namespace frame {

// Without upgrade and gate: calls the containment hook, then returns the value.
uint32_t read_enum_field(const Call& call, void* object, const FieldRow& field);

uint32_t enum_field_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                              const FieldRow& field);
// A refused value leaves the field as it is; the state byte is marked all the same.
void enum_field_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                    uint32_t* err, const FieldRow& field);
void enum_field_set_value(ork_handle* handle, uint32_t instance, void* object, uint32_t value,
                          uint32_t* err, const FieldRow& field);

}  // namespace frame
