// What marshal and the lengths do beyond the plain image: variants, tracking, room, and the domain.
#include <algorithm>
#include <numeric>

#include "behaviour/encoders/arrays.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

const Calls& mem() { return calls_of("fwe_cl_wayfind_mem_st"); }
const Calls& tunnel() { return calls_of("fwe_cl_wayfind_auto_tunnel"); }
const Calls& bytes_array() { return calls_of("fwe_cl_wayfind_sel_lb_src_intf_st"); }

uint32_t marshal(ork_handle* handle, const Calls& calls, Bytes& buffer, const void* object,
                 int32_t length, uint32_t& err) {
  return calls.marshal(handle, instance, buffer.data(), object, length, &err);
}

TEST(Marshal, into_no_room_or_a_negative_one_is_90) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  for (const int32_t length : {0, -1, INT32_MIN}) {
    for (const auto function : {mem().marshal, mem().marshal_for_clone}) {
      Bytes buffer(8, 0xa5);
      uint32_t err = 0;
      EXPECT_EQ(function(handle, instance, buffer.data() + 4, object.get(), length, &err), 0u);
      EXPECT_EQ(err, 90u);
      EXPECT_EQ(ork_handle_last_error(handle), 90u);
      EXPECT_EQ(buffer, Bytes(8, 0xa5));
    }
  }
}

TEST(Marshal, clears_the_last_error_once_it_begins) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  ork_store_err(handle, 5);
  (void)marshalled(handle, mem(), object.get());
  EXPECT_EQ(ork_handle_last_error(handle), 0u);
}

TEST(Marshal, of_a_negative_variant_is_the_base_alone_with_a_jump_of_4) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const Object object(handle, mem());
    object.header().variant = -3;
    EXPECT_EQ(marshalled(handle, mem(), object.get()),
              hex(tracking == ORK_TRACKING_ON ? "fd 08 00000004" : "fd 00 00000004"));
    EXPECT_EQ(mem().len(handle, instance, object.get()), 6u);
    object.header().variant = 0;
  }
}

TEST(Marshal, of_an_untracked_record_while_tracking_writes_zero_states_and_the_flag_all_the_same) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, mem(), 0);
  const Bytes plain = marshalled(handle, mem(), object.get());
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  const Bytes image = marshalled(handle, mem(), object.get());
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
  Bytes expected = hex("00 08 0000001b");
  for (const auto& [begin, end] : {std::pair{6, 10}, {10, 18}, {18, 26}}) {
    expected.insert(expected.end(), plain.begin() + begin, plain.begin() + end);
    expected.push_back(0);
  }
  EXPECT_EQ(image, expected);
}

TEST(Marshal, of_an_untracked_array_while_tracking_writes_zero_states_for_it_and_its_elements) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, bytes_array(), 3);
  Bytes expected = marshalled(handle, bytes_array(), object.get());
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  const Bytes image = marshalled(handle, bytes_array(), object.get());
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
  expected[1] = 0x08;
  expected[5] = static_cast<uint8_t>(expected[5] + 4);
  expected.insert(expected.end(), 4, 0);
  EXPECT_EQ(image, expected);
}

TEST(Marshal, of_a_tracked_array_whose_element_bytes_are_missing_writes_zero_states) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, bytes_array(), 3);
  uint8_t* const elements = std::exchange(entry_of(object).elements, nullptr);
  ASSERT_NE(elements, nullptr);
  entry_of(object).whole = 5;
  const Bytes image = marshalled(handle, bytes_array(), object.get());
  entry_of(object).elements = elements;
  ASSERT_EQ(image.size(), 6u + 4 + 3 + 1 + 3);
  EXPECT_EQ(Bytes(image.end() - 4, image.end()), hex("00 000000"))
      << "and for the array as a whole";
}

// The elements of a path of three end at 22. The byte for the whole is stored there even when the
// buffer ends there, and not counted then.
TEST(Marshal, of_an_array_whose_states_do_not_all_fit_writes_those_that_do) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object untracked = filled(handle, path, 3);
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  const Object tracked = filled(handle, path, 3);
  entry_of(tracked).whole = 5;
  std::iota(entry_of(tracked).elements, entry_of(tracked).elements + 3, uint8_t{6});
  for (const auto& [object, states] :
       {std::pair{&untracked, hex("00 000000")}, {&tracked, hex("05 060708")}}) {
    for (int32_t length = 22; length <= 26; ++length) {
      Bytes buffer(32, 0xa5);
      uint32_t err = 0;
      EXPECT_EQ(marshal(handle, path, buffer, object->get(), length, err),
                static_cast<uint32_t>(length));
      EXPECT_EQ(err, 0u);
      EXPECT_EQ(buffer[5], length - 2) << "the jump";
      Bytes expected(10, 0xa5);
      std::copy_n(states.begin(), std::max(length - 22, 1), expected.begin());
      EXPECT_EQ(Bytes(buffer.begin() + 22, buffer.end()), expected) << "length " << length;
    }
  }
}

// The layout of variant 0 has 20 state bytes behind its body; a runtime that upgrades the object in
// place has given it two more, for the fields of variant 1.
TEST(Marshal, of_a_variant_above_the_storages_layout_writes_the_states_of_the_later_fields_too) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_st");
  const Object fresh(handle, calls);
  Bytes old(272 + 22 + 8, 0xa5);
  std::memcpy(old.data(), fresh.get(), 272);
  std::memset(old.data() + 272, 0x11, 20);
  old[272 + 20] = 0x22;
  old[272 + 21] = 0x33;
  auto& header = *reinterpret_cast<ork_object*>(old.data());
  header.variant_cap = 0;
  header.variant = 1;
  const Bytes image = marshalled(handle, calls, old.data());
  EXPECT_EQ(Bytes(image.end() - 5, image.end()), hex("11 00 22 00 33"))
      << "the last state of variant 0, then two bytes with their states";
}

TEST(Marshal, while_not_tracking_leaves_a_tracked_records_states_out) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
  const Bytes image = marshalled(handle, mem(), object.get());
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
  EXPECT_EQ(image.size(), 26u);
  EXPECT_EQ(image[1], 0);
}

TEST(Marshal, puts_the_last_state_byte_behind_a_full_buffer_without_counting_it) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  const Bytes image = marshalled(handle, mem(), object.get());
  Bytes buffer(30, 0xa5);
  uint32_t err = 0;
  EXPECT_EQ(marshal(handle, mem(), buffer, object.get(), 28, err), 28u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(buffer[28], image[28]);
  EXPECT_EQ(buffer[29], 0xa5);
  EXPECT_EQ(buffer[5], 26) << "the jump does not count it either";
}

TEST(Marshal, with_a_short_field_goes_on_and_counts_the_state_bytes_that_follow) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, mem(), 0);
  Bytes buffer(20, 0xa5);
  uint32_t err = 0;
  // Room for the base, fwe_num and its state; then 2 bytes, which take the states of the two
  // fields that do not fit.
  EXPECT_EQ(marshal(handle, mem(), buffer, object.get(), 13, err), 13u);
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(Bytes(buffer.begin() + 2, buffer.begin() + 6), Bytes(4, 0))
      << "the primitives write nothing after an error: the reserved jump";
  EXPECT_EQ(buffer[11], state_of("fwe_cl_wayfind_mem_st/ppe_addr"));
  EXPECT_EQ(buffer[12], state_of("fwe_cl_wayfind_mem_st/exmem_addr"));
  EXPECT_EQ(Bytes(buffer.begin() + 13, buffer.end()), Bytes(7, 0xa5));
}

TEST(Marshal, of_an_array_of_bytes_that_does_not_fit_copies_what_does) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, bytes_array(), 5);
  const Bytes image = marshalled(handle, bytes_array(), object.get());
  for (int32_t length = 10; length < 15; ++length) {
    Bytes buffer(20, 0xa5);
    uint32_t err = 0;
    EXPECT_EQ(marshal(handle, bytes_array(), buffer, object.get(), length, err),
              static_cast<uint32_t>(length));
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(ork_handle_last_error(handle), 90u);
    EXPECT_EQ(Bytes(buffer.begin() + 6, buffer.begin() + length),
              Bytes(image.begin() + 6, image.begin() + length));
    EXPECT_EQ(buffer[static_cast<size_t>(length)], 0xa5);
  }
}

TEST(Marshal, of_an_array_of_bytes_whose_count_does_not_fit_copies_elements_in_its_place) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, bytes_array(), 5);
  const auto* const block = static_cast<const uint8_t*>(array_of(object).block);
  for (int32_t length = 6; length < 10; ++length) {
    Bytes buffer(20, 0xa5);
    Bytes expected = buffer;
    std::copy_n(hex("00 00 00000000").begin(), 6, expected.begin());
    std::copy_n(block, length - 6, expected.begin() + 6);
    uint32_t err = 0;
    EXPECT_EQ(marshal(handle, bytes_array(), buffer, object.get(), length, err),
              static_cast<uint32_t>(length));
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(buffer, expected) << "length " << length;
  }
}

// A record inside that is not lowered forgets the error of one that was.
TEST(Marshal, forgets_a_lowering_once_a_record_inside_begins) {
  for (const char* name :
       {"fwe_cl_wayfind_channel_data", "fwe_cl_wayfind_select_tc_lb_channels_st"}) {
    const Handle handle(ORK_TRACKING_OFF);
    const Object object = filled(handle, calls_of(name), 2);
    const size_t whole = marshalled(handle, calls_of(name), object.get()).size();
    handle.set_peer(release_list(0).get());
    EXPECT_LT(marshalled(handle, calls_of(name), object.get()).size(), whole) << name;
    EXPECT_EQ(ork_handle_last_error(handle), 0u) << name;
  }
}

TEST(Marshal, lowers_a_record_to_what_the_domain_takes) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, tunnel(), 0);
  const Bytes whole = marshalled(handle, tunnel(), object.get());
  handle.set_peer(release_list(9, tunnel().name(), 0).get());
  const Bytes lowered = marshalled(handle, tunnel(), object.get());
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  Bytes expected(whole.begin(), whole.begin() + 18);
  expected[0] = 0;
  expected[5] = 16;
  EXPECT_EQ(lowered, expected);
  EXPECT_EQ(object.header().variant, 1) << "the object keeps its variant";
  EXPECT_EQ(tunnel().len(handle, instance, object.get()), 82u)
      << "and the length follows the object";
}

TEST(Marshal, lowered_under_a_strict_handle_writes_nothing) {
  const Handle handle([&](ork_options& options) { options.strict_epoch = 1; });
  const Object object = filled(handle, tunnel(), 0);
  handle.set_peer(release_list(9, tunnel().name(), 0).get());
  Bytes buffer(100, 0xa5);
  uint32_t err = 0;
  EXPECT_EQ(marshal(handle, tunnel(), buffer, object.get(), 100, err), 0u);
  EXPECT_EQ(err, 43u);
  EXPECT_EQ(buffer, Bytes(100, 0xa5));
}

TEST(Marshal, of_a_type_that_the_domain_lacks_is_the_base_alone) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, mem(), 0);
  handle.set_peer(release_list(9, mem().name(), -1).get());
  EXPECT_EQ(marshalled(handle, mem(), object.get()), hex("ff 00 00000004"));
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
}

TEST(Marshal, for_clone_does_not_lower_the_record_but_what_is_in_it) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_hop_chan_data");
  const Object object = filled(handle, calls, 0);
  const Bytes whole = marshalled(handle, calls, object.get());
  handle.set_peer(release_list(0).get());
  Bytes buffer(ample + 1);
  uint32_t err = 0;
  buffer.resize(
      calls.marshal_for_clone(handle, instance, buffer.data(), object.get(), ample, &err));
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(buffer[0], 1) << "the record itself";
  EXPECT_EQ(buffer[6], 0) << "hop_chan";
  EXPECT_EQ(buffer.size(), whole.size() - 70) << "two texts and a flag set shorter";
  EXPECT_EQ(Bytes(buffer.end() - 158, buffer.end()), Bytes(whole.end() - 158, whole.end()))
      << "serv";
}

TEST(Marshal, caps_a_variant_above_the_newest_in_both_forms) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, mem(), 0);
  const Bytes plain = marshalled(handle, mem(), object.get());
  const auto newer = spy::answer(ork_domain_lookup_variant, int8_t{9});
  object.header().variant = 5;
  EXPECT_EQ(marshalled(handle, mem(), object.get()), plain);
  Bytes image(27);
  uint32_t err = 0;
  EXPECT_EQ(mem().marshal_for_clone(handle, instance, image.data(), object.get(), 26, &err), 26u);
  EXPECT_EQ(Bytes(image.begin(), image.end() - 1), plain);
  object.header().variant = 0;
}

TEST(Marshal, lets_only_two_flags_travel) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  object.header().obj_flags = OBJ_OID_MAPPED | OBJ_EMBEDDED | OBJ_NESTED | 0x10;
  EXPECT_EQ(marshalled(handle, mem(), object.get())[1], 0);
  object.header().obj_flags = 0;
}

TEST(Marshal, reads_the_state_block_at_its_told_distance) {
  const Handle handle(ORK_TRACKING_ON);
  const Object parent = filled(handle, calls_of("fwe_cl_wayfind_color_data"), 0);
  uint32_t err = 0;
  auto* const child = fwe_cl_wayfind_color_data_mem_get(
      handle, instance, static_cast<fwe_cl_wayfind_color_data*>(parent.get()), &err);
  const Bytes image = marshalled(handle, mem(), child);
  EXPECT_EQ(image[10], state_of("fwe_cl_wayfind_color_data/mem/fwe_num"));
  EXPECT_EQ(image[28], state_of("fwe_cl_wayfind_color_data/mem/exmem_addr"));
}

// ---- Lengths ----------------------------------------------------------------

TEST(Length, of_a_null_record_is_that_of_an_empty_one_of_variant_0_without_texts_and_states) {
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    EXPECT_EQ(mem().len(handle, instance, nullptr), 26u);
    EXPECT_EQ(tunnel().len(handle, instance, nullptr), 18u);
    EXPECT_EQ(calls_of("fwe_cl_wayfind_auto_tunnel_misc").len(handle, instance, nullptr), 6u);
    EXPECT_EQ(bytes_array().len(handle, instance, nullptr), 10u);
    EXPECT_EQ(calls_of("fwe_cl_wayfind_chan_nb_st").len(handle, instance, nullptr), 24u);
    EXPECT_EQ(calls_of("fwe_cl_wayfind_select_all_policies").len(handle, instance, nullptr), 10u);
  }
}

TEST(Length, follows_the_records_own_variant_without_cap_and_domain) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, tunnel());
  object.header().variant = 0;
  EXPECT_EQ(tunnel().len(handle, instance, object.get()), 18u);
  object.header().variant = 9;
  EXPECT_EQ(tunnel().len(handle, instance, object.get()), 82u);
  object.header().variant = -1;
  EXPECT_EQ(tunnel().len(handle, instance, object.get()), 6u);
  object.header().variant = 1;
  handle.set_peer(release_list(0).get());
  EXPECT_EQ(tunnel().len(handle, instance, object.get()), 82u);
}

TEST(Length, with_tracking_counts_one_for_each_element_and_one_for_the_array) {
  const Handle handle(ORK_TRACKING_ON);
  for (const uint32_t elements : {0U, 1U, 5U}) {
    const Object object = filled(handle, bytes_array(), elements);
    EXPECT_EQ(bytes_array().len(handle, instance, object.get()), 10 + elements + 1 + elements);
  }
}

TEST(Length, with_tracking_counts_the_states_of_the_variants_that_the_record_has) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object(handle, tunnel());
  for (const auto& [variant, length] : {std::pair{-1, 6u}, {0, 18u + 3}, {1, 82u + 3 + 2 * 33}}) {
    object.header().variant = static_cast<int8_t>(variant);
    EXPECT_EQ(tunnel().len(handle, instance, object.get()), length) << "variant " << variant;
  }
}

TEST(Length, of_elements_with_arrays_of_their_own_is_summed_one_by_one) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data");
  const Object object = filled(handle, calls, 3);
  uint32_t err = 0;
  auto* const element = fwe_dp_wayfind_debug_data_dbg_per_complex_get(
      handle, instance, static_cast<fwe_dp_wayfind_debug_data*>(object.get()), 1, &err);
  const uint32_t before = calls.len(handle, instance, object.get());
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_remove_elements(handle, instance, element);
  const uint32_t setting = calls_of("fwe_dp_wayfind_debug_setting").len(handle, instance, nullptr);
  EXPECT_EQ(calls.len(handle, instance, object.get()), before - 3 * setting);
}

TEST(Length, in_cr_style_is_0_while_an_error_is_pending) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, mem());
  EXPECT_EQ(mem().len_cr(handle, object.get()), 26u);
  EXPECT_EQ(mem().len_cr(handle, nullptr), 26u);
  handle->cr_error = 12;
  EXPECT_EQ(mem().len_cr(handle, object.get()), 0u);
}

}  // namespace
