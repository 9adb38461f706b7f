// Bytes of objects, and copies of them to compare with later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ork/orklib.h"

namespace kit {

inline uint8_t* bytes(void* obj) { return static_cast<uint8_t*>(obj); }

inline ork_object& header(void* obj) { return *static_cast<ork_object*>(obj); }

template <class T>
T load(const void* address) {
  T value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

template <class T>
void store(void* address, T value) {
  std::memcpy(address, &value, sizeof value);
}

// A copy of bytes to compare with later.
class Snapshot {
 public:
  Snapshot(const void* address, size_t size)
      : address_(static_cast<const uint8_t*>(address)), bytes_(address_, address_ + size) {}

  // Where the first byte differs now, or -1.
  ptrdiff_t first_change() const {
    for (size_t i = 0; i < bytes_.size(); ++i) {
      if (address_[i] != bytes_[i]) {
        return static_cast<ptrdiff_t>(i);
      }
    }
    return -1;
  }
  bool unchanged() const { return first_change() < 0; }
  const std::vector<uint8_t>& before() const { return bytes_; }
  const uint8_t* address() const { return address_; }
  bool covers(const void* at) const { return at >= address_ && at < address_ + bytes_.size(); }
  void take_again() { bytes_.assign(address_, address_ + bytes_.size()); }

 private:
  const uint8_t* address_;
  std::vector<uint8_t> bytes_;
};

}  // namespace kit
