// What unmarshal does with the base of an image, its jump, its state bytes and its variant.
#include "behaviour/encoders/values.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

const Calls& mem() { return calls_of("fwe_cl_wayfind_mem_st"); }
const Calls& tunnel() { return calls_of("fwe_cl_wayfind_auto_tunnel"); }

uint32_t unmarshal(ork_handle* handle, const Calls& calls, const Bytes& image, void* object,
                   uint32_t& err) {
  return calls.unmarshal(handle, instance, image.data(), object, static_cast<int32_t>(image.size()),
                         0, &err);
}

const Bytes plain_mem = hex("00 00 00000018 01020304 1112131415161718 2122232425262728");
const Bytes tracked_mem = hex("00 08 0000001b 01020304 a1 1112131415161718 a2 2122232425262728 a3");

uint32_t fwe_num(ork_handle* handle, void* object) {
  uint32_t err = 0;
  return fwe_cl_wayfind_mem_st_fwe_num_get_value(handle, instance,
                                                 static_cast<fwe_cl_wayfind_mem_st*>(object), &err);
}

// State block of a mem_st with a body of 40.
Bytes states_of(const Object& object) {
  const auto* const states = static_cast<const uint8_t*>(object.get()) + 40;
  return {states, states + 3};
}

TEST(Unmarshal, from_no_bytes_or_a_negative_count_is_90) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  for (const int32_t length : {0, -1, INT32_MIN}) {
    uint32_t err = 0;
    EXPECT_EQ(mem().unmarshal(handle, instance, nullptr, object.get(), length, 0, &err), 0u);
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(ork_handle_last_error(handle), 90u);
  }
}

TEST(Unmarshal, of_a_negative_variant_reads_no_field) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, mem(), 0);
  const uint32_t before = mem().hash(object.get(), 0);
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), hex("fd 00 00000004"), object.get(), err), 6u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(object.header().variant, -3);
  EXPECT_EQ(mem().hash(object.get(), 0), before);
  object.header().variant = 0;
}

TEST(Unmarshal, of_a_tracked_image_by_a_reader_without_tracking_steps_over_each_state_byte) {
  for (const ork_tracking reader : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
    const Handle handle(reader);
    const Object object(handle, mem());
    uint32_t err = 0;
    EXPECT_EQ(unmarshal(handle, mem(), tracked_mem, object.get(), err), tracked_mem.size());
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(object.header().obj_flags & OBJ_STATE_TRACKED, 0);
    EXPECT_EQ(marshalled(handle, mem(), object.get()), plain_mem);
  }
}

TEST(Unmarshal, of_an_untracked_image_by_a_tracking_reader_keeps_the_states) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  const Bytes before = states_of(object);
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), plain_mem, object.get(), err), plain_mem.size());
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(states_of(object), before);
  EXPECT_EQ(object.header().obj_flags, OBJ_STATE_TRACKED);
  EXPECT_EQ(fwe_num(handle, object.get()), 0x01020304u);
}

TEST(Unmarshal, of_a_tracked_image_by_a_tracking_reader_copies_the_states) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), tracked_mem, object.get(), err), tracked_mem.size());
  EXPECT_EQ(states_of(object), hex("a1 a2 a3"));
}

TEST(Unmarshal, keeps_the_state_whose_byte_is_missing_at_the_end_and_takes_the_jump) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  const Bytes before = states_of(object);
  uint32_t err = 0;
  EXPECT_EQ(mem().unmarshal(handle, instance, tracked_mem.data(), object.get(), 28, 0, &err), 29u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(states_of(object), (Bytes{0xa1, 0xa2, before[2]}));
}

TEST(Unmarshal, neither_takes_nor_counts_a_state_byte_that_is_missing_at_the_end) {
  struct Case {
    const char* record;
    const char* image;  // without a jump
    size_t state;       // where the missing byte would go in the object
  };
  for (const auto& [record, image, state] :
       {Case{"fwe_cl_wayfind_mem_st",
             "00 08 00000000 01020304 a1 1112131415161718 a2 2122232425262728", 42},
        Case{"fwe_cl_wayfind_sel_lb_path_st", "00 08 00000000 00000001 0a0b0c0d", 32}}) {
    Bytes bytes = hex(image);
    const auto length = static_cast<int32_t>(bytes.size());
    bytes.insert(bytes.end(), 2, 0x77);
    for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle handle(tracking);
      const Calls& calls = calls_of(record);
      const Object object(handle, calls);
      uint32_t err = 0;
      EXPECT_EQ(calls.unmarshal(handle, instance, bytes.data(), object.get(), length, 0, &err),
                static_cast<uint32_t>(length))
          << record << " tracking " << tracking;
      EXPECT_EQ(err, 0u);
      if (tracking == ORK_TRACKING_ON) {
        EXPECT_EQ(static_cast<const uint8_t*>(object.get())[state], 0) << record;
      }
    }
  }
}

TEST(Unmarshal, stays_where_the_fields_ended_when_the_jump_leads_less_far) {
  const Handle handle(ORK_TRACKING_OFF);
  for (const int jump : {0, 1, 4, 23, 24}) {
    const Object object(handle, mem());
    Bytes image = plain_mem;
    image[5] = static_cast<uint8_t>(jump);
    uint32_t err = 0;
    EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 26u) << "jump " << jump;
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(fwe_num(handle, object.get()), 0x01020304u);
  }
}

TEST(Unmarshal, never_moves_back_on_a_negative_jump) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  for (const char* jump : {"ffffffff", "80000000"}) {
    Bytes image = plain_mem;
    const Bytes wrong = hex(jump);
    std::copy(wrong.begin(), wrong.end(), image.begin() + 2);
    uint32_t err = 0;
    EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 26u);
    EXPECT_EQ(err, 0u);
  }
}

TEST(Unmarshal, traces_and_follows_a_jump_that_leads_further) {
  SpiedHandle handle;
  void* const object = mem().create(handle, instance);
  Bytes image = plain_mem;
  image[5] = 60;
  spy::Log log;
  EXPECT_EQ(unmarshal(handle, mem(), image, object, handle.err), 62u);
  EXPECT_EQ(handle.err, 0u);
  EXPECT_CALLS(log.calls_of({"trace"}),
               {"trace(info,offset_jump read_len 26 offset_jump_base 2 _ork_variant_jump 60)"});
  mem().destroy(handle, instance, object);
}

TEST(Unmarshal, drops_ra_data_and_keeps_its_flag) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  uint32_t err = 0;
  const Bytes image =
      hex("00 20 001122334455667788 00000018 01020304 1112131415161718 2122232425262728");
  EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 35u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(object.header().obj_flags, OBJ_RA_DATA);
  EXPECT_EQ(fwe_num(handle, object.get()), 0x01020304u);
}

TEST(Unmarshal, counts_the_jump_from_behind_the_ra_data) {
  SpiedHandle handle;
  void* const object = mem().create(handle, instance);
  {
    spy::Log log;
    const Bytes image =
        hex("00 20 001122334455667788 0000001b 01020304 1112131415161718 2122232425262728 eeeeee");
    EXPECT_EQ(unmarshal(handle, mem(), image, object, handle.err), 38u);
    EXPECT_EQ(handle.err, 0u);
    EXPECT_CALLS(log.calls_of({"trace"}),
                 {"trace(info,offset_jump read_len 35 offset_jump_base 11 _ork_variant_jump 27)"});
  }
  mem().destroy(handle, instance, object);
}

TEST(Unmarshal, records_with_a_ra_data_flag_from_the_wire_are_destroyed_without_an_error) {
  const Handle handle(ORK_TRACKING_ON);
  {
    const Object object(handle, mem());
    uint32_t err = 0;
    (void)unmarshal(handle, mem(),
                    hex("00 28 001122334455667788 0000001b 01020304 a1 1112131415161718 a2 "
                        "2122232425262728 a3"),
                    object.get(), err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(object.header().obj_flags, OBJ_RA_DATA | OBJ_STATE_TRACKED);
  }
  EXPECT_EQ(ork_handle_last_error(handle), 0u);
}

TEST(Unmarshal, lets_no_flag_from_the_wire_through_that_frees_or_redirects_memory) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    for (const int flags : {0x01, 0x02, 0x04, 0x10, 0x40, 0x80, 0xd7}) {
      const Object object(handle, mem());
      const uint8_t before = object.header().obj_flags;
      Bytes image = plain_mem;
      image[1] = static_cast<uint8_t>(flags);
      uint32_t err = 0;
      EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 26u);
      EXPECT_EQ(object.header().obj_flags, before) << "flags " << flags;
    }
  }
}

TEST(Unmarshal, lowers_the_variant_to_the_layout_and_keeps_the_later_fields) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object source = filled(handle, tunnel(), 0);
  const Bytes image = marshalled(handle, tunnel(), source.get());
  const Object target(handle, tunnel());
  Filler(handle, 0).fill(*tunnel().schema, target.get(), "before");
  const Bytes texts(static_cast<uint8_t*>(target.get()) + 24,
                    static_cast<uint8_t*>(target.get()) + 88);
  target.header().variant_cap = 0;
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, tunnel(), image, target.get(), err), image.size());
  EXPECT_EQ(target.header().variant, 0);
  EXPECT_EQ(
      Bytes(static_cast<uint8_t*>(target.get()) + 24, static_cast<uint8_t*>(target.get()) + 88),
      texts);
  target.header().variant_cap = 1;
}

TEST(Unmarshal, compares_variant_and_layout_as_signed_bytes) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  Bytes image = plain_mem;
  image[0] = 0x7f;
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 26u);
  EXPECT_EQ(object.header().variant, 0);
  image[0] = 0x80;
  EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 26u);
  EXPECT_EQ(object.header().variant, -128) << "no field, but the jump is followed";
  object.header().variant = 0;
}

TEST(Unmarshal, of_an_older_image_leaves_later_fields_and_ends_at_its_variant) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object target = filled(handle, tunnel(), 0);
  const Bytes texts(static_cast<uint8_t*>(target.get()) + 24,
                    static_cast<uint8_t*>(target.get()) + 88);
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, tunnel(), hex("00 00 00000010 00000001 00000002 00000003"),
                      target.get(), err),
            18u);
  EXPECT_EQ(target.header().variant, 0);
  EXPECT_EQ(
      Bytes(static_cast<uint8_t*>(target.get()) + 24, static_cast<uint8_t*>(target.get()) + 88),
      texts);
}

TEST(Unmarshal, steps_over_the_tail_of_a_newer_record_inside_without_the_parent_seeing_it) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_select_policy");
  const Object object(handle, calls);
  const Bytes image =
      hex("00 00 00000035 00000005"
          "07 00 0000001b 01020304 1112131415161718 2122232425262728 eeeeee"
          "0000000000000006 0000000000000007");
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, calls, image, object.get(), err), image.size());
  auto* const policy = static_cast<fwe_cl_wayfind_select_policy*>(object.get());
  EXPECT_EQ(fwe_cl_wayfind_select_policy_blackhole_bytes_get_value(handle, instance, policy, &err),
            6u);
  EXPECT_EQ(
      fwe_cl_wayfind_select_policy_blackhole_packets_get_value(handle, instance, policy, &err), 7u);
  EXPECT_EQ(fwe_num(handle, fwe_cl_wayfind_select_policy_mem_get(handle, instance, policy, &err)),
            0x01020304u);
  EXPECT_EQ(err, 0u);
}

TEST(Unmarshal, reads_past_what_the_jump_said_without_an_error) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, tunnel());
  Bytes image = marshalled(handle, tunnel(), filled(handle, tunnel(), 0).get());
  image[5] = 16;
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, tunnel(), image, object.get(), err), 82u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(tunnel().compare(object.get(), filled(handle, tunnel(), 0).get()), 0);
}

TEST(Unmarshal, after_a_short_field_keeps_what_was_read_and_goes_on_to_the_end) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  uint32_t err = 0;
  EXPECT_EQ(mem().unmarshal(handle, instance, plain_mem.data(), object.get(), 15, 0, &err), 26u)
      << "the jump is followed";
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(ork_handle_last_error(handle), 90u);
  EXPECT_EQ(fwe_num(handle, object.get()), 0x01020304u);
  err = 0;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(
                handle, instance, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), &err),
            0u);
}

TEST(Unmarshal, after_a_short_field_still_writes_the_header) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  object.header().variant = -1;
  std::memset(object.header().type_info_slot, 0, 8);
  const Bytes image = hex("00 20 001122334455667788 00000018 01020304 1112");
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), image, object.get(), err), 11u + 24) << "the jump is followed";
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(object.header().variant, 0);
  EXPECT_EQ(object.header().obj_flags, OBJ_RA_DATA);
  EXPECT_EQ(kit::load<const void*>(object.header().type_info_slot), mem().schema->type);
}

TEST(Unmarshal, without_memory_for_an_array_ends_at_once_with_the_header_as_it_was) {
  SpiedHandle handle;
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  void* const object = path.create(handle, instance);
  kit::header(object).variant = -1;
  const kit::Snapshot header(object, offsetof(ork_object, obj_flags) + 1);
  {
    spy::Log log;
    spy::fail_alloc(1);
    const Bytes image = hex("00 20 001122334455667788 00000010 00000002 0a0b0c0d 1a1b1c1d");
    EXPECT_EQ(unmarshal(handle, path, image, object, handle.err), 0u);
    EXPECT_EQ(handle.err, 12u);
    EXPECT_CALLS(log.calls_of({"trace"}), {}) << "the jump would lead further";
  }
  EXPECT_TRUE(header.unchanged()) << "neither variant nor flags";
  kit::header(object).variant = 0;
  path.destroy(handle, instance, object);
}

TEST(Unmarshal, points_the_record_at_the_shared_descriptor_in_shared_storage) {
  for (const bool shared : {false, true}) {
    SpiedHandle handle(kit::Mode{.shared = shared});
    void* const object = mem().create(handle, instance);
    spy::name(object, 40, "obj");
    auto& header = *static_cast<ork_object*>(object);
    Bytes slot(header.type_info_slot, header.type_info_slot + 8);
    std::memset(header.type_info_slot, 0, 8);
    spy::Log log;
    (void)unmarshal(handle, mem(), plain_mem, object, handle.err);
    EXPECT_EQ(Bytes(header.type_info_slot, header.type_info_slot + 8), slot);
    EXPECT_EQ(log.count("ork_type_info_ptr_get"), shared ? 1u : 0u);
    mem().destroy(handle, instance, object);
  }
}

class TrackingMismatchDeathTest : public testing::Test {};

TEST_F(TrackingMismatchDeathTest, ends_the_process) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  uint32_t err = 0;
  EXPECT_DEATH(unmarshal(handle, mem(), plain_mem, object.get(), err),
               "ORK handle and object state tracking mis-match");
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
}

TEST(Unmarshal, of_a_tracked_record_by_a_handle_without_tracking_keeps_it_tracked) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object(handle, mem());
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
  uint32_t err = 0;
  EXPECT_EQ(unmarshal(handle, mem(), tracked_mem, object.get(), err), tracked_mem.size());
  EXPECT_EQ(states_of(object), hex("00 00 00"));
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  EXPECT_EQ(object.header().obj_flags, OBJ_STATE_TRACKED);
}

}  // namespace
