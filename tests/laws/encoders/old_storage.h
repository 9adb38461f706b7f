// Records in storage that an older release of the library laid out: no larger than it made them,
// with the state block directly behind the shorter body.
#pragma once

#include "behaviour/encoders/values.h"

namespace encoders {

using InitializeFn = void(ork_handle*, uint32_t, void*, const ork_type_info*, uint32_t, uint32_t,
                          uint32_t, uint8_t*, uint32_t*);

inline bool tracks(const ork_handle* handle) {
  return handle->sttr_info != nullptr && handle->sttr_info->sttr_mode == ORK_STTR_ON;
}

inline void initialize_field(ork_handle* handle, const wayfind_field& field, uint8_t* object,
                             uint8_t* states) {
  uint32_t err = 0;
  uint8_t* const child = object + field.offset;
  const auto run = [&](const wayfind_function* functions, const ork_type_info* type,
                       uint8_t* child_states) {
    function<InitializeFn>(functions, "_initialize")(handle, instance, child, type, 0, 0,
                                                     OBJ_NESTED, child_states, &err);
  };
  if (field.cls == WAYFIND_COUNTER || field.cls == WAYFIND_VALUE_ARRAY ||
      field.cls == WAYFIND_RECORD_ARRAY) {
    return;
  }
  if (field.kind == WAYFIND_RECORD) {
    if (tracks(handle)) {
      orklib_update_sttr_offset(handle, instance, child,
                                static_cast<int32_t>(states + field.nested - child));
      function<void(ork_handle*, uint32_t, void*, uint8_t*, uint32_t*)>(
          field.record->functions, "_offset_update")(handle, instance, child, states + field.nested,
                                                     &err);
    }
    run(field.record->functions, field.record->type, states);
  } else if (field.type != nullptr) {
    run(field.type->functions, field.type->type, states);
  } else if (field.kind == WAYFIND_IP_ADDRESS) {
    ip_address_initialize(handle, instance, reinterpret_cast<ork_ip_address*>(child),
                          &_ip_address_type_info_internal, 0, 0, OBJ_NESTED, states, &err);
  } else if (field.kind == WAYFIND_LINK_TYPE) {
    link_type_initialize(handle, instance, reinterpret_cast<ork_link_type*>(child),
                         &_link_type_type_info_internal, 0, 0, OBJ_NESTED, states, &err);
  }
  EXPECT_EQ(err, 0u) << field.name;
}

// A record of that variant and layout.
inline Object old_record(ork_handle* handle, const Calls& calls, unsigned layout) {
  const wayfind_record& record = *calls.schema;
  const wayfind_layout& sizes = record.layouts[layout];
  const size_t size = sizes.body + (tracks(handle) ? sizes.state : 0U);
  auto* const object = static_cast<uint8_t*>(handle->alloc_fn(handle->mem_pool, instance, size));
  std::memset(object, 0, size);
  auto* const header = reinterpret_cast<ork_object*>(object);
  const ork_type_info* const type = record.type;
  std::memcpy(header->type_info_slot, &type, sizeof type);
  header->variant = static_cast<int8_t>(layout);
  header->variant_cap = static_cast<uint8_t>(layout);
  header->obj_flags = tracks(handle) ? OBJ_STATE_TRACKED : 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    if (record.fields[i].variant <= layout) {
      initialize_field(handle, record.fields[i], object, object + sizes.body);
    }
  }
  return Object(handle, calls, object);
}

}  // namespace encoders
