// What the two ends of a link both know.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "ork/handle.h"
#include "type_list.h"

namespace ork {

// The newest variant of each type that the peer and this process's own release both know.
class Domain {
 public:
  // Either may be null: it then stands in the way of nothing.
  void learn(const ork_type_list* peer, const ork_type_list* own_release);

  // -1: not carried.
  int8_t newest_variant(const ork_type_info& type) const;

 private:
  LuidMap<int8_t> newest_;
};

// The last answers for the descriptors in use: every object that is made asks for its type.
class DomainCache {
 public:
  template <typename LookUp>
  int8_t get(const ork_type_info* type, LookUp look_up) {
    Slot& slot = slots_[(reinterpret_cast<uintptr_t>(type) >> 4) % slots_.size()];
    // A module loaded where another was unloaded may have its descriptor at the same address.
    uint64_t luid_part;
    std::memcpy(&luid_part, type->luid, sizeof luid_part);
    if (slot.type != type || slot.luid_part != luid_part) {
      slot = {type, luid_part, look_up()};
    }
    return slot.variant;
  }

  void clear() { slots_.fill({}); }

 private:
  struct Slot {
    const ork_type_info* type = nullptr;
    uint64_t luid_part = 0;
    int8_t variant = 0;
  };

  std::array<Slot, 256> slots_;
};

// The newest variant that a descriptor itself names.
inline int8_t newest_of(const ork_type_info& type) {
  return static_cast<int8_t>(type.varinfo != nullptr ? type.varinfo->n_variants - 1 : 0);
}

}  // namespace ork
