// Operations on a record as a whole.
#pragma once

#include "frame/object.h"

namespace frame {

void* record_get(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
// Moves `from` into `to`: variable arrays leave the source.
void record_set(const Call& call, void* to, const void* from, const RecordRow& record);
// After a caller has copied the bytes of `from` to `to`: moves what bytes alone do not copy.
void post_copyout_cleanup(const Call& call, void* to, void* from, const RecordRow& record);

// 1 when both the peer and the object know the field of that number. Bit 0 of `flags` leaves the
// object out.
uint32_t is_valid_cr(ork_handle* handle, const void* object, uint32_t field_number, uint32_t flags,
                     const RecordRow& record);
// The variant, but no later one than `newest`; the upper bytes of the argument stay.
int32_t index_cap(int32_t variant, int newest);

}  // namespace frame
