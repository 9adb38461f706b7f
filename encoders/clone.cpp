#include "encoders/clone.h"

#include "frame/create.h"
#include "frame/destroy.h"

namespace encoders {

namespace {

// What to do with a target that could not be filled.
using OnFailure = void (*)(const Call& call, void** slot, const RecordRow& record);

void destroy_target(const Call& call, void** slot, const RecordRow& record) {
  frame::destroy_filled(call.handle, call.instance, *slot, 1, record);
  *slot = nullptr;
}
void reinitialize_target(const Call& call, void** slot, const RecordRow& record) {
  frame::reinitialize(call, *slot, record);
}

void clone_into(const Call& call, const void* from, void** slot, Workspace ws,
                const RecordRow& record, WireForm form, OnFailure on_failure) {
  if (!call.start()) return;
  if (slot == nullptr || ws.bytes == nullptr) return call.fail(ENOENT);
  const uint32_t n =
      form.marshal_for_clone(call.handle, call.instance, ws.bytes, from, ws.length, call.err);
  if (call.failed()) return;
  if (*slot == nullptr) {
    ork_fwe_ui_wayfind_trace_init();
    *slot = frame::create_internal(call.handle, call.instance, record);
    if (*slot == nullptr) return call.fail(ENOMEM);
  }
  form.unmarshal(call.handle, call.instance, ws.bytes, *slot, static_cast<int32_t>(n), 0, call.err);
  if (call.failed()) on_failure(call, slot, record);
}

}  // namespace

void clone_internal(const Call& call, const void* from, void** slot, Workspace ws,
                    const RecordRow& record, WireForm form) {
  clone_into(call, from, slot, ws, record, form, destroy_target);
}

void clone(const Call& call, const void* from, void** slot, Workspace ws, const RecordRow& record,
           WireForm form) {
  if (slot != nullptr) *slot = nullptr;
  clone_internal(call, from, slot, ws, record, form);
}

void* clone_cr(ork_handle* handle, const void* from, const RecordRow& record, WireForm form) {
  void* slot = nullptr;
  Workspace ws{};
  orklib_get_handle_ws(handle, &ws.bytes, &ws.length);
  clone_internal({handle, handle->cr_instance, &handle->cr_error}, from, &slot, ws, record, form);
  return slot;
}

void clone_element(const Call& call, void* element, const void* from, const RecordRow& record,
                   WireForm form) {
  Workspace ws{};
  orklib_get_handle_ws(call.handle, &ws.bytes, &ws.length);
  clone_into(call, from, &element, ws, record, form, reinitialize_target);
}

}  // namespace encoders
