// What a release knows: its types and messages with their numbers of variants.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ork/handle.h"

namespace ork {

using Luid = std::array<uint8_t, ORK_LUID_SIZE>;

inline Luid luid_at(const uint8_t* bytes) {
  Luid luid;
  std::memcpy(luid.data(), bytes, luid.size());
  return luid;
}

// Peers choose LUIDs, so no look-up may lean on their being random: an ordered map has no worst case
// to aim at.
template <typename Value>
using LuidMap = std::map<Luid, Value>;

}  // namespace ork

struct ork_type_list {
  struct Entry {
    std::string name;
    ork::Luid luid;
    uint32_t variants;
  };

  // False if the LUID is there already.
  bool add(std::string_view name, const ork::Luid& luid, uint32_t variants);

  // 0: not in the list.
  uint32_t variants(const ork::Luid& luid) const;

  std::vector<Entry> entries;

 private:
  ork::LuidMap<uint32_t> variants_;
};

namespace ork {

ork_type_list types_of_modules();
ork_type_list common_types(const ork_type_list& a, const ork_type_list& b);

}  // namespace ork
