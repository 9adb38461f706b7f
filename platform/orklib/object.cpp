#include "object.h"

#include <cerrno>
#include <cstring>

#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

void store_flags(ork_handle* handle, uint32_t instance, void* obj, uint8_t flags) {
  handle->write_notify_fn(handle, &header(obj)->obj_flags, 1, instance, obj);
  header(obj)->obj_flags = flags;
}

void write_header(ork_handle* handle, uint32_t instance, void* obj, const ork_type_info* type,
                  bool notify, uint8_t flags) {
  const ork_type_info* shown =
      handle->shared_types != 0 ? ork_type_info_ptr_get(handle, instance, type, nullptr) : type;
  if (notify) {
    handle->write_notify_fn(handle, obj, ORK_OBJECT_HEADER_SIZE, instance, obj);
  }
  ork_object* object = header(obj);
  std::memcpy(object->type_info_slot, &shown, sizeof shown);
  object->variant = 0;
  object->variant_cap = 0;
  object->obj_flags |= flags;
}

}  // namespace ork

extern "C" {

ORK_EXPORT int8_t ork_get_instance_variant(const void* obj, uint32_t, uint32_t) {
  return obj != nullptr ? ork::header(obj)->variant : int8_t{0};
}

ORK_EXPORT uint8_t ork_get_instance_obj_flag(const void* obj, uint32_t, uint32_t) {
  return obj != nullptr ? ork::header(obj)->obj_flags : uint8_t{0};
}

// The slot is the word itself, or leads to a block whose first word it then is.
ORK_EXPORT const struct ork_type_info** ork_get_manifested_type_info_ptr_mem(void* obj) {
  void* slot = ork::header(obj)->type_info_slot;
  if ((ork::header(obj)->obj_flags & OBJ_OWNS_SLOT_BLOCK) != 0) {
    void* block;
    std::memcpy(&block, slot, sizeof block);
    if (block != nullptr) {
      slot = block;
    }
  }
  return static_cast<const ork_type_info**>(slot);
}

ORK_EXPORT const struct ork_type_info* ork_get_manifested_type_info(const void* obj) {
  return obj != nullptr ? *ork_get_manifested_type_info_ptr_mem(const_cast<void*>(obj)) : nullptr;
}

ORK_EXPORT const uint8_t* ork_get_luid(struct ork_handle* handle, uint32_t, const void* obj,
                                       uint32_t* err) {
  if (*err != 0) {
    return nullptr;
  }
  const ork_type_info* type = ork_get_manifested_type_info(obj);
  if (type == nullptr) {
    ork::fail(handle, err, EINVAL);
    return nullptr;
  }
  return type->luid;
}

}  // extern "C"
