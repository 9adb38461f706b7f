// One sibling message module. Built once for each of them, SIBLING being its name.
#include <atomic>

#include "ork/handle.h"
#include "support/export.h"

#define ORK_JOIN_EXPANDED(a, b) a##b
#define ORK_JOIN(a, b) ORK_JOIN_EXPANDED(a, b)

namespace {

std::atomic<ork_bundle_handler> registered_handler{nullptr};

}  // namespace

extern "C" {

ORK_EXPORT ork_bundle_handler ORK_JOIN(SIBLING,
                                       _bundle_handler_register)(ork_bundle_handler handler) {
  return registered_handler.exchange(handler);
}

ORK_EXPORT ork_bundle_handler ORK_JOIN(SIBLING, _bundle_handler_unregister)() {
  return registered_handler.exchange(nullptr);
}

}  // extern "C"
