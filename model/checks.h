// What must hold of a record's table. A row that breaks one of these sentences does not compile, and
// the error names the sentence, the type and the row.
#pragma once

#include <initializer_list>

#include "model/layout.h"

namespace model {

// The first sentence that does not hold, and the row that breaks it.
struct Fault {
  const char* sentence = "";
  const char* type = "";
  const char* row = "";
  size_t told = 0;   // where two numbers differ: what the table says,
  size_t given = 0;  // and what the fields give
  constexpr bool found() const { return sentence[0] != '\0'; }
};

// How a fault is told.
struct Text {
  char text[96]{};
  constexpr Text(const char* from) {
    for (size_t i = 0; from[i] != '\0' && i + 1 < sizeof text; ++i) text[i] = from[i];
  }
};
struct Told {
  size_t number;
};
struct Given {
  size_t number;
};

void this_row_is_wrong();  // has no body: a constant expression may not call it

// One compiler shows the texts among the arguments of a template, the other those of a function.
template <Text sentence, Text type, Text row, Told told, Given given>
constexpr bool holds(const char*, const char*, const char*, size_t, size_t) {
  if (sentence.text[0] != '\0') this_row_is_wrong();
  return true;
}
template <const Fault& fault>
constexpr bool none() {
  return holds<fault.sentence, fault.type, fault.row, Told{fault.told}, Given{fault.given}>(
      fault.sentence, fault.type, fault.row, fault.told, fault.given);
}

// One kind of row, and what holds of each.
template <class Row>
struct Rule {
  const char* sentence;
  bool (*holds)(const Row& row);
};

template <class Row, size_t N>
constexpr const char* first_broken(const Rule<Row> (&rules)[N], const Row& row) {
  for (const Rule<Row>& rule : rules) {
    if (!rule.holds(row)) return rule.sentence;
  }
  return "";
}

// A field among its neighbours. ------------------------------------------------

struct FieldPlace {
  const Record& record;
  const Field& field;
  bool is_first;
  bool is_last;

  constexpr const Field& before() const { return *(&field - 1); }
  constexpr const Field& after() const { return *(&field + 1); }
};

constexpr bool is_value_kind(Kind kind) {
  switch (kind) {
    case Kind::u_int8:
    case Kind::u_int16:
    case Kind::u_int32:
    case Kind::u_int64:
    case Kind::ork_boolean:
    case Kind::link_type:
    case Kind::enumeration: return true;
    case Kind::ip_address:
    case Kind::character:
    case Kind::flag_set:
    case Kind::record: return false;
  }
  return false;
}
constexpr bool is_object_kind(Kind kind) {
  return kind == Kind::record || kind == Kind::flag_set || kind == Kind::ip_address;
}
constexpr bool is_element_kind(Kind kind) {
  return kind == Kind::u_int8 || kind == Kind::u_int16 || kind == Kind::u_int32;
}
constexpr bool is_counter_kind(Kind kind) { return kind == Kind::u_int8 || kind == Kind::u_int32; }
constexpr bool is_number_kind(Kind kind) { return is_element_kind(kind) || kind == Kind::u_int64; }

constexpr bool has_counter(const FieldPlace& at) {
  return !at.is_first && at.before().cls == Class::counter;
}
// By name: under a sanitizer GCC does not take the comparison of two addresses for constant.
constexpr bool is_another_record(const FieldPlace& at) {
  return at.field.kind != Kind::record || !same_text(at.field.record->name, at.record.name);
}
// An object of any layout has its arrays moved and freed, so every layout has them.
constexpr bool is_in_every_layout(const FieldPlace& at) { return at.field.variant == 0; }

inline constexpr Rule<FieldPlace> name_rules[] = {
    {"the name of a field has at most max_field_name characters",
     [](const FieldPlace& at) { return length(at.field.name) <= max_field_name; }},
};
inline constexpr Rule<FieldPlace> first_field_rules[] = {
    {"the first field of a record is of variant 0",
     [](const FieldPlace& at) { return at.field.variant == 0; }},
};
inline constexpr Rule<FieldPlace> later_field_rules[] = {
    {"a variant never goes down from row to row",
     [](const FieldPlace& at) { return at.field.variant >= at.before().variant; }},
    {"a variant is at most one more than that of the row before",
     [](const FieldPlace& at) { return at.field.variant <= at.before().variant + 1; }},
    {"a record has at most max_variants variants",
     [](const FieldPlace& at) { return at.field.variant < max_variants; }},
};
inline constexpr Rule<FieldPlace> value_rules[] = {
    {"a value is a u_int8, u_int16, u_int32, u_int64, ork_boolean, link_type or enum",
     [](const FieldPlace& at) { return is_value_kind(at.field.kind); }},
};
inline constexpr Rule<FieldPlace> object_rules[] = {
    {"an object is a record, a flag set or an ip_address",
     [](const FieldPlace& at) { return is_object_kind(at.field.kind); }},
    {"a record does not hold itself", is_another_record},
};
inline constexpr Rule<FieldPlace> text_rules[] = {
    {"a text has room for a character", [](const FieldPlace& at) { return at.field.count > 0; }},
};
inline constexpr Rule<FieldPlace> counter_rules[] = {
    {"a counter is a u_int8 or u_int32",
     [](const FieldPlace& at) { return is_counter_kind(at.field.kind); }},
    {"a counter stands directly in front of its array",
     [](const FieldPlace& at) { return !at.is_last && is_array(at.after()); }},
};
inline constexpr Rule<FieldPlace> value_array_rules[] = {
    {"an array stands directly behind its counter", has_counter},
    {"an array is of variant 0", is_in_every_layout},
    {"the elements of a value array are u_int8, u_int16 or u_int32",
     [](const FieldPlace& at) { return is_element_kind(at.field.kind); }},
};
inline constexpr Rule<FieldPlace> record_array_rules[] = {
    {"an array stands directly behind its counter", has_counter},
    {"an array is of variant 0", is_in_every_layout},
    {"a record does not hold itself", is_another_record},
};

inline constexpr Rule<FieldPlace> role_rules[] = {
    {"a field that grows is a value of u_int8, u_int16, u_int32 or u_int64",
     [](const FieldPlace& at) {
       return !has(at.field.roles, grows) ||
              (at.field.cls == Class::value && is_number_kind(at.field.kind));
     }},
    {"a field that tells how many messages there are is a value of u_int32",
     [](const FieldPlace& at) {
       return !has(at.field.roles, entries) ||
              (at.field.cls == Class::value && at.field.kind == Kind::u_int32);
     }},
};

constexpr const char* first_broken(const FieldPlace& at) {
  if (const char* sentence = first_broken(name_rules, at); sentence[0] != '\0') return sentence;
  const char* sentence =
      at.is_first ? first_broken(first_field_rules, at) : first_broken(later_field_rules, at);
  if (sentence[0] != '\0') return sentence;
  sentence = first_broken(role_rules, at);
  if (sentence[0] != '\0') return sentence;
  switch (at.field.cls) {
    case Class::value: return first_broken(value_rules, at);
    case Class::object: return first_broken(object_rules, at);
    case Class::text: return first_broken(text_rules, at);
    case Class::counter: return first_broken(counter_rules, at);
    case Class::value_array: return first_broken(value_array_rules, at);
    case Class::record_array: return first_broken(record_array_rules, at);
  }
  return "";
}

constexpr Fault fault_of(const Record& record) {
  const size_t fields = field_count(record);
  if (fields == 0) return {"a record has a field", record.name};
  for (size_t i = 0; i < fields; ++i) {
    const Field* field = &record.fields[i];
    const char* sentence = first_broken({record, *field, i == 0, i + 1 == fields});
    if (sentence[0] != '\0') return {sentence, record.name, field->name};
  }
  return {};
}

// The numbers that peers and the runtime know a record by. ----------------------

// What the manifest says of it.
struct Manifest {
  uint16_t size;
};

struct Number {
  const char* sentence;
  size_t told;
  size_t given;
};

constexpr Fault first_wrong(const Record& record, const char* row,
                            std::initializer_list<Number> numbers) {
  for (const Number& number : numbers) {
    if (number.told != number.given)
      return {number.sentence, record.name, row, number.told, number.given};
  }
  return {};
}

// Rows hold offsets and sizes in 16 bits.
inline constexpr size_t size_limit = 65536;

inline constexpr const char* variant_names[max_variants] = {"variant 0", "variant 1", "variant 2",
                                                            "variant 3"};

constexpr Fault fault_of(const Record& record, size_t variant, const Sizes& told) {
  const Sizes given = sizes(record, variant);
  if (given.used + given.slop >= size_limit || given.state >= size_limit)
    return {"a body and its state block each have less than 64 KiB", record.name};
  return first_wrong(
      record, variant_names[variant],
      {
          {"the used length told is the one that the fields give", told.used, given.used},
          {"the slop told is the one that the fields give", told.slop, given.slop},
          {"the body size told is the one that the fields give", told.body, given.body},
          {"the state size told is the one that the fields give", told.state, given.state},
          {"the field numbers told end where those of the fields do", told.bound, given.bound},
      });
}

constexpr Fault fault_of(const Record& record, Manifest manifest,
                         std::initializer_list<Sizes> told) {
  if (const Fault fault = fault_of(record); fault.found()) return fault;
  const Number variants{"a record is told of in each of its variants", told.size(),
                        variant_count(record)};
  if (const Fault fault = first_wrong(record, "", {variants}); fault.found()) return fault;
  size_t variant = 0;
  for (const Sizes& numbers : told) {
    if (const Fault fault = fault_of(record, variant++, numbers); fault.found()) return fault;
  }
  const Number size{"the size told for the manifest is the one that the fields give", manifest.size,
                    digest_size(record)};
  return first_wrong(record, "", {size});
}

template <const Record& record, Manifest manifest, Sizes... told>
inline constexpr Fault layout_fault = fault_of(record, manifest, {told...});

// The rules of layout.h give the numbers told for a record, in each of its variants. A check,
// never a source.
template <const Record& record, Manifest manifest, Sizes... told>
constexpr bool layout_is() {
  return none<layout_fault<record, manifest, told...>>();
}

}  // namespace model
