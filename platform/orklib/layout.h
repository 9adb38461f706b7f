// How large the body of an object is.
#pragma once

#include <cstdint>

#include "ork/handle.h"

namespace ork {

// The body of a layout whose fields end at used_length: 8 spare bytes up to 64, 16 above, whole
// words.
constexpr uint32_t body_size(uint32_t used_length) {
  return ((used_length + 7) & ~7U) + (used_length <= 64 ? 8 : 16);
}

// The variant whose layout the object's storage has. A cap outside the table means the newest.
inline int layout_of(const ork_object& object, const ork_variant_info& variants) {
  const auto cap = static_cast<int8_t>(object.variant_cap);
  return cap >= 0 && cap < variants.n_variants ? cap : variants.n_variants - 1;
}

}  // namespace ork
