#include "frame/create.h"

#include "frame/destroy.h"
#include "frame/make.h"

namespace frame {

void* create(ork_handle* handle, uint32_t instance, const RecordRow& record) {
  ork_fwe_ui_wayfind_trace_init();
  return create_internal(handle, instance, record);
}

void* create_cr(ork_handle* handle, const RecordRow& record) {
  ork_fwe_ui_wayfind_trace_init();
  handle->cr_active = 1;
  void* object = create_internal(handle, handle->cr_instance, record);
  handle->cr_active = 0;
  return object;
}

void* create_internal(ork_handle* handle, uint32_t instance, const RecordRow& record) {
  return make<Function::create_internal, Form::create_failed>(handle, instance, record);
}

void reinitialize(const Call& call, void* element, const RecordRow& record) {
  const DetachedCall own(call);
  const Layout& layout = record.newest_layout();
  const bool mapped = has_flag(element, OBJ_STTR_OFFSET);
  const int32_t distance =
      mapped ? orklib_get_sttr_offset(call.handle, call.instance, element) : int32_t{layout.body};
  uint8_t* states = static_cast<uint8_t*>(element) + distance;
  destroy_filled(call.handle, call.instance, element, 0, record);
  // That removed the registered offset as well, so it is read before and registered again.
  announce(own, element, layout.body, element);
  memset(element, 0, layout.body);
  if (mapped) {
    announce(own, states, layout.state, nullptr);
    memset(states, 0, layout.state);
    orklib_update_sttr_offset(call.handle, call.instance, element, distance);
  }
  initialize(own, element, descriptor(record), {1, 0, OBJ_NESTED, states}, record);
}

}  // namespace frame
