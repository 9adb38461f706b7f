// Bytes of a record: with the state block while the handle tracks, else of the body alone.
#pragma once

#include "frame/object.h"

namespace frame {

uint32_t size_of(const ork_handle* handle, const RecordRow& record);
// The same for an existing object, by its layout, or with `state_only` its state block alone.
// Without an object, or without sttr_info on the handle, the newest layout counts.
uint32_t size_of_internal(const ork_handle* handle, const void* object, uint32_t with_state,
                          uint32_t state_only, const RecordRow& record);

}  // namespace frame
