#include <array>

#include "support.h"

namespace platform_test {
namespace {

using Bytes = std::vector<uint8_t>;

// One primitive type as the tests see it.
template <typename Value>
struct Family {
  uint32_t width;
  uint32_t (*len)(ork_handle*, uint32_t, const Value*);
  uint32_t (*marshal)(ork_handle*, uint32_t, uint8_t*, const Value*, int32_t, uint32_t*);
  uint32_t (*unmarshal)(ork_handle*, uint32_t, const uint8_t*, Value*, int32_t, uint32_t,
                        uint32_t*);
};

template <typename Value>
void expect_wire(const Family<Value>& family, const Value& value, const Bytes& image) {
  const Handle handle;
  uint32_t err = 0;
  ASSERT_EQ(family.width, image.size());
  EXPECT_EQ(family.len(handle.get(), 0, nullptr), family.width);
  Bytes bytes(family.width);
  const auto room = static_cast<int32_t>(family.width);
  EXPECT_EQ(family.marshal(handle.get(), 0, bytes.data(), &value, room, &err), family.width);
  EXPECT_EQ(bytes, image);
  Value back{};
  EXPECT_EQ(family.unmarshal(handle.get(), 0, bytes.data(), &back, room, 0, &err), family.width);
  EXPECT_EQ(err, 0u);
  Bytes again(family.width);
  family.marshal(handle.get(), 0, again.data(), &back, room, &err);
  EXPECT_EQ(again, image);

  for (const int32_t short_room : {room - 1, 0, -1, INT32_MIN}) {
    err = 0;
    EXPECT_EQ(family.marshal(handle.get(), 0, nullptr, &value, short_room, &err), 0u);
    EXPECT_EQ(err, 90u);
    err = 0;
    EXPECT_EQ(family.unmarshal(handle.get(), 0, nullptr, &back, short_room, 0, &err), 0u);
    EXPECT_EQ(err, 90u);
  }
  EXPECT_EQ(family.marshal(handle.get(), 0, nullptr, &value, room, &err), 0u) << "pending error";
  EXPECT_EQ(family.unmarshal(handle.get(), 0, nullptr, &back, room, 0, &err), 0u)
      << "pending error";
}

ork_ip_address ip(uint8_t family, uint8_t prefix, const Bytes& address) {
  ork_ip_address result{};
  result.family = family;
  result.prefix_length = prefix;
  std::copy(address.begin(), address.end(), result.address);
  return result;
}

TEST(Primitives, wire_images_and_short_room) {
  expect_wire<uint8_t>({1, u_int8_len, u_int8_marshal, u_int8_unmarshal}, 0xAB, {0xAB});
  expect_wire<uint16_t>({2, u_int16_len, u_int16_marshal, u_int16_unmarshal}, 0x0102, {1, 2});
  expect_wire<uint32_t>({4, u_int32_len, u_int32_marshal, u_int32_unmarshal}, 0x01020304,
                        {1, 2, 3, 4});
  expect_wire<uint64_t>({8, u_int64_len, u_int64_marshal, u_int64_unmarshal}, 0x0102030405060708,
                        {1, 2, 3, 4, 5, 6, 7, 8});
  expect_wire<ork_boolean>({1, ork_boolean_len, ork_boolean_marshal, ork_boolean_unmarshal}, 1,
                           {1});
  expect_wire<char>({1, char_len, char_marshal, char_unmarshal}, 'x', {'x'});
  ork_link_type link{};
  link.value = 0x0A0B0C0D;
  expect_wire<ork_link_type>({5, link_type_len, link_type_marshal, link_type_unmarshal}, link,
                             {0, 0x0A, 0x0B, 0x0C, 0x0D});
  expect_wire<ork_ip_address>({18, ip_address_len, ip_address_marshal, ip_address_unmarshal},
                              ip(4, 24, {10, 1, 2, 3}),
                              {4, 24, 10, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

TEST(Primitives, boolean_is_normalised_from_the_wire) {
  const Handle handle;
  const uint8_t byte = 0xFF;
  ork_boolean value = 0;
  uint32_t err = 0;
  ork_boolean_unmarshal(handle.get(), 0, &byte, &value, 1, 0, &err);
  EXPECT_EQ(value, 1u);
}

TEST(Primitives, set_announces_and_refuses_null) {
  const Handle handle;
  uint32_t err = 0;
  uint16_t value = 0;
  const uint16_t source = 7;
  u_int16_set(handle.get(), 0, &value, &source, &err);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(u_int16_get(handle.get(), 0, &value, &err), &value);
  u_int16_set(handle.get(), 0, &value, nullptr, &err);
  EXPECT_EQ(err, 22u);
  u_int16_set_value(handle.get(), 0, &value, 9, &err);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(u_int16_get(handle.get(), 0, &value, &err), nullptr);
}

TEST(Primitives, scratch_values_come_zeroed_from_the_handle) {
  const Handle handle;
  uint32_t* value = u_int32_create(handle.get(), 0);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(*value, 0u);
  EXPECT_EQ(handle.memory().live_blocks, 1u);
  u_int32_destroy(handle.get(), 0, value);
  u_int32_destroy(handle.get(), 0, nullptr);
  EXPECT_EQ(handle.memory().live_blocks, 0u);
  ork_handle_fail_allocation(handle.get(), 1);
  EXPECT_EQ(u_int8_create(handle.get(), 0), nullptr);
}

TEST(Primitives, addresses_initialize_set_and_compare) {
  const Handle handle;
  uint32_t err = 0;
  ork_ip_address object{};
  ip_address_initialize(handle.get(), 0, &object, &_ip_address_type_info_internal, 1, 0, OBJ_NESTED,
                        nullptr, &err);
  EXPECT_EQ(ork_get_manifested_type_info(&object), &_ip_address_type_info_internal);
  EXPECT_EQ(object.obj_flags, OBJ_NESTED);
  const ork_ip_address source = ip(6, 64, {0x20, 1, 0xd, 0xb8});
  ip_address_set(handle.get(), 0, &object, &source, &err);
  EXPECT_EQ(ip_address_compare(&object, &source), 0);
  EXPECT_EQ(object.obj_flags, OBJ_NESTED) << "the header stays";
  const ork_ip_address lower = ip(4, 32, {255, 255, 255, 255});
  EXPECT_EQ(ip_address_compare(&lower, &source), -1);
  EXPECT_EQ(ip_address_compare(&source, &lower), 1);
  EXPECT_EQ(ip_address_get_oid_count(handle.get(), 0, &object, &err), 0u);
  ip_address_set_instance_embedded(handle.get(), 0, &object);
  EXPECT_EQ(object.obj_flags, OBJ_NESTED | OBJ_EMBEDDED);
}

TEST(Primitives, link_types_set_their_value_alone) {
  const Handle handle;
  uint32_t err = 0;
  ork_link_type object{};
  link_type_initialize(handle.get(), 0, &object, &_link_type_type_info_internal, 0, 0, OBJ_NESTED,
                       nullptr, &err);
  link_type_set_value(handle.get(), 0, &object, 3, &err);
  EXPECT_EQ(link_type_get_value(handle.get(), 0, &object, &err), 3u);
  ork_link_type other{};
  EXPECT_EQ(link_type_compare(&object, &other), 1);
  link_type_set(handle.get(), 0, &object, &other, &err);
  EXPECT_EQ(object.value, 0u);
  EXPECT_EQ(object.obj_flags, OBJ_NESTED);
}

}  // namespace
}  // namespace platform_test
