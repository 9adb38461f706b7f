// All values of a record in one call.
#pragma once

#include "frame/object.h"

namespace frame {

// The arguments of an exported function that has one for each field.
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

}  // namespace frame
