// What makes a zeroed block an object: the header, statistics, the place of the state bytes, and the
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
// Writes variant, newest variant, type and flags of a new object. Announces each of them if asked
// to.
InitializedHeader write_header(const Call& call, void* object, const ork_type_info* type,
                               const Initialization& how, int newest);

void initialize(const Call& call, void* object, const ork_type_info* type, Initialization how,
                const RecordRow& record);
void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const RecordRow& record);

// An object has been put inside another: the bit is announced, like every store.
inline void mark_embedded(const Call& call, void* object) {
  announce(call, byte_at(object, at_flags), 1, object);
  *byte_at(object, at_flags) |= OBJ_EMBEDDED;
}

}  // namespace frame
