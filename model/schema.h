// The vocabulary in which model/subjects/ says what exists: records of fields, enums, the flag set,
// messages, bundles.
//
// A subject file is one table per type and nothing else. Whatever follows from a table (offsets,
// sizes, state bytes, field numbers, trace entries, call-site tags, exported functions, their
// prototypes and documentation) is derived from it: at compile time in layout.h and rows.h, at
// build time by generator/. None of the structures of this file reaches the built library: they
// only exist while compiling.
#pragma once

#include <cstddef>
#include <cstdint>

namespace model {

// The access class of a field decides which accessors it has.
enum class Class : uint8_t { value, object, text, counter, value_array, record_array };

// What a field, or an element of an array, is made of.
enum class Kind : uint8_t {
  u_int8,
  u_int16,
  u_int32,
  u_int64,
  ork_boolean,
  link_type,
  ip_address,
  character,
  enumeration,
  flag_set,
  record,
};

struct Primitive {
  Kind kind;
};
inline constexpr Primitive u_int8{Kind::u_int8};
inline constexpr Primitive u_int16{Kind::u_int16};
inline constexpr Primitive u_int32{Kind::u_int32};
inline constexpr Primitive u_int64{Kind::u_int64};
inline constexpr Primitive ork_boolean{Kind::ork_boolean};
inline constexpr Primitive link_type{Kind::link_type};
inline constexpr Primitive ip_address{Kind::ip_address};

// One identity of a type: the LUID that peers know it by, and the hash of its definition in the
// build manifest, both as hexadecimal digits.
struct Identity {
  const char* luid;
  const char* definition;
};

inline constexpr size_t max_values = 8;
inline constexpr size_t max_fields = 40;
inline constexpr size_t max_variants = 4;
inline constexpr size_t max_members = 6;
inline constexpr size_t max_key = 3;

// What names may measure, in characters: they lie in rows and descriptors of fixed size.
inline constexpr size_t max_type_name = 63;
inline constexpr size_t max_field_name = 27;
inline constexpr size_t max_value_name = 47;

struct Enum {
  const char* name;
  Identity identity;
  const char* meaning;
  const char* values[max_values];  // texts of the values 0, 1, ...; a null ends them
};

struct FlagSet {
  const char* name;
  Identity identity;
  const char* meaning;
  const char* flags[max_values];  // texts of the bits 0, 1, ...; a null ends them
};

struct Record;

// What a field is there for, as far as tools have to know; the library asks for none of it. A row
// tells it behind its meaning: `grows`, `stamp | column`.
struct Roles {
  uint8_t bits = 0;
  const char* counted = nullptr;  // the message that count_of names
};
inline constexpr Roles grows{1};     // counts events: how fast it grows tells something
inline constexpr Roles stamp{2};     // when something happened
inline constexpr Roles column{4};    // stands in a table unless other columns are asked for
inline constexpr Roles asked{8};     // what a show asked for
inline constexpr Roles entries{16};  // how many messages repeat in the show
// How many messages of that name there are, whatever the show.
constexpr Roles count_of(const char* message) { return {entries.bits, message}; }

constexpr Roles operator|(Roles a, Roles b) {
  return {static_cast<uint8_t>(a.bits | b.bits), a.counted != nullptr ? a.counted : b.counted};
}
constexpr bool has(Roles roles, Roles one) { return (roles.bits & one.bits) != 0; }

struct Field {
  const char* name;
  Class cls;
  Kind kind;
  uint8_t variant;          // the oldest variant that holds the field
  uint16_t count;           // characters of a text, else 1
  const Record* record;     // of an embedded record or a record array
  const Enum* enumeration;  // of an enum
  const FlagSet* flags;     // of a flag set
  const char* meaning;
  Roles roles;
};

struct Record {
  const char* name;
  Identity identity;
  const char* meaning;
  Field fields[max_fields];  // in definition order; a null name ends them
};

// What a message carries, in wire order; most carry one record.
struct Load {
  const Record* records[2];
  uint8_t count;
  constexpr Load(const Record* only) : records{only, nullptr}, count(1) {}
  constexpr Load(const Record* first, const Record* second) : records{first, second}, count(2) {}
};

// What tells one message from the others of its type: paths to values of its records, as
// "hop_chan.hop_chan_id".
struct Key {
  const char* paths[max_key]{};
  bool is_told = false;
};
template <class... Paths>
constexpr Key key(Paths... paths) {
  return {{paths...}, true};
}
inline constexpr Key no_key{{}, true};  // nothing does

struct Message {
  const char* name;
  Identity identity;
  const char* meaning;
  Load load;
  Key key{};  // of one that a bundle repeats it has to be told
};

enum class Occurs : uint8_t { once, repeatedly };

struct Member {
  const char* name;
  const Message* message;
  Occurs occurs;
};

// Identities of the three control messages of a bundle; they have no definition hash, as the
// manifest does not list them.
struct Control {
  const char* start;
  const char* abort;
  const char* commit;
};

struct Bundle {
  const char* name;
  Control luids;
  const char* meaning;
  // in table order; every table ends with the request message of the show core, which no row names
  Member members[max_members];
};

// Rows. -----------------------------------------------------------------------

constexpr Field value(const char* name, Primitive type, uint8_t variant, const char* meaning,
                      Roles roles = {}) {
  return {name, Class::value, type.kind, variant, 1, nullptr, nullptr, nullptr, meaning, roles};
}
constexpr Field value(const char* name, const Enum& type, uint8_t variant, const char* meaning,
                      Roles roles = {}) {
  return {name,    Class::value, Kind::enumeration, variant, 1,
          nullptr, &type,        nullptr,           meaning, roles};
}
constexpr Field object(const char* name, Primitive type, uint8_t variant, const char* meaning,
                       Roles roles = {}) {
  return {name, Class::object, type.kind, variant, 1, nullptr, nullptr, nullptr, meaning, roles};
}
constexpr Field object(const char* name, const Record& type, uint8_t variant, const char* meaning,
                       Roles roles = {}) {
  return {name, Class::object, Kind::record, variant, 1, &type, nullptr, nullptr, meaning, roles};
}
constexpr Field object(const char* name, const FlagSet& type, uint8_t variant, const char* meaning,
                       Roles roles = {}) {
  return {name, Class::object, Kind::flag_set, variant, 1, nullptr, nullptr, &type, meaning, roles};
}
constexpr Field text(const char* name, uint16_t size, uint8_t variant, const char* meaning,
                     Roles roles = {}) {
  return {name,    Class::text, Kind::character, variant, size,
          nullptr, nullptr,     nullptr,         meaning, roles};
}
// A counter stands directly in front of the array that it counts.
constexpr Field counter(const char* name, Primitive type, uint8_t variant, const char* meaning,
                        Roles roles = {}) {
  return {name, Class::counter, type.kind, variant, 1, nullptr, nullptr, nullptr, meaning, roles};
}
constexpr Field value_array(const char* name, Primitive type, uint8_t variant, const char* meaning,
                            Roles roles = {}) {
  return {name, Class::value_array, type.kind, variant, 1, nullptr, nullptr, nullptr, meaning,
          roles};
}
constexpr Field record_array(const char* name, const Record& type, uint8_t variant,
                             const char* meaning, Roles roles = {}) {
  return {name, Class::record_array, Kind::record, variant, 1, &type, nullptr, nullptr, meaning,
          roles};
}

// Members of a bundle.
constexpr Member once(const Message& message) { return {message.name, &message, Occurs::once}; }
constexpr Member repeatedly(const Message& message) {
  return {message.name, &message, Occurs::repeatedly};
}
// A type that is no message; order_checks.h refuses it by its name.
template <class Type>
constexpr Member once(const Type& type) {
  return {type.name, nullptr, Occurs::once};
}
template <class Type>
constexpr Member repeatedly(const Type& type) {
  return {type.name, nullptr, Occurs::repeatedly};
}

// Texts. ----------------------------------------------------------------------

constexpr size_t length(const char* text) {
  size_t n = 0;
  while (text[n] != '\0') ++n;
  return n;
}
constexpr bool same_text(const char* a, const char* b) {
  while (*a != '\0' && *a == *b) ++a, ++b;
  return *a == *b;
}

}  // namespace model
