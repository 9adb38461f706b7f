#include "tools/look/object.h"

#include <algorithm>
#include <cstring>

namespace look {
namespace {

// Where an enum keeps its value and a flag set its bits: behind the object header.
constexpr size_t enum_value_offset = 12;
constexpr size_t flag_bits_offset = ORK_OBJECT_HEADER_SIZE;

template <class T>
T load(const uint8_t* at) {
  T loaded;
  std::memcpy(&loaded, at, sizeof loaded);
  return loaded;
}

}  // namespace

std::span<const wayfind_field> fields(const Object& object) {
  const wayfind_record& record = *object.record;
  const int variant = ork_get_instance_variant(object.at, 1, 0);
  if (variant < 0) return {};
  return {record.fields, record.layouts[std::min(variant, record.variants - 1)].fields};
}

Elements elements(const Object& object, const wayfind_field& array) {
  const wayfind_field& counter = *(&array - 1);  // stands in front of its array
  const auto* first = load<const uint8_t*>(object.at + array.offset);
  const auto count = static_cast<uint32_t>(number(value(object, counter)));
  return {&array, first, first != nullptr ? count : 0};
}

uint64_t number(const Value& value) {
  switch (value.field->kind) {
    case WAYFIND_U_INT8: return *value.at;
    case WAYFIND_U_INT16: return load<uint16_t>(value.at);
    case WAYFIND_U_INT32: return load<uint32_t>(value.at);
    case WAYFIND_U_INT64: return load<uint64_t>(value.at);
    case WAYFIND_ORK_BOOLEAN: return load<uint32_t>(value.at) != 0 ? 1 : 0;
    case WAYFIND_LINK_TYPE: return load<ork_link_type>(value.at).value;
    case WAYFIND_ENUM: return load<uint32_t>(value.at + enum_value_offset);
    case WAYFIND_FLAG_SET: return value.at[flag_bits_offset];
    case WAYFIND_CHAR:
    case WAYFIND_IP_ADDRESS:
    case WAYFIND_RECORD: break;
  }
  return 0;
}

std::string_view text(const Value& value) {
  const auto* chars = reinterpret_cast<const char*>(value.at);
  return {chars, strnlen(chars, value.field->width)};
}

const ork_ip_address& address(const Value& value) {
  return *reinterpret_cast<const ork_ip_address*>(value.at);
}

}  // namespace look
