#include "frame/array.h"

#include "frame/array_storage.h"

namespace frame {

void* array_get(ork_handle* handle, uint32_t instance, void* object, uint32_t index, uint32_t* err,
                const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return nullptr;
  if (index >= usable_count(object, field)) {
    call.fail(ENOENT);
    return nullptr;
  }
  void* element = element_at(object, field, index);
  // Observers get what the element's own record_get() would tell them, then the array's call.
  if (field.cls == model::Class::record_array) contain(call, element, nullptr);
  contain(call, element, object);
  return element;
}

void array_remove_elements(ork_handle* handle, uint32_t instance, void* object,
                           const FieldRow& field) {
  if (object == nullptr || block_of(object, field) == nullptr) return;
  const DetachedCall call(handle, instance);
  free_elements(call, object, stored_count(object, field), field);
  store_count(call, object, field, 0);
}

void touch_element(const Call& call, void* object, uint64_t index, const FieldRow& field) {
  uint8_t* entry = state_block(call, object, owner(field)) + field.state;
  store(call, entry, touched, nullptr);
  if (uint8_t* elements = element_states(entry); elements != nullptr)
    store(call, elements + index, touched, nullptr);
}

}  // namespace frame
