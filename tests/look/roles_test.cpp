#include "tools/look/roles.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/look/received.h"
#include "tools/look/path.h"

namespace look {
namespace {

FieldRoles roles_of(const std::string& record, const std::string& field) {
  return roles_of_tables().of(field_named(record, field));
}

std::string key_of(const std::string& message) {
  std::string told;
  for (const char* path : roles_of_tables().key(message_named(message)))
    told += (told.empty() ? "" : ",") + std::string(path);
  return told;
}

TEST(Roles, counters_grow_and_other_large_numbers_do_not) {
  EXPECT_TRUE(roles_of("hop_chan_stats_st", "send_probes").has(counter_role));
  EXPECT_TRUE(roles_of("hop_chan_serv_st", "rx_r2u_cnt").has(counter_role));
  EXPECT_TRUE(roles_of("proxy_stats", "proxy_errcnt").has(counter_role));
  EXPECT_FALSE(roles_of("mem_st", "ppe_addr").has(counter_role));
  EXPECT_FALSE(roles_of("mem_st", "exmem_addr").has(counter_role));
  EXPECT_FALSE(roles_of("inst_st", "dscp_bitmap").has(counter_role));
}

TEST(Roles, a_field_may_have_several) {
  EXPECT_EQ(roles_of("hop_chan_st", "update_ts_msec").roles, stamp_role | column_role);
  EXPECT_EQ(roles_of("hop_chan_st", "create_ts_msec").roles, stamp_role);
  EXPECT_EQ(roles_of("hop_chan_st", "hop_chan_id").roles, 0);
  EXPECT_EQ(roles_of("hop_chan_state_data", "show_detail").roles, request_role);
}

TEST(Roles, a_count_tells_what_it_counts) {
  EXPECT_EQ(roles_of("global_info_data", "num_color").counted, &message_named("color_msg"));
  EXPECT_TRUE(roles_of("global_info_data", "num_color").has(count_role));
  EXPECT_TRUE(roles_of("hop_chan_state_data", "num_hop_chans").has(count_role));
  EXPECT_EQ(roles_of("hop_chan_state_data", "num_hop_chans").counted, nullptr);
  EXPECT_FALSE(roles_of("global_info_data", "num_sel_flow_tc").has(count_role));
}

TEST(Roles, a_key_may_be_deeper_than_the_record_or_of_several_fields) {
  EXPECT_EQ(key_of("hop_chan_msg"), "hop_chan.hop_chan_id");
  EXPECT_EQ(key_of("select_flow_msg"), "table_id,src_prefix,dst_prefix");
  EXPECT_EQ(key_of("hop_chan_state_msg"), "");
}

TEST(Roles, keys_are_paths_of_their_messages) {
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    for (const char* path : roles_of_tables().key(wayfind_messages[i])) {
      SCOPED_TRACE(path);
      EXPECT_TRUE(std::holds_alternative<Path>(resolve(path, wayfind_messages[i])));
    }
  }
}

}  // namespace
}  // namespace look
