// Object memory: blocks from the process, counted against a budget.
//
// The budget counts what is taken from the process: blocks with their heads, the distances told of
// objects in them, and what is charged from outside. A distance cannot be refused, so once a handle
// tracks states, room for all that the blocks could ask for is never given away.
//
// Each block carries a head in front that knows its heap, so a block finds its way back, to its
// account and to the distances told of objects inside it, whichever handle frees it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mapping.h"
#include "memory_cost.h"
#include "ork/platform.h"

namespace ork {

class Heap {
 public:
  // budget in bytes, 0 for no limit.
  explicit Heap(size_t budget) : budget_(budget != 0 ? budget : SIZE_MAX) {}
  ~Heap();
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  // allowed: false makes it fail.
  void* allocate(size_t size, bool allowed);

  // From now on objects in blocks may be told distances.
  void expect_distances() { expects_distances_ = true; }

  void set_distance(const void* object, int32_t distance) noexcept;

  // Counts bytes that somebody else took for what the blocks are kept in. False: over budget.
  bool charge(size_t bytes);
  void discharge(size_t bytes) { taken_ -= bytes; }

  // A handle's free_fn: the block itself knows its heap, pool is not looked at.
  static void release(void* pool, uint32_t instance, void* ptr);

  void fail_allocation(uint64_t nth) { fail_in_ = nth; }
  ork_memory_report report() const;

  // The number of allocations made so far: a mark for release_since.
  uint64_t mark() const { return report_.allocations; }

  // Gives back every live block that was allocated after the mark.
  void release_since(uint64_t mark);

  Mapping& mapping() { return mapping_; }
  const Mapping& mapping() const { return mapping_; }

 private:
  struct Block;
  void unlink(Block* block);
  uint64_t held() const { return taken_ + mapping_.size() * distance_cost; }
  bool has_room_for(size_t bytes, size_t objects) const;
  void note_peak();
  static Block* block_of(void* ptr);

  size_t budget_;
  bool expects_distances_ = false;
  uint64_t taken_ = 0;  // without the distances
  uint64_t fail_in_ = 0;
  ork_memory_report report_{};
  Block* newest_ = nullptr;  // live blocks, newest first
  Mapping mapping_;
};

}  // namespace ork
