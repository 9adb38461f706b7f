// The descriptors of the runtime's own types.
#include <cstddef>

#include "ork/primitives.h"
#include "support/export.h"

namespace {

// 16 bytes as 32 digits: a LUID is written once, as the text that people compare.
consteval ork_type_info own_type(const char (&luid_text)[33], const char* name,
                                 ork_variant_info* variants) {
  ork_type_info type{};
  type.magic = ORK_TYPE_INFO_MAGIC;
  const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
  for (size_t i = 0; i < sizeof type.luid; ++i) {
    type.luid[i] = static_cast<uint8_t>(digit(luid_text[2 * i]) * 16 + digit(luid_text[2 * i + 1]));
  }
  const auto copy = [](char* to, const char* from) {
    while (*from != '\0') {
      *to++ = *from++;
    }
  };
  copy(type.luid_text, luid_text);
  copy(type.name, name);
  copy(type.module, "orklib");
  copy(type.kind, "type");
  type.unassigned_id = -1;
  type.varinfo = variants;
  return type;
}

constinit ork_variant_entry boolean_entry{0, 4, 0, 0, 0, 0, 0};
constinit ork_variant_info boolean_variants{1, {}, &boolean_entry};
constinit ork_variant_entry ip_address_entry{0, 48, 0, 0, 0, 0, 0};
constinit ork_variant_info ip_address_variants{1, {}, &ip_address_entry};
constinit ork_variant_entry link_type_entry{0, 16, 0, 0, 0, 0, 0};
constinit ork_variant_info link_type_variants{1, {}, &link_type_entry};

}  // namespace

extern "C" {

extern ORK_EXPORT const ork_type_info _ork_boolean_type_info_internal;
extern ORK_EXPORT const ork_type_info _ip_address_type_info_internal;
extern ORK_EXPORT const ork_type_info _link_type_type_info_internal;

constinit const ork_type_info _ork_boolean_type_info_internal =
    own_type("9d1c54e07b3a4f62a1e8c03f5b72d946", "ork_boolean", &boolean_variants);

constinit const ork_type_info _ip_address_type_info_internal =
    own_type("3f86a2d915c74be08d40e7b1962f0ca5", "ip_address", &ip_address_variants);

constinit const ork_type_info _link_type_type_info_internal =
    own_type("c47e0b9f63d8412a95f13a6d20e8b7f1", "link_type", &link_type_variants);

}  // extern "C"
