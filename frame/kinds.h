// The one switch over the kinds of fields. Engines hand it a case for every kind, so a kind that is
// added to the schema does not compile until each of them has an answer for it.
#pragma once

#include "model/rows.h"

namespace frame {

using model::Class;
using model::FieldRow;
using model::Kind;

template <Kind K>
struct KindTag {};

template <class Visit>
[[gnu::always_inline]] inline decltype(auto) visit_kind(Kind kind, Visit&& visit) {
  switch (kind) {
    case Kind::u_int8: return visit(KindTag<Kind::u_int8>{});
    case Kind::u_int16: return visit(KindTag<Kind::u_int16>{});
    case Kind::u_int32: return visit(KindTag<Kind::u_int32>{});
    case Kind::u_int64: return visit(KindTag<Kind::u_int64>{});
    case Kind::ork_boolean: return visit(KindTag<Kind::ork_boolean>{});
    case Kind::link_type: return visit(KindTag<Kind::link_type>{});
    case Kind::ip_address: return visit(KindTag<Kind::ip_address>{});
    case Kind::character: return visit(KindTag<Kind::character>{});
    case Kind::enumeration: return visit(KindTag<Kind::enumeration>{});
    case Kind::flag_set: return visit(KindTag<Kind::flag_set>{});
    case Kind::record: return visit(KindTag<Kind::record>{});
  }
  __builtin_unreachable();
}

constexpr bool has_row(Class cls, Kind kind) {
  for (const FieldRow& row : model::field_rows) {
    if (row.cls == cls && row.kind == kind) return true;
  }
  return false;
}

// The case for a kind that no row of the class has. A row that is added with it does not compile.
template <Class C, Kind K>
[[noreturn]] inline void no_row() {
  static_assert(!has_row(C, K), "a row of this class has a kind that this engine does not know");
  __builtin_unreachable();
}

}  // namespace frame
