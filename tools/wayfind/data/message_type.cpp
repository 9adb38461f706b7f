#include "tools/wayfind/data/message_type.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace wayfind {
namespace {

using Accessor = void*(ork_handle*, uint32_t, void*, uint32_t*);

MessageType with_functions(const wayfind_message& schema) {
  MessageType type{};
  type.schema = &schema;
  find_function(schema.functions, "_create", type.create);
  find_function(schema.functions, "_destroy", type.destroy);
  find_function(schema.functions, "_len", type.len);
  find_function(schema.functions, "_is_valid_cr", type.is_valid);
  find_function(schema.functions, "_marshal", type.marshal);
  find_function(schema.functions, "_unmarshal", type.unmarshal);
  find_function(schema.functions, "_print", type.print);
  find_function(schema.functions, "_to_xml", type.to_xml);
  find_function(schema.functions, "_from_xml", type.from_xml);
  return type;
}

std::vector<MessageType> all_with_functions() {
  std::vector<MessageType> types;
  for (unsigned i = 0; i < wayfind_message_count; ++i)
    types.push_back(with_functions(wayfind_messages[i]));
  return types;
}

const std::vector<MessageType>& all() {
  static const std::vector<MessageType> types = all_with_functions();
  return types;
}

}  // namespace

void (*find_function(const wayfind_function* table, std::string_view suffix))() {
  for (const wayfind_function* row = table; row->suffix != nullptr; ++row) {
    if (row->suffix == suffix) return row->address;
  }
  std::abort();
}

void* MessageType::record(ork_handle* handle, void* msg, unsigned slot) const {
  Accessor* get = nullptr;
  find_function(schema->functions, "_" + std::string(schema->records[slot]->name) + "_get", get);
  uint32_t err = 0;
  return get(handle, ORK_NO_INSTANCE, msg, &err);
}

const MessageType& message_type(const wayfind_message& schema) {
  return all()[static_cast<size_t>(&schema - wayfind_messages)];
}

const MessageType* find_message_type(std::string_view name) {
  for (const MessageType& type : all()) {
    if (type.schema->name == name) return &type;
  }
  return nullptr;
}

}  // namespace wayfind
