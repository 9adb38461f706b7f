// The entries of a handle's two bundle lists. Those received are charged to the handle's storage;
// those to be sent are at most one for each row of the bundle's table.
#pragma once

#include <memory>

#include "memory_cost.h"
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

namespace ork {

constexpr size_t member_cost = malloc_cost(sizeof(ork_bundle_member));

}  // namespace ork
