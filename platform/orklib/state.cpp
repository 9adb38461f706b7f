// Distances from objects to their state bytes.
#include "layout.h"
#include "object.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {
namespace {

// A raw copy made while tracking was off can leave an object that is said to have a distance but
// was never told one. An object has a spare tail; the 16 bytes that end with its body are the place
// where a reader of an array's state entry finds no block of element bytes, so that destroying such
// an object frees nothing that is not its own.
int32_t distance_to_spare_tail(const void* obj) {
  const ork_type_info* type = ork_get_manifested_type_info(obj);
  if (type == nullptr || type->varinfo == nullptr || type->varinfo->n_variants <= 0) {
    return 0;
  }
  const ork_variant_info& variants = *type->varinfo;
  const int layout = layout_of(*header(obj), variants);
  return static_cast<int32_t>(body_size(variants.entries[layout].used_length)) - 16;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT int32_t orklib_get_sttr_offset(struct ork_handle* handle, uint32_t, const void* obj) {
  const auto distance = ork::runtime(handle).storage->distance(obj);
  return distance ? *distance : ork::distance_to_spare_tail(obj);
}

ORK_EXPORT void orklib_update_sttr_offset(struct ork_handle* handle, uint32_t instance, void* obj,
                                          int32_t distance) {
  ork::runtime(handle).storage->set_distance(obj, distance);
  ork::store_flags(handle, instance, obj,
                   static_cast<uint8_t>(ork::header(obj)->obj_flags | OBJ_STTR_OFFSET));
}

ORK_EXPORT uint32_t ork_hd_mapping_destroy(struct ork_handle* handle, uint32_t, void* obj,
                                           uint32_t* err) {
  if (*err == 0) {
    ork::runtime(handle).storage->drop_distance(obj);
  }
  return 0;
}

}  // extern "C"
