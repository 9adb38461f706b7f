#include "messages/bundle_handlers.h"

#include "messages/registration.h"

namespace messages {
namespace {

void forget_dispatch(ork_handle* handle) {
  handle->bundle_rx_dispatch = nullptr;
  handle->bundle_rx_lut = nullptr;
  handle->bundle_commit_dispatch = nullptr;
}

void free_message(const Call& call, void* message) {
  if (message != nullptr) frame::release(call, message);
}

void open_bundle(const Call& call, const Bundle& bundle) {
  ork_handle* handle = call.handle;
  handle->bundle_rx_active = 1;
  handle->bundle_receive_list.next = &handle->bundle_receive_list;
  handle->bundle_receive_list.prev = &handle->bundle_receive_list;
  void* lut = nullptr;
  const ork_bundle_dispatch_info* info = orklib_in_dispatch_message_info(handle, &lut);
  handle->bundle_rx_dispatch = info;
  handle->bundle_rx_lut = lut;
  handle->bundle_commit_dispatch = nullptr;
  if (info != nullptr) {
    trace::raise<Function::start_handler, Form::starting>(bundle.row, info->name,
                                                          static_cast<const void*>(lut));
  } else {
    trace::raise<Function::start_handler, Form::starting_unnamed>(bundle.row, bundle.full_name,
                                                                  static_cast<const void*>(lut));
  }
}

// `handler` is a copy: another thread may change the registration between test and call.
template <Form F, size_t Nth = 0>
bool try_handler(const Call& call, void* ctx, ork_bundle_handler handler, const char* name,
                 const Bundle& bundle) {
  if (handler == nullptr) return false;
  trace::raise<Function::commit_handler, F, Nth>(bundle.row, name);
  handler(call.handle, call.instance, ctx, call.err);
  return true;
}

// Five places may have a handler. The first one that has is called, and no other.
void call_handler(const Call& call, void* ctx, const ork_bundle_dispatch_info& info,
                  ork_bundle_handler linked_in, const Bundle& bundle) {
  using enum Form;
  const bool called =
      try_handler<calling_dispatch_handler>(call, ctx, info.bundle_handler, info.name, bundle) ||
      try_handler<calling_handle_handler>(call, ctx, call.handle->bundle_handler, info.name,
                                          bundle) ||
      try_handler<calling_dispatch_handler, 1>(call, ctx, fwe_ui_wayfind_bundle_registered_handler,
                                               info.name, bundle) ||
      try_handler<calling_registered_handler>(call, ctx, *bundle.registered, info.name, bundle) ||
      try_handler<calling_linked_handler>(call, ctx, linked_in, info.name, bundle);
  if (!called) trace::raise<Function::commit_handler, no_handler>(bundle.row, info.name);
}

}  // namespace

// Unlike the other two, runs even if *err is set.
void handle_start(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle) {
  const Call call{handle, instance, err};
  if (orklib_is_accumulating_bundle(handle) != 0) {
    call.fail(EEXIST);
    trace::raise<Function::start_handler, Form::start_inside>(bundle.row, bundle.start_name);
  } else {
    open_bundle(call, bundle);
  }
  free_message(call, message);
}

void handle_abort(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle) {
  const Call call{handle, instance, err};
  if (call.failed()) {
    trace::raise<Function::abort_handler, Form::abort_error>(bundle.row, error_text(*err));
  } else if (orklib_is_accumulating_bundle(handle) == 0) {
    trace::raise<Function::abort_handler, Form::outside_bundle>(bundle.row);
    call.fail(EBADMSG);
  }
  bundle_receive_message_list_destroy(handle, instance, err);
  void* lut = nullptr;
  const ork_bundle_dispatch_info* info = orklib_in_dispatch_message_info(handle, &lut);
  if (info != nullptr)
    trace::raise<Function::abort_handler, Form::aborting>(bundle.row, info->name,
                                                          static_cast<const void*>(lut));
  forget_dispatch(handle);
  free_message(call, message);
}

void handle_commit(ork_handle* handle, uint32_t instance, void* ctx, void* message, uint32_t* err,
                   ork_bundle_handler linked_in, const Bundle& bundle) {
  const Call call{handle, instance, err};
  if (call.failed()) {
    trace::raise<Function::commit_handler, Form::commit_error>(bundle.row, error_text(*err));
  } else if (orklib_is_accumulating_bundle(handle) == 0) {
    trace::raise<Function::commit_handler, Form::outside_bundle>(bundle.row);
    call.fail(EBADMSG);
  } else if (const ork_bundle_dispatch_info* info =
                 orklib_in_dispatch_message_info(handle, nullptr);
             info != nullptr) {
    handle->bundle_commit_dispatch = info;
    call_handler(call, ctx, *info, linked_in, bundle);
  }
  bundle_receive_message_list_destroy(handle, instance, err);
  free_message(call, message);
  forget_dispatch(handle);
}

}  // namespace messages
