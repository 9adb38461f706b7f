// One handler for all bundles of the module, told to the seven modules that this one is built on.
// Their order is that of the dependencies.
#pragma once

#include "messages/bundle.h"

namespace messages {

ork_bundle_handler exchange(ork_bundle_handler& slot, ork_bundle_handler handler);
ork_bundle_handler register_for_module(ork_bundle_handler handler);
ork_bundle_handler unregister_for_module();

}  // namespace messages
