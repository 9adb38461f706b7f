#include "tools/look/selection.h"

#include <gtest/gtest.h>

#include "tests/look/received.h"
#include "tests/look/told_roles.h"
#include "tools/look/mistake.h"

namespace look {
namespace {

// A show of traffic classes 3, 1 and 2 and of flows 20 and 10, behind their state message.
class Show : public testing::Test {
 protected:
  Show() {
    roles.keys["select_tc_msg"] = {"tc_id"};
    roles.keys["select_flow_msg"] = {"table_id", "dst_prefix"};
    received.add("select_state_msg", "<count>5</count>");
    for (const char* tc : {"3", "1", "2"}) {
      received.add("select_tc_msg", std::string("<tc_id>") + tc +
                                        "</tc_id><table_id>20</table_id>" + "<dst_prefix>10.0.0." +
                                        tc + "/32</dst_prefix>");
    }
    for (const char* table : {"20", "10"}) {
      received.add("select_flow_msg", std::string("<table_id>") + table + "</table_id>" +
                                          "<dst_prefix>10.0.0." + table + "/32</dst_prefix>");
    }
  }

  // The messages as letters: S state, t and its identifier, f and its table.
  std::string shown(const std::vector<Message>& messages) const {
    std::string told;
    for (const Message& message : messages) {
      const std::string name = message.type->name;
      if (name.ends_with("state_msg")) told += "S ";
      if (name.ends_with("tc_msg")) told += "t" + id(message, "tc_id") + " ";
      if (name.ends_with("flow_msg")) told += "f" + id(message, "table_id") + " ";
    }
    return told;
  }
  std::string selected(const Wishes& wishes) const {
    return shown(Selection(bundle, wishes, roles).of(received.messages()));
  }
  std::string mistake(const Wishes& wishes) const {
    try {
      const Selection selection(bundle, wishes, roles);
      return "";
    } catch (const Mistake& made) {
      return made.what();
    }
  }

  Received received;
  ToldRoles roles;
  const wayfind_bundle& bundle = bundle_named("show_selection_response");

 private:
  static std::string id(const Message& message, const char* path) {
    std::string told;
    any_value(path_in(path, *message.type), message, [&](const Value& value) {
      told = std::to_string(number(value));
      return true;
    });
    return told;
  }
};

TEST_F(Show, stays_as_it_is_when_nothing_is_wished) {
  EXPECT_EQ(selected({}), "S t3 t1 t2 f20 f10 ");
}

TEST_F(Show, a_condition_drops_messages_but_not_the_one_that_comes_once) {
  EXPECT_EQ(selected({.where = "table_id == 20"}), "S t3 t1 t2 f20 ");
  EXPECT_EQ(selected({.where = "table_id == 99"}), "S ");
}

TEST_F(Show, a_path_that_some_messages_have_selects_among_those) {
  EXPECT_EQ(selected({.where = "tc_id < 3"}), "S t1 t2 ");
  EXPECT_EQ(selected({.where = "hash_val == 0"}), "S f20 f10 ");
  EXPECT_EQ(selected({.where = "table_id == 20 or tc_id == 1"}), "S t3 t1 t2 ");
}

TEST_F(Show, sorting_keeps_each_type_in_its_places) {
  EXPECT_EQ(selected({.sort = "table_id"}), "S t3 t1 t2 f10 f20 ");
  EXPECT_EQ(selected({.sort = "tc_id"}), "S t1 t2 t3 ");
  EXPECT_EQ(selected({.sort = "-tc_id"}), "S t3 t2 t1 ");
  EXPECT_EQ(selected({.sort = "dst_prefix"}), "S t1 t2 t3 f10 f20 ");
  EXPECT_EQ(selected({.sort = "-dst_prefix"}), "S t3 t2 t1 f20 f10 ");
}

TEST_F(Show, a_limit_counts_what_may_repeat) {
  EXPECT_EQ(selected({.limit = 0}), "S ");
  EXPECT_EQ(selected({.limit = 4}), "S t3 t1 t2 f20 ");
  EXPECT_EQ(selected({.where = "table_id == 20", .sort = "tc_id", .limit = 2}), "S t1 t2 ");
}

TEST_F(Show, an_identifier_is_the_values_of_the_key_in_order) {
  EXPECT_EQ(selected({.id = "2"}), "S t2 ");
  EXPECT_EQ(selected({.id = "9"}), "S ");
  EXPECT_EQ(selected({.id = "10,10.0.0.10/32"}), "S f10 ");
  EXPECT_EQ(selected({.id = "10,10.0.0.20/32"}), "S ");
}

TEST_F(Show, counts_the_messages_that_may_repeat) {
  const Selection selection(bundle, {.where = "tc_id < 3"}, roles);
  EXPECT_EQ(selection.count(received.messages()), 5u);
  EXPECT_EQ(selection.count(selection.of(received.messages())), 2u);
}

TEST_F(Show, a_mistake_names_the_option_and_the_place) {
  EXPECT_EQ(mistake({.where = "tc_if == 1"}),
            "--where, character 1: there is no field tc_if; nearest: tc_id, tc_nr");
  EXPECT_EQ(mistake({.where = "tc_id == 1 and hash_val == 1"}),
            "--where, character 16: no message has hash_val and all paths before it");
  EXPECT_EQ(mistake({.sort = "-table"}),
            "--sort, character 2: there is no field table; nearest: table_id");
  EXPECT_EQ(mistake({.sort = "sel_all_policies.policy[*].policy_seq"}),
            "--sort, character 1: sel_all_policies.policy[*].policy_seq leads to many values; "
            "write an index in place of *");
  EXPECT_EQ(mistake({.id = "x"}),
            "--id, character 1: tc_id is a number; compare it with a number, decimal or behind "
            "0x, without quotes");
  EXPECT_EQ(mistake({.id = "10,x"}),
            "--id, character 4: dst_prefix is an address; compare it with an address like "
            "10.0.0.1/24, or none");
  EXPECT_EQ(mistake({.id = "1,2,3"}),
            "--id, character 1: no key has so many fields; that of fwe_cl_wayfind_select_tc_msg "
            "is tc_id; that of fwe_cl_wayfind_select_flow_msg is table_id,dst_prefix");
}

TEST(Order, texts_sort_by_their_bytes_and_messages_without_a_value_come_last) {
  Received received;
  const ToldRoles roles;
  for (const char* seq : {"", "20", "10"}) {
    const std::string policy =
        *seq == 0 ? "" : std::string("<policy><policy_seq>") + seq + "</policy_seq></policy>";
    received.add("select_flow_msg", "<hash_val>1" + std::string(seq) +
                                        "</hash_val><sel_all_policies>" + policy +
                                        "</sel_all_policies>");
  }
  const auto hashes = [&](const std::string& sort) {
    const Selection selection(bundle_named("show_selection_response"), {.sort = sort}, roles);
    std::string told;
    for (const Message& message : selection.of(received.messages()))
      told += std::to_string(
                  number(value(message.record(0), field_named("select_flow_data", "hash_val")))) +
              " ";
    return told;
  };
  EXPECT_EQ(hashes("sel_all_policies.policy[0].policy_seq"), "110 120 1 ");
  EXPECT_EQ(hashes("-sel_all_policies.policy[0].policy_seq"), "120 110 1 ");
  EXPECT_EQ(hashes("create_ts_msec"), "1 120 110 ");
}

TEST(Order, flags_have_none) {
  try {
    const Order order("hop_chan.flags_show", {&message_named("hop_chan_msg")});
    FAIL();
  } catch (const Mistake& made) {
    EXPECT_STREQ(made.what(), "character 1: hop_chan.flags_show is flags, which have no order");
  }
}

TEST(Selection, a_show_of_messages_that_come_once_has_nothing_to_select_among) {
  try {
    const Selection selection(bundle_named("show_debug_response"), {.where = "is_none"},
                              ToldRoles());
    FAIL();
  } catch (const Mistake& made) {
    EXPECT_STREQ(made.what(),
                 "--where, character 1: no message of this show may repeat, so there is nothing to "
                 "select among");
  }
}

TEST(Selection, a_key_of_texts_is_written_without_quotes) {
  Received received;
  ToldRoles roles;
  roles.keys["intf_data_msg"] = {"if_name"};
  received.add("intf_data_msg", "<if_name>eth0</if_name>");
  received.add("intf_data_msg", "<if_name>eth1</if_name>");
  const Selection selection(bundle_named("show_intf_response"), {.id = "eth1"}, roles);
  const std::vector<Message> selected = selection.of(received.messages());
  ASSERT_EQ(selected.size(), 1u);
  EXPECT_EQ(text(value(selected[0].record(0), field_named("intf_data", "if_name"))), "eth1");
}

}  // namespace
}  // namespace look
