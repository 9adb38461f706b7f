// What handles share: object memory, the distances to state bytes, and the shared copies of
// descriptors.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "memory_cost.h"
#include "ork/platform.h"

namespace ork {

// What may still be allocated while a frame is read.
struct FrameAllowance {
  size_t left = SIZE_MAX;  // SIZE_MAX: all there is
  bool tracked = false;

  // False: the block would pass it.
  bool spend(size_t size) {
    if (left == SIZE_MAX) {
      return true;
    }
    if (size > largest_block || full_cost(size, tracked) > left) {
      return false;
    }
    left -= full_cost(size, tracked);
    return true;
  }
};

}  // namespace ork

struct ork_storage {
  ork_storage() = default;
  virtual ~ork_storage() = default;
  ork_storage(const ork_storage&) = delete;
  ork_storage& operator=(const ork_storage&) = delete;

  // Points the handle's allocators and type table at this storage; mem_pool is the storage
  // itself.
  virtual void serve(ork_handle& handle) = 0;

  // There is no way to report that a distance could not be kept, and without it the object's
  // state bytes would be looked for inside its neighbour: no memory here ends the process.
  virtual void set_distance(const void* object, int32_t distance) noexcept = 0;
  virtual std::optional<int32_t> distance(const void* object) const = 0;
  virtual void drop_distance(const void* object) = 0;

  // Between begin and end the blocks that this process allocates can be given back together.
  // Frames nest.
  virtual uint64_t begin_frame() = 0;
  virtual void end_frame(uint64_t frame, bool give_back) = 0;

  // A handle on the storage tracks states, so that distances will come.
  virtual void expect_distances() = 0;

  // Counts bytes that a handle took for the members of a bundle. False: over budget.
  virtual bool charge(size_t bytes) = 0;
  virtual void discharge(size_t bytes) = 0;

  virtual ork_memory_report report() const = 0;
  virtual void fail_allocation(uint64_t nth) = 0;
  virtual void each_type(const std::function<void(const ork_type_info&)>& visit) const = 0;

  ork::FrameAllowance allowance;

  // A counter is announced by pool, so the one who hears of counters belongs to the storage.
  ork_observers counter_observers{};
};
