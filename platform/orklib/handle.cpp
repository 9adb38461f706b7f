#include <cerrno>
#include <new>

#include "guard.h"
#include "local_storage.h"
#include "ork/orklib.h"
#include "ork/platform.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {
namespace {

void notify_write(ork_handle* handle, const void* address, size_t length, uint32_t instance,
                  const void* owner) {
  const ork_observers& observers = runtime(handle).observers;
  if (observers.write_notify != nullptr) {
    observers.write_notify(observers.ctx, handle, address, length, instance, owner);
  }
}

void notify_counter(void* pool, void* counter, uint32_t, uint32_t instance) {
  const ork_observers& observers = static_cast<const ork_storage*>(pool)->counter_observers;
  if (observers.counter_notify != nullptr) {
    observers.counter_notify(observers.ctx, counter, instance);
  }
}

void set_tracking(Runtime& handle, ork_tracking tracking) {
  handle.sttr.sttr_mode = tracking == ORK_TRACKING_ON ? ORK_STTR_ON : ORK_STTR_OFF;
  handle.sttr_info = tracking == ORK_TRACKING_ABSENT ? nullptr : &handle.sttr;
  if (tracking == ORK_TRACKING_ON) {
    handle.storage->expect_distances();
  }
}

void attach_storage(Runtime& handle, const ork_options& options) {
  if (options.storage == nullptr) {
    handle.own_storage = std::make_unique<LocalStorage>(options.memory_budget);
  }
  handle.storage = options.storage != nullptr ? options.storage : handle.own_storage.get();
  handle.shared_types = options.storage != nullptr ? 1 : 0;
  handle.storage->serve(handle);
}

ork_handle* create(const ork_options& options, uint32_t* err) {
  auto handle = std::make_unique<Runtime>();
  attach_storage(*handle, options);
  handle->write_notify_fn = notify_write;
  handle->counter_notify_fn = notify_counter;
  handle->observers = options.observers;
  if (options.observers.counter_notify != nullptr) {
    handle->storage->counter_observers = options.observers;
  }
  handle->bundle_send_list = {&handle->bundle_send_list, &handle->bundle_send_list};
  handle->bundle_receive_list = {&handle->bundle_receive_list, &handle->bundle_receive_list};
  handle->cr_instance = options.cr_instance;
  handle->db_recording = options.db_recording;
  handle->strict_epoch = options.strict_epoch != 0;
  handle->suppress_messages = options.suppress_messages != 0;
  handle->frame_base = options.frame_base;
  handle->frame_factor = options.frame_factor;
  // A marshal may store one state byte right behind the buffer that it is given.
  handle->workspace = std::make_unique_for_overwrite<uint8_t[]>(options.workspace_size + 1);
  handle->workspace_size = static_cast<int32_t>(options.workspace_size);
  set_tracking(*handle, options.tracking);
  if (options.release != nullptr) {
    handle->release = *options.release;
  }
  ork_handle_set_peer(handle.get(), options.domain_name, nullptr, err);
  return *err == 0 ? handle.release() : nullptr;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT void ork_options_init(struct ork_options* options) {
  *options = {};
  options->domain_name = "newest";
  options->tracking = ORK_TRACKING_ABSENT;
  options->cr_instance = ORK_NO_INSTANCE;
  options->workspace_size = size_t{1} << 20;
}

ORK_EXPORT size_t ork_block_cost(size_t size, enum ork_tracking tracking) {
  return size <= ork::largest_block ? ork::full_cost(size, tracking == ORK_TRACKING_ON) : SIZE_MAX;
}

ORK_EXPORT struct ork_handle* ork_handle_create(const struct ork_options* options, uint32_t* err) {
  return ork::guarded(err, [&]() -> ork_handle* {
    if (options->workspace_size > INT32_MAX) {
      *err = EINVAL;
      return nullptr;
    }
    return ork::create(*options, err);
  });
}

ORK_EXPORT void ork_handle_destroy(struct ork_handle* handle, struct ork_memory_report* report) {
  if (handle == nullptr) {
    return;
  }
  uint32_t err = 0;
  bundle_send_message_list_destroy(handle, handle->cr_instance, &err);
  bundle_receive_message_list_destroy(handle, handle->cr_instance, &err);
  if (report != nullptr) {
    ork_handle_memory(handle, report);
  }
  delete &ork::runtime(handle);
}

ORK_EXPORT void ork_handle_memory(const struct ork_handle* handle,
                                  struct ork_memory_report* report) {
  *report = ork::runtime(handle).storage->report();
}

ORK_EXPORT void ork_handle_fail_allocation(struct ork_handle* handle, uint64_t nth) {
  ork::runtime(handle).storage->fail_allocation(nth);
}

ORK_EXPORT void ork_handle_set_tracking(struct ork_handle* handle, enum ork_tracking tracking) {
  ork::set_tracking(ork::runtime(handle), tracking);
}

ORK_EXPORT struct ork_storage* ork_storage_create(size_t budget, uint32_t* err) {
  return ork::guarded(err, [&]() -> ork_storage* { return new ork::LocalStorage(budget); });
}

ORK_EXPORT void ork_storage_destroy(struct ork_storage* storage) { delete storage; }

}  // extern "C"
