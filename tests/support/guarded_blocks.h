// Blocks of a handle with guards on both sides: whoever writes there fails the test, and under the
// address sanitizer whoever reads there as well.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>

#include "ork/orklib.h"

#if defined(__SANITIZE_ADDRESS__)
#define WAYFIND_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define WAYFIND_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef WAYFIND_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace kit {

// From its making to its end every block of the handle is exactly as long as it was asked for. One
// at a time; blocks from before have no guards, and its own blocks have to go before it does.
class GuardedBlocks {
 public:
  static constexpr size_t guard = 256;

  // `pattern` fills the guards, and new blocks as well.
  explicit GuardedBlocks(ork_handle* handle, uint8_t pattern = 0xA5)
      : handle_(handle), pattern_(pattern) {
    current_ = this;
    alloc_ = std::exchange(handle->alloc_fn, alloc);
    free_ = std::exchange(handle->free_fn, release);
  }
  ~GuardedBlocks() {
    EXPECT_TRUE(sizes_.empty()) << sizes_.size() << " guarded blocks still live";
    handle_->alloc_fn = alloc_;
    handle_->free_fn = free_;
    current_ = nullptr;
  }
  GuardedBlocks(const GuardedBlocks&) = delete;
  GuardedBlocks& operator=(const GuardedBlocks&) = delete;

  // False when a guard of any live block was written to.
  bool whole() const {
    return std::all_of(sizes_.begin(), sizes_.end(),
                       [](const auto& block) { return is_whole(block.first, block.second); });
  }

 private:
  static void* alloc(void* pool, uint32_t number, size_t size) {
    auto* const front = static_cast<uint8_t*>(current_->alloc_(pool, number, size + 2 * guard));
    if (front == nullptr) return nullptr;
    std::memset(front, current_->pattern_, size + 2 * guard);
    uint8_t* const block = front + guard;
    current_->sizes_[block] = size;
    poison(block, size);
    return block;
  }
  static void release(void* pool, uint32_t number, void* address) {
    auto* const block = static_cast<uint8_t*>(address);
    const auto found = current_->sizes_.find(block);
    if (found == current_->sizes_.end()) return current_->free_(pool, number, address);
    EXPECT_TRUE(is_whole(block, found->second))
        << "written to outside a block of " << found->second << " bytes";
    unpoison(block, found->second);
    current_->sizes_.erase(found);
    current_->free_(pool, number, block - guard);
  }

  static bool is_whole(const uint8_t* block, size_t size) {
    unpoison(block, size);
    const auto untouched = [](uint8_t byte) { return byte == current_->pattern_; };
    const bool whole = std::all_of(block - guard, block, untouched) &&
                       std::all_of(block + size, block + size + guard, untouched);
    poison(block, size);
    return whole;
  }
#ifdef WAYFIND_ADDRESS_SANITIZER
  // A granule that the block shares with the guard behind it stays readable up to its last byte.
  static void poison(const uint8_t* block, size_t size) {
    __asan_poison_memory_region(block - guard, guard);
    __asan_poison_memory_region(block + size, guard);
  }
  static void unpoison(const uint8_t* block, size_t size) {
    __asan_unpoison_memory_region(block - guard, guard);
    __asan_unpoison_memory_region(block + size, guard);
  }
#else
  static void poison(const uint8_t*, size_t) {}
  static void unpoison(const uint8_t*, size_t) {}
#endif

  static inline GuardedBlocks* current_ = nullptr;
  ork_handle* handle_;
  uint8_t pattern_;
  ork_alloc_fn alloc_;
  ork_free_fn free_;
  std::map<uint8_t*, size_t> sizes_;
};

}  // namespace kit
