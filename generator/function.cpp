#include "generator/function.h"

#include "generator/identifier.h"

namespace generator {

using model::Kind;

std::string fill(std::string text, const Places& places) {
  for (const auto& [place, value] : places) {
    for (size_t at = 0; (at = text.find(place, at)) != std::string::npos; at += value.size())
      text.replace(at, place.size(), value);
  }
  return text;
}

Function luid_function(const std::string& type) {
  return {type + "_get_luid", "const uint8_t *",
          "struct ork_handle *handle, uint32_t instance, const void *obj, uint32_t *err", "",
          "Hands whatever it is given on to the runtime's ork_get_luid, and its answer back."};
}

const char* small_name(size_t type) {
  return type < model::enum_count ? model::enums[type]->name
                                  : model::flag_sets[type - model::enum_count]->name;
}

std::string record_table(size_t record) { return qualified<model::records>(record); }
std::string small_table(size_t type) {
  return type < model::enum_count ? qualified<model::enums>(type)
                                  : qualified<model::flag_sets>(type - model::enum_count);
}
std::string message_table(size_t message) { return qualified<model::messages>(message); }
std::string bundle_table(size_t bundle) { return qualified<model::bundles>(bundle); }
std::string row_of_table(const std::string& table) { return "model::row<" + table + ">"; }

const char* type_name(const model::FieldRow& field) {
  return field.kind == Kind::record ? model::records[field.type]->name : small_name(field.type);
}

const char* const* small_texts(size_t type) {
  return type < model::enum_count ? model::enums[type]->values
                                  : model::flag_sets[type - model::enum_count]->flags;
}

std::string storage_type(const model::FieldRow& field) {
  switch (field.kind) {
    case Kind::u_int8: return "uint8_t";
    case Kind::u_int16: return "uint16_t";
    case Kind::u_int32: return "uint32_t";
    case Kind::u_int64: return "uint64_t";
    case Kind::ork_boolean: return "ork_boolean";
    case Kind::link_type: return "struct ork_link_type";
    case Kind::ip_address: return "struct ork_ip_address";
    case Kind::character: return "char";
    case Kind::enumeration:
    case Kind::flag_set:
    case Kind::record: return std::string("struct ") + type_name(field);
  }
  return {};
}

std::string value_type(const model::FieldRow& field) {
  const bool number = field.kind == Kind::enumeration || field.kind == Kind::link_type;
  return number ? "uint32_t" : storage_type(field);
}

}  // namespace generator
