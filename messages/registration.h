// One handler for all bundles of the module. It is registered as well with the seven modules that
// this one is built on, in the order of their dependencies.
#pragma once

#include "messages/bundle.h"

// The slot of this module, exported.
extern "C" ork_bundle_handler fwe_ui_wayfind_bundle_registered_handler;

namespace messages {

ork_bundle_handler exchange(ork_bundle_handler& slot, ork_bundle_handler handler);
ork_bundle_handler register_for_module(ork_bundle_handler handler);
ork_bundle_handler unregister_for_module();

}  // namespace messages
