#include <algorithm>

#include "layout.h"
#include "object.h"
#include "ork/orklib.h"
#include "support/export.h"

namespace ork {
namespace {

// The newest variant up to limit that the object's storage has room for. A tracked object of an
// older layout has its state bytes right behind that layout's body, with none for later fields: it
// stays within its layout.
int newest_with_room(const ork_object& object, const ork_variant_info& variants, int limit) {
  const int cap = layout_of(object, variants);
  if (limit <= cap) {
    return limit;
  }
  if ((object.obj_flags & OBJ_STATE_TRACKED) != 0) {
    return cap;
  }
  const uint32_t room = body_size(variants.entries[cap].used_length);
  int variant = limit;
  while (variant > cap && variants.entries[variant].used_length > room) {
    --variant;
  }
  return variant;
}

}  // namespace
}  // namespace ork

extern "C" ORK_EXPORT uint32_t orklib_adjust_variant(struct ork_handle* handle, uint32_t instance,
                                                     void* obj, const struct ork_type_info* tinfo,
                                                     int32_t max_variant, uint32_t* err) {
  if (*err != 0 || obj == nullptr || tinfo == nullptr || ork::header(obj)->variant >= max_variant) {
    return 0;
  }
  const ork_variant_info* variants = tinfo->varinfo;
  if (variants == nullptr || variants->n_variants <= 0) {
    return 0;
  }
  ork_object& object = *ork::header(obj);
  const int known = std::min<int>(max_variant, variants->n_variants - 1);
  const int allowed =
      std::min<int>(known, ork_domain_lookup_variant(handle, &handle->domain, tinfo, err));
  if (allowed <= object.variant) {
    return 0;
  }
  const int variant = ork::newest_with_room(object, *variants, allowed);
  if (variant <= object.variant) {
    return 0;
  }
  handle->write_notify_fn(handle, &object.variant, 1, instance, obj);
  object.variant = static_cast<int8_t>(variant);
  return 1;
}
