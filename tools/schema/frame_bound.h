// What reading an honest frame may come to in memory, worked out from the schema.
#pragma once

#include <cstddef>

#include "ork/platform.h"

namespace wayfind {

// For frame_base and frame_factor of a handle's options: no message of any release that its sender
// could have meant passes it.
struct FrameBound {
  size_t base;    // the message object, its records, and the heads of their arrays
  size_t factor;  // for each byte of the frame
};

FrameBound frame_bound(ork_tracking tracking);

}  // namespace wayfind
