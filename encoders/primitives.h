// The wire, text, XML and hash functions of the runtime's primitives, under one name each; and how
// encoders tell fields apart.
#pragma once

#include "encoders/walk.h"
#include "ork/superfasthash.h"

namespace encoders {

// Functions are static and take the object as void pointer, so that an engine can name them by
// kind.
template <Kind>
struct Coded;

#define WAYFIND_CODED(family, storage)                                                           \
  template <>                                                                                    \
  struct Coded<Kind::family> {                                                                   \
    using Storage = storage;                                                                     \
    static uint32_t marshal(const Call& c, uint8_t* to, const void* from, int32_t room) {        \
      return family##_marshal(c.handle, c.instance, to, static_cast<const Storage*>(from), room, \
                              c.err);                                                            \
    }                                                                                            \
    static uint32_t unmarshal(const Call& c, const uint8_t* from, void* to, int32_t room,        \
                              uint32_t reuse) {                                                  \
      return family##_unmarshal(c.handle, c.instance, from, static_cast<Storage*>(to), room,     \
                                reuse, c.err);                                                   \
    }                                                                                            \
    static uint32_t len(const Call& c, const void* of) {                                         \
      return family##_len(c.handle, c.instance, static_cast<const Storage*>(of));                \
    }                                                                                            \
    static uint32_t hash(const void* of, uint32_t seed) {                                        \
      return family##_hash(static_cast<const Storage*>(of), seed);                               \
    }                                                                                            \
    static uint32_t print(const Call& c, char* to, uint32_t indent, const char* name,            \
                          const void* of, int32_t room) {                                        \
      return family##_print(c.handle, c.instance, to, indent, name,                              \
                            static_cast<const Storage*>(of), room, c.err);                       \
    }                                                                                            \
    static uint32_t to_xml(const Call& c, const char* name, char* to, const void* of,            \
                           int32_t room, uint8_t state) {                                        \
      return family##_to_xml(c.handle, c.instance, name, to, static_cast<const Storage*>(of),    \
                             room, state, c.err);                                                \
    }                                                                                            \
    static void from_xml(const Call& c, const char* path, ork_xml* xml, void* to, char* text,    \
                         uint32_t text_len) {                                                    \
      family##_from_xml(c.handle, c.instance, path, xml, static_cast<Storage*>(to), c.err, text, \
                        text_len);                                                               \
    }                                                                                            \
  };

WAYFIND_CODED(u_int8, uint8_t)
WAYFIND_CODED(u_int16, uint16_t)
WAYFIND_CODED(u_int32, uint32_t)
WAYFIND_CODED(u_int64, uint64_t)
WAYFIND_CODED(ork_boolean, ork_boolean)
WAYFIND_CODED(link_type, ork_link_type)
WAYFIND_CODED(ip_address, ork_ip_address)
#undef WAYFIND_CODED

// How an encoder that is unrolled over the rows treats a field.
enum class Shape : uint8_t { single, counter, array };
constexpr Shape shape_of(const FieldRow& field) {
  switch (field.cls) {
    case Class::value:
    case Class::object:
    case Class::text: return Shape::single;
    case Class::counter: return Shape::counter;
    case Class::value_array:
    case Class::record_array: return Shape::array;
  }
  __builtin_unreachable();
}

// What a field is to an encoder that walks rows: one of the primitives above, or one of these.
struct FixedString {};
struct SmallType {};  // an enum or the flag set
struct WholeRecord {};

// A function for each of the four, as one visitor.
template <class... Case>
struct Cases : Case... {
  using Case::operator()...;
};
template <class... Case>
Cases(Case...) -> Cases<Case...>;

template <class Visit>
[[gnu::always_inline]] inline auto with_kind(Kind kind, Visit&& visit) {
  return frame::visit_kind(kind, [&]<Kind K>(frame::KindTag<K>) {
    if constexpr (K == Kind::character) {
      return visit(FixedString{});
    } else if constexpr (K == Kind::enumeration || K == Kind::flag_set) {
      return visit(SmallType{});
    } else if constexpr (K == Kind::record) {
      return visit(WholeRecord{});
    } else {
      return visit(Coded<K>{});
    }
  });
}

}  // namespace encoders
