// Accessors of fields that are objects themselves: embedded records, addresses, the flag set. The
// getter serves enums too.
#pragma once

#include "frame/object.h"

namespace frame {

void* object_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                 const FieldRow& field);
void object_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                uint32_t* err, const FieldRow& field);

}  // namespace frame
