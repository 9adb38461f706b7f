#include "encoders/compare.h"

#include "encoders/primitives.h"

namespace encoders {
namespace {

template <class T>
int32_t compare_unsigned(const void* a, const void* b) {
  const T first = frame::load<T>(a);
  const T second = frame::load<T>(b);
  return first == second ? 0 : (first < second ? -1 : 1);
}

// Nulls sort first. True when that decides the order.
bool ordered_by_nulls(const void* a, const void* b, int32_t& order) {
  order = static_cast<int32_t>(a != nullptr) - static_cast<int32_t>(b != nullptr);
  return a == nullptr || b == nullptr;
}

int32_t compare_at(const void* a, const void* b, const FieldRow& field) {
  switch (field.kind) {
    case Kind::u_int8: return compare_unsigned<uint8_t>(a, b);
    case Kind::u_int16: return compare_unsigned<uint16_t>(a, b);
    case Kind::u_int32: return compare_unsigned<uint32_t>(a, b);
    case Kind::u_int64: return compare_unsigned<uint64_t>(a, b);
    case Kind::ork_boolean:
      return ork_boolean_compare(static_cast<const ork_boolean*>(a),
                                 static_cast<const ork_boolean*>(b));
    case Kind::ip_address:
      return ip_address_compare(static_cast<const ork_ip_address*>(a),
                                static_cast<const ork_ip_address*>(b));
    case Kind::link_type:
      return link_type_compare(static_cast<const ork_link_type*>(a),
                               static_cast<const ork_link_type*>(b));
    case Kind::character: return memcmp(a, b, field.width);
    case Kind::enumeration:
    case Kind::flag_set: return small_compare(a, b, frame::small_type(field));
    case Kind::record: return compare(a, b, frame::child_record(field));
  }
  __builtin_unreachable();
}

// The counters are equal: they precede their arrays, and have been compared. An array without its
// block counts as empty all the same, and then equals any other.
int32_t compare_array(const void* a, const void* b, const FieldRow& field) {
  const uint32_t first = frame::usable_count(a, field);
  const uint32_t second = frame::usable_count(b, field);
  const size_t count = first < second ? first : second;
  if (field.cls == Class::value_array) {
    return count != 0
               ? memcmp(frame::block_of(a, field), frame::block_of(b, field), count * field.width)
               : 0;
  }
  int32_t order = 0;
  for (size_t i = 0; i < count && order == 0; ++i) {
    order = compare(frame::element_at(a, field, i), frame::element_at(b, field, i),
                    frame::child_record(field));
  }
  return order;
}

uint32_t hash_at(const void* at, uint32_t seed, const FieldRow& field) {
  return with_kind(field.kind,
                   Cases{[&](WholeRecord) { return hash(at, seed, frame::child_record(field)); },
                         [&](SmallType) { return small_hash(at, seed, frame::small_type(field)); },
                         [&](FixedString) {
                           return SuperFastHash(static_cast<const char*>(at), field.width, seed);
                         },
                         [&]<Kind K>(Coded<K> coded) { return coded.hash(at, seed); }});
}

// The counter is hashed twice: as a field, and here as the array's length.
uint32_t hash_array(const void* object, uint32_t seed, const FieldRow& field) {
  const uint32_t count = frame::usable_count(object, field);
  const void* counter = frame::byte_at(object, field.counter);
  uint32_t running = frame::with_counter(field.counter_kind, [&]<Kind K>(frame::Primitive<K>) {
    return Coded<K>::hash(counter, seed);
  });
  if (field.cls == Class::value_array) {
    const uint64_t bytes = uint64_t{count} * field.width;
    const auto length = static_cast<uint32_t>(bytes < UINT32_MAX ? bytes : UINT32_MAX);
    return SuperFastHash(static_cast<const char*>(frame::block_of(object, field)), length, running);
  }
  for (uint32_t i = 0; i < count; ++i)
    running = hash(frame::element_at(object, field, i), running, frame::child_record(field));
  return running;
}

}  // namespace

int32_t compare(const void* a, const void* b, const RecordRow& record) {
  int32_t order = 0;
  if (ordered_by_nulls(a, b, order)) return order;
  const auto first = frame::fields_in_body(record, a);
  const auto second = frame::fields_in_body(record, b);
  for (const FieldRow& field : first.last < second.last ? first : second) {
    const bool array = field.array != model::no_type;
    order = array ? compare_array(a, b, field)
                  : compare_at(frame::field_of(a, field), frame::field_of(b, field), field);
    if (order != 0) return order;
  }
  return 0;
}

uint32_t hash(const void* object, uint32_t seed, const RecordRow& record) {
  if (object == nullptr) return seed;
  uint32_t running = seed;
  for (const FieldRow& field : frame::fields_in_body(record, object)) {
    const bool array = field.array != model::no_type;
    running = array ? hash_array(object, running, field)
                    : hash_at(frame::field_of(object, field), running, field);
  }
  return running;
}

int32_t small_compare(const void* a, const void* b, const SmallRow& type) {
  int32_t order = 0;
  if (ordered_by_nulls(a, b, order)) return order;
  if (type.is_flag_set) return frame::flag_bits(a) - frame::flag_bits(b);
  return static_cast<int32_t>(frame::enum_value(a) - frame::enum_value(b));
}

uint32_t small_hash(const void* object, uint32_t seed, const SmallRow& type) {
  if (object == nullptr) return seed;
  const size_t at = type.is_flag_set ? frame::at_flag_bits : frame::at_value;
  const uint32_t length = type.is_flag_set ? 1 : 4;
  return SuperFastHash(reinterpret_cast<const char*>(frame::byte_at(object, at)), length, seed);
}

}  // namespace encoders
