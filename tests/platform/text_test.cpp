#include "support.h"

namespace platform_test {
namespace {

// A buffer of exactly the given size, so that the address sanitizer sees a byte too many.
struct Exact {
  explicit Exact(size_t size) : bytes(new char[size]) {
    if (size > 0) {
      bytes[0] = '\0';
    }
  }
  std::unique_ptr<char[]> bytes;
};

TEST(Text, LinesNameTheFieldAtItsIndent) {
  const Handle handle = make_handle();
  char buffer[256] = "";
  uint32_t err = 0;
  const uint64_t big = UINT64_MAX;
  EXPECT_EQ(u_int64_print(handle.get(), 0, buffer, 2, "ppe_addr", &big, sizeof buffer, &err), 33u);
  EXPECT_STREQ(buffer, "  ppe_addr: 18446744073709551615\n");
  const ork_boolean yes = 1;
  ork_boolean_print(handle.get(), 0, buffer, 0, "up", &yes, sizeof buffer, &err);
  EXPECT_STREQ(buffer, "up: true\n");
  ork_ip_address address{};
  ip_address_print(handle.get(), 0, buffer, 0, "ip", &address, sizeof buffer, &err);
  EXPECT_STREQ(buffer, "ip: none\n");
  address.family = 4;
  address.prefix_length = 24;
  address.address[0] = 10;
  ip_address_print(handle.get(), 0, buffer, 0, "ip", &address, sizeof buffer, &err);
  EXPECT_STREQ(buffer, "ip: 10.0.0.0/24\n");
  address.family = 9;
  ip_address_print(handle.get(), 0, buffer, 0, "ip", &address, sizeof buffer, &err);
  EXPECT_STREQ(buffer, "ip: unknown family 9\n");
  EXPECT_EQ(err, 0u);
}

TEST(Text, FixedStringsStopAtTheirEndAndShowNoControlByte) {
  const Handle handle = make_handle();
  char buffer[256] = "";
  uint32_t err = 0;
  null_string_print(handle.get(), 0, buffer, 4, "if_name", "GigabitEthernet1", sizeof buffer, 7,
                    &err);
  EXPECT_STREQ(buffer, "    if_name: Gigabit\n");
  null_string_print(handle.get(), 0, buffer, 0, "s", "a\x1b[2J\\\xff\xc3\xa9", sizeof buffer, 16,
                    &err);
  EXPECT_STREQ(buffer, "s: a\\x1b[2J\\\\\\xff\xc3\xa9\n");
  EXPECT_EQ(err, 0u);
}

TEST(Text, ShortRoomCutsTheLineAndSaysSo) {
  const Handle handle = make_handle();
  const uint32_t value = 12345;
  for (int32_t room = 1; room < 12; ++room) {
    const Exact exact(static_cast<size_t>(room));
    uint32_t err = 0;
    const uint32_t written =
        u_int32_print(handle.get(), 0, exact.bytes.get(), 2, "num", &value, room, &err);
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(written, static_cast<uint32_t>(room - 1));
    EXPECT_EQ(std::strlen(exact.bytes.get()), written);
  }
  for (const int32_t room : {0, -1, INT32_MIN}) {
    uint32_t err = 0;
    EXPECT_EQ(u_int32_print(handle.get(), 0, nullptr, 2, "num", &value, room, &err), 0u);
    EXPECT_EQ(err, 90u);
    err = 0;
    EXPECT_EQ(null_string_print(handle.get(), 0, nullptr, 2, "num", "text", room, 4, &err), 0u);
    EXPECT_EQ(err, 90u);
  }
}

TEST(Text, FixedStringWithShortRoomStaysTerminated) {
  const Handle handle = make_handle();
  for (int32_t room = 1; room < 14; ++room) {
    const Exact exact(static_cast<size_t>(room));
    uint32_t err = 0;
    const uint32_t written =
        null_string_print(handle.get(), 0, exact.bytes.get(), 0, "name", "abcdefg", room, 7, &err);
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(std::strlen(exact.bytes.get()), written);
  }
}

TEST(Text, HugeIndentIsCutNotFollowed) {
  const Handle handle = make_handle();
  char buffer[16] = "";
  uint32_t err = 0;
  const uint8_t value = 1;
  EXPECT_EQ(u_int8_print(handle.get(), 0, buffer, UINT32_MAX, "n", &value, sizeof buffer, &err),
            15u);
  EXPECT_EQ(err, 90u);
}

TEST(PrintSpace, AppendsToTheTextThatBeginsAtTheBuffer) {
  const Handle handle = make_handle();
  char buffer[16] = "ab";
  uint32_t err = 0;
  EXPECT_EQ(ork_print_space(handle.get(), 0, buffer, 3, 14, &err), 3u);
  EXPECT_STREQ(buffer, "ab   ");
  EXPECT_EQ(ork_print_space(handle.get(), 0, nullptr, 0, -5, &err), 0u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(ork_print_space(handle.get(), 0, nullptr, 3, 3, &err), 0u);
  EXPECT_EQ(err, 90u);
}

TEST(Snprintf, CutsCountsAndClosesAfterAnError) {
  const Handle handle = make_handle();
  char buffer[5] = "";
  uint32_t err = 0;
  EXPECT_EQ(ork_snprintf(handle.get(), 0, buffer, 5, &err, "%s", "abcdefg"), 4u);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(err, 90u);
  err = 12;
  EXPECT_EQ(ork_snprintf(handle.get(), 0, buffer, 5, &err, "}\n"), 2u);
  EXPECT_EQ(err, 12u);
  EXPECT_EQ(ork_snprintf(handle.get(), 0, nullptr, 0, &err, "x"), 0u);
  EXPECT_EQ(err, 12u);
}

}  // namespace
}  // namespace platform_test
