// Birth and death of records.
#pragma once

#include "frame/object.h"

namespace frame {

struct Initialization {
  uint32_t notify;    // announce every write to the header
  uint32_t no_stats;  // leave out statistics and the work on the state base
  uint8_t flags;      // ORed into the object's flags
  uint8_t* base;      // first state byte, or null
};

void* create(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_internal(ork_handle* handle, uint32_t instance, const RecordRow& record);
void* create_cr(ork_handle* handle, const RecordRow& record);
void initialize(const Call& call, void* object, const ork_type_info* type, Initialization how,
                const RecordRow& record);
void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const RecordRow& record);
uint32_t size_of(const ork_handle* handle, const RecordRow& record);
uint32_t size_of_internal(const ork_handle* handle, const void* object, uint32_t with_state,
                          uint32_t state_only, const RecordRow& record);
void destroy(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
void destroy_internal(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                      const RecordRow& record);

// The same for an object that was filled without a gate or not to its end. Arrays in fields of
// variants that it has not reached go too, as nobody else knows of them; where content moved on
// there are none.
void destroy_filled(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                    const RecordRow& record);
// Makes an array's element that could not be filled a fresh one in place.
void renew(const Call& call, void* element, const RecordRow& record);

// The block handed out in cr mode when no object could be made. Its address is all that protects
// it.
void* sentinel(const RecordRow& record);

// Where a type's statistics of one variant are kept. A variant in front of the entries is handed on
// as it is: the runtime must not write there.
void* statistics(const ork_type_info* type, int variant);
// The type that an object of this process or of the shared table points at.
const ork_type_info* manifested(const Call& call, const ork_type_info* type);

// What the ends of all objects share, once their own content is gone.
void give_back(const Call& call, void* object);

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
