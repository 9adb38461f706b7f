// How many bytes a record takes, its state block included.
#pragma once

#include "frame/object.h"

namespace frame {

uint32_t size_of(const ork_handle* handle, const RecordRow& record);
uint32_t size_of_internal(const ork_handle* handle, const void* object, uint32_t with_state,
                          uint32_t state_only, const RecordRow& record);

}  // namespace frame
