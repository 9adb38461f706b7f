// Object memory: blocks from the process, counted against a budget.
//
// Each block carries a head in front that knows its heap, so a block finds its way back, to its
// account and to the distances told of objects inside it, whichever handle frees it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mapping.h"
#include "ork/platform.h"

namespace ork {

class Heap {
 public:
  // budget in bytes of live blocks, 0 for no limit.
  explicit Heap(size_t budget) : budget_(budget != 0 ? budget : SIZE_MAX) {}
  ~Heap();
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  void* allocate(size_t size);

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
  static Block* block_of(void* ptr);

  size_t budget_;
  uint64_t fail_in_ = 0;
  ork_memory_report report_{};
  Block* newest_ = nullptr;  // live blocks, newest first
  Mapping mapping_;
};

}  // namespace ork
