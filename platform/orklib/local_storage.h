// Storage of one process.
#pragma once

#include "heap.h"
#include "storage.h"
#include "type_table.h"

namespace ork {

class LocalStorage final : public ork_storage {
 public:
  explicit LocalStorage(size_t budget) : heap_(budget) {}

  void serve(ork_handle& handle) override;
  void set_distance(const void* object, int32_t distance) noexcept override {
    heap_.set_distance(object, distance);
  }
  std::optional<int32_t> distance(const void* object) const override {
    return heap_.mapping().find(object);
  }
  void drop_distance(const void* object) override { heap_.mapping().drop(object); }
  uint64_t begin_frame() override { return heap_.mark(); }
  void end_frame(uint64_t frame, bool give_back) override {
    if (give_back) {
      heap_.release_since(frame);
    }
  }
  void expect_distances() override { heap_.expect_distances(); }
  bool charge(size_t bytes) override { return heap_.charge(bytes); }
  void discharge(size_t bytes) override { heap_.discharge(bytes); }
  ork_memory_report report() const override { return heap_.report(); }
  void fail_allocation(uint64_t nth) override { heap_.fail_allocation(nth); }
  void each_type(const std::function<void(const ork_type_info&)>& visit) const override {
    types_.each(visit);
  }

 private:
  static void* alloc(void* pool, uint32_t instance, size_t size);

  Heap heap_;
  TypeTable types_;
};

}  // namespace ork
