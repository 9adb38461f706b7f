// How the records that hold one array and nothing else look in memory.
#pragma once

#include "behaviour/encoders/values.h"

namespace encoders {

struct ArrayEntry {
  uint8_t whole;
  uint8_t unused[7];
  uint8_t* elements;
};

// Both kinds of array begin with a count and a pointer behind it; the body of either record has 32
// bytes.
struct ArrayRecord {
  ork_object header;
  uint32_t count;
  void* block;
};

inline const ArrayRecord& array_of(const Object& object) {
  return *static_cast<const ArrayRecord*>(object.get());
}
inline ArrayEntry& entry_of(const Object& object) {
  return *reinterpret_cast<ArrayEntry*>(static_cast<uint8_t*>(object.get()) + 32);
}

}  // namespace encoders
