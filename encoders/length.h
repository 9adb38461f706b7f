// How many bytes to reserve for an image. With tracking on this is an upper bound; it leaves out ra
// data and does not ask the domain.
#pragma once

#include "encoders/primitives.h"
#include "encoders/small_wire.h"

namespace encoders {

inline constexpr uint32_t base_length = 6;  // variant, flags, jump

template <const Record& R>
uint64_t length_body(const Call& call, const void* object);

// Elements that hold arrays themselves differ in length and are summed one by one.
template <const Record& R>
constexpr bool has_fixed_length = !model::row<R>.holds_array;

template <const Record& R, size_t N>
[[gnu::always_inline]] inline uint64_t array_length(const Call& call, const void* object) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  const uint64_t count = object != nullptr ? frame::usable_count(object, field) : 0;
  const void* first = count != 0 ? frame::element_at(object, field, 0) : nullptr;
  if constexpr (field.kind != Kind::record) {
    return count * Coded<field.kind>::len(call, first);
  } else if constexpr (has_fixed_length<*model::records[field.type]>) {
    return count * length_body<*model::records[field.type]>(call, first);
  } else {
    uint64_t sum = 0;
    for (uint32_t i = 0; i < count; ++i)
      sum += length_body<*model::records[field.type]>(call, frame::element_at(object, field, i));
    return sum;
  }
}

template <const Record& R, size_t N>
[[gnu::always_inline]] inline uint64_t field_length(const Call& call, const void* object) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  const void* at = object != nullptr ? frame::field_of(object, field) : nullptr;
  if constexpr (shape_of(field) == Shape::array) {
    return array_length<R, N>(call, object);
  } else if constexpr (field.kind == Kind::character) {
    return object != nullptr
               ? field.width * char_len(call.handle, call.instance, static_cast<const char*>(at))
               : 0;
  } else if constexpr (field.kind == Kind::record) {
    return length_body<*model::records[field.type]>(call, at);
  } else if constexpr (field.kind == Kind::enumeration) {
    return enum_length;
  } else if constexpr (field.kind == Kind::flag_set) {
    return flag_set_length;
  } else {
    return Coded<field.kind>::len(call, at);
  }
}

// State bytes as counted here: one per field, a fixed string with one per character besides, an
// array with one for the whole.
template <const Record& R, size_t N>
[[gnu::always_inline]] inline uint64_t state_length(const void* object) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  constexpr Shape shape = shape_of(field);
  if constexpr (shape == Shape::counter) {
    return 0;
  } else if constexpr (shape == Shape::array) {
    return 1u + frame::usable_count(object, field);
  } else {
    static_assert(shape == Shape::single);
    return field.kind == Kind::character ? field.width + 1u : 1u;
  }
}

template <const Record& R>
uint64_t length_body(const Call& call, const void* object) {
  constexpr const RecordRow& record = model::row<R>;
  const int variant = frame::variant_of(object);
  uint64_t length = base_length;
  walk<R>(
      variant, [&]<size_t N>() __attribute__((always_inline)) {
        length += field_length<R, N>(call, object);
        return true;
      });
  if (object == nullptr || frame::checked_mode<Function::len>(call.handle, record) != Tracking::on)
    return length;
  walk<R>(
      variant, [&]<size_t N>() __attribute__((always_inline)) {
        length += state_length<R, N>(object);
        return true;
      });
  return length;
}

template <const Record& R>
uint32_t length(ork_handle* handle, uint32_t instance, const void* object) {
  const uint64_t bytes = length_body<R>(frame::DetachedCall(handle, instance), object);
  return bytes < UINT32_MAX ? static_cast<uint32_t>(bytes) : UINT32_MAX;
}
template <const Record& R>
uint32_t length_cr(ork_handle* handle, const void* object) {
  if (handle->cr_error != 0) return 0;
  return length<R>(handle, handle->cr_instance, object);
}

}  // namespace encoders
