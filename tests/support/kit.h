// What tests of the module stand on: a handle (handle.h), the exported functions by name
// (exports.h), and an object. Tests that look at the module's calls take the spied ones (spied.h).
//
//   const Handle handle(ORK_TRACKING_ON);
//   const Object object(handle, record("fwe_cl_wayfind_mem_st"));
//   const auto length =
//       function<uint32_t(ork_handle*, uint32_t, const void*)>(object.schema().functions, "_len");
//   EXPECT_EQ(length(handle, instance, object), 57u);
#pragma once

#include "support/exports.h"
#include "support/handle.h"

namespace kit {

// An object of a record type, destroyed at its end. Passes as the pointer that a function wants.
class Object {
 public:
  Object(ork_handle* handle, const wayfind_record& schema)
      : Object(
            handle, schema,
            function<void*(ork_handle*, uint32_t)>(schema.functions, "_create")(handle, instance)) {
    if (object_ == nullptr) {
      throw std::runtime_error("no " + std::string(schema.name));
    }
  }
  // One that was made already.
  Object(ork_handle* handle, const wayfind_record& schema, void* made)
      : handle_(handle), schema_(&schema), object_(made) {}
  Object(Object&& other) noexcept
      : handle_(other.handle_), schema_(other.schema_), object_(other.release()) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (object_ != nullptr) {
      function<void(ork_handle*, uint32_t, void*)>(schema_->functions, "_destroy")(
          handle_, instance, object_);
    }
  }

  template <class T>
  operator T*() const {
    return static_cast<T*>(object_);
  }
  void* get() const { return object_; }
  ork_object& header() const { return *static_cast<ork_object*>(object_); }
  const wayfind_record& schema() const { return *schema_; }

  // The object is somebody else's now.
  void* release() { return std::exchange(object_, nullptr); }

 private:
  ork_handle* handle_;
  const wayfind_record* schema_;
  void* object_;
};

}  // namespace kit
