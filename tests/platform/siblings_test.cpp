#include "ork/card_stats.h"
#include "ork/ctl_link.h"
#include "ork/feat_defs.h"
#include "ork/match_trace_common.h"
#include "ork/port_common.h"
#include "ork/show_base.h"
#include "ork/show_core.h"
#include "support.h"

namespace platform_test {
namespace {

void handler(ork_handle*, uint32_t, void*, uint32_t*) {}

TEST(Siblings, each_keeps_a_handler_of_its_own) {
  const std::pair<ork_bundle_handler (*)(ork_bundle_handler), ork_bundle_handler (*)()> siblings[] =
      {
          {ctl_link_bundle_handler_register, ctl_link_bundle_handler_unregister},
          {feat_defs_bundle_handler_register, feat_defs_bundle_handler_unregister},
          {show_base_bundle_handler_register, show_base_bundle_handler_unregister},
          {card_stats_bundle_handler_register, card_stats_bundle_handler_unregister},
          {port_common_bundle_handler_register, port_common_bundle_handler_unregister},
          {match_trace_common_bundle_handler_register,
           match_trace_common_bundle_handler_unregister},
          {show_core_bundle_handler_register, show_core_bundle_handler_unregister},
      };
  for (const auto& [add, remove] : siblings) {
    EXPECT_EQ(add(handler), nullptr);
    EXPECT_EQ(add(nullptr), handler);
    EXPECT_EQ(add(handler), nullptr);
    EXPECT_EQ(remove(), handler);
    EXPECT_EQ(remove(), nullptr);
  }
}

TEST(Siblings, show_core_names_the_request_message) {
  EXPECT_STREQ(message_ui_req_msg_name, "message ui_req_msg");
  EXPECT_NE(message_ui_req_msg_luid[0], 0);
}

}  // namespace
}  // namespace platform_test
