// link_type: a number in an object, 5 bytes on the wire, the variant and the value.
#include "object.h"
#include "ork/superfasthash.h"
#include "primitive.h"
#include "support/export.h"

namespace {

constexpr int32_t image_size = 5;

}  // namespace

extern "C" {

ORK_EXPORT void link_type_initialize(struct ork_handle* handle, uint32_t instance,
                                     struct ork_link_type* obj, const struct ork_type_info* tinfo,
                                     uint32_t notify, uint32_t, uint32_t flags, void*,
                                     uint32_t* err) {
  if (*err == 0) {
    ork::write_header(handle, instance, obj, tinfo, notify != 0, static_cast<uint8_t>(flags));
  }
}

ORK_EXPORT void link_type_set_instance_embedded(struct ork_handle* handle, uint32_t instance,
                                                struct ork_link_type* obj) {
  ork::store_flags(handle, instance, obj, static_cast<uint8_t>(obj->obj_flags | OBJ_EMBEDDED));
}

ORK_EXPORT struct ork_link_type* link_type_get(struct ork_handle*, uint32_t,
                                               const struct ork_link_type* address, uint32_t* err) {
  return ork::lend(address, err);
}

ORK_EXPORT uint32_t link_type_get_value(struct ork_handle* handle, uint32_t,
                                        const struct ork_link_type* address, uint32_t* err) {
  return ork::all_given(handle, err, address) ? address->value : 0;
}

ORK_EXPORT void link_type_set(struct ork_handle* handle, uint32_t instance,
                              struct ork_link_type* address, const struct ork_link_type* src,
                              uint32_t* err) {
  if (ork::all_given(handle, err, address, src)) {
    ork::store(handle, instance, &address->value, src->value);
  }
}

ORK_EXPORT void link_type_set_value(struct ork_handle* handle, uint32_t instance,
                                    struct ork_link_type* address, uint32_t value, uint32_t* err) {
  if (ork::all_given(handle, err, address)) {
    ork::store(handle, instance, &address->value, value);
  }
}

ORK_EXPORT uint32_t link_type_len(struct ork_handle*, uint32_t, const struct ork_link_type*) {
  return image_size;
}

ORK_EXPORT uint32_t link_type_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,
                                      const struct ork_link_type* source, int32_t remaining,
                                      uint32_t* err) {
  if (!ork::all_given(handle, err, source) || !ork::has_room(handle, remaining, image_size, err)) {
    return 0;
  }
  ork::put(buffer, static_cast<uint8_t>(source->variant));
  ork::put(buffer + 1, source->value);
  return image_size;
}

// The type has one variant, so there is nothing to lower: the byte on the wire is passed over.
ORK_EXPORT uint32_t link_type_unmarshal(struct ork_handle* handle, uint32_t, const uint8_t* buffer,
                                        struct ork_link_type* target, int32_t remaining, uint32_t,
                                        uint32_t* err) {
  if (!ork::has_room(handle, remaining, image_size, err)) {
    return 0;
  }
  target->value = ork::take<uint32_t>(buffer + 1);
  return image_size;
}

ORK_EXPORT int32_t link_type_compare(const struct ork_link_type* a, const struct ork_link_type* b) {
  return (a->value > b->value) - (a->value < b->value);
}

ORK_EXPORT uint32_t link_type_hash(const struct ork_link_type* value, uint32_t seed) {
  return SuperFastHash(&value->value, sizeof value->value, seed);
}

ORK_EXPORT uint32_t link_type_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                                    uint32_t indent, const char* name,
                                    const struct ork_link_type* value, int32_t remaining,
                                    uint32_t* err) {
  return u_int32_print(handle, instance, buffer, indent, name,
                       value != nullptr ? &value->value : nullptr, remaining, err);
}

ORK_EXPORT uint32_t link_type_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                                     char* buffer, const struct ork_link_type* value,
                                     int32_t remaining, uint8_t state, uint32_t* err) {
  return u_int32_to_xml(handle, instance, name, buffer, value != nullptr ? &value->value : nullptr,
                        remaining, state, err);
}

ORK_EXPORT void link_type_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                                   struct ork_xml* xml, struct ork_link_type* target, uint32_t* err,
                                   char* err_text, uint32_t err_text_len) {
  u_int32_from_xml(handle, instance, path, xml, &target->value, err, err_text, err_text_len);
}

}  // extern "C"
