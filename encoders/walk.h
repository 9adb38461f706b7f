// Visiting the fields of a record at compile time: straight-line code for the encoders that run
// most.
#pragma once

#include <utility>

#include "frame/array.h"
#include "frame/small_type.h"
#include "frame/whole_record.h"

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

// Calls visit.operator()<row>() for the fields that `variant` admits, in definition order, until
// one answers false.
template <size_t R, size_t V, class Visit>
[[gnu::always_inline]] inline bool walk_variant(int variant, Visit& visit) {
  constexpr const RecordRow& record = model::record_rows[R];
  constexpr size_t first = record.first + (V == 0 ? 0 : record.layouts[V == 0 ? 0 : V - 1].fields);
  constexpr size_t last = record.first + record.layouts[V].fields;
  if (variant < static_cast<int>(V)) return false;
  return [&]<size_t... I>(std::index_sequence<I...>) __attribute__((always_inline)) {
    return (visit.template operator()<first + I>() && ...);
  }
  (std::make_index_sequence<last - first>{});
}
template <size_t R, class Visit>
[[gnu::always_inline]] inline bool walk(int variant, Visit&& visit) {
  bool whole = true;
  [&]<size_t... V>(std::index_sequence<V...>) __attribute__((always_inline)) {
    // A variant that the object lacks ends the walk, but not as a failure.
    (void)((variant >= static_cast<int>(V) && (whole = walk_variant<R, V>(variant, visit))) && ...);
  }
  (std::make_index_sequence<model::record_rows[R].variants>{});
  return whole;
}

}  // namespace encoders
