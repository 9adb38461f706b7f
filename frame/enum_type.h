// Enums as objects: a header and one value of 32 bits.
#pragma once

#include "frame/small_type.h"

namespace frame {

inline uint32_t enum_value(const void* object) { return load<uint32_t>(byte_at(object, at_value)); }

void* enum_get(ork_handle* handle, uint32_t instance, void* object);
uint32_t enum_get_value(const Call& call, const void* object);
void enum_set(const Call& call, void* object, const void* from, const SmallRow& type);
void enum_set_value(const Call& call, void* object, uint32_t value, const SmallRow& type);
uint32_t enum_is_valid_cr(ork_handle* handle, int32_t value, const SmallRow& type);

}  // namespace frame
