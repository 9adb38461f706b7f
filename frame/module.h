// The descriptors of all types as one list, and the module's record in the runtime's list of
// modules.
#pragma once

#include "frame/object.h"

namespace frame {

// In the order of registration, ended by a null: records, enums, the flag set, messages.
extern const ork_type_info* const descriptors[];

void typeinfo_initialize(ork_handle* handle, uint32_t instance, uint32_t* err);
void type_variant_dump(int (*print)(const char* format, ...));

}  // namespace frame
