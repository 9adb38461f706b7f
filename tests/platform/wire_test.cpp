#include <array>

#include "support.h"

namespace platform_test {
namespace {

TEST(Wire, header_is_twenty_seven_bytes_in_network_order) {
  const Handle handle;
  const ork_message_header header{
      0xBC, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 1, 0x01020304, 0x0A0B0C0D};
  std::array<uint8_t, 28> bytes;
  bytes.fill(0x55);
  uint32_t err = 0;
  EXPECT_EQ(_ork_message_header_marshal(handle.get(), 0, bytes.data(), &header, 27, &err), 27u);
  const std::array<uint8_t, 28> expected = {0xBC, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1,   1, 2,
                                            3,    4,    0x0A, 0x0B, 0x0C, 0x0D, 0,    0,   0, 0,
                                            0,    0,    0,    0,    0,    0,    0,    0x55};
  EXPECT_EQ(bytes, expected);
  ork_message_header back{};
  EXPECT_EQ(_ork_message_header_unmarshal(handle.get(), 0, bytes.data(), &back, 27, &err), 27u);
  EXPECT_EQ(std::memcmp(&back, &header, sizeof header), 0);
  EXPECT_EQ(err, 0u);
}

TEST(Wire, base_of_a_record_image) {
  const Handle handle;
  std::array<uint8_t, 15> bytes{};
  uint32_t err = 0;
  const int8_t variant = -1;
  const uint8_t flags = 0x28;
  const uint64_t word = 0x0102030405060708;
  const uint8_t byte = 9;
  const uint32_t jump = 0xA1B2C3D4;
  EXPECT_EQ(_ork_instance_variant_marshal(handle.get(), 0, &bytes[0], &variant, 1, &err), 1u);
  EXPECT_EQ(_ork_instance_obj_flag_marshal(handle.get(), 0, &bytes[1], &flags, 1, &err), 1u);
  EXPECT_EQ(_ork_instance_ra_data_marshal(handle.get(), 0, &bytes[2], &word, &byte, 9, &err), 9u);
  EXPECT_EQ(_ork_variant_jump_marshal(handle.get(), 0, &bytes[11], &jump, 4, &err), 4u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(bytes, (std::array<uint8_t, 15>{0xFF, 0x28, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xA1, 0xB2, 0xC3,
                                            0xD4}));

  int8_t variant_back = 0;
  uint8_t flags_back = 0;
  uint64_t word_back = 0;
  uint8_t byte_back = 0;
  uint32_t jump_back = 0;
  _ork_instance_variant_unmarshal(handle.get(), 0, &bytes[0], &variant_back, 1, &err);
  _ork_instance_obj_flag_unmarshal(handle.get(), 0, &bytes[1], &flags_back, 1, &err);
  _ork_instance_ra_data_unmarshal(handle.get(), 0, &bytes[2], &word_back, &byte_back, 9, &err);
  _ork_variant_jump_unmarshal(handle.get(), 0, &bytes[11], &jump_back, 4, &err);
  EXPECT_EQ(variant_back, variant);
  EXPECT_EQ(flags_back, flags);
  EXPECT_EQ(word_back, word);
  EXPECT_EQ(byte_back, byte);
  EXPECT_EQ(jump_back, jump);
}

// Null buffers: a touch would not survive.
TEST(Wire, short_and_negative_room_touches_nothing) {
  const Handle handle;
  const ork_message_header header{};
  const uint64_t word = 0;
  const uint8_t byte = 0;
  const int8_t variant = 0;
  const uint32_t jump = 0;
  ork_message_header header_back{};
  uint64_t word_back = 7;
  uint8_t byte_back = 7;
  int8_t variant_back = 7;
  uint32_t jump_back = 7;
  using Call = std::function<uint32_t(int32_t, uint32_t*)>;
  ork_handle* h = handle.get();
  const std::pair<int32_t, Call> calls[] = {
      {27, [&](int32_t r,
               uint32_t* e) { return _ork_message_header_marshal(h, 0, nullptr, &header, r, e); }},
      {27,
       [&](int32_t r, uint32_t* e) {
         return _ork_message_header_unmarshal(h, 0, nullptr, &header_back, r, e);
       }},
      {9,
       [&](int32_t r, uint32_t* e) {
         return _ork_instance_ra_data_marshal(h, 0, nullptr, &word, &byte, r, e);
       }},
      {9,
       [&](int32_t r, uint32_t* e) {
         return _ork_instance_ra_data_unmarshal(h, 0, nullptr, &word_back, &byte_back, r, e);
       }},
      {4, [&](int32_t r,
              uint32_t* e) { return _ork_variant_jump_marshal(h, 0, nullptr, &jump, r, e); }},
      {4,
       [&](int32_t r, uint32_t* e) {
         return _ork_variant_jump_unmarshal(h, 0, nullptr, &jump_back, r, e);
       }},
      {1,
       [&](int32_t r, uint32_t* e) {
         return _ork_instance_variant_marshal(h, 0, nullptr, &variant, r, e);
       }},
      {1,
       [&](int32_t r, uint32_t* e) {
         return _ork_instance_variant_unmarshal(h, 0, nullptr, &variant_back, r, e);
       }},
      {1, [&](int32_t r,
              uint32_t* e) { return _ork_instance_obj_flag_marshal(h, 0, nullptr, &byte, r, e); }},
      {1,
       [&](int32_t r, uint32_t* e) {
         return _ork_instance_obj_flag_unmarshal(h, 0, nullptr, &byte_back, r, e);
       }},
  };
  for (const auto& [size, call] : calls) {
    for (const int32_t room : {size - 1, 0, -1, INT32_MIN}) {
      uint32_t err = 0;
      ork_clear_last_error(h);
      EXPECT_EQ(call(room, &err), 0u);
      EXPECT_EQ(err, 90u);
      EXPECT_EQ(ork_handle_last_error(h), 90u);
    }
    uint32_t pending = 5;
    EXPECT_EQ(call(100, &pending), 0u);
    EXPECT_EQ(pending, 5u);
  }
  EXPECT_EQ(word_back, 7u);
  EXPECT_EQ(variant_back, 7);
}

}  // namespace
}  // namespace platform_test
