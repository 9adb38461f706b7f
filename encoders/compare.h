// Order and hash of records by value: headers, variants and state bytes take no part. Nothing is
// allocated, nothing can fail.
#pragma once

#include "encoders/walk.h"

namespace encoders {

// Negative when `a` sorts first. Callers may rely on the sign only.
int32_t compare(const void* a, const void* b, const RecordRow& record);
uint32_t hash(const void* object, uint32_t seed, const RecordRow& record);

int32_t small_compare(const void* a, const void* b, const SmallRow& type);
uint32_t small_hash(const void* object, uint32_t seed, const SmallRow& type);

}  // namespace encoders
