// Making records.
#pragma once

#include "frame/object.h"

namespace frame {

void* create(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_internal(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_cr(ork_handle* handle, const RecordRow& record);
// Makes an array's element that could not be filled a fresh one in place.
void reinitialize(const Call& call, void* element, const RecordRow& record);

}  // namespace frame
