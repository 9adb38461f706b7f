// Enums and the flag set as objects: a header and one value, no state bytes of their own, one
// variant.
#pragma once

#include "frame/initialize.h"

namespace frame {

// 16 bytes: header, then the value; the flag set 24: header, then one byte of bits.
inline uint32_t enum_value(const void* object) { return load<uint32_t>(byte_at(object, at_value)); }
inline uint8_t flag_bits(const void* object) { return *byte_at(object, at_flag_bits); }

constexpr int32_t small_index_cap(int32_t variant) {
  return static_cast<int8_t>(variant) < 0 ? variant : 0;
}
constexpr uint32_t size_of(const ork_handle*, const SmallRow& type) { return type.size; }
void* small_create_internal(ork_handle* handle, uint32_t instance, const SmallRow& type);
void* small_create_cr(ork_handle* handle, const SmallRow& type);
void initialize(const Call& call, void* object, const ork_type_info* info, Initialization how,
                const SmallRow& type);
void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const SmallRow& type);
void small_destroy(ork_handle* handle, uint32_t instance, void* object, const SmallRow& type);
void small_destroy_internal(ork_handle* handle, uint32_t instance, void* object,
                            uint32_t free_storage, const SmallRow& type);
uint32_t small_adjust_variant(const Call& call, void* object);

void* enum_get(ork_handle* handle, uint32_t instance, void* object);
uint32_t enum_get_value(const Call& call, const void* object);
void enum_set(const Call& call, void* object, const void* from, const SmallRow& type);
void enum_set_value(const Call& call, void* object, uint32_t value, const SmallRow& type);
uint32_t enum_is_valid_cr(ork_handle* handle, int32_t value, const SmallRow& type);

uint32_t flag_in_range(uint32_t flag, const SmallRow& type);
uint32_t flag_get_value(const Call& call, const void* object, uint32_t flag, const SmallRow& type);
uint32_t flag_get_cr(ork_handle* handle, const void* object, uint32_t flag, const SmallRow& type);
void flag_set_set(const Call& call, void* object, const void* from, const SmallRow& type);
void flag_set_value(const Call& call, void* object, uint32_t flag, uint32_t on,
                    const SmallRow& type);
uint32_t flag_is_valid_cr(ork_handle* handle, uint32_t flag, const SmallRow& type);

inline int8_t small_variant_of(const void* object) {
  return static_cast<int8_t>(ork_get_instance_variant(object, 0, 1));
}

}  // namespace frame
