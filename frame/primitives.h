// The runtime's primitive families under one name each, so that an engine can be written once for
// all of them.
#pragma once

#include "frame/kinds.h"
#include "frame/object.h"
#include "ork/primitives.h"

namespace frame {

// Values and counters: `Storage` is what lies in the object, `Value` what the accessors carry.
template <Kind>
struct Primitive;

#define WAYFIND_PRIMITIVE(family, storage, value)                                        \
  template <>                                                                            \
  struct Primitive<Kind::family> {                                                       \
    using Storage = storage;                                                             \
    using Value = value;                                                                 \
    static Storage* get(const Call& c, void* at) {                                       \
      return family##_get(c.handle, c.instance, static_cast<Storage*>(at), c.err);       \
    }                                                                                    \
    static Value get_value(const Call& c, void* at) {                                    \
      return family##_get_value(c.handle, c.instance, static_cast<Storage*>(at), c.err); \
    }                                                                                    \
    static void set(const Call& c, void* at, const void* from) {                         \
      family##_set(c.handle, c.instance, static_cast<Storage*>(at),                      \
                   static_cast<const Storage*>(from), c.err);                            \
    }                                                                                    \
    static void set_value(const Call& c, void* at, Value v) {                            \
      family##_set_value(c.handle, c.instance, static_cast<Storage*>(at), v, c.err);     \
    }                                                                                    \
  };

WAYFIND_PRIMITIVE(u_int8, uint8_t, uint8_t)
WAYFIND_PRIMITIVE(u_int16, uint16_t, uint16_t)
WAYFIND_PRIMITIVE(u_int32, uint32_t, uint32_t)
WAYFIND_PRIMITIVE(u_int64, uint64_t, uint64_t)
WAYFIND_PRIMITIVE(ork_boolean, ork_boolean, ork_boolean)
WAYFIND_PRIMITIVE(link_type, ork_link_type, uint32_t)
#undef WAYFIND_PRIMITIVE

// Elements of arrays of values: their size is the runtime's to tell, and they can stand alone as
// scratch values.
template <Kind>
struct Element;

#define WAYFIND_ELEMENT(family)                                                          \
  template <>                                                                            \
  struct Element<Kind::family> : Primitive<Kind::family> {                               \
    static size_t size(const Call& c) { return family##_sizeof(c.handle); }              \
    static void* create(const Call& c) { return family##_create(c.handle, c.instance); } \
    static void destroy(const Call& c, void* scratch) {                                  \
      family##_destroy(c.handle, c.instance, static_cast<Storage*>(scratch));            \
    }                                                                                    \
  };

WAYFIND_ELEMENT(u_int8)
WAYFIND_ELEMENT(u_int16)
WAYFIND_ELEMENT(u_int32)
#undef WAYFIND_ELEMENT

template <class Use>
[[gnu::always_inline]] inline auto with_element(Kind kind, Use&& use) {
  using Result = decltype(use(Element<Kind::u_int8>{}));
  return visit_kind(kind, [&]<Kind K>(KindTag<K>) -> Result {
    if constexpr (requires { sizeof(Element<K>); }) {
      return use(Element<K>{});
    } else {
      no_row<Class::value_array, K>();
    }
  });
}

// Runs `use` with the primitive of an array's counter.
template <class Use>
[[gnu::always_inline]] inline auto with_counter(Kind kind, Use&& use) {
  using Result = decltype(use(Primitive<Kind::u_int8>{}));
  return visit_kind(kind, [&]<Kind K>(KindTag<K>) -> Result {
    if constexpr (K == Kind::u_int8 || K == Kind::u_int32) {
      return use(Primitive<K>{});
    } else {
      no_row<Class::counter, K>();
    }
  });
}

}  // namespace frame
