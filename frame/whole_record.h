// Operations on a record as a whole.
#pragma once

#include "frame/object.h"

namespace frame {

void* record_get(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
void record_set(const Call& call, void* to, const void* from, const RecordRow& record);
void post_copyout_cleanup(const Call& call, void* to, void* from, const RecordRow& record);

// Which fields and variants there are.
uint32_t is_valid_cr(ork_handle* handle, const void* object, uint32_t field_number, uint32_t flags,
                     const RecordRow& record);
int32_t index_cap(int32_t variant, int newest);

}  // namespace frame
