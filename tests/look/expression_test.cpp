#include <gtest/gtest.h>

#include "tests/look/received.h"
#include "tools/look/filter.h"
#include "tools/look/mistake.h"

namespace look {
namespace {

bool takes(const std::string& expression, const Message& message) {
  return Filter(parse_expression(expression), *message.type).takes(message);
}

std::string mistake(const std::string& expression, const std::string& message = "hop_chan_msg") {
  try {
    const Expression parsed = parse_expression(expression);
    with_paths(paths_of(parsed), {&message_named(message)});
    const Filter filter(parsed, message_named(message));
    return "";
  } catch (const Mistake& made) {
    return made.what();
  }
}

class HopChannel : public testing::Test {
 protected:
  Received received;
  const Message& message = received.add(
      "hop_chan_msg",
      "<hop_chan><hop_chan_id>17</hop_chan_id><dst_site_id>12</dst_site_id><dscp>46</dscp>"
      "<create_ts_msec>2026-11-20 14:29</create_ts_msec>"
      "<flags_show><WAYFIND_UI_HOP_CHAN_FLAG_ACK/></flags_show></hop_chan>"
      "<stats><send_bytes>18446744073709551615</send_bytes></stats>"
      "<dscp_str>a\\xff\\\\\"</dscp_str>"
      "<probe><tx_state><WAYFIND_UI_HOP_CHAN_STATE_REACHABLE/></tx_state></probe>");

  bool takes(const std::string& expression) const { return look::takes(expression, message); }
};

TEST_F(HopChannel, numbers_compare_in_decimal_and_hexadecimal) {
  EXPECT_TRUE(takes("hop_chan.dst_site_id == 12"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id == 0xc"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id == 13"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id != 13"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id != 12"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id < 13"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id < 12"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id <= 12"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id <= 11"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id > 11"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id > 12"));
  EXPECT_TRUE(takes("hop_chan.dst_site_id >= 12"));
  EXPECT_FALSE(takes("hop_chan.dst_site_id >= 13"));
}

TEST_F(HopChannel, numbers_of_64_bits_keep_all_of_them) {
  EXPECT_TRUE(takes("stats.send_bytes == 18446744073709551615"));
  EXPECT_FALSE(takes("stats.send_bytes == 18446744073709551614"));
  EXPECT_TRUE(takes("stats.send_bytes > 18446744073709551614"));
}

TEST_F(HopChannel, not_binds_closest_then_and_then_or) {
  const std::string yes = "hop_chan.dscp == 46", no = "hop_chan.dscp == 0";
  EXPECT_TRUE(takes(yes + " or " + yes + " and " + no));
  EXPECT_FALSE(takes("(" + yes + " or " + yes + ") and " + no));
  EXPECT_FALSE(takes("not " + yes + " and " + no));
  EXPECT_TRUE(takes("not (" + yes + " and " + no + ")"));
  EXPECT_TRUE(takes("not not " + yes));
  EXPECT_TRUE(takes(no + " || " + yes + " && ! " + no));
  EXPECT_TRUE(takes("!(" + no + ")&&" + yes));
}

TEST_F(HopChannel, enum_values_go_by_full_and_short_name_and_by_number) {
  EXPECT_TRUE(takes("probe.tx_state == REACHABLE"));
  EXPECT_TRUE(takes("probe.tx_state == WAYFIND_UI_HOP_CHAN_STATE_REACHABLE"));
  EXPECT_TRUE(takes("probe.tx_state == 1"));
  EXPECT_TRUE(takes("probe.tx_state == 'REACHABLE'"));
  EXPECT_FALSE(takes("probe.tx_state != REACHABLE"));
  EXPECT_TRUE(takes("probe.rx_state != REACHABLE"));
  EXPECT_TRUE(takes("probe.tx_state != 7"));
}

TEST_F(HopChannel, flags_go_by_full_and_short_name_and_by_number) {
  EXPECT_TRUE(takes("hop_chan.flags_show has ACK"));
  EXPECT_TRUE(takes("hop_chan.flags_show has WAYFIND_UI_HOP_CHAN_FLAG_ACK"));
  EXPECT_TRUE(takes("hop_chan.flags_show has 2"));
  EXPECT_FALSE(takes("hop_chan.flags_show has MUTE"));
  EXPECT_FALSE(takes("hop_chan.flags_show has 66"));
}

TEST_F(HopChannel, texts_compare_byte_by_byte) {
  EXPECT_TRUE(takes("hop_chan.create_ts_msec == \"2026-11-20 14:29\""));
  EXPECT_TRUE(takes("hop_chan.create_ts_msec < '2026-11-21'"));
  EXPECT_FALSE(takes("hop_chan.create_ts_msec < '2026-11-20'"));
  EXPECT_TRUE(takes("hop_chan.update_ts_msec == ''"));
}

TEST_F(HopChannel, texts_are_written_as_they_are_printed) {
  EXPECT_TRUE(takes(R"(dscp_str == "a\xff\\\"")"));
  EXPECT_TRUE(takes(R"(dscp_str == 'a\xff\\"')"));
  EXPECT_FALSE(takes(R"(dscp_str == "a\xfe\\\"")"));
}

TEST_F(HopChannel, any_element_of_an_array_will_do) {
  const Message& channel = received.add(
      "channel_msg", "<chan><path><path_id>7</path_id><path_id>9</path_id></path></chan>");
  EXPECT_TRUE(look::takes("chan.path.path_id[*] == 9", channel));
  EXPECT_FALSE(look::takes("chan.path.path_id[*] == 8", channel));
  EXPECT_TRUE(look::takes("chan.path.path_id[*] != 9", channel));
  EXPECT_FALSE(look::takes("not chan.path.path_id[*] == 9", channel));
  EXPECT_FALSE(look::takes("chan.path.path_id[0] == 9", channel));
  EXPECT_FALSE(look::takes("chan.path.path_id[2] == 9", channel));
  EXPECT_FALSE(look::takes("chan.src_intf.src_intf_id[*] != 9", channel));
}

TEST_F(HopChannel, a_value_past_the_variant_fits_no_comparison) {
  Received older(ORK_TRACKING_OFF, "variant-0");
  const Message& old = older.add("hop_chan_msg", "<dscp_str>ef</dscp_str>");
  EXPECT_FALSE(look::takes("serv.rx_r2u_cnt == 0", old));
  EXPECT_FALSE(look::takes("serv.rx_r2u_cnt != 0", old));
  EXPECT_TRUE(look::takes("not serv.rx_r2u_cnt == 0", old));
  EXPECT_FALSE(look::takes("hop_chan.flags_show has ACK", old));
}

TEST(Booleans, stand_alone_or_are_compared_with_true_and_false) {
  Received received;
  const Message& message =
      received.add("hop_chan_state_msg", "<show_all>true</show_all><new_walk>false</new_walk>");
  EXPECT_TRUE(takes("show_all", message));
  EXPECT_FALSE(takes("new_walk", message));
  EXPECT_TRUE(takes("show_all and not new_walk", message));
  EXPECT_TRUE(takes("show_all == true", message));
  EXPECT_FALSE(takes("show_all == false", message));
  EXPECT_FALSE(takes("show_all != true", message));
  EXPECT_TRUE(takes("new_walk != true", message));
}

class Address : public testing::Test {
 protected:
  Received received;

  bool takes(const std::string& value, const std::string& condition) {
    const Message& message = received.add("prefixtosite_msg", "<pfx>" + value + "</pfx>");
    return look::takes("pfx " + condition, message);
  }
};

TEST_F(Address, lies_in_a_prefix_that_covers_all_of_it) {
  EXPECT_TRUE(takes("10.1.0.0/16", "in 10.0.0.0/8"));
  EXPECT_TRUE(takes("10.0.0.0/8", "in \"10.0.0.0/8\""));
  EXPECT_FALSE(takes("10.0.0.0/7", "in 10.0.0.0/8"));
  EXPECT_FALSE(takes("11.0.0.0/16", "in 10.0.0.0/8"));
  EXPECT_TRUE(takes("10.127.255.255", "in 10.0.0.0/9"));
  EXPECT_FALSE(takes("10.128.0.0", "in 10.0.0.0/9"));
  EXPECT_TRUE(takes("10.0.0.1", "in 10.0.0.1"));
  EXPECT_TRUE(takes("192.0.2.1/32", "in 0.0.0.0/0"));
  EXPECT_TRUE(takes("2001:db8:1::/48", "in 2001:db8::/32"));
  EXPECT_FALSE(takes("2001:db9::/48", "in 2001:db8::/32"));
  EXPECT_FALSE(takes("10.0.0.1", "in ::/0"));
  EXPECT_FALSE(takes("none", "in 0.0.0.0/0"));
  EXPECT_FALSE(takes("none", "in none"));
}

TEST_F(Address, equals_with_its_length_when_one_is_written) {
  EXPECT_TRUE(takes("10.0.0.1/24", "== 10.0.0.1"));
  EXPECT_TRUE(takes("10.0.0.1/24", "== 10.0.0.1/24"));
  EXPECT_FALSE(takes("10.0.0.1/24", "== 10.0.0.1/25"));
  EXPECT_TRUE(takes("10.0.0.1/24", "!= 10.0.0.2"));
  EXPECT_FALSE(takes("10.0.0.1/24", "!= 10.0.0.1"));
  EXPECT_TRUE(takes("2001:db8::1/64", "== 2001:DB8:0::1"));
  EXPECT_TRUE(takes("none", "== none"));
  EXPECT_TRUE(takes("10.0.0.1", "!= none"));
}

TEST(ExpressionMistake, words_and_signs_in_the_wrong_place) {
  const std::string path = "character 1: here a path should stand, like a.b";
  EXPECT_EQ(mistake(""), path);
  EXPECT_EQ(mistake("== 1"), path);
  EXPECT_EQ(mistake("(dscp_str == 'a'"), "character 17: here a ) is missing");
  EXPECT_EQ(mistake("dscp_str == 'a')"),
            "character 16: here the expression should end, or go on with and or or");
  EXPECT_EQ(mistake("dscp_str == 'a' dscp_str"),
            "character 17: here the expression should end, or go on with and or or");
  EXPECT_EQ(mistake("dscp_str =="), "character 12: here a value should stand, behind ==");
  EXPECT_EQ(mistake("dscp_str == 'a' and"), "character 20: here a path should stand, like a.b");
}

TEST(ExpressionMistake, characters_that_mean_nothing) {
  EXPECT_EQ(mistake("dscp_str = 'a'"), "character 10: a single = means nothing; write ==");
  EXPECT_EQ(mistake("dscp_str == #"), "character 13: this means nothing here; put texts in quotes");
  EXPECT_EQ(mistake("dscp_str == 'a"), "character 13: this text does not end; close its quotes");
  for (const char* escape : {"'a\\q'", "'a\\x1'", "'a\\xgg'"}) {
    EXPECT_EQ(mistake(std::string("dscp_str == ") + escape),
              "character 15: a backslash begins \\\\, \\\", \\' or \\xNN");
  }
}

TEST(ExpressionMistake, too_many_parentheses) {
  EXPECT_EQ(mistake(std::string(101, '(')),
            "character 101: too many parentheses inside each other");
  EXPECT_EQ(mistake(std::string(99, '(') + "dscp_str == 'a'" + std::string(99, ')')), "");
}

TEST(ExpressionMistake, operations_that_the_type_does_not_know) {
  EXPECT_EQ(mistake("hop_chan.flags_show < 3"),
            "character 21: hop_chan.flags_show is flags and takes has");
  EXPECT_EQ(mistake("probe.tx_state < REACHABLE"),
            "character 16: probe.tx_state is an enum and takes == !=");
  EXPECT_EQ(mistake("hop_chan.dscp in 10.0.0.0/8"),
            "character 15: hop_chan.dscp is a number and takes == != < <= > >=");
  EXPECT_EQ(mistake("hop_chan.dscp"),
            "character 14: hop_chan.dscp is a number and takes == != < <= > >=");
  EXPECT_EQ(mistake("pfx has 1", "prefixtosite_msg"),
            "character 5: pfx is an address and takes == != in");
  EXPECT_EQ(mistake("show_all < true", "hop_chan_state_msg"),
            "character 10: show_all is a boolean and takes == !=");
}

TEST(ExpressionMistake, values_that_the_type_does_not_know) {
  const std::string number = "; compare it with a number, decimal or behind 0x, without quotes";
  for (const char* value : {"REACHABLE", "'1'", "1x", "0x", "0xg", "18446744073709551616"}) {
    EXPECT_EQ(mistake(std::string("hop_chan.dscp == ") + value),
              "character 18: hop_chan.dscp is a number" + number);
  }
  EXPECT_EQ(mistake("dscp_str == ef"),
            "character 13: dscp_str is a text; put what it is compared with in quotes");
  EXPECT_EQ(mistake("show_all == 1", "hop_chan_state_msg"),
            "character 13: show_all is a boolean; compare it with true or false");
  EXPECT_EQ(mistake("pfx in 10.0.0.0/33", "prefixtosite_msg"),
            "character 8: pfx is an address; compare it with an address like 10.0.0.1/24, or none");
  EXPECT_EQ(mistake("probe.tx_state == REACHABEL"),
            "character 19: probe.tx_state is an enum; REACHABEL is no name of it; nearest: "
            "REACHABLE, UNREACHABLE");
  EXPECT_EQ(mistake("probe.tx_state == reachable"),
            "character 19: probe.tx_state is an enum; reachable is no name of it");
  EXPECT_EQ(mistake("hop_chan.flags_show has MUT"),
            "character 25: hop_chan.flags_show is flags; MUT is no name of it; nearest: MUTE, "
            "WAYFIND_UI_HOP_CHAN_FLAG_MUTE");
}

TEST(ExpressionMistake, a_path_is_told_where_it_stands_in_the_expression) {
  EXPECT_EQ(mistake("hop_chan.dscp == 1 and hop_chan.dst_site == 2"),
            "character 33: there is no field dst_site; nearest: dst_site_id");
}

}  // namespace
}  // namespace look
