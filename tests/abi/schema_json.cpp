// Prints the schema as JSON, for tests that are written in another language.
#include <cstdio>

#include "tools/schema/wayfind_schema.h"

namespace {

constexpr const char* classes[] = {"value",   "object",      "text",
                                   "counter", "value array", "record array"};
constexpr const char* kinds[] = {"u_int8",      "u_int16",   "u_int32",    "u_int64",
                                 "ork_boolean", "link_type", "ip_address", "char",
                                 "enum",        "flag set",  "record"};

const char* comma(unsigned index, unsigned count) { return index + 1 < count ? "," : ""; }

void print_field(const wayfind_field& field) {
  std::printf(
      "{\"name\":\"%s\",\"class\":\"%s\",\"kind\":\"%s\",\"type\":\"%s\",\"variant\":%u,\"width\":%"
      "u,\"roles\":%u,\"counted\":\"%s\"}",
      field.name, classes[field.cls], kinds[field.kind],
      field.type_name != nullptr ? field.type_name : "", field.variant, field.width, field.roles,
      field.counted != nullptr ? field.counted->name : "");
}

void print_record(const wayfind_record& record) {
  std::printf("\"%s\":{\"luid\":\"%s\",\"variants\":%u,\"fields\":[", record.name, record.luid_text,
              record.variants);
  for (unsigned i = 0; i < record.field_count; ++i) {
    print_field(record.fields[i]);
    std::printf("%s", comma(i, record.field_count));
  }
  std::printf("]}");
}

void print_small_type(const wayfind_small_type& type) {
  std::printf("\"%s\":[", type.name);
  for (unsigned i = 0; i < type.values; ++i)
    std::printf("\"%s\"%s", type.texts[i], comma(i, type.values));
  std::printf("]");
}

void print_message(const wayfind_message& message) {
  std::printf("\"%s\":{\"luid\":\"%s\",\"records\":[", message.name, message.luid_text);
  for (unsigned i = 0; i < message.record_count; ++i)
    std::printf("\"%s\"%s", message.records[i]->name, comma(i, message.record_count));
  std::printf("],\"key\":[");
  for (unsigned i = 0; i < message.key_count; ++i)
    std::printf("\"%s\"%s", message.key[i], comma(i, message.key_count));
  std::printf("]}");
}

void print_luid(const uint8_t* luid) {
  std::printf("\"");
  for (unsigned i = 0; i < ORK_LUID_SIZE; ++i) std::printf("%02x", luid[i]);
  std::printf("\"");
}

void print_bundle(const wayfind_bundle& bundle) {
  std::printf("\"%s\":{\"luids\":[", bundle.name);
  for (unsigned i = 0; i < 3; ++i) {
    print_luid(bundle.luids[i]);
    std::printf("%s", comma(i, 3));
  }
  std::printf("],\"members\":[");
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    std::printf("[\"%s\",%u]%s", bundle.members[i].message->name, bundle.members[i].repeatable,
                comma(i, bundle.member_count));
  }
  std::printf("]}");
}

template <class Row>
void print_table(const char* name, const Row* rows, unsigned count, void (*print)(const Row&)) {
  std::printf("\"%s\":{", name);
  for (unsigned i = 0; i < count; ++i) {
    print(rows[i]);
    std::printf("%s\n", comma(i, count));
  }
  std::printf("}");
}

}  // namespace

int main() {
  std::printf("{");
  print_table("records", wayfind_records, wayfind_record_count, print_record);
  std::printf(",");
  print_table("types", wayfind_small_types, wayfind_small_type_count, print_small_type);
  std::printf(",");
  print_table("messages", wayfind_messages, wayfind_message_count, print_message);
  std::printf(",");
  print_table("bundles", wayfind_bundles, wayfind_bundle_count, print_bundle);
  std::printf("}\n");
}
