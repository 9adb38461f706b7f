#include "tools/wayfind/agent/counts.h"

#include <algorithm>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

using SetValue = void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*);

bool is_count(const wayfind_field& field) { return (field.roles & WAYFIND_ENTRIES) != 0; }

uint32_t entries_of(const wayfind_bundle& bundle, const DataFolder& data, ork_handle* client) {
  size_t entries = 0;
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    const wayfind_message& message = *bundle.members[i].message;
    const bool goes_out = message_type(message).is_valid(client) != 0;
    if (bundle.members[i].repeatable != 0 && goes_out) entries += data.messages(message)->size();
  }
  return static_cast<uint32_t>(entries);
}

}  // namespace

bool tells_counts(const wayfind_message& message) {
  return std::any_of(
      message.records, message.records + message.record_count, [](const wayfind_record* record) {
        return std::any_of(record->fields, record->fields + record->field_count, is_count);
      });
}

void fill_counts(const wayfind_bundle& bundle, const DataFolder& data, ork_handle* client,
                 const wayfind_message& message, void* msg) {
  const MessageType& type = message_type(message);
  for (unsigned slot = 0; slot < message.record_count; ++slot) {
    const wayfind_record& record = *message.records[slot];
    for (unsigned i = 0; i < record.field_count; ++i) {
      const wayfind_field& field = record.fields[i];
      if (!is_count(field)) continue;
      const uint32_t entries = field.counted != nullptr
                                   ? static_cast<uint32_t>(data.messages(*field.counted)->size())
                                   : entries_of(bundle, data, client);
      SetValue* set_value = nullptr;
      find_function(field.functions, "_set_value", set_value);
      uint32_t err = 0;
      set_value(data.handle(), ORK_NO_INSTANCE, type.record(data.handle(), msg, slot), entries,
                &err);
      expect_done(err, field.name);
    }
  }
}

}  // namespace wayfind
