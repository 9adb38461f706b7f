#include "support.h"

namespace platform_test {
namespace {

constexpr const char* luid_1 = "01010101010101010101010101010101";
constexpr const char* luid_2 = "02020202020202020202020202020202";

std::string line(const char* name, const char* luid, int variants) {
  return std::string(name) + " " + luid + " " + std::to_string(variants) + "\n";
}

int8_t look_up(const Handle& handle, const TestType& type) {
  uint32_t err = 0;
  const int8_t variant = ork_domain_lookup_variant(handle.get(), &handle->domain, type.get(), &err);
  EXPECT_EQ(err, 0u);
  return variant;
}

std::string parse_error(std::string_view text) {
  uint32_t err = 0;
  char reason[128] = "";
  EXPECT_EQ(ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason), nullptr);
  EXPECT_EQ(err, 22u);
  return reason;
}

TEST(TypeList, text_round_trips) {
  const std::string text = line("one", luid_1, 4) + line("two", luid_2, 1);
  const List list = parse_list("# a comment\n\n" + text + "   \t\r\n");
  EXPECT_EQ(ork_type_list_size(list.get()), 2u);
  std::string out(text.size() + 1, '?');
  EXPECT_EQ(ork_type_list_text(list.get(), nullptr, 0), text.size());
  EXPECT_EQ(ork_type_list_text(list.get(), out.data(), text.size()), text.size());
  EXPECT_EQ(out[0], '?') << "no room for the NUL, nothing written";
  ork_type_list_text(list.get(), out.data(), out.size());
  EXPECT_STREQ(out.c_str(), text.c_str());
}

TEST(TypeList, wrong_lines_are_named) {
  EXPECT_EQ(parse_error("\none 01 1\n"),
            "line 2: the second word is no LUID of 32 hexadecimal digits");
  EXPECT_EQ(parse_error(line("one", luid_1, 0)),
            "line 1: the third word is no number of variants from 1 to 127");
  EXPECT_EQ(parse_error(line("one", luid_1, 128)),
            "line 1: the third word is no number of variants from 1 to 127");
  EXPECT_EQ(parse_error("one"), "line 1: the second word is no LUID of 32 hexadecimal digits");
  EXPECT_EQ(parse_error("one " + std::string(luid_1) + " 1 1"), "line 1: more than three words");
  EXPECT_EQ(parse_error(line("one", luid_1, 1) + line("uno", luid_1, 1)),
            "line 2: the LUID is listed twice");
  EXPECT_EQ(parse_error("one 0x" + std::string(30, '0') + " 1"),
            "line 1: the second word is no LUID of 32 hexadecimal digits");
}

TEST(TypeList, unreadable_file_gives_its_reason) {
  uint32_t err = 0;
  char reason[128] = "";
  EXPECT_EQ(ork_type_list_read("/nonexistent/list", &err, reason, sizeof reason), nullptr);
  EXPECT_EQ(err, 2u);
  EXPECT_STREQ(reason, "No such file or directory");
  err = 0;
  EXPECT_EQ(ork_type_list_read("/", &err, reason, sizeof reason), nullptr);
  EXPECT_EQ(err, 21u);
}

TEST(Domain, without_a_peer_every_type_is_at_its_newest) {
  const Handle handle;
  EXPECT_EQ(look_up(handle, TestType(1, "one", {20, 30, 40})), 2);
}

TEST(Domain, peer_decides_and_may_be_newer) {
  const Handle handle;
  const TestType one(1, "one", {20, 30});
  const TestType two(2, "two", {20, 30});
  uint32_t err = 0;
  EXPECT_EQ(look_up(handle, one), 1);
  ork_handle_set_peer(handle.get(), "peer", parse_list(line("one", luid_1, 9)).get(), &err);
  EXPECT_STREQ(handle->domain_name, "peer");
  EXPECT_EQ(look_up(handle, one), 8);
  EXPECT_EQ(look_up(handle, two), -1);
  EXPECT_EQ(ork_domain_lookup_message_ok(handle.get(), &handle->domain, one.get(), &err), 1u);
  EXPECT_EQ(ork_domain_lookup_message_ok(handle.get(), &handle->domain, two.get(), &err), 0u);
  ork_handle_set_peer(handle.get(), "newest", nullptr, &err);
  EXPECT_EQ(look_up(handle, two), 1);
  EXPECT_EQ(ork_domain_lookup_variant(handle.get(), &handle->domain, nullptr, &err), 0);
}

TEST(Domain, own_release_holds_back_before_and_after_the_peer_is_known) {
  const List release = parse_list(line("one", luid_1, 1));
  const Handle handle([&](ork_options& options) { options.release = release.get(); });
  const TestType one(1, "one", {20, 30});
  const TestType two(2, "two", {20, 30});
  EXPECT_EQ(look_up(handle, one), 0);
  EXPECT_EQ(look_up(handle, two), -1);
  uint32_t err = 0;
  ork_handle_set_peer(handle.get(), "peer",
                      parse_list(line("one", luid_1, 2) + line("two", luid_2, 2)).get(), &err);
  EXPECT_EQ(look_up(handle, one), 0);
  EXPECT_EQ(look_up(handle, two), -1);
}

TEST(Domain, announcement_is_what_the_modules_and_the_release_both_know) {
  const TestType one(1, "one", {20, 30});
  const TestType two(2, "two", {20});
  const TestModule module({one.get(), two.get()});
  const List release =
      parse_list(line("one", luid_1, 1) + line("other", "03030303030303030303030303030303", 1));
  uint32_t err = 0;
  const List all(ork_type_list_from_modules(&err));
  EXPECT_EQ(ork_type_list_size(all.get()), 2u);
  EXPECT_EQ(ork_type_list_variants(all.get(), one.get()->luid), 2u);
  const Handle handle([&](ork_options& options) { options.release = release.get(); });
  const List announced(ork_handle_announcement(handle.get(), &err));
  EXPECT_EQ(ork_type_list_size(announced.get()), 1u);
  EXPECT_EQ(ork_type_list_variants(announced.get(), one.get()->luid), 1u);
  EXPECT_EQ(ork_type_list_variants(announced.get(), two.get()->luid), 0u);
}

}  // namespace
}  // namespace platform_test
