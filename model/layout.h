// The four size rules: where each field of a record lies, and how large objects and their state
// blocks are, variant by variant.
#pragma once

#include "model/schema.h"

namespace model {

// type slot 8, variant 1, newest variant laid out for 1, flags 1
inline constexpr size_t header_size = 11;
// one byte for the whole array, 7 unused, the pointer to one byte per element
inline constexpr size_t array_entry_size = 16;

// The numbers of one variant of a record: sizes in bytes, and where its field numbers end.
struct Sizes {
  uint32_t used;   // end of the variant's last field, header included
  uint32_t slop;   // from there to the end of the newest body
  uint32_t body;   // object laid out for this variant as its newest
  uint32_t state;  // its state block
  uint32_t bound;  // end of its field numbers
};

constexpr size_t round_up(size_t n, size_t multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

constexpr size_t field_count(const Record& record) {
  size_t n = 0;
  while (n < max_fields && record.fields[n].name != nullptr) ++n;
  return n;
}

constexpr size_t variant_count(const Record& record) {
  return record.fields[field_count(record) - 1].variant + size_t{1};
}

// How many fields an object of `variant` has.
constexpr size_t field_count(const Record& record, size_t variant) {
  size_t n = 0;
  while (n < field_count(record) && record.fields[n].variant <= variant) ++n;
  return n;
}

// End of the range of field numbers of `variant`: one number more than fields at each step to a
// later variant, for its jump marker.
constexpr size_t field_number_bound(const Record& record, size_t variant) {
  return field_count(record, variant) + variant;
}

constexpr bool is_array(const Field& field) {
  return field.cls == Class::value_array || field.cls == Class::record_array;
}

constexpr bool holds_array(const Record& record) {
  for (size_t i = 0; i < field_count(record); ++i) {
    const Field& field = record.fields[i];
    if (is_array(field) ||
        (field.cls == Class::object && field.kind == Kind::record && holds_array(*field.record)))
      return true;
  }
  return false;
}

constexpr size_t body_size(size_t used) {
  const size_t rounded = round_up(used, 8);
  return rounded + (used <= 64 ? 8 : 16);
}

constexpr size_t newest_body_size(const Record& record);

// Bytes of one value of the kind: of a field that is no array, or of an array's element.
constexpr size_t element_width(const Field& field) {
  switch (field.kind) {
    case Kind::u_int8: return 1;
    case Kind::u_int16: return 2;
    case Kind::u_int32: return 4;
    case Kind::u_int64: return 8;
    case Kind::ork_boolean: return 4;
    case Kind::link_type: return 16;
    case Kind::ip_address: return 48;
    case Kind::character: return field.count;
    case Kind::enumeration: return 16;
    case Kind::flag_set: return 24;
    case Kind::record: return newest_body_size(*field.record);
  }
  return 0;
}

constexpr size_t width(const Field& field) { return is_array(field) ? 8 : element_width(field); }

constexpr size_t alignment(const Field& field) {
  if (is_array(field)) return 8;
  switch (field.kind) {
    case Kind::u_int8:
    case Kind::character: return 1;
    case Kind::u_int16: return 2;
    case Kind::u_int32:
    case Kind::ork_boolean: return 4;
    case Kind::u_int64:
    case Kind::link_type:
    case Kind::ip_address:
    case Kind::enumeration:
    case Kind::flag_set:
    case Kind::record: return 8;
  }
  return 0;
}

// End of the first `fields` fields, counted from the start of the object.
constexpr size_t field_end(const Record& record, size_t fields) {
  size_t end = header_size;
  for (size_t i = 0; i < fields; ++i)
    end = round_up(end, alignment(record.fields[i])) + width(record.fields[i]);
  return end;
}
constexpr size_t field_offset(const Record& record, size_t index) {
  return round_up(field_end(record, index), alignment(record.fields[index]));
}

constexpr size_t used_length(const Record& record, size_t variant) {
  return field_end(record, field_count(record, variant));
}

// What the manifest says of a record: the newest variant's fields without the room behind them.
constexpr size_t digest_size(const Record& record) {
  return round_up(used_length(record, variant_count(record) - 1), 8);
}

constexpr size_t newest_body_size(const Record& record) {
  return body_size(used_length(record, variant_count(record) - 1));
}

// How many fields end within the first `body` bytes.
constexpr size_t held_fields(const Record& record, size_t body) {
  size_t n = 0;
  while (n < field_count(record) && field_offset(record, n) + width(record.fields[n]) <= body) ++n;
  return n;
}

// The state block: a running offset over the fields.
struct StatePlace {
  size_t entry;   // the field's byte, or the entry of an array
  size_t nested;  // the embedded record's own block
  size_t end;
};

constexpr size_t state_size(const Record& record, size_t variant);

constexpr StatePlace state_place(const Field& field, size_t offset) {
  if (field.cls == Class::counter) return {offset, offset, offset};
  if (is_array(field)) {
    const size_t entry = round_up(offset, 8);
    return {entry, entry, entry + array_entry_size};
  }
  if (field.kind != Kind::record) return {offset, offset, offset + 1};
  const size_t nested = holds_array(*field.record) ? round_up(offset + 1, 8) : offset + 1;
  return {offset, nested, nested + state_size(*field.record, variant_count(*field.record) - 1)};
}

constexpr StatePlace state_place(const Record& record, size_t index) {
  size_t offset = 0;
  for (size_t i = 0; i < index; ++i) offset = state_place(record.fields[i], offset).end;
  return state_place(record.fields[index], offset);
}

constexpr size_t state_size(const Record& record, size_t variant) {
  size_t offset = 0;
  bool aligned = false;
  for (size_t i = 0; i < field_count(record, variant); ++i) {
    const Field& field = record.fields[i];
    offset = state_place(field, offset).end;
    aligned =
        aligned || is_array(field) || (field.kind == Kind::record && holds_array(*field.record));
  }
  return aligned ? round_up(offset, 8) : offset;
}

constexpr Sizes sizes(const Record& record, size_t variant) {
  const size_t used = used_length(record, variant);
  return {.used = static_cast<uint32_t>(used),
          .slop = static_cast<uint32_t>(newest_body_size(record) - used),
          .body = static_cast<uint32_t>(body_size(used)),
          .state = static_cast<uint32_t>(state_size(record, variant)),
          .bound = static_cast<uint32_t>(field_number_bound(record, variant))};
}

}  // namespace model
