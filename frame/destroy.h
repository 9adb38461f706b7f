// Destroying records: object id mapping, references, fields, statistics, memory, in this order.
#pragma once

#include "frame/object.h"

namespace frame {

void destroy(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
void destroy_internal(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                      const RecordRow& record);
// The same for an object that unmarshal or from_xml filled, perhaps in part: also frees arrays in
// fields beyond its variant, which destroy_internal() never visits.
void destroy_filled(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                    const RecordRow& record);

// No type of this module holds references of its own, so these two only check their arguments.
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
