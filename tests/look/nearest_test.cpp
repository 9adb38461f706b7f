#include "tools/look/nearest.h"

#include <gtest/gtest.h>

namespace look {
namespace {

TEST(EditDistance, counts_insertions_removals_replacements_and_swaps) {
  EXPECT_EQ(edit_distance("", ""), 0u);
  EXPECT_EQ(edit_distance("", "abc"), 3u);
  EXPECT_EQ(edit_distance("site", "site"), 0u);
  EXPECT_EQ(edit_distance("site", "sites"), 1u);
  EXPECT_EQ(edit_distance("site", "ste"), 1u);
  EXPECT_EQ(edit_distance("site", "sate"), 1u);
  EXPECT_EQ(edit_distance("site", "stie"), 1u);
  EXPECT_EQ(edit_distance("kitten", "sitting"), 3u);
}

TEST(Nearest, at_most_three_names_the_nearest_first) {
  EXPECT_EQ(nearest("hop_idd", {"inst_id", "hop_id", "adj_id", "hop_ids", "hop_ide"}),
            "; nearest: hop_id, hop_ide, hop_ids");
}

TEST(Nearest, a_part_of_a_name_is_near) {
  EXPECT_EQ(nearest("site", {"dst_site_id", "flags"}), "; nearest: dst_site_id");
}

TEST(Nearest, nothing_is_told_when_no_name_is_near) {
  EXPECT_EQ(nearest("xyz", {"dst_site_id", "flags"}), "");
  EXPECT_EQ(nearest("", {"dst_site_id"}), "");
}

TEST(Nearest, names_are_told_once) { EXPECT_EQ(nearest("a", {"ab", "ab"}), "; nearest: ab"); }

}  // namespace
}  // namespace look
