#include "tools/wayfind/client/text_bound.h"

#include <algorithm>
#include <cstring>

namespace wayfind {
namespace {

constexpr size_t indent_step = 2;
constexpr size_t index_text = 12;    // "[4294967295]"
constexpr size_t record_image = 6;   // variant, flags and jump in front of its fields
constexpr size_t longest_byte = 6;   // "&quot;"; an escaped byte has 4
constexpr size_t tag_text = 24;      // brackets, slash, line ends, state="255"
constexpr size_t line_text = 8;      // what stands around name and value
constexpr size_t number_text = 20;   // of 64 bits
constexpr size_t address_text = 96;  // an IPv6 address in any notation, its prefix or its bytes

size_t size_of(const char* text) { return std::strlen(text); }

bool is_array(const wayfind_field& field) {
  return field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
}

// The fewest bytes on the wire.
size_t least_image(const wayfind_field& field) {
  switch (field.kind) {
    case WAYFIND_U_INT16: return 2;
    case WAYFIND_U_INT32: return 4;
    case WAYFIND_U_INT64: return 8;
    case WAYFIND_IP_ADDRESS: return 18;
    case WAYFIND_RECORD: return record_image;
    case WAYFIND_LINK_TYPE:
    case WAYFIND_ENUM: return 5;
    case WAYFIND_U_INT8:
    case WAYFIND_ORK_BOOLEAN:
    case WAYFIND_CHAR:
    case WAYFIND_FLAG_SET: return 1;
  }
  return 1;
}

}  // namespace

TextBound::TextBound(const wayfind_message& message, bool xml) : xml_(xml) {
  fixed_ = line(size_of(message.name), 0, 0) + 1;  // and the NUL behind all
  for (unsigned i = 0; i < message.record_count; ++i) add_record(*message.records[i], 1, false);
}

// An element's own fields, whichever its variant, have a longest text for each byte of their image;
// what is embedded in it has an image of its own.
void TextBound::add_record(const wayfind_record& record, size_t depth, bool in_array) {
  const unsigned newest = record.variants - 1u;
  const size_t name = std::max<size_t>(size_of(record.name), 64) + size_of(record.name);
  const size_t frame = line(name + index_text, 0, depth);
  if (!in_array) fixed_ += frame + fields_text(record, newest, depth + 1);
  for (unsigned variant = 0; in_array && variant <= newest; ++variant) {
    size_t image = record_image;
    for (unsigned i = 0; i < record.field_count; ++i) {
      const wayfind_field& field = record.fields[i];
      if (field.variant <= variant && field.record == nullptr && !is_array(field))
        image += field.kind == WAYFIND_CHAR ? 1 : least_image(field);
    }
    const size_t text = frame + fields_text(record, variant, depth + 1);
    per_byte_ = std::max(per_byte_, text / image + 1);
  }
  if (in_array) per_byte_ = std::max(per_byte_, frame / record_image + 1);
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (is_array(field)) {
      add_array(field, depth + 1);
    } else if (field.record != nullptr) {
      add_record(*field.record, depth + 1, in_array);
    }
  }
}

void TextBound::add_array(const wayfind_field& field, size_t depth) {
  if (field.record != nullptr) return add_record(*field.record, depth, true);
  const size_t text = field_text(field, depth) + index_text;
  per_byte_ = std::max(per_byte_, text / least_image(field) + 1);
}

// Without arrays and what is embedded.
size_t TextBound::fields_text(const wayfind_record& record, unsigned variant, size_t depth) const {
  size_t text = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.variant <= variant && field.record == nullptr && !is_array(field))
      text += field_text(field, depth);
  }
  return text;
}

size_t TextBound::field_text(const wayfind_field& field, size_t depth) const {
  size_t value = number_text;
  if (field.kind == WAYFIND_CHAR) value = longest_byte * field.width;
  if (field.kind == WAYFIND_IP_ADDRESS || field.kind == WAYFIND_LINK_TYPE) value = address_text;
  if (field.type != nullptr) {
    value = line(size_of(field.type->name), number_text + line_text, 0);
    for (unsigned i = 0; i < field.type->values; ++i)
      value += size_of(field.type->texts[i]) + line_text;
  }
  return line(size_of(field.name), value, depth);
}

// The most that a name, a value and what stands around them take.
size_t TextBound::line(size_t name, size_t value, size_t depth) const {
  return xml_ ? 2 * name + tag_text + value : 2 * indent_step * depth + name + value + line_text;
}

}  // namespace wayfind
