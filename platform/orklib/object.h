// The header of an object.
#pragma once

#include <cstdint>

#include "ork/handle.h"

namespace ork {

inline ork_object* header(void* obj) { return static_cast<ork_object*>(obj); }

inline const ork_object* header(const void* obj) { return static_cast<const ork_object*>(obj); }

// Announces the flags byte, with the object as owner, and stores it.
void store_flags(ork_handle* handle, uint32_t instance, void* obj, uint8_t flags);

// What initialize does for the runtime's own objects, which have one variant and no state bytes.
void write_header(ork_handle* handle, uint32_t instance, void* obj, const ork_type_info* type,
                  bool notify, uint8_t flags);

}  // namespace ork
