// ip_address: 18 bytes on the wire, the family, the prefix length and 16 bytes of address.
#include <array>
#include <cstring>

#include "ip_text.h"
#include "object.h"
#include "ork/superfasthash.h"
#include "primitive.h"
#include "support/export.h"

namespace {

using Image = std::array<uint8_t, 18>;

// The part of the object behind its header.
constexpr size_t value_offset = offsetof(ork_ip_address, family);
constexpr size_t value_size = sizeof(ork_ip_address) - value_offset;

Image image_of(const ork_ip_address& address) {
  Image image;
  image[0] = address.family;
  image[1] = address.prefix_length;
  std::memcpy(image.data() + 2, address.address, sizeof address.address);
  return image;
}

// By family, then address, then prefix length.
int order_of(const ork_ip_address& a, const ork_ip_address& b) {
  if (a.family != b.family) {
    return a.family - b.family;
  }
  const int order = std::memcmp(a.address, b.address, sizeof a.address);
  return order != 0 ? order : a.prefix_length - b.prefix_length;
}

}  // namespace

extern "C" {

ORK_EXPORT void ip_address_initialize(struct ork_handle* handle, uint32_t instance,
                                      struct ork_ip_address* obj, const struct ork_type_info* tinfo,
                                      uint32_t notify, uint32_t, uint32_t flags, void*,
                                      uint32_t* err) {
  if (*err == 0) {
    ork::write_header(handle, instance, obj, tinfo, notify != 0, static_cast<uint8_t>(flags));
  }
}

ORK_EXPORT void ip_address_destroy_internal(struct ork_handle* handle, uint32_t instance,
                                            struct ork_ip_address* obj, uint32_t free_storage) {
  if (obj != nullptr && free_storage != 0) {
    handle->free_fn(handle->mem_pool, instance, obj);
  }
}

ORK_EXPORT void ip_address_set_instance_embedded(struct ork_handle* handle, uint32_t instance,
                                                 struct ork_ip_address* obj) {
  ork::store_flags(handle, instance, obj, static_cast<uint8_t>(obj->obj_flags | OBJ_EMBEDDED));
}

ORK_EXPORT uint32_t ip_address_get_oid_count(struct ork_handle*, uint32_t,
                                             const struct ork_ip_address*, uint32_t*) {
  return 0;
}

ORK_EXPORT void ip_address_get_object_references(struct ork_handle*, uint32_t,
                                                 const struct ork_ip_address*, void**, uint32_t,
                                                 uint32_t*) {}

ORK_EXPORT struct ork_ip_address* ip_address_get(struct ork_handle*, uint32_t,
                                                 const struct ork_ip_address* address,
                                                 uint32_t* err) {
  return ork::lend(address, err);
}

ORK_EXPORT void ip_address_set(struct ork_handle* handle, uint32_t instance,
                               struct ork_ip_address* address, const struct ork_ip_address* src,
                               uint32_t* err) {
  if (!ork::all_given(handle, err, address, src) || address == src) {
    return;
  }
  auto* target = reinterpret_cast<uint8_t*>(address) + value_offset;
  handle->write_notify_fn(handle, target, value_size, instance, nullptr);
  std::memcpy(target, reinterpret_cast<const uint8_t*>(src) + value_offset, value_size);
}

ORK_EXPORT uint32_t ip_address_len(struct ork_handle*, uint32_t, const struct ork_ip_address*) {
  return sizeof(Image);
}

ORK_EXPORT uint32_t ip_address_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,
                                       const struct ork_ip_address* source, int32_t remaining,
                                       uint32_t* err) {
  if (!ork::all_given(handle, err, source) ||
      !ork::has_room(handle, remaining, sizeof(Image), err)) {
    return 0;
  }
  const Image image = image_of(*source);
  std::memcpy(buffer, image.data(), image.size());
  return sizeof(Image);
}

ORK_EXPORT uint32_t ip_address_unmarshal(struct ork_handle* handle, uint32_t, const uint8_t* buffer,
                                         struct ork_ip_address* target, int32_t remaining, uint32_t,
                                         uint32_t* err) {
  if (!ork::has_room(handle, remaining, sizeof(Image), err)) {
    return 0;
  }
  target->family = buffer[0];
  target->prefix_length = buffer[1];
  std::memcpy(target->address, buffer + 2, sizeof target->address);
  return sizeof(Image);
}

ORK_EXPORT int32_t ip_address_compare(const struct ork_ip_address* a,
                                      const struct ork_ip_address* b) {
  const int order = order_of(*a, *b);
  return (order > 0) - (order < 0);
}

ORK_EXPORT uint32_t ip_address_hash(const struct ork_ip_address* value, uint32_t seed) {
  const Image image = image_of(*value);
  return SuperFastHash(image.data(), image.size(), seed);
}

ORK_EXPORT uint32_t ip_address_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                                     uint32_t indent, const char* name,
                                     const struct ork_ip_address* value, int32_t remaining,
                                     uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, value)) {
    return 0;
  }
  return ork::print_line(handle, instance, buffer, indent, name, ork::IpText(*value).text(),
                         remaining, err);
}

ORK_EXPORT uint32_t ip_address_to_xml(struct ork_handle* handle, uint32_t, const char* name,
                                      char* buffer, const struct ork_ip_address* value,
                                      int32_t remaining, uint8_t state, uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, value)) {
    return 0;
  }
  return ork::write_element(handle, buffer, name, ork::IpText(*value).text(), remaining, state,
                            err);
}

ORK_EXPORT void ip_address_from_xml(struct ork_handle* handle, uint32_t, const char* path,
                                    struct ork_xml* xml, struct ork_ip_address* target,
                                    uint32_t* err, char* err_text, uint32_t err_text_len) {
  const auto text = ork::element_text(handle, path, xml, err, err_text, err_text_len);
  if (text && !ork::parse_ip(*text, *target)) {
    ork::refuse_element(handle, path, EINVAL, err, err_text, err_text_len);
  }
}

}  // extern "C"
