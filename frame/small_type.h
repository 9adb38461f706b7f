// What enums and the flag set have in common as objects: a header and one value, one variant, no
// state bytes of their own.
#pragma once

#include "frame/initialize.h"

namespace frame {

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

inline int8_t small_variant_of(const void* object) {
  return static_cast<int8_t>(ork_get_instance_variant(object, 0, 1));
}

}  // namespace frame
