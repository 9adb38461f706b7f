// The tables as the engines read them at run time: every record and field as a small row of
// numbers, computed from the subject files while compiling. The rows hold no pointer, so they need
// no relocation; engines get them as arguments and know no type by name.
#pragma once

#include <array>

#include "model/layout.h"
#include "model/order.h"

namespace model {

template <class T, size_t N>
constexpr size_t count(const T (&)[N]) {
  return N;
}
inline constexpr size_t record_count = count(records);
inline constexpr size_t enum_count = count(enums);
inline constexpr size_t flag_set_count = count(flag_sets);
inline constexpr size_t message_count = count(messages);
inline constexpr size_t bundle_count = count(bundles);
inline constexpr size_t small_type_count = enum_count + flag_set_count;
inline constexpr size_t type_count = record_count + small_type_count + message_count;

inline constexpr uint8_t no_type = 0xFF;

// One field. Offsets count from the start of the object, state places from the start of the state
// block.
struct FieldRow {
  char name[max_field_name + 1];
  uint16_t index;  // among the fields of all records
  uint16_t offset;
  uint16_t width;    // bytes of a text, of an embedded value, or of one element of an array
  uint16_t state;    // the field's byte, or the entry of an array
  uint16_t nested;   // the state block of an embedded record
  uint16_t counter;  // offset of an array's counter
  Class cls;
  Kind kind;
  uint8_t variant;
  // row of an embedded or element record, or of an enum or flag set; no_type for primitives
  uint8_t type;
  uint8_t record;     // row of the record that has the field
  uint8_t array;      // number of an array among all arrays
  Kind counter_kind;  // of an array's counter
};

// What an object is when `variant_cap` names this variant.
struct Layout {
  uint16_t used;
  uint16_t body;
  uint16_t state;
  uint8_t fields;  // fields of the variants up to this one
  // fields that end inside the body: what an object of this layout can rise to in place
  uint8_t held;
  uint8_t bound;  // end of its field numbers
};

struct RecordRow {
  Layout layouts[max_variants];  // one per variant, oldest first
  uint16_t first;                // row of the first field; the others follow
  uint8_t fields;
  uint8_t variants;
  uint8_t index;
  bool embeds;       // has embedded records
  bool has_array;    // has a variable array of its own
  bool holds_array;  // or a record inside it has
  constexpr int newest() const { return variants - 1; }
  constexpr const Layout& newest_layout() const { return layouts[variants - 1]; }
};

constexpr size_t total_fields() {
  size_t n = 0;
  for (const Record* record : records) n += field_count(*record);
  return n;
}
inline constexpr size_t field_total = total_fields();

template <class T, size_t N>
constexpr uint8_t row_of(const T& what, const T* const (&table)[N]) {
  for (size_t i = 0; i < N; ++i) {
    if (same_text(table[i]->name, what.name)) return static_cast<uint8_t>(i);
  }
  return no_type;
}

// Enums and the flag set share one numbering: enums first.
constexpr uint8_t type_row(const Field& field) {
  if (field.kind == Kind::record) return row_of(*field.record, records);
  if (field.kind == Kind::enumeration) return row_of(*field.enumeration, enums);
  if (field.kind == Kind::flag_set)
    return static_cast<uint8_t>(enum_count + row_of(*field.flags, flag_sets));
  return no_type;
}

constexpr FieldRow field_row(const Record& record, size_t number) {
  const Field& field = record.fields[number];
  const StatePlace place = state_place(record, number);
  FieldRow row{};
  for (size_t i = 0; field.name[i] != '\0'; ++i) row.name[i] = field.name[i];
  row.offset = static_cast<uint16_t>(field_offset(record, number));
  row.width = static_cast<uint16_t>(element_width(field));
  row.state = static_cast<uint16_t>(place.entry);
  row.nested = static_cast<uint16_t>(place.nested);
  row.cls = field.cls;
  row.kind = field.kind;
  row.variant = field.variant;
  row.type = type_row(field);
  row.record = row_of(record, records);
  row.array = no_type;
  if (is_array(field)) {
    row.counter = static_cast<uint16_t>(field_offset(record, number - 1));
    row.counter_kind = record.fields[number - 1].kind;
  }
  return row;
}

constexpr auto make_field_rows() {
  std::array<FieldRow, field_total> rows{};
  size_t n = 0;
  uint8_t arrays = 0;
  for (const Record* record : records) {
    for (size_t i = 0; i < field_count(*record); ++i, ++n) {
      rows[n] = field_row(*record, i);
      rows[n].index = static_cast<uint16_t>(n);
      if (is_array(record->fields[i])) rows[n].array = arrays++;
    }
  }
  return rows;
}
inline constexpr auto field_rows = make_field_rows();

constexpr size_t count_arrays() {
  size_t n = 0;
  for (const FieldRow& row : field_rows) n += row.array != no_type ? 1 : 0;
  return n;
}
inline constexpr size_t array_count = count_arrays();

constexpr auto make_record_rows() {
  std::array<RecordRow, record_count> rows{};
  size_t first = 0;
  for (size_t r = 0; r < record_count; ++r) {
    const Record& record = *records[r];
    RecordRow& row = rows[r];
    row.variants = static_cast<uint8_t>(variant_count(record));
    row.fields = static_cast<uint8_t>(field_count(record));
    row.first = static_cast<uint16_t>(first);
    row.index = static_cast<uint8_t>(r);
    for (size_t v = 0; v < row.variants; ++v) {
      const Sizes size = sizes(record, v);
      row.layouts[v] = {static_cast<uint16_t>(size.used),
                        static_cast<uint16_t>(size.body),
                        static_cast<uint16_t>(size.state),
                        static_cast<uint8_t>(field_count(record, v)),
                        static_cast<uint8_t>(held_fields(record, size.body)),
                        static_cast<uint8_t>(size.bound)};
    }
    row.holds_array = holds_array(record);
    for (size_t i = 0; i < row.fields; ++i) {
      const Field& field = record.fields[i];
      row.embeds = row.embeds || (field.cls == Class::object && field.kind == Kind::record);
      row.has_array = row.has_array || is_array(field);
    }
    first += row.fields;
  }
  return rows;
}
inline constexpr auto record_rows = make_record_rows();

constexpr uint8_t value_count(const Enum& type) {
  uint8_t n = 0;
  while (n < max_values && type.values[n] != nullptr) ++n;
  return n;
}
constexpr uint8_t value_count(const FlagSet& type) {
  uint8_t n = 0;
  while (n < max_values && type.flags[n] != nullptr) ++n;
  return n;
}

// An enum or flag set: how many values or bits it has and where their texts are.
struct SmallRow {
  uint8_t index;  // among the enums and flag sets
  uint8_t values;
  uint8_t size;  // of an object
  bool is_flag_set;
  char texts[max_values][max_value_name + 1];
};

constexpr void copy_text(char* to, const char* from) {
  while (*from != '\0') *to++ = *from++;
}

constexpr auto make_small_rows() {
  std::array<SmallRow, small_type_count> rows{};
  for (size_t i = 0; i < small_type_count; ++i) {
    const bool flags = i >= enum_count;
    SmallRow& row = rows[i];
    row.index = static_cast<uint8_t>(i);
    row.is_flag_set = flags;
    row.size = flags ? 24 : 16;
    row.values = flags ? value_count(*flag_sets[i - enum_count]) : value_count(*enums[i]);
    for (size_t v = 0; v < row.values; ++v)
      copy_text(row.texts[v], flags ? flag_sets[i - enum_count]->flags[v] : enums[i]->values[v]);
  }
  return rows;
}
inline constexpr auto small_rows = make_small_rows();

inline constexpr const RecordRow& record_row(size_t index) { return record_rows[index]; }

// The fields of a record, in definition order.
struct FieldSpan {
  const FieldRow* first;
  const FieldRow* last;
  constexpr const FieldRow* begin() const { return first; }
  constexpr const FieldRow* end() const { return last; }
};
constexpr FieldSpan fields_of(const RecordRow& record) {
  return {&field_rows[record.first], &field_rows[record.first] + record.fields};
}
// Those that an object of `variant` has: none when it is negative.
constexpr FieldSpan fields_of(const RecordRow& record, int variant) {
  const size_t n =
      variant < 0 ? 0
                  : record.layouts[variant > record.newest() ? record.newest() : variant].fields;
  return {&field_rows[record.first], &field_rows[record.first] + n};
}

}  // namespace model
