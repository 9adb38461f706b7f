#include "tools/look/small_type.h"

#include <gtest/gtest.h>

#include <set>

namespace look {
namespace {

const wayfind_small_type& type_named(const std::string& name) {
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    if (wayfind_small_types[i].name == "fwe_cl_wayfind_" + name) return wayfind_small_types[i];
  }
  throw std::runtime_error("no type " + name);
}

TEST(SmallType, the_common_prefix_ends_with_a_whole_word) {
  EXPECT_EQ(common_prefix(type_named("hop_chan_state_e")), "WAYFIND_UI_HOP_CHAN_STATE_");
  EXPECT_EQ(common_prefix(type_named("select_ui_type_e")), "WAYFIND_UI_SELECT_");
  EXPECT_EQ(common_prefix(type_named("intf_plr_state_e")), "WAYFIND_UI_INTF_PLR_");
  EXPECT_EQ(common_prefix(type_named("hop_chan_flags")), "WAYFIND_UI_HOP_CHAN_FLAG_");
}

TEST(SmallType, names_that_begin_alike_keep_their_whole_words) {
  const char* const names[] = {"A_STATE_UP", "A_STATE_UPPER"};
  EXPECT_EQ(common_prefix(names), "A_STATE_");
  const char* const nothing[] = {"UP", "DOWN"};
  EXPECT_EQ(common_prefix(nothing), "");
}

TEST(SmallType, names_are_found_in_full_and_in_short) {
  const wayfind_small_type& status = type_named("select_tc_ui_status_e");
  EXPECT_EQ(named(status, "WAYFIND_UI_SELECT_TC_STATUS_NORAMAL"), 0u);
  EXPECT_EQ(named(status, "NORAMAL"), 0u);
  EXPECT_EQ(named(status, "NORMAL"), std::nullopt);
  EXPECT_EQ(short_name(status, 2), "ALL_UNREACH");
  EXPECT_EQ(full_name(status, 2), "WAYFIND_UI_SELECT_TC_STATUS_ALL_UNREACH");
  EXPECT_EQ(short_name(status, 3), std::nullopt);
}

TEST(SmallType, every_short_name_is_its_own_and_not_empty) {
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    const wayfind_small_type& type = wayfind_small_types[i];
    std::set<std::string> seen;
    for (const std::string& name : names(type)) EXPECT_TRUE(seen.insert(name).second) << name;
    EXPECT_FALSE(seen.contains("")) << type.name;
    EXPECT_EQ(seen.size(), 2u * type.values) << type.name;
  }
}

}  // namespace
}  // namespace look
