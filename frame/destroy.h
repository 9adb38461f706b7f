// Taking records apart: mappings, references, fields, statistics, memory.
#pragma once

#include "frame/object.h"

namespace frame {

void destroy(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
void destroy_internal(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                      const RecordRow& record);
// The same for an object that was filled without a gate or not to its end. Arrays in fields of
// variants that it has not reached go too, as nobody else knows of them; where content moved on
// there are none.
void destroy_filled(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                    const RecordRow& record);

// No type holds references of its own: these two only exist so that all types can be asked alike.
template <class Row>
uint32_t get_oid_count(const Call& call, const void* object, const Row& row) {
  if (call.failed()) {
    trace::raise<Function::get_oid_count, Form::oid_count_error>(row);
  } else if (object == nullptr) {
    trace::raise<Function::get_oid_count, Form::oid_count_object>(row);
    call.fail(EINVAL);
  }
  return 0;
}
template <class Row>
void get_object_references(const Call& call, const void* object, const Row& row) {
  if (call.failed()) {
    trace::raise<Function::get_object_references, Form::references_error>(row);
  } else if (object == nullptr) {
    trace::raise<Function::get_object_references, Form::references_object>(row);
    call.fail(EINVAL);
  }
}

}  // namespace frame
