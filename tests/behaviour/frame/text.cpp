// Fixed texts.
#include "behaviour/frame/objects.h"

namespace frame {

namespace {

std::string text_at(const SpiedObject& obj, const std::string& field, size_t size) {
  return std::string(reinterpret_cast<const char*>(obj.field(field)), size);
}

}  // namespace

TEST(Text, a_text_that_fills_its_field_has_no_end_and_is_read_back_whole) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abcdefgh", 8, &h.err);
  EXPECT_EQ(text_at(obj, "dscp_str", 8), "abcdefgh");
  char out[9] = "########";
  fwe_cl_wayfind_hop_chan_data_dscp_str_get(h, instance, obj, out, 9, &h.err);
  EXPECT_STREQ(out, "abcdefgh");
  EXPECT_EQ(h.err, 0u);
}

TEST(Text, a_target_that_is_too_small_gets_what_fits_and_28) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abcdefgh", 8, &h.err);
  char out[9] = "########";
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_get(h, instance, obj, out, 8, &h.err);
  EXPECT_STREQ(out, "abcdefg");
  EXPECT_EQ(h.err, 28u);
  EXPECT_CALLS(
      log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)", "ork_store_err(28)"});
  h.err = 0;
  fwe_cl_wayfind_hop_chan_data_dscp_str_get(h, instance, obj, out, 1, &h.err);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(h.err, 28u);
}

TEST(Text, a_target_of_no_bytes_is_refused_before_the_gate) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  char out[2] = "#";
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_get(h, instance, obj, out, 0, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_STREQ(out, "#");
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_store_err(22)"});
}

TEST(Text, a_shorter_text_leaves_what_lies_behind_its_end) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "1234567", 7, &h.err);
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abc", 3, &h.err);
  EXPECT_EQ(text_at(obj, "dscp_str", 8), std::string("abc\0"
                                                     "567\0",
                                                     8));
}

TEST(Text, a_source_that_ends_early_is_filled_with_zeros_up_to_its_length) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "12345678", 8, &h.err);
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "ab", 5, &h.err);
  EXPECT_EQ(text_at(obj, "dscp_str", 8), std::string("ab\0\0\0\0"
                                                     "78",
                                                     8));
}

TEST(Text, set_announces_its_length_and_not_its_end) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abc", 3, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_data),1,err)",
                     "ork_get_instance_variant(obj,1,0)", "write_notify_fn(obj+280,3,7,obj)",
                     "write_notify_fn(state+29,1,7,null)"});
  EXPECT_EQ(obj.state_of("dscp_str"), 2);
}

TEST(Text, a_text_of_no_length_announces_no_bytes_and_writes_the_end_alone) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  std::memcpy(obj.field("dscp_str"), "12345678", 8);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "", 0, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               {"write_notify_fn(obj+280,0,7,obj)", "write_notify_fn(state+29,1,7,null)"});
  EXPECT_EQ(text_at(obj, "dscp_str", 8), std::string("\0"
                                                     "2345678",
                                                     8));
  EXPECT_EQ(h.err, 0u);
}

TEST(Text, a_length_above_the_field_is_refused_behind_the_gate_without_a_trace) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abcdefghi", 9, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_data),1,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_store_err(22)"});
  EXPECT_TRUE(before.unchanged());
}

TEST(Text, a_length_above_a_field_that_the_object_has_not_is_no_error_of_its_own) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_st");
  obj.header().variant = 0;
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_st_create_ts_msec_set(h, instance, obj, std::string(33, 'x').c_str(), 33,
                                                &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_st),1,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_store_epoch_err(43,err)"});
  obj.header().variant = 1;
}

TEST(Text, a_mark_that_fails_leaves_the_text_without_its_end) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "1234567", 7, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abc", 3, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_EQ(text_at(obj, "dscp_str", 8), std::string("abc4567\0", 8));
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

TEST(Text, cr_mode_uses_the_slot_of_the_handle_and_gives_it_back) {
  SpiedHandle h({.cr_instance = 11});
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_dscp_str_set_cr(h, obj, "abc", 3), 0u);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "write_notify_fn"}),
               {"orklib_adjust_variant(11,obj,type(fwe_cl_wayfind_hop_chan_data),1,cr_error)",
                "write_notify_fn(obj+280,3,11,obj)"});
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_dscp_str_set_cr(h, obj, "abcdefghi", 9), 22u);
  EXPECT_EQ(h->cr_error, 22u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_dscp_str_set_cr(h, obj, "xyz", 3), 22u)
      << "an error stands";
  EXPECT_EQ(text_at(obj, "dscp_str", 3), "abc");
  h->cr_error = 0;
}

TEST(Text, a_text_of_a_later_variant_is_refused_and_a_set_may_raise_the_object) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_st");
  obj.header().variant = 0;
  char out[33] = "#";
  fwe_cl_wayfind_hop_chan_st_create_ts_msec_get(h, instance, obj, out, 33, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_STREQ(out, "#");
  fwe_cl_wayfind_hop_chan_st_create_ts_msec_set(h, instance, obj, "now", 3, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(obj.header().variant, 1);
  EXPECT_EQ(text_at(obj, "create_ts_msec", 4), std::string("now\0", 4));
}

}  // namespace frame
