// The runtime's primitive families under one name each, so that an engine can be written once for all of them.
#pragma once

#include "frame/object.h"
#include "ork/primitives.h"

namespace frame {

// Values and counters: `Storage` is what lies in the object, `Value` what the accessors carry.
template <Kind>
struct Primitive;

#define WAYFIND_PRIMITIVE(family, storage, value)                                                                                    \
  template <>                                                                                                                        \
  struct Primitive<Kind::family> {                                                                                                   \
    using Storage = storage;                                                                                                         \
    using Value = value;                                                                                                             \
    static Storage* get(const Call& c, void* at) { return family##_get(c.handle, c.instance, static_cast<Storage*>(at), c.err); }    \
    static Value get_value(const Call& c, void* at) {                                                                                \
      return family##_get_value(c.handle, c.instance, static_cast<Storage*>(at), c.err);                                             \
    }                                                                                                                                \
    static void set(const Call& c, void* at, const void* from) {                                                                     \
      family##_set(c.handle, c.instance, static_cast<Storage*>(at), static_cast<const Storage*>(from), c.err);                       \
    }                                                                                                                                \
    static void set_value(const Call& c, void* at, Value v) {                                                                        \
      family##_set_value(c.handle, c.instance, static_cast<Storage*>(at), v, c.err);                                                 \
    }                                                                                                                                \
  };

WAYFIND_PRIMITIVE(u_int8, uint8_t, uint8_t)
WAYFIND_PRIMITIVE(u_int16, uint16_t, uint16_t)
WAYFIND_PRIMITIVE(u_int32, uint32_t, uint32_t)
WAYFIND_PRIMITIVE(u_int64, uint64_t, uint64_t)
WAYFIND_PRIMITIVE(ork_boolean, ork_boolean, ork_boolean)
WAYFIND_PRIMITIVE(link_type, ork_link_type, uint32_t)
#undef WAYFIND_PRIMITIVE

// Bytes of one element of a scalar array, as the runtime tells them.
inline size_t element_size(const ork_handle* handle, Kind kind) {
  ork_handle* h = const_cast<ork_handle*>(handle);
  switch (kind) {
    case Kind::u_int8: return u_int8_sizeof(h);
    case Kind::u_int16: return u_int16_sizeof(h);
    case Kind::u_int32: return u_int32_sizeof(h);
    case Kind::u_int64:
    case Kind::ork_boolean:
    case Kind::link_type:
    case Kind::ip_address:
    case Kind::character:
    case Kind::enumeration:
    case Kind::flag_set:
    case Kind::record: break;
  }
  return 0;
}

}  // namespace frame
