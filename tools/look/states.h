// The state bytes of fields, where the object carries some.
#pragma once

#include "tools/look/object.h"

namespace look {

// Whether the object has state bytes that the handle may read.
bool is_tracked(ork_handle* handle, const Object& object);

// Of a tracked object: of a field that is no array, and of an element.
uint8_t state_of(ork_handle* handle, const Object& object, const wayfind_field& field);
uint8_t state_of(ork_handle* handle, const Object& object, const wayfind_field& array,
                 uint32_t index);

}  // namespace look
