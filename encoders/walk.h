// Visiting the fields of a record at compile time: straight-line code for marshal, unmarshal and
// length.
#pragma once

#include <utility>

#include "frame/array.h"
#include "frame/enum_type.h"
#include "frame/flag_set.h"
#include "model/named_rows.h"

namespace encoders {

using frame::Call;
using frame::FieldRow;
using frame::Form;
using frame::Function;
using frame::Kind;
using frame::Layout;
using frame::RecordRow;
using frame::SmallRow;
using frame::Tracking;
using model::Class;
using model::Record;

// The visitor is a lambda with the field's number as template argument, so that its row is a
// constant in it. A walk is two unrolled loops: over the variants, with one comparison each, and
// over the fields that each variant adds. `(f<I>() && ...)` is f<0>() && f<1>() && ..., which stops
// at the first false.
//
// Calls visit.operator()<number>() for the fields that `variant` admits, in definition order, until
// one answers false.
template <const Record& R, size_t V, class Visit>
[[gnu::always_inline]] inline bool walk_variant(int variant, Visit& visit) {
  constexpr const RecordRow& record = model::row<R>;
  constexpr size_t first = V == 0 ? 0 : record.layouts[V == 0 ? 0 : V - 1].fields;
  constexpr size_t last = record.layouts[V].fields;
  if (variant < static_cast<int>(V)) return false;
  return [&]<size_t... I>(std::index_sequence<I...>) __attribute__((always_inline)) {
    return (visit.template operator()<first + I>() && ...);
  }
  (std::make_index_sequence<last - first>{});
}
template <const Record& R, class Visit>
[[gnu::always_inline]] inline bool walk(int variant, Visit&& visit) {
  bool whole = true;
  [&]<size_t... V>(std::index_sequence<V...>) __attribute__((always_inline)) {
    // A variant that the object lacks ends the walk without making it a failure.
    (void)((variant >= static_cast<int>(V) && (whole = walk_variant<R, V>(variant, visit))) && ...);
  }
  (std::make_index_sequence<model::row<R>.variants>{});
  return whole;
}

}  // namespace encoders
