#include "tools/look/json_schema.h"

#include <nlohmann/json.hpp>

#include "tools/look/object.h"

namespace look {
namespace {

using Json = nlohmann::ordered_json;

Json reference(const std::string& name) { return {{"$ref", "#/$defs/" + name}}; }

Json integer(uint64_t least, uint64_t most) {
  return {{"type", "integer"}, {"minimum", least}, {"maximum", most}};
}

// A name, or the number of what has none.
Json named(const wayfind_small_type& type, uint64_t most) {
  Json names = Json::array();
  for (unsigned i = 0; i < type.values; ++i) names.push_back(type.texts[i]);
  return {{"anyOf", {{{"enum", names}}, integer(type.values, most)}}};
}

Json address() {
  const Json foreign = {{"type", "object"},
                        {"properties",
                         {{"family", integer(1, UINT8_MAX)},
                          {"bytes", {{"type", "string"}, {"pattern", "^[0-9a-f]{32}$"}}}}},
                        {"required", {"family", "bytes"}},
                        {"additionalProperties", false}};
  const Json known = {{"type", "string"}, {"pattern", "^[0-9a-f.:]+/[0-9]{1,3}$"}};
  return {{"anyOf", {{{"type", "null"}}, known, foreign}}};
}

// Each byte of a text may stand as \xNN.
Json text(unsigned width) { return {{"type", "string"}, {"maxLength", 4 * width}}; }

Json of_kind(const wayfind_field& field) {
  switch (field.kind) {
    case WAYFIND_U_INT8: return integer(0, UINT8_MAX);
    case WAYFIND_U_INT16: return integer(0, UINT16_MAX);
    case WAYFIND_U_INT32:
    case WAYFIND_LINK_TYPE: return integer(0, UINT32_MAX);
    case WAYFIND_U_INT64: return {{"type", "string"}, {"pattern", "^(0|[1-9][0-9]{0,19})$"}};
    case WAYFIND_ORK_BOOLEAN: return {{"type", "boolean"}};
    case WAYFIND_IP_ADDRESS: return reference("address");
    case WAYFIND_CHAR: return text(field.width);
    case WAYFIND_ENUM: return reference(field.type_name);
    case WAYFIND_FLAG_SET:
      return {{"type", "array"}, {"items", reference(field.type_name)}, {"uniqueItems", true}};
    case WAYFIND_RECORD: return reference(field.type_name);
  }
  return {};
}

Json of_field(const wayfind_field& field) {
  Json told = is_array(field) ? Json{{"type", "array"}, {"items", of_kind(field)}} : of_kind(field);
  told["description"] = field.meaning;
  return told;
}

// An element's state, or one for each element of an array.
Json states() {
  const Json state = integer(0, UINT8_MAX);
  const Json several = {{"type", "array"}, {"items", state}};
  return {{"type", "object"}, {"additionalProperties", {{"anyOf", {state, several}}}}};
}

// The fields of the oldest variant are there unless the object has none at all.
Json of_record(const wayfind_record& record) {
  Json properties = Json::object();
  Json required = Json::array();
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_COUNTER) continue;
    properties[field.name] = of_field(field);
    if (field.variant == 0) required.push_back(field.name);
  }
  properties["@states"] = reference("states");
  return {{"description", record.meaning}, {"type", "object"},
          {"properties", properties},      {"additionalProperties", false},
          {"if", {{"minProperties", 1}}},  {"then", {{"required", required}}}};
}

Json of_message(const wayfind_message& message) {
  Json properties = {{"message", {{"const", message.name}}}};
  Json required = {"message"};
  for (unsigned slot = 0; slot < message.record_count; ++slot) {
    properties[message.records[slot]->name] = reference(message.records[slot]->name);
    required.push_back(message.records[slot]->name);
  }
  return {{"description", message.meaning},
          {"type", "object"},
          {"properties", properties},
          {"required", required},
          {"additionalProperties", false}};
}

Json definitions() {
  Json all = {{"address", address()}, {"states", states()}};
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    const wayfind_small_type& type = wayfind_small_types[i];
    all[type.name] = named(type, type.is_flag_set != 0 ? 7 : UINT32_MAX);
  }
  for (unsigned i = 0; i < wayfind_record_count; ++i)
    all[wayfind_records[i].name] = of_record(wayfind_records[i]);
  for (unsigned i = 0; i < wayfind_message_count; ++i)
    all[wayfind_messages[i].name] = of_message(wayfind_messages[i]);
  return all;
}

}  // namespace

std::string json_schema() {
  Json messages = Json::array();
  for (unsigned i = 0; i < wayfind_message_count; ++i)
    messages.push_back(reference(wayfind_messages[i].name));
  const Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                       {"$id", "urn:wayfind:show:" + std::to_string(json_form)},
                       {"title", "Messages of a show"},
                       {"type", "array"},
                       {"items", {{"anyOf", messages}}},
                       {"$defs", definitions()}};
  return schema.dump(2) + "\n";
}

}  // namespace look
