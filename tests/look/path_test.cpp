#include "tools/look/path.h"

#include <gtest/gtest.h>

#include "tests/look/received.h"
#include "tools/look/mistake.h"

namespace look {
namespace {

std::vector<uint64_t> numbers(const std::string& path, const Message& message) {
  std::vector<uint64_t> all;
  any_value(path_in(path, *message.type), message, [&](const Value& value) {
    all.push_back(number(value));
    return false;
  });
  return all;
}

std::string mistake(const std::string& path, const Messages& messages) {
  try {
    with_paths({{0, path}}, messages);
    return "";
  } catch (const Mistake& made) {
    return made.what();
  }
}
std::string mistake(const std::string& path, const std::string& message) {
  return mistake(path, Messages{&message_named(message)});
}

using Numbers = std::vector<uint64_t>;

const char* const two_policies =
    "<table_id>5</table_id><sel_all_policies>"
    "<policy><policy_seq>10</policy_seq><mem><fwe_num>1</fwe_num></mem></policy>"
    "<policy><policy_seq>20</policy_seq><mem><fwe_num>2</fwe_num></mem></policy>"
    "</sel_all_policies>";

TEST(Path, leads_through_embedded_records) {
  Received received;
  const Message& message =
      received.add("hop_chan_msg", "<hop_chan><dst_site_id>12</dst_site_id></hop_chan>");
  EXPECT_EQ(numbers("hop_chan.dst_site_id", message), Numbers{12});
}

TEST(Path, a_star_leads_to_every_element_and_an_index_to_one) {
  Received received;
  const Message& message = received.add("select_flow_msg", two_policies);
  EXPECT_EQ(numbers("sel_all_policies.policy[*].policy_seq", message), (Numbers{10, 20}));
  EXPECT_EQ(numbers("sel_all_policies.policy[1].policy_seq", message), Numbers{20});
  EXPECT_EQ(numbers("sel_all_policies.policy[1].mem.fwe_num", message), Numbers{2});
  EXPECT_EQ(numbers("sel_all_policies.policy[2].policy_seq", message), Numbers{});
  EXPECT_EQ(numbers("sel_all_policies.num_policies", message), Numbers{2});
}

TEST(Path, leads_to_the_elements_of_an_array_of_numbers) {
  Received received;
  const Message& message = received.add(
      "channel_msg", "<chan><path><path_id>7</path_id><path_id>9</path_id></path></chan>");
  EXPECT_EQ(numbers("chan.path.path_id[*]", message), (Numbers{7, 9}));
  EXPECT_EQ(numbers("chan.path.path_id[0]", message), Numbers{7});
}

TEST(Path, ends_early_when_the_visitor_has_seen_enough) {
  Received received;
  const Message& message = received.add("select_flow_msg", two_policies);
  int visits = 0;
  EXPECT_TRUE(any_value(path_in("sel_all_policies.policy[*].policy_seq", *message.type), message,
                        [&](const Value&) { return ++visits == 1; }));
  EXPECT_EQ(visits, 1);
}

TEST(Path, finds_the_records_of_a_message_with_two) {
  Received received;
  const Message& message =
      received.add("auto_tunnel_show",
                   "<fwe_cl_wayfind_auto_tunnel><table_id>7</table_id></fwe_cl_wayfind_auto_tunnel>"
                   "<fwe_cl_wayfind_auto_tunnel_misc/>");
  EXPECT_EQ(numbers("table_id", message), Numbers{7});
  EXPECT_EQ(numbers("fwe_cl_wayfind_auto_tunnel.table_id", message), Numbers{7});
  EXPECT_EQ(path_in("intf_name", *message.type).slot, 1u);
  EXPECT_EQ(path_in("fwe_cl_wayfind_auto_tunnel_misc.intf_name", *message.type).slot, 1u);
}

TEST(Path, past_the_variant_there_is_no_value) {
  Received received(ORK_TRACKING_OFF, "variant-0");
  const Message& message = received.add("hop_chan_msg", "<dscp_str>ef</dscp_str>");
  EXPECT_EQ(numbers("serv.rx_r2u_cnt", message), Numbers{});
  EXPECT_EQ(numbers("probe.sample_cd", message), Numbers{0});
}

TEST(PathMistake, a_word_that_does_not_exist_is_told_with_its_place_and_the_nearest) {
  EXPECT_EQ(mistake("hop_chan.dst_site", "hop_chan_msg"),
            "character 10: there is no field dst_site; nearest: dst_site_id");
  EXPECT_EQ(mistake("hop_chn.hop_id", "hop_chan_msg"),
            "character 1: there is no field hop_chn; nearest: hop_chan");
}

TEST(PathMistake, a_name_that_stands_deeper_is_told_with_the_way_to_it) {
  EXPECT_EQ(mistake("dst_site_id", "hop_chan_msg"),
            "character 1: there is no field dst_site_id; nearest: hop_chan.dst_site_id");
  EXPECT_EQ(mistake("policy_seq", "select_flow_msg"),
            "character 1: there is no field policy_seq; nearest: "
            "sel_all_policies.policy[*].policy_seq");
}

TEST(PathMistake, arrays_need_brackets_and_nothing_else_has_any) {
  EXPECT_EQ(mistake("chan.path.path_id", "channel_msg"),
            "character 11: path_id is an array; write path_id[*] or path_id[0]");
  EXPECT_EQ(mistake("chan.chan_id[0]", "channel_msg"),
            "character 13: chan_id is no array; leave out the brackets");
  for (const char* path : {"chan.path.path_id[]", "chan.path.path_id[x]", "chan.path.path_id[-1]",
                           "chan.path.path_id[4294967296]"}) {
    EXPECT_EQ(mistake(path, "channel_msg"),
              "character 18: between the brackets stands * or an index");
  }
}

TEST(PathMistake, a_path_ends_at_a_value_and_not_before_or_behind_it) {
  EXPECT_EQ(mistake("chan", "channel_msg"),
            "character 1: chan is a record; go on to a field of it, like chan.chan_id");
  EXPECT_EQ(mistake("epoch.x", "channel_msg"), "character 7: epoch holds no fields");
  EXPECT_EQ(mistake("chan.", "channel_msg"), "character 6: there is no field ");
  EXPECT_EQ(mistake("", "channel_msg"), "character 1: there is no field ");
}

TEST(PathMistake, of_several_messages_the_one_counts_in_which_the_path_goes_farthest) {
  const Messages both{&message_named("select_tc_msg"), &message_named("select_flow_msg")};
  EXPECT_EQ(mistake("sel_all_policies.num_policie", both),
            "character 18: there is no field num_policie; nearest: num_policies");
  EXPECT_EQ(mistake("tc_i", both), "character 1: there is no field tc_i; nearest: tc_id, tc_nr");
}

TEST(Paths, select_the_messages_that_have_all_of_them) {
  const wayfind_message* tc = &message_named("select_tc_msg");
  const wayfind_message* flow = &message_named("select_flow_msg");
  EXPECT_EQ(with_paths({{0, "table_id"}}, {tc, flow}), (Messages{tc, flow}));
  EXPECT_EQ(with_paths({{0, "tc_id"}}, {tc, flow}), Messages{tc});
  EXPECT_EQ(with_paths({{0, "table_id"}, {9, "hash_val"}}, {tc, flow}), Messages{flow});
  try {
    with_paths({{0, "tc_id"}, {6, "hash_val"}}, {tc, flow});
    FAIL();
  } catch (const Mistake& made) {
    EXPECT_STREQ(made.what(), "character 7: no message has hash_val and all paths before it");
  }
}

}  // namespace
}  // namespace look
