#include "ork/superfasthash.h"

#include <cstring>

#include "support/export.h"

namespace {

uint32_t load16(const uint8_t* bytes) {
  uint16_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// The published form reads a lone byte as a signed char; the hash values depend on it.
uint32_t load_signed(uint8_t byte) {
  return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(byte)));
}

}  // namespace

extern "C" ORK_EXPORT uint32_t SuperFastHash(const void* data, uint32_t length, uint32_t seed) {
  if (length == 0) {
    return seed;
  }
  const auto* bytes = static_cast<const uint8_t*>(data);
  uint32_t hash = seed;
  for (uint32_t pairs = length / 4; pairs > 0; --pairs, bytes += 4) {
    hash += load16(bytes);
    const uint32_t high = (load16(bytes + 2) << 11) ^ hash;
    hash = (hash << 16) ^ high;
    hash += hash >> 11;
  }
  switch (length % 4) {
    case 3:
      hash += load16(bytes);
      hash ^= hash << 16;
      hash ^= load_signed(bytes[2]) << 18;
      hash += hash >> 11;
      break;
    case 2:
      hash += load16(bytes);
      hash ^= hash << 11;
      hash += hash >> 17;
      break;
    case 1:
      hash += load_signed(bytes[0]);
      hash ^= hash << 10;
      hash += hash >> 1;
      break;
    case 0: break;
  }
  hash ^= hash << 3;
  hash += hash >> 5;
  hash ^= hash << 4;
  hash += hash >> 17;
  hash ^= hash << 25;
  hash += hash >> 6;
  return hash;
}
