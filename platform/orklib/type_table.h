// The type table of shared storage: one copy of each descriptor, which all objects in that storage
// point at.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string_view>
#include <vector>

#include "ork/handle.h"

namespace ork {

class TypeTable {
 public:
  // The handle's shared_alloc_fn and table functions; pool and table are a TypeTable. Any thread.
  static void* alloc(void* pool, uint32_t instance, size_t size);
  static ork_type_info* find(void* table, uint32_t instance, const char* luid_text);
  static uint32_t add(void* table, uint32_t instance, const char* luid_text, ork_type_info* copy);

  template <typename Visit>
  void each(Visit visit) const {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, type] : types_) {
      visit(*type);
    }
  }

 private:
  void* take(size_t size);

  mutable std::mutex mutex_;
  std::deque<std::vector<std::max_align_t>> memory_;  // lives as long as the table
  std::map<std::string_view, ork_type_info*> types_;  // keys lie inside the copies
};

}  // namespace ork
