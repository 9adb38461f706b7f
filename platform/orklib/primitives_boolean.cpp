// ork_boolean: a bare word of 0 or 1, one byte on the wire.
#include "ork/superfasthash.h"
#include "primitive.h"
#include "support/export.h"

namespace {

std::string_view text_of(ork_boolean value) { return value != 0 ? "true" : "false"; }

}  // namespace

extern "C" {

ORK_EXPORT ork_boolean* ork_boolean_get(struct ork_handle*, uint32_t, const ork_boolean* address,
                                        uint32_t* err) {
  return ork::lend(address, err);
}

ORK_EXPORT ork_boolean ork_boolean_get_value(struct ork_handle* handle, uint32_t,
                                             const ork_boolean* address, uint32_t* err) {
  return ork::all_given(handle, err, address) ? *address : 0;
}

ORK_EXPORT void ork_boolean_set(struct ork_handle* handle, uint32_t instance, ork_boolean* address,
                                const ork_boolean* src, uint32_t* err) {
  if (ork::all_given(handle, err, address, src)) {
    ork::store(handle, instance, address, *src != 0 ? 1U : 0U);
  }
}

ORK_EXPORT void ork_boolean_set_value(struct ork_handle* handle, uint32_t instance,
                                      ork_boolean* address, ork_boolean value, uint32_t* err) {
  if (ork::all_given(handle, err, address)) {
    ork::store(handle, instance, address, value != 0 ? 1U : 0U);
  }
}

ORK_EXPORT void ork_boolean_initialize(struct ork_handle* handle, uint32_t instance,
                                       ork_boolean* obj, const struct ork_type_info*,
                                       uint32_t notify, uint32_t, uint32_t, void*, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  if (notify != 0) {
    handle->write_notify_fn(handle, obj, sizeof *obj, instance, obj);
  }
  *obj = 0;
}

ORK_EXPORT void ork_boolean_set_instance_embedded(struct ork_handle*, uint32_t, ork_boolean*) {}

ORK_EXPORT uint32_t ork_boolean_len(struct ork_handle*, uint32_t, const ork_boolean*) { return 1; }

ORK_EXPORT uint32_t ork_boolean_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,
                                        const ork_boolean* source, int32_t remaining,
                                        uint32_t* err) {
  if (!ork::all_given(handle, err, source)) {
    return 0;
  }
  return ork::marshal(handle, buffer, static_cast<uint8_t>(*source != 0 ? 1 : 0), remaining, err);
}

ORK_EXPORT uint32_t ork_boolean_unmarshal(struct ork_handle* handle, uint32_t,
                                          const uint8_t* buffer, ork_boolean* target,
                                          int32_t remaining, uint32_t, uint32_t* err) {
  uint8_t byte = 0;
  const uint32_t length = ork::unmarshal(handle, buffer, &byte, remaining, err);
  if (length != 0) {
    *target = byte != 0 ? 1 : 0;
  }
  return length;
}

ORK_EXPORT int32_t ork_boolean_compare(const ork_boolean* a, const ork_boolean* b) {
  return (*a != 0) - (*b != 0);
}

ORK_EXPORT uint32_t ork_boolean_hash(const ork_boolean* value, uint32_t seed) {
  const uint32_t normal = *value != 0 ? 1 : 0;
  return SuperFastHash(&normal, sizeof normal, seed);
}

ORK_EXPORT uint32_t ork_boolean_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                                      uint32_t indent, const char* name, const ork_boolean* value,
                                      int32_t remaining, uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, value)) {
    return 0;
  }
  return ork::print_line(handle, instance, buffer, indent, name, text_of(*value), remaining, err);
}

ORK_EXPORT uint32_t ork_boolean_to_xml(struct ork_handle* handle, uint32_t, const char* name,
                                       char* buffer, const ork_boolean* value, int32_t remaining,
                                       uint8_t state, uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, value)) {
    return 0;
  }
  return ork::write_element(handle, buffer, name, text_of(*value), remaining, state, err);
}

ORK_EXPORT void ork_boolean_from_xml(struct ork_handle* handle, uint32_t, const char* path,
                                     struct ork_xml* xml, ork_boolean* target, uint32_t* err,
                                     char* err_text, uint32_t err_text_len) {
  const auto text = ork::element_text(handle, path, xml, err, err_text, err_text_len);
  if (!text) {
    return;
  }
  const std::string_view word = ork::trimmed(*text);
  if (word == "true" || word == "1") {
    *target = 1;
  } else if (word == "false" || word == "0") {
    *target = 0;
  } else {
    ork::refuse_element(handle, path, EINVAL, err, err_text, err_text_len);
  }
}

}  // extern "C"
