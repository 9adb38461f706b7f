// Wire images of a few records, byte by byte.
#include "behaviour/encoders/records.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"

namespace {

using namespace encoders;

void set_mem(ork_handle* handle, fwe_cl_wayfind_mem_st* mem) {
  uint32_t err = 0;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(handle, instance, mem, 0x01020304, &err);
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(handle, instance, mem, 0x1112131415161718, &err);
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(handle, instance, mem, 0x2122232425262728, &err);
  EXPECT_EQ(err, 0u);
}

TEST(WireLayout, of_mem_st_without_tracking) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  set_mem(handle, static_cast<fwe_cl_wayfind_mem_st*>(object.get()));
  EXPECT_EQ(marshalled(handle, calls, object.get()),
            hex("00 00 00000018 01020304 1112131415161718 2122232425262728"));
  EXPECT_EQ(calls.len(handle, instance, object.get()), 26u);
}

TEST(WireLayout, of_mem_st_with_tracking) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  auto* const mem = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  set_mem(handle, mem);
  uint32_t err = 0;
  fwe_cl_wayfind_mem_st_ppe_addr_state_flag_set(handle, instance, mem, 7, &err);
  EXPECT_EQ(marshalled(handle, calls, object.get()),
            hex("00 08 0000001b 01020304 02 1112131415161718 07 2122232425262728 02"));
  EXPECT_EQ(calls.len(handle, instance, object.get()), 29u);
}

class AutoTunnelLayout : public testing::Test {
 protected:
  static constexpr auto name = "fwe_cl_wayfind_auto_tunnel";

  static void set_fields(ork_handle* handle, void* object, bool newer) {
    auto* const tunnel = static_cast<fwe_cl_wayfind_auto_tunnel*>(object);
    uint32_t err = 0;
    fwe_cl_wayfind_auto_tunnel_table_id_set_value(handle, instance, tunnel, 1, &err);
    fwe_cl_wayfind_auto_tunnel_tunnel_fwe_if_handle_set_value(handle, instance, tunnel, 2, &err);
    fwe_cl_wayfind_auto_tunnel_tunnel_flow_counts_set_value(handle, instance, tunnel, 3, &err);
    if (newer) {
      fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(handle, instance, tunnel, "abc", 3, &err);
      fwe_cl_wayfind_auto_tunnel_update_ts_msec_set(handle, instance, tunnel,
                                                    "0123456789abcdef0123456789abcdef", 32, &err);
    }
    EXPECT_EQ(err, 0u);
  }

  static Bytes image(ork_tracking tracking, int variant) {
    const TypeList list = release_list(9, name, variant);
    const Handle handle([&](ork_options& options) {
      options.tracking = tracking;
      options.release = list.get();
    });
    const Object object(handle, calls_of(name));
    set_fields(handle, object.get(), variant != 0);
    return marshalled(handle, calls_of(name), object.get());
  }
};

TEST_F(AutoTunnelLayout, of_variant_1_without_tracking) {
  EXPECT_EQ(image(ORK_TRACKING_OFF, 1),
            hex("01 00 00000050 00000001 00000002 00000003"
                "6162630000000000000000000000000000000000000000000000000000000000"
                "3031323334353637383961626364656630313233343536373839616263646566"));
}

TEST_F(AutoTunnelLayout, of_variant_1_with_tracking) {
  EXPECT_EQ(image(ORK_TRACKING_ON, 1),
            hex("01 08 00000055 00000001 02 00000002 02 00000003 02"
                "6162630000000000000000000000000000000000000000000000000000000000 02"
                "3031323334353637383961626364656630313233343536373839616263646566 02"));
}

TEST_F(AutoTunnelLayout, of_variant_0) {
  EXPECT_EQ(image(ORK_TRACKING_OFF, 0), hex("00 00 00000010 00000001 00000002 00000003"));
  EXPECT_EQ(image(ORK_TRACKING_ON, 0), hex("00 08 00000013 00000001 02 00000002 02 00000003 02"));
}

TEST_F(AutoTunnelLayout, is_counted_with_one_state_byte_for_each_character) {
  const Handle off(ORK_TRACKING_OFF);
  const Object plain(off, calls_of(name));
  EXPECT_EQ(calls_of(name).len(off, instance, plain.get()), 82u);
  const Handle on(ORK_TRACKING_ON);
  const Object tracked(on, calls_of(name));
  EXPECT_EQ(calls_of(name).len(on, instance, tracked.get()), 151u);
  EXPECT_EQ(marshalled(on, calls_of(name), tracked.get()).size(), 87u);
}

TEST_F(AutoTunnelLayout, is_read_by_a_reader_of_variant_0_up_to_its_own_fields_and_jumps_the_rest) {
  const Bytes newer = image(ORK_TRACKING_OFF, 1);
  const TypeList list = release_list(9, name, 0);
  const Handle handle([&](ork_options& options) {
    options.tracking = ORK_TRACKING_OFF;
    options.release = list.get();
  });
  const Object object(handle, calls_of(name));
  object.header().variant_cap = 0;
  uint32_t err = 0;
  EXPECT_EQ(calls_of(name).unmarshal(handle, instance, newer.data(), object.get(), 82, 0, &err),
            82u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(object.header().variant, 0);
  EXPECT_EQ(marshalled(handle, calls_of(name), object.get()), image(ORK_TRACKING_OFF, 0));
}

TEST_F(AutoTunnelLayout, has_what_stands_behind_the_terminator_of_a_text_too) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of(name);
  const Object object(handle, calls);
  auto* const tunnel = static_cast<fwe_cl_wayfind_auto_tunnel*>(object.get());
  uint32_t err = 0;
  fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(handle, instance, tunnel, "abcdefgh", 8, &err);
  fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(handle, instance, tunnel, "xy", 2, &err);
  static_cast<char*>(object.get())[24 + 31] = 'z';
  const Bytes image = marshalled(handle, calls, object.get());
  ASSERT_EQ(image.size(), 82u);
  EXPECT_EQ(Bytes(image.begin() + 18, image.begin() + 50),
            hex("787900646566676800000000000000000000000000000000000000000000007a"));
  const Object read(handle, calls);
  EXPECT_EQ(calls.unmarshal(handle, instance, image.data(), read.get(), 82, 0, &err), 82u);
  EXPECT_EQ(err, 0u);
  const Object clone(handle, calls, calls.clone_cr(handle, object.get()));
  for (const Object* const copy : {&read, &clone}) {
    EXPECT_EQ(calls.compare(object.get(), copy->get()), 0);
    EXPECT_EQ(calls.hash(object.get(), 0), calls.hash(copy->get(), 0));
  }
}

class PathLayout : public testing::Test {
 protected:
  static constexpr auto name = "fwe_cl_wayfind_sel_lb_path_st";

  static Object path(ork_handle* handle, std::vector<uint32_t> hops) {
    Object object(handle, calls_of(name));
    uint32_t err = 0;
    for (uint32_t i = 0; i < hops.size(); ++i) {
      fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(
          handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(object.get()), i, hops[i],
          &err);
    }
    EXPECT_EQ(err, 0u);
    return object;
  }
};

TEST_F(PathLayout, of_two_hops_without_tracking) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = path(handle, {0x0a0b0c0d, 0x1a1b1c1d});
  EXPECT_EQ(marshalled(handle, calls_of(name), object.get()),
            hex("00 00 00000010 00000002 0a0b0c0d 1a1b1c1d"));
  EXPECT_EQ(calls_of(name).len(handle, instance, object.get()), 18u);
}

TEST_F(PathLayout, of_two_hops_with_tracking) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = path(handle, {0x0a0b0c0d, 0x1a1b1c1d});
  uint32_t err = 0;
  auto* const record = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(object.get());
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_set(handle, instance, record, 5, &err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(handle, instance, record, 1, 9, &err);
  EXPECT_EQ(marshalled(handle, calls_of(name), object.get()),
            hex("00 08 00000013 00000002 0a0b0c0d 1a1b1c1d 05 02 09"));
  EXPECT_EQ(calls_of(name).len(handle, instance, object.get()), 21u);
}

TEST_F(PathLayout, of_no_hops_has_no_state_byte_in_either_mode_though_its_length_counts_one) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const Object object = path(handle, {});
    const bool on = tracking == ORK_TRACKING_ON;
    EXPECT_EQ(marshalled(handle, calls_of(name), object.get()),
              hex(on ? "00 08 00000008 00000000" : "00 00 00000008 00000000"));
    EXPECT_EQ(calls_of(name).len(handle, instance, object.get()), on ? 11u : 10u);
  }
}

TEST(WireLayout, of_an_embedded_record_is_its_whole_image_with_a_jump_of_its_own) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_select_policy");
  const Object object(handle, calls);
  auto* const policy = static_cast<fwe_cl_wayfind_select_policy*>(object.get());
  uint32_t err = 0;
  fwe_cl_wayfind_select_policy_policy_seq_set_value(handle, instance, policy, 5, &err);
  set_mem(handle, fwe_cl_wayfind_select_policy_mem_get(handle, instance, policy, &err));
  fwe_cl_wayfind_select_policy_blackhole_bytes_set_value(handle, instance, policy, 6, &err);
  fwe_cl_wayfind_select_policy_blackhole_packets_set_value(handle, instance, policy, 7, &err);
  EXPECT_EQ(marshalled(handle, calls, object.get()),
            hex("00 00 00000032 00000005"
                "00 00 00000018 01020304 1112131415161718 2122232425262728"
                "0000000000000006 0000000000000007"));
}

TEST(WireLayout, takes_the_state_bytes_of_nested_records_from_their_places_in_the_parents_block) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_cl_wayfind_hop_chan_data");
  const Object object(handle, calls);
  // 51 state bytes behind a body of 600, each with its own number.
  auto* const states = static_cast<uint8_t*>(object.get()) + 600;
  for (uint8_t i = 0; i < 51; ++i) {
    states[i] = static_cast<uint8_t>(i + 1);
  }
  const Bytes image = marshalled(handle, calls, object.get());
  // Base 6; hop_chan 6 + 31 + 12 + 64 + 2 + 6 + 1, stats 6 + 48 + 8, mem 29, text 8, probe 6 + 32
  // + 7, serv 6 + 152 + 12.
  size_t at = 6;
  const struct {
    size_t width;
    uint8_t state;
  } fields[] = {{122, 0}, {62, 16}, {29, 25}, {8, 29}, {45, 30}, {170, 38}};
  for (const auto& field : fields) {
    at += field.width;
    ASSERT_LT(at, image.size());
    EXPECT_EQ(image[at], field.state + 1) << "byte " << at;
    ++at;
  }
  EXPECT_EQ(at, image.size());
}

TEST(WireLayout, has_ra_data_between_flags_and_jump_which_the_length_does_not_count) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  object.header().obj_flags |= OBJ_RA_DATA;
  EXPECT_EQ(marshalled(handle, calls, object.get()),
            hex("00 20 0000000000000000 00 00000018 00000000 0000000000000000 0000000000000000"));
  EXPECT_EQ(calls.len(handle, instance, object.get()), 26u);
}

TEST(WireLayout, of_an_enum_is_variant_and_value) {
  const Handle handle(ORK_TRACKING_ON);
  uint32_t err = 0;
  fwe_cl_wayfind_chan_state_e* const state = fwe_cl_wayfind_chan_state_e_create(handle, instance);
  fwe_cl_wayfind_chan_state_e_set_value(handle, instance, state, 2, &err);
  Bytes buffer(5);
  EXPECT_EQ(fwe_cl_wayfind_chan_state_e_marshal(handle, instance, buffer.data(), state, 5, &err),
            5u);
  EXPECT_EQ(buffer, hex("00 00000002"));
  EXPECT_EQ(fwe_cl_wayfind_chan_state_e_len(), 5u);
  fwe_cl_wayfind_chan_state_e_destroy(handle, instance, state);
}

TEST(WireLayout, of_the_flag_set_is_variant_jump_and_flags) {
  const Handle handle(ORK_TRACKING_ON);
  uint32_t err = 0;
  fwe_cl_wayfind_hop_chan_flags* const flags =
      fwe_cl_wayfind_hop_chan_flags_create(handle, instance);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, WAYFIND_UI_HOP_CHAN_FLAG_ACK, 1,
                                          &err);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, WAYFIND_UI_HOP_CHAN_FLAG_MUTE, 1,
                                          &err);
  Bytes buffer(6);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_marshal(handle, instance, buffer.data(), flags, 6, &err),
            6u);
  EXPECT_EQ(buffer, hex("00 00000005 14"));
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len(), 6u);
  fwe_cl_wayfind_hop_chan_flags_destroy(handle, instance, flags);
}

}  // namespace
