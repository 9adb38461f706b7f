#include <sys/mman.h>

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

TEST(Text, lines_name_the_field_at_its_indent) {
  const Handle handle;
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
  EXPECT_STREQ(buffer, "ip: family 9/24 0a000000000000000000000000000000\n");
  EXPECT_EQ(err, 0u);
}

TEST(Text, fixed_strings_stop_at_their_end_and_show_no_control_byte) {
  const Handle handle;
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

TEST(Text, short_room_cuts_the_line_and_says_so) {
  const Handle handle;
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

TEST(Text, fixed_string_with_short_room_stays_terminated) {
  const Handle handle;
  for (int32_t room = 1; room < 14; ++room) {
    const Exact exact(static_cast<size_t>(room));
    uint32_t err = 0;
    const uint32_t written =
        null_string_print(handle.get(), 0, exact.bytes.get(), 0, "name", "abcdefg", room, 7, &err);
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(std::strlen(exact.bytes.get()), written);
  }
}

TEST(Text, huge_indent_is_cut_not_followed) {
  const Handle handle;
  char buffer[16] = "";
  uint32_t err = 0;
  const uint8_t value = 1;
  EXPECT_EQ(u_int8_print(handle.get(), 0, buffer, UINT32_MAX, "n", &value, sizeof buffer, &err),
            15u);
  EXPECT_EQ(err, 90u);
}

// Memory that nobody can read: who looks at a value in it does not come back.
class Unreadable {
 public:
  Unreadable() : page_(mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  ~Unreadable() { munmap(page_, 4096); }
  Unreadable(const Unreadable&) = delete;
  Unreadable& operator=(const Unreadable&) = delete;

  template <typename Value>
  const Value* as() const {
    return static_cast<const Value*>(page_);
  }

 private:
  void* page_;
};

// Calls write for each room that is none, and expects nothing but error 90.
void expect_at_once(const std::function<uint32_t(int32_t room, uint32_t* err)>& write) {
  for (const int32_t room : {0, -1, INT32_MIN}) {
    uint32_t err = 0;
    EXPECT_EQ(write(room, &err), 0u);
    EXPECT_EQ(err, 90u);
  }
}

TEST(Text, printers_without_room_look_at_neither_value_nor_name) {
  const Handle handle;
  ork_handle* h = handle.get();
  const Unreadable none;
  const char* name = none.as<char>();
  const auto expect_line = [&](auto print, auto* value) {
    expect_at_once([&](int32_t room, uint32_t* err) {
      return print(h, 0, nullptr, 2, name, value, room, err);
    });
  };
  expect_line(u_int8_print, none.as<uint8_t>());
  expect_line(u_int16_print, none.as<uint16_t>());
  expect_line(u_int32_print, none.as<uint32_t>());
  expect_line(u_int64_print, none.as<uint64_t>());
  expect_line(ork_boolean_print, none.as<ork_boolean>());
  expect_line(ip_address_print, none.as<ork_ip_address>());
  expect_line(link_type_print, none.as<ork_link_type>());
  expect_at_once([&](int32_t room, uint32_t* err) {
    return null_string_print(h, 0, nullptr, 2, name, none.as<char>(), room, 4096, err);
  });
}

TEST(Text, xml_writers_without_room_look_at_neither_value_nor_name) {
  const Handle handle;
  ork_handle* h = handle.get();
  const Unreadable none;
  const char* name = none.as<char>();
  const auto expect_element = [&](auto to_xml, auto* value) {
    expect_at_once([&](int32_t room, uint32_t* err) {
      return to_xml(h, 0, name, nullptr, value, room, 2, err);
    });
  };
  expect_element(u_int8_to_xml, none.as<uint8_t>());
  expect_element(u_int16_to_xml, none.as<uint16_t>());
  expect_element(u_int32_to_xml, none.as<uint32_t>());
  expect_element(u_int64_to_xml, none.as<uint64_t>());
  expect_element(ork_boolean_to_xml, none.as<ork_boolean>());
  expect_element(ip_address_to_xml, none.as<ork_ip_address>());
  expect_element(link_type_to_xml, none.as<ork_link_type>());
  expect_at_once([&](int32_t room, uint32_t* err) {
    return null_string_to_xml(h, 0, name, nullptr, none.as<char>(), room, 4096, 2, err);
  });
  expect_at_once(
      [&](int32_t room, uint32_t* err) { return start_tag(h, 0, nullptr, name, room, 2, err); });
  expect_at_once([&](int32_t room, uint32_t* err) {
    return start_tag_timestamp(h, 0, nullptr, name, room, err);
  });
  expect_at_once(
      [&](int32_t room, uint32_t* err) { return end_tag(h, 0, nullptr, name, room, err); });
  expect_at_once([&](int32_t room, uint32_t* err) {
    return xml_enum_print(h, 0, nullptr, name, room, 4, err);
  });
}

TEST(PrintSpace, appends_to_the_text_that_begins_at_the_buffer) {
  const Handle handle;
  char buffer[16] = "ab";
  uint32_t err = 0;
  EXPECT_EQ(ork_print_space(handle.get(), 0, buffer, 3, 14, &err), 3u);
  EXPECT_STREQ(buffer, "ab   ");
  EXPECT_EQ(ork_print_space(handle.get(), 0, nullptr, 0, -5, &err), 0u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(ork_print_space(handle.get(), 0, nullptr, 3, 3, &err), 0u);
  EXPECT_EQ(err, 90u);
}

TEST(Snprintf, cuts_counts_and_closes_after_an_error) {
  const Handle handle;
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
