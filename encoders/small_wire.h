// Wire images of enums (variant byte, value) and of the flag set (variant byte, jump, one byte of
// bits).
#pragma once

#include "encoders/walk.h"

namespace encoders {

inline constexpr uint32_t enum_length = 5;
inline constexpr uint32_t flag_set_length = 6;

uint32_t enum_marshal(const Call& call, uint8_t* buffer, const void* object, int32_t length);
uint32_t enum_unmarshal(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                        uint32_t reuse, const SmallRow& type);
uint32_t flag_set_marshal(const Call& call, uint8_t* buffer, const void* object, int32_t length);
// Reads the byte of bits without checking the length: in an image that ends right before it, this
// reads one byte past the end.
uint32_t flag_set_unmarshal(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                            uint32_t reuse, const SmallRow& type);

inline uint32_t small_length_cr(const ork_handle* handle, uint32_t length) {
  return handle->cr_error != 0 ? 0 : length;
}

}  // namespace encoders
