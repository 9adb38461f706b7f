#include "messages/registration.h"

#include "ork/card_stats.h"
#include "ork/ctl_link.h"
#include "ork/feat_defs.h"
#include "ork/match_trace_common.h"
#include "ork/port_common.h"
#include "ork/show_base.h"
#include "ork/show_core.h"

extern "C" {
[[gnu::visibility("default")]] ork_bundle_handler fwe_ui_wayfind_bundle_registered_handler;
}

namespace messages {

ork_bundle_handler exchange(ork_bundle_handler& slot, ork_bundle_handler handler) {
  const ork_bundle_handler old = slot;
  slot = handler;
  return old;
}

ork_bundle_handler register_for_module(ork_bundle_handler handler) {
  const ork_bundle_handler old = exchange(fwe_ui_wayfind_bundle_registered_handler, handler);
  ctl_link_bundle_handler_register(handler);
  feat_defs_bundle_handler_register(handler);
  show_base_bundle_handler_register(handler);
  card_stats_bundle_handler_register(handler);
  port_common_bundle_handler_register(handler);
  match_trace_common_bundle_handler_register(handler);
  show_core_bundle_handler_register(handler);
  return old;
}

ork_bundle_handler unregister_for_module() {
  const ork_bundle_handler old = exchange(fwe_ui_wayfind_bundle_registered_handler, nullptr);
  ctl_link_bundle_handler_unregister();
  feat_defs_bundle_handler_unregister();
  show_base_bundle_handler_unregister();
  card_stats_bundle_handler_unregister();
  port_common_bundle_handler_unregister();
  match_trace_common_bundle_handler_unregister();
  show_core_bundle_handler_unregister();
  return old;
}

}  // namespace messages
