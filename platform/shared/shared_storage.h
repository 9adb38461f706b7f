// Storage that processes share: the same five functions in the handle, over memory that all of them
// see.
#pragma once

#include <map>

#include "orklib/storage.h"
#include "segment.h"

namespace ork {

class SharedStorage final : public ork_storage {
 public:
  SharedStorage(const char* name, size_t size, void* address) : segment_(name, size, address) {}

  void serve(ork_handle& handle) override;
  void set_distance(const void* object, int32_t distance) noexcept override;
  std::optional<int32_t> distance(const void* object) const override;
  void drop_distance(const void* object) override;
  uint64_t begin_frame() override;
  void end_frame(uint64_t frame, bool give_back) override;
  void expect_distances() override {}
  bool charge(size_t) override { return true; }
  void discharge(size_t) override {}
  ork_memory_report report() const override;
  void fail_allocation(uint64_t nth) override { fail_in_ = nth; }
  void each_type(const std::function<void(const ork_type_info&)>& visit) const override;

 private:
  struct Block;

  static SharedStorage& self(void* pool) {
    return *static_cast<SharedStorage*>(static_cast<ork_storage*>(pool));
  }
  static void* alloc(void* pool, uint32_t instance, size_t size);
  static void release(void* pool, uint32_t instance, void* ptr);
  static void* alloc_type(void* pool, uint32_t instance, size_t size);
  static ork_type_info* find_type(void* table, uint32_t instance, const char* luid_text);
  static uint32_t add_type(void* table, uint32_t instance, const char* luid_text,
                           ork_type_info* copy);

  void* allocate(size_t size);
  void give_back(void* ptr);
  bool leaves_reserve(size_t size) const;
  void note_held() const;

  mutable Segment segment_;
  uint64_t fail_in_ = 0;
  uint32_t open_frames_ = 0;
  // by serial: what this process allocated while a frame was open
  std::map<uint64_t, void*> frame_blocks_;
};

}  // namespace ork
