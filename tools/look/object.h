// Records of a received message and the values in them, read where they lie.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "tools/schema/wayfind_schema.h"

namespace look {

inline bool is_array(const wayfind_field& field) {
  return field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
}

// A record, or one that is embedded in it or an element of its array.
struct Object {
  const wayfind_record* record;
  const uint8_t* at;
};

// The value of a field, or of an element when the field is an array.
struct Value {
  const wayfind_field* field;
  const uint8_t* at;
};

struct Elements {
  const wayfind_field* field;
  const uint8_t* first;
  uint32_t count;
  Value operator[](uint32_t i) const { return {field, first + size_t{i} * field->width}; }
};

// The fields that the object's variant has, in the order of the record.
std::span<const wayfind_field> fields(const Object& object);
inline bool holds(const Object& object, const wayfind_field& field) {
  return static_cast<size_t>(&field - object.record->fields) < fields(object).size();
}

// Of a field that is no array.
inline Value value(const Object& object, const wayfind_field& field) {
  return {&field, object.at + field.offset};
}
// Of an array. One whose elements could not be had has none, whatever its counter says.
Elements elements(const Object& object, const wayfind_field& array);

// A value as what it is. A number: integers, link types, 0 or 1 of a boolean, an enum's number, the
// bits of a flag set.
uint64_t number(const Value& value);
// A text's bytes as they are, up to its end.
std::string_view text(const Value& value);
const ork_ip_address& address(const Value& value);
inline Object object(const Value& value) { return {value.field->record, value.at}; }

}  // namespace look
