#include "heap.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define ORK_POISON_HEADS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORK_POISON_HEADS 1
#endif
#endif

#ifdef ORK_POISON_HEADS
#include <sanitizer/asan_interface.h>
#endif

namespace ork {

struct alignas(std::max_align_t) Heap::Block {
  Heap* heap;
  Block* newer;
  Block* older;
  uint64_t serial;
  size_t size;
  uint32_t tag;
  alignas(16)
      uint8_t guard[16];  // in front of the object: a write there is seen by the address sanitizer
};

namespace {

void hide([[maybe_unused]] void* guard, [[maybe_unused]] size_t size) {
#ifdef ORK_POISON_HEADS
  __asan_poison_memory_region(guard, size);
#endif
}

void show([[maybe_unused]] void* guard, [[maybe_unused]] size_t size) {
#ifdef ORK_POISON_HEADS
  __asan_unpoison_memory_region(guard, size);
#endif
}

}  // namespace

Heap::~Heap() { release_since(0); }

void Heap::release(void*, uint32_t, void* ptr) {
  static_assert(sizeof(Block) == block_head);
  if (ptr == nullptr) {
    return;
  }
  Block* block = block_of(ptr);
  Heap* heap = block->heap;
  heap->unlink(block);
  heap->mapping_.drop_range(ptr, block->size);
  heap->report_.live_blocks -= 1;
  heap->report_.live_bytes -= block->size;
  heap->taken_ -= block_cost(block->size);
  if (block->tag != 0) {
    tawny_account(block->tag, -static_cast<int64_t>(block->size), -1);
  }
  show(block->guard, sizeof block->guard);
  std::free(block);
}

void* Heap::allocate(size_t size, bool allowed) {
  const uint32_t tag = tawny_take_callsite_tag();
  const bool told_to_fail = fail_in_ != 0 && --fail_in_ == 0;
  const bool fits =
      allowed && !told_to_fail && size <= largest_block && has_room_for(block_cost(size), size);
  void* memory = fits ? std::malloc(sizeof(Block) + size) : nullptr;
  if (memory == nullptr) {
    report_.refusals += 1;
    return nullptr;
  }
  report_.allocations += 1;
  report_.live_blocks += 1;
  report_.live_bytes += size;
  report_.peak_bytes = std::max(report_.peak_bytes, report_.live_bytes);
  taken_ += block_cost(size);
  note_peak();
  auto* block = new (memory) Block{this, nullptr, newest_, report_.allocations, size, tag, {}};
  if (newest_ != nullptr) {
    newest_->newer = block;
  }
  newest_ = block;
  if (tag != 0) {
    tawny_account(tag, static_cast<int64_t>(size), 1);
  }
  hide(block->guard, sizeof block->guard);
  return block + 1;
}

ork_memory_report Heap::report() const {
  ork_memory_report report = report_;
  report.live_distances = mapping_.size();
  report.held_bytes = held();
  return report;
}

// objects: how many of the bytes may hold objects.
bool Heap::has_room_for(size_t bytes, size_t objects) const {
  uint64_t wanted = held() + bytes;
  if (expects_distances_) {
    const uint64_t possible = possible_distances(report_.live_bytes + objects);
    wanted += (possible - std::min<uint64_t>(possible, mapping_.size())) * distance_cost;
  }
  return wanted <= budget_;
}

void Heap::note_peak() { report_.peak_held_bytes = std::max(report_.peak_held_bytes, held()); }

void Heap::set_distance(const void* object, int32_t distance) noexcept {
  mapping_.set(object, distance);
  note_peak();
}

bool Heap::charge(size_t bytes) {
  if (!has_room_for(bytes, 0)) {
    return false;
  }
  taken_ += bytes;
  note_peak();
  return true;
}

void Heap::release_since(uint64_t mark) {
  while (newest_ != nullptr && newest_->serial > mark) {
    release(this, ORK_NO_INSTANCE, newest_ + 1);
  }
}

void Heap::unlink(Block* block) {
  if (block->newer != nullptr) {
    block->newer->older = block->older;
  } else {
    newest_ = block->older;
  }
  if (block->older != nullptr) {
    block->older->newer = block->newer;
  }
}

Heap::Block* Heap::block_of(void* ptr) { return static_cast<Block*>(ptr) - 1; }

}  // namespace ork
