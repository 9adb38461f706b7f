#include "generator/names.h"

#include "generator/identifier.h"

namespace generator {
namespace {

using model::Kind;

const model::FlagSet& flag_set(size_t type) { return *model::flag_sets[type - model::enum_count]; }
bool is_enum(size_t type) { return type < model::enum_count; }

}  // namespace

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

const char* small_name(size_t type) {
  return is_enum(type) ? model::enums[type]->name : flag_set(type).name;
}
const char* const* small_texts(size_t type) {
  return is_enum(type) ? model::enums[type]->values : flag_set(type).flags;
}
const model::Identity& small_identity(size_t type) {
  return is_enum(type) ? model::enums[type]->identity : flag_set(type).identity;
}
const char* small_meaning(size_t type) {
  return is_enum(type) ? model::enums[type]->meaning : flag_set(type).meaning;
}

const char* type_name(const model::FieldRow& field) {
  return field.kind == Kind::record ? model::records[field.type]->name : small_name(field.type);
}

std::string record_table(size_t record) { return qualified<model::records>(record); }
std::string small_table(size_t type) {
  return is_enum(type) ? qualified<model::enums>(type)
                       : qualified<model::flag_sets>(type - model::enum_count);
}
std::string message_table(size_t message) { return qualified<model::messages>(message); }
std::string bundle_table(size_t bundle) { return qualified<model::bundles>(bundle); }
std::string row_of_table(const std::string& table) { return "model::row<" + table + ">"; }

}  // namespace generator
