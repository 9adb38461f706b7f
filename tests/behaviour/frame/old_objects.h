// Objects as older releases laid them out.
#pragma once

#include "behaviour/frame/objects.h"

namespace frame {

// An object in the layout of an older release, its header and children as that release left them.
// The bytes behind its block are zero and have to stay so: they are somebody else's.
class OldObject {
 public:
  OldObject(SpiedHandle& handle, const std::string& record, unsigned cap,
            const std::string& name = "old")
      : handle_(handle),
        told_(*told::record(record)),
        layout_(told_.layouts[cap]),
        schema_(kit::record(record)) {
    size_ = layout_.body + (handle.tracking() ? layout_.state : 0u);
    block_ = static_cast<uint8_t*>(handle->alloc_fn(handle->mem_pool, instance, size_ + foreign));
    std::memset(block_, 0, size_ + foreign);
    {
      SpiedObject fresh(handle, record, "fresh");
      std::memcpy(block_, fresh.get(), layout_.used);
    }
    kit::header(block_).variant = static_cast<int8_t>(cap);
    kit::header(block_).variant_cap = static_cast<uint8_t>(cap);
    spy::name(block_, layout_.body, name);
    if (handle.tracking()) {
      spy::name(state(), layout_.state, name + "_state");
      for (const told::Field& field : told_.fields) {
        if (field.variant <= cap && field.nested >= 0) {
          tell(field);
        }
      }
    }
  }
  ~OldObject() {
    EXPECT_TRUE(
        std::all_of(block_ + size_, block_ + size_ + foreign, [](uint8_t b) { return b == 0; }))
        << told_.name << " was written to behind its layout " << int(header().variant_cap);
    kit::function<void(ork_handle*, uint32_t, void*)>(schema_.functions, "_destroy")(
        handle_, instance, block_);
  }
  OldObject(const OldObject&) = delete;
  OldObject& operator=(const OldObject&) = delete;

  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(block_);
  }
  ork_object& header() const { return kit::header(block_); }
  uint8_t* get() const { return block_; }
  uint8_t* state() const { return block_ + layout_.body; }
  uint8_t* field(const std::string& field_name) const {
    return block_ + told_.field(field_name).offset;
  }

 private:
  void tell(const told::Field& field) {
    uint8_t* const child = block_ + field.offset;
    uint8_t* const state_of_child = state() + field.nested;
    orklib_update_sttr_offset(handle_, instance, child,
                              static_cast<int32_t>(state_of_child - child));
    kit::function<void(ork_handle*, uint32_t, void*, uint8_t*, uint32_t*)>(
        record(field.type).functions, "_offset_update")(handle_, instance, child, state_of_child,
                                                        &handle_.err);
  }

  SpiedHandle& handle_;
  const told::Record& told_;
  const told::Layout& layout_;
  const wayfind_record& schema_;
  static constexpr size_t foreign = 1024;
  size_t size_;
  uint8_t* block_;
};

}  // namespace frame
