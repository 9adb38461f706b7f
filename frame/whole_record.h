// Operations on a record as a whole, and on the fields that are objects themselves.
#pragma once

#include "frame/object.h"

namespace frame {

void* record_get(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record);
void record_set(const Call& call, void* to, const void* from, const RecordRow& record);
// An object never gains state bytes by a copy: what has none may not claim to, nor may the records
// inside it.
void disclaim_states(void* object, const RecordRow& record);
void post_copyout_cleanup(const Call& call, void* to, void* from, const RecordRow& record);

// The arguments of a call for all fields, as arrays.
struct Outs {
  void* at[model::max_fields];
};
struct Values {
  uint64_t at[model::max_fields];
};
// `out` holds one pointer per value and counter field, `values` one value per value field, both in
// field order.
void get_all(ork_handle* handle, uint32_t instance, void* object, void* const* out, uint32_t* err,
             const RecordRow& record);
void set_all(ork_handle* handle, uint32_t instance, void* object, const uint64_t* values,
             uint32_t* err, const RecordRow& record);

// Fields that are objects: embedded records, addresses, the flag set; the getter serves enums too.
void* object_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                 const FieldRow& field);
void object_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                uint32_t* err, const FieldRow& field);

// Fixed strings.
void text_get(ork_handle* handle, uint32_t instance, const void* object, char* to, uint32_t size,
              uint32_t* err, const FieldRow& field);
void text_set(ork_handle* handle, uint32_t instance, void* object, const char* from,
              uint32_t length, uint32_t* err, const FieldRow& field);

// Which fields and variants there are.
uint32_t is_valid_cr(ork_handle* handle, const void* object, uint32_t field_number, uint32_t flags,
                     const RecordRow& record);
int32_t index_cap(int32_t variant, int newest);

}  // namespace frame
