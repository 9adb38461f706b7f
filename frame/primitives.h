// The runtime's primitive families under one name each, so that an engine can be written once for
// all of them.
#pragma once

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

// Runs `use` with the primitive of a value whose kind is only known at run time. Kinds that are no
// such primitive are not asked for.
template <class Use>
[[gnu::always_inline]] inline auto with_value(Kind kind, Use&& use) {
  switch (kind) {
    case Kind::u_int8: return use(Primitive<Kind::u_int8>{});
    case Kind::u_int16: return use(Primitive<Kind::u_int16>{});
    case Kind::u_int32: return use(Primitive<Kind::u_int32>{});
    case Kind::u_int64: return use(Primitive<Kind::u_int64>{});
    case Kind::ork_boolean: return use(Primitive<Kind::ork_boolean>{});
    case Kind::link_type:
    case Kind::ip_address:
    case Kind::character:
    case Kind::enumeration:
    case Kind::flag_set:
    case Kind::record: break;
  }
  return use(Primitive<Kind::link_type>{});
}

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
  if (kind == Kind::u_int8) return use(Element<Kind::u_int8>{});
  if (kind == Kind::u_int16) return use(Element<Kind::u_int16>{});
  return use(Element<Kind::u_int32>{});
}

}  // namespace frame
