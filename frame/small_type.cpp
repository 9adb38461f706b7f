#include "frame/small_type.h"

#include "frame/make.h"

namespace frame {

void* small_create_internal(ork_handle* handle, uint32_t instance, const SmallRow& type) {
  return make<Function::small_create_internal, Form::small_create_failed>(handle, instance, type);
}

void* small_create_cr(ork_handle* handle, const SmallRow& type) {
  handle->cr_active = 1;
  void* object = small_create_internal(handle, handle->cr_instance, type);
  handle->cr_active = 0;
  return object;
}

void initialize(const Call& call, void* object, const ork_type_info* info, Initialization how,
                const SmallRow& type) {
  if (!call.start()) return;
  const InitializedHeader header = write_header(call, object, info, how, 0);
  if (how.no_stats != 0) return;
  check_variants<Function::small_initialize>(header.type, header.variant, type);
  if (header.variant >= 0)
    increment(call, header.type, header.type->varinfo->entries[0].create_count);
}

void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const SmallRow& type) {
  if (object == nullptr)
    return trace::raise<Function::small_set_instance_embedded, Form::small_embed_object>(type);
  mark_embedded(DetachedCall(handle, instance), object);
}

void small_destroy(ork_handle* handle, uint32_t instance, void* object, const SmallRow& type) {
  if (object == sentinel(type)) return;
  small_destroy_internal(handle, instance, object, 1, type);
}

void small_destroy_internal(ork_handle* handle, uint32_t instance, void* object,
                            uint32_t free_storage, const SmallRow& type) {
  if (object == nullptr || object == sentinel(type)) return;
  const DetachedCall call(handle, instance);
  const int variant = small_variant_of(object);
  const ork_type_info* info =
      checked_type<Function::small_destroy_internal>(type_in_header(object), variant, type);
  if (variant >= 0) increment(call, info, info->varinfo->entries[0].destroy_count);
  if (free_storage == 0) return;
  if (watched(call)) orkdb_plat_set_destroy(handle, instance, object);
  free_object(call, object);
}

uint32_t small_adjust_variant(const Call& call, void* object) {
  const ork_type_info* type = object != nullptr ? type_in_header(object) : nullptr;
  return orklib_adjust_variant(call.handle, call.instance, object, type, 0, call.err);
}

}  // namespace frame
