// The 28 messages with their functions, found once in the schema and called through their
// prototypes.
#pragma once

#include <string_view>

#include "ork/platform.h"
#include "tools/schema/wayfind_schema.h"

namespace wayfind {

// The function of a family; ends the process when the schema has none of that name.
void (*find_function(const wayfind_function* table, std::string_view suffix))();

template <class Function>
void find_function(const wayfind_function* table, std::string_view suffix, Function*& function) {
  function = reinterpret_cast<Function*>(find_function(table, suffix));
}

struct MessageType {
  using Text = uint32_t(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*);

  const wayfind_message* schema;
  void* (*create)(ork_handle*, uint32_t);
  void (*destroy)(ork_handle*, uint32_t, void*);
  uint32_t (*len)(ork_handle*, uint32_t, const void*);
  uint32_t (*is_valid)(ork_handle*);
  uint32_t (*marshal)(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*);
  ork_message_unmarshal_fn unmarshal;
  Text* print;
  Text* to_xml;
  void* (*from_xml)(ork_handle*, uint32_t, ork_xml*, uint32_t*, char*, uint32_t);

  // A record that msg carries; msg keeps it.
  void* record(ork_handle* handle, void* msg, unsigned slot) const;
};

const MessageType& message_type(const wayfind_message& schema);

// Null when no message has the name.
const MessageType* find_message_type(std::string_view name);

}  // namespace wayfind
