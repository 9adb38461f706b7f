// The flag set as an object: a header and one byte of bits.
#pragma once

#include "frame/small_type.h"

namespace frame {

inline uint8_t flag_bits(const void* object) { return *byte_at(object, at_flag_bits); }

uint32_t flag_in_range(uint32_t flag, const SmallRow& type);
uint32_t flag_get_value(const Call& call, const void* object, uint32_t flag, const SmallRow& type);
uint32_t flag_get_cr(ork_handle* handle, const void* object, uint32_t flag, const SmallRow& type);
void flag_set_set(const Call& call, void* object, const void* from, const SmallRow& type);
void flag_set_value(const Call& call, void* object, uint32_t flag, uint32_t on,
                    const SmallRow& type);
uint32_t flag_is_valid_cr(ork_handle* handle, uint32_t flag, const SmallRow& type);

}  // namespace frame
