#include "tools/look/states.h"

#include "tools/look/function.h"

namespace look {

bool is_tracked(ork_handle* handle, const Object& object) {
  return handle->sttr_info != nullptr && handle->sttr_info->sttr_mode == ORK_STTR_ON &&
         (ork_get_instance_obj_flag(object.at, 1, 0) & OBJ_STATE_TRACKED) != 0;
}

uint8_t state_of(ork_handle* handle, const Object& object, const wayfind_field& field) {
  using Get = uint8_t(ork_handle*, uint32_t, const void*, uint32_t*);
  uint32_t err = 0;
  return function<Get>(field.functions, "_state_flag_get")(handle, ORK_NO_INSTANCE, object.at,
                                                           &err);
}

uint8_t state_of(ork_handle* handle, const Object& object, const wayfind_field& array,
                 uint32_t index) {
  using Get = uint8_t(ork_handle*, uint32_t, const void*, uint32_t, uint32_t*);
  uint32_t err = 0;
  return function<Get>(array.functions, "_state_flag_get")(handle, ORK_NO_INSTANCE, object.at,
                                                           index, &err);
}

}  // namespace look
