#include "tools/look/message.h"

#include <array>
#include <string>
#include <vector>

#include "tools/look/function.h"

namespace look {
namespace {

using Get = void*(ork_handle*, uint32_t, void*, uint32_t*);
using Getters = std::array<Get*, 2>;

std::vector<Getters> all_getters() {
  std::vector<Getters> all(wayfind_message_count);
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    const wayfind_message& message = wayfind_messages[i];
    for (unsigned slot = 0; slot < message.record_count; ++slot) {
      const std::string suffix = std::string("_") + message.records[slot]->name + "_get";
      all[i][slot] = function<Get>(message.functions, suffix);
    }
  }
  return all;
}

}  // namespace

Message::Message(ork_handle* handle, const wayfind_message& schema, void* message)
    : type(&schema), msg(message) {
  static const std::vector<Getters> getters = all_getters();
  const Getters& get = getters[static_cast<size_t>(&schema - wayfind_messages)];
  uint32_t err = 0;
  for (unsigned slot = 0; slot < schema.record_count; ++slot)
    at[slot] = static_cast<const uint8_t*>(get[slot](handle, ORK_NO_INSTANCE, msg, &err));
}

const wayfind_member* member_of(const wayfind_bundle& bundle, const wayfind_message& message) {
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    if (bundle.members[i].message == &message) return &bundle.members[i];
  }
  return nullptr;
}

}  // namespace look
