// Where the state bytes of embedded records and array elements lie: the distance from each object
// to its block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace ork {

class Mapping {
 public:
  void set(const void* object, int32_t distance) noexcept {
    distances_[address(object)] = distance;
  }

  std::optional<int32_t> find(const void* object) const {
    const auto found = distances_.find(address(object));
    return found != distances_.end() ? std::optional(found->second) : std::nullopt;
  }

  void drop(const void* object) { distances_.erase(address(object)); }

  // Drops what is known of all objects in a block that goes.
  void drop_range(const void* block, size_t size) {
    if (!distances_.empty()) {
      distances_.erase(distances_.lower_bound(address(block)),
                       distances_.lower_bound(address(block) + size));
    }
  }

  size_t size() const { return distances_.size(); }

 private:
  static uintptr_t address(const void* object) { return reinterpret_cast<uintptr_t>(object); }

  std::map<uintptr_t, int32_t> distances_;  // ordered, so that a block is one range
};

}  // namespace ork
