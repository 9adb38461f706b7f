// From a frame to the one who takes it.
#include <cerrno>
#include <memory>

#include "bundle.h"
#include "frame.h"
#include "guard.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

struct ork_dispatcher {
  ork::LuidMap<ork_dispatch_entry> entries;  // rows keep their addresses
};

namespace ork {
namespace {

const ork_dispatch_entry& entry_of(const ork_bundle_dispatch_info* info) {
  return *reinterpret_cast<const ork_dispatch_entry*>(info);
}

// The handler of messages inside a received bundle.
void keep(ork_handle* handle, uint32_t, void*, void* message, uint32_t* err) {
  guarded(err, [&] {
    Runtime& self = runtime(handle);
    auto member = std::make_unique<ork_bundle_member>(
        ork_bundle_member{{}, entry_of(self.dispatching), message});
    if (!self.storage->charge(member_cost)) {
      fail(handle, err, ENOMEM);
      return;
    }
    append(handle->bundle_receive_list, member.release()->link);
  });
}

bool is_control(const ork_dispatch_entry& entry) { return entry.destroy == nullptr; }

// Makes the row visible to the handlers that run during one dispatch; a handler may dispatch in its
// turn.
class InDispatch {
 public:
  InDispatch(Runtime& runtime, const ork_dispatcher* dispatcher, const ork_dispatch_entry& entry)
      : runtime_(runtime), outer_info_(runtime.dispatching), outer_dispatcher_(runtime.dispatcher) {
    runtime.dispatching = &entry.info;
    runtime.dispatcher = dispatcher;
  }
  ~InDispatch() {
    runtime_.dispatching = outer_info_;
    runtime_.dispatcher = outer_dispatcher_;
  }
  InDispatch(const InDispatch&) = delete;
  InDispatch& operator=(const InDispatch&) = delete;

 private:
  Runtime& runtime_;
  const ork_bundle_dispatch_info* outer_info_;
  const ork_dispatcher* outer_dispatcher_;
};

// Changes what may be allocated, until it goes. A handler may dispatch in its turn.
class Allowed {
 public:
  Allowed(ork_storage& storage, FrameAllowance allowance)
      : storage_(storage), outer_(storage.allowance) {
    storage.allowance = allowance;
  }
  ~Allowed() { storage_.allowance = outer_; }
  Allowed(const Allowed&) = delete;
  Allowed& operator=(const Allowed&) = delete;

 private:
  ork_storage& storage_;
  FrameAllowance outer_;
};

bool bounds_frames(const Runtime& runtime) {
  return runtime.frame_base != 0 || runtime.frame_factor != 0;
}

// For a control frame, which has no content, and without a bound: all there is.
FrameAllowance allowance_for(const Runtime& runtime, const ork_dispatch_entry& entry,
                             uint32_t length) {
  size_t bytes = 0;
  if (!bounds_frames(runtime) || is_control(entry) ||
      __builtin_mul_overflow(runtime.frame_factor, size_t{length}, &bytes) ||
      __builtin_add_overflow(bytes, runtime.frame_base, &bytes)) {
    return {};
  }
  return {bytes, runtime.sttr_info != nullptr && runtime.sttr_info->sttr_mode == ORK_STTR_ON};
}

// The frame has been read: what its handler allocates is the handler's.
void hand_over(ork_handle* handle, uint32_t instance, void* ctx, void* message, uint32_t* err) {
  const Allowed all(*runtime(handle).storage, {});
  entry_of(runtime(handle).dispatching).info.handler(handle, instance, ctx, message, err);
}

// What the message is to call when it has been read.
ork_message_handler handler_for(const Runtime& runtime, const ork_dispatch_entry& entry,
                                bool kept) {
  if (kept) {
    return keep;
  }
  const bool wrapped = entry.info.handler != nullptr && bounds_frames(runtime);
  return wrapped ? hand_over : entry.info.handler;
}

// A message that failed while it was read is lost to everybody: all that was allocated since goes
// back. A whole message that found no one to take it is destroyed. One that a handler saw is the
// handler's, whatever it reported.
void clean_up(Runtime& runtime, uint32_t instance, const ork_dispatch_entry& entry,
              uint64_t frame_memory, bool kept, void* message, uint32_t err) {
  const bool failed = err != 0 && !is_control(entry);
  if (failed && message != nullptr && (kept || (err == ENOSYS && entry.info.handler == nullptr))) {
    entry.destroy(&runtime, instance, message);
  }
  runtime.storage->end_frame(frame_memory, failed && message == nullptr);
}

uint32_t deliver(const ork_dispatcher* dispatcher, Runtime& runtime,
                 const ork_dispatch_entry& entry, uint32_t instance, void* ctx,
                 const uint8_t* frame, uint32_t length, uint32_t* err) {
  const InDispatch scope(runtime, dispatcher, entry);
  const bool kept = !is_control(entry) && orklib_is_accumulating_bundle(&runtime) != 0;
  const Allowed allowed(*runtime.storage, allowance_for(runtime, entry, length));
  const uint64_t frame_memory = runtime.storage->begin_frame();
  void* message = nullptr;
  entry.info.unmarshal(&runtime, instance, ctx, &message, frame, static_cast<int32_t>(length),
                       handler_for(runtime, entry, kept), err);
  clean_up(runtime, instance, entry, frame_memory, kept, message, *err);
  return length;
}

// Looks at the head of a frame. 0: there is not all of it, or *err is set.
uint32_t frame_length(const uint8_t* bytes, uint32_t have, uint32_t max, uint32_t* err) {
  if (have < frame_minimum) {
    return 0;
  }
  const ork_message_header header = take_header(bytes);
  if (header.marker != ORK_MESSAGE_MARKER || header.length < frame_minimum || header.length > max) {
    *err = EBADMSG;
    return 0;
  }
  return header.length;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT struct ork_dispatcher* ork_dispatcher_create(uint32_t* err) {
  return ork::guarded(err, [] { return new ork_dispatcher; });
}

ORK_EXPORT void ork_dispatcher_free(struct ork_dispatcher* dispatcher) { delete dispatcher; }

ORK_EXPORT void ork_dispatcher_add(struct ork_dispatcher* dispatcher,
                                   const struct ork_dispatch_entry* entry, uint32_t* err) {
  ork::guarded(err, [&] {
    if (!dispatcher->entries.emplace(ork::luid_at(entry->info.luid), *entry).second) {
      *err = EEXIST;
    }
  });
}

ORK_EXPORT uint32_t ork_frame_length(const uint8_t* bytes, uint32_t have, uint32_t max,
                                     uint32_t* err) {
  return *err == 0 ? ork::frame_length(bytes, have, max, err) : 0;
}

ORK_EXPORT uint32_t ork_dispatch(const struct ork_dispatcher* dispatcher, struct ork_handle* handle,
                                 uint32_t instance, void* ctx, const uint8_t* frame,
                                 uint32_t length, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  const uint32_t told = ork::frame_length(frame, length, INT32_MAX, err);
  if (*err == 0 && (told == 0 || told > length)) {
    *err = EMSGSIZE;
  }
  if (*err != 0) {
    ork_store_err(handle, *err);
    return 0;
  }
  const auto found = dispatcher->entries.find(ork::luid_at(frame + ORK_MESSAGE_HEADER_WIRE_SIZE));
  if (found == dispatcher->entries.end()) {
    ork::fail(handle, err, ENOENT);
    return 0;
  }
  return ork::deliver(dispatcher, ork::runtime(handle), found->second, instance, ctx, frame, told,
                      err);
}

ORK_EXPORT const struct ork_bundle_dispatch_info* orklib_in_dispatch_message_info(
    struct ork_handle* handle, void** lut) {
  const ork::Runtime& runtime = ork::runtime(handle);
  if (lut != nullptr) {
    *lut = const_cast<ork_dispatcher*>(runtime.dispatcher);
  }
  return runtime.dispatching;
}

}  // extern "C"
