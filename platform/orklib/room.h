// Numbers in a buffer of known room. Nothing else in the runtime touches the bytes of a frame.
#pragma once

#include <cerrno>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ork/handle.h"

namespace ork {

void fail(ork_handle* handle, uint32_t* err, uint32_t number);

// True if size bytes may be touched; otherwise *err is set, by now or here.
inline bool has_room(ork_handle* handle, int32_t remaining, int32_t size, uint32_t* err) {
  if (*err != 0) {
    return false;
  }
  if (remaining < size) {
    fail(handle, err, EMSGSIZE);
    return false;
  }
  return true;
}

template <std::unsigned_integral Number>
constexpr Number swapped_to_network(Number value) {
  if constexpr (sizeof value == 2) {
    return __builtin_bswap16(value);
  } else if constexpr (sizeof value == 4) {
    return __builtin_bswap32(value);
  } else if constexpr (sizeof value == 8) {
    return __builtin_bswap64(value);
  } else {
    return value;
  }
}

template <std::unsigned_integral Number>
void put(uint8_t* bytes, Number value) {
  const Number swapped = swapped_to_network(value);
  std::memcpy(bytes, &swapped, sizeof swapped);
}

template <std::unsigned_integral Number>
Number take(const uint8_t* bytes) {
  Number swapped;
  std::memcpy(&swapped, bytes, sizeof swapped);
  return swapped_to_network(swapped);
}

template <std::unsigned_integral Number>
uint32_t marshal(ork_handle* handle, uint8_t* buffer, Number value, int32_t remaining,
                 uint32_t* err) {
  if (!has_room(handle, remaining, sizeof value, err)) {
    return 0;
  }
  put(buffer, value);
  return sizeof value;
}

template <std::unsigned_integral Number>
uint32_t unmarshal(ork_handle* handle, const uint8_t* buffer, Number* target, int32_t remaining,
                   uint32_t* err) {
  if (!has_room(handle, remaining, sizeof *target, err)) {
    return 0;
  }
  *target = take<Number>(buffer);
  return sizeof *target;
}

}  // namespace ork
