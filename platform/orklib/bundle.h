// The entries of a handle's two bundle lists. They lie outside the handle's budget.
#pragma once

#include <memory>

#include "ork/bundle.h"
#include "ork/platform.h"

namespace ork {

// A message that the open bundle to be sent was asked for.
struct SentMessage {
  ork_list_head link;
  const uint8_t* luid;
  uint64_t written;  // frames finished so far
};

// Puts an entry behind the last one.
void append(ork_list_head& list, ork_list_head& entry);

}  // namespace ork

// A message kept until its bundle commits.
struct ork_bundle_member {
  ork_list_head link;
  ork_dispatch_entry entry;  // a copy: the handle may outlive the dispatcher
  void* message;             // null once taken
};
