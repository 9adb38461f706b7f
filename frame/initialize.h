// What makes an object of a zeroed block: header, statistics, place of the state bytes, and the
// fields that are objects.
#pragma once

#include "frame/typeinfo.h"

namespace frame {

struct Initialization {
  uint32_t notify;    // announce every write to the header
  uint32_t no_stats;  // leave out statistics and the work on the state base
  uint8_t flags;      // ORed into the object's flags
  uint8_t* base;      // first state byte, or null
};

struct InitializedHeader {
  int variant;
  const ork_type_info* type;
};
// Writes variant, newest variant, type and flags, and announces each of them if `how` asks for it.
InitializedHeader write_header(const Call& call, void* object, const ork_type_info* type,
                               const Initialization& how, int newest);

void initialize(const Call& call, void* object, const ork_type_info* type, Initialization how,
                const RecordRow& record);
void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const RecordRow& record);

// Sets the flag of an object that lies inside another.
inline void mark_embedded(const Call& call, void* object) {
  announce(call, byte_at(object, at_flags), 1, object);
  *byte_at(object, at_flags) |= OBJ_EMBEDDED;
}

}  // namespace frame
