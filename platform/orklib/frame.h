// The frame of a message: the header, the LUID, then its records.
#pragma once

#include <cstdint>
#include <cstring>

#include "ork/handle.h"
#include "room.h"

namespace ork {

// The header on the wire: the five members in their order, then 11 bytes of zero.
namespace header_offset {
constexpr size_t marker = 0;
constexpr size_t filler = 1;
constexpr size_t sttr_marker = 7;
constexpr size_t sequence = 8;
constexpr size_t length = 12;
constexpr size_t spare = 16;
}  // namespace header_offset

// Header and LUID, the least that a frame has.
constexpr uint32_t frame_minimum = ORK_MESSAGE_HEADER_WIRE_SIZE + ORK_LUID_SIZE;

inline void put_header(uint8_t* bytes, const ork_message_header& header) {
  put(bytes + header_offset::marker, header.marker);
  std::memcpy(bytes + header_offset::filler, header.filler, sizeof header.filler);
  put(bytes + header_offset::sttr_marker, header.sttr_marker);
  put(bytes + header_offset::sequence, header.sequence);
  put(bytes + header_offset::length, header.length);
  std::memset(bytes + header_offset::spare, 0, ORK_MESSAGE_HEADER_WIRE_SIZE - header_offset::spare);
}

inline ork_message_header take_header(const uint8_t* bytes) {
  ork_message_header header;
  header.marker = take<uint8_t>(bytes + header_offset::marker);
  std::memcpy(header.filler, bytes + header_offset::filler, sizeof header.filler);
  header.sttr_marker = take<uint8_t>(bytes + header_offset::sttr_marker);
  header.sequence = take<uint32_t>(bytes + header_offset::sequence);
  header.length = take<uint32_t>(bytes + header_offset::length);
  return header;
}

}  // namespace ork
