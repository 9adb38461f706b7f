// Making records.
#pragma once

#include "frame/object.h"

namespace frame {

// The first create of a process starts the trace channel; create_internal leaves that out.
void* create(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_internal(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_cr(ork_handle* handle, const RecordRow& record);
// After a failed fill: destroys what the element of an array holds and initializes it again, at the
// same place and with the same state block.
void reinitialize(const Call& call, void* element, const RecordRow& record);

}  // namespace frame
