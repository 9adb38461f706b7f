// Accessors of fields that are fixed strings.
#pragma once

#include "frame/object.h"

namespace frame {

void text_get(ork_handle* handle, uint32_t instance, const void* object, char* to, uint32_t size,
              uint32_t* err, const FieldRow& field);
void text_set(ork_handle* handle, uint32_t instance, void* object, const char* from,
              uint32_t length, uint32_t* err, const FieldRow& field);

}  // namespace frame
