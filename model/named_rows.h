// Rows by the names of what they describe, for templates and for generated code: symbols, profiles
// and back traces then name a table where a number would say nothing.
#pragma once

#include "model/trace_plan.h"

namespace model {

constexpr const RecordRow& row_for(const Record& record) {
  return record_rows[row_of(record, records)];
}
constexpr const SmallRow& row_for(const Enum& type) { return small_rows[row_of(type, enums)]; }
constexpr const SmallRow& row_for(const FlagSet& type) {
  return small_rows[enum_count + row_of(type, flag_sets)];
}
constexpr const MessageRow& row_for(const Message& message) {
  return message_rows[row_of(message, messages)];
}
constexpr const BundleRow& row_for(const Bundle& bundle) {
  return bundle_rows[row_of(bundle, bundles)];
}

// The row of a record, an enum, the flag set, a message or a bundle: row<hop_chan_data>.
template <const auto& Table>
inline constexpr const auto& row = row_for(Table);

// The row of a record's field, counted from 0 in definition order.
template <const Record& R, size_t N>
inline constexpr const FieldRow& field_at = field_rows[row<R>.first + N];

// A name as a template argument.
template <size_t N>
struct Name {
  char text[N];
  constexpr Name(const char (&name)[N]) {
    for (size_t i = 0; i < N; ++i) text[i] = name[i];
  }
};

constexpr size_t field_number(const Record& record, const char* name) {
  for (size_t n = 0; n < field_count(record); ++n) {
    if (same_text(record.fields[n].name, name)) return n;
  }
  __builtin_unreachable();  // not constant: a name that the record has not does not compile
}

// The row of a record's field: field<hop_chan_st, "dscp">.
template <const Record& R, Name N>
inline constexpr const FieldRow& field = field_at<R, field_number(R, N.text)>;

// The row of a record in a message, counted from 0 in wire order.
template <const Message& M, size_t Slot = 0>
inline constexpr const CarriedRow& carried = carried_rows[row<M>.carried + Slot];

}  // namespace model
