// Writers whose record cannot be brought to its newest variant: each goes on in its own way, and
// the error stays. Only an array's value is written with the error that its element was found with.
#include "behaviour/frame/paths.h"

namespace frame {

namespace {

constexpr const char* chan_nb =
    "fwe_cl_wayfind_chan_nb_st"; /* chan_id at 12, state at 16, tx_state at 32, vrf_id at 48 */

// Two elements, 1 and 2, in an array without a mark.
struct Path {
  Path() {
    const uint32_t two[] = {1, 2};
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, two, 2, &h.err);
    obj.state()[0] = 0;
    spy::name(pointer_at<uint32_t>(obj.field("path_id")), 8, "array");
    spy::name(elements_of(obj, "path_id"), 2, "elements");
  }
  void expect(uint32_t err, const std::vector<uint32_t>& numbers,
              const std::vector<uint8_t>& states) {
    EXPECT_EQ(std::exchange(h.err, 0), err);
    EXPECT_EQ(values(h, obj), numbers);
    EXPECT_EQ(obj.state()[0], 2);
    EXPECT_EQ(element_bytes(obj, "path_id", states.size()), states);
  }
  SpiedHandle h{tracked};
  SpiedObject obj{h, path_st};
};

}  // namespace

TEST(FailedAdjust, an_enum_is_not_written_but_marked_and_its_source_recorded) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, chan_nb);
  auto* const src = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  spy::name(src, 16, "src");
  fwe_cl_wayfind_chan_tx_state_e_set_value(h, instance, src, 2, &h.err);
  ASSERT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_value(h, instance, src, &h.err), 2u);
  const Snapshot body(obj.get(), 64);
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_tx_state_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                     "ork_get_instance_variant(obj,1,1)", "write_notify_fn(state+2,1,7,null)",
                     "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_TRUE(body.unchanged());
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 2, 0}));
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, src);
}

TEST(FailedAdjust, a_flag_set_is_not_written_but_marked_and_its_source_recorded) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_st");
  auto* const src = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  spy::name(src, 24, "src");
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, src, 4, 1, &h.err);
  ASSERT_EQ(bytes(src)[11], 0x10);
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_st_flags_show_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_st),1,err)",
                     "ork_get_instance_variant(obj,1,0)", "write_notify_fn(state+14,1,7,null)",
                     "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(obj.field("flags_show")[11], 0);
  EXPECT_EQ(obj.state_of("flags_show"), 2);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, src);
}

TEST(FailedAdjust, an_embedded_record_is_written_marked_and_its_source_recorded) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, src, 5, &h.err);
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_mem_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn", "orkdb_record_containment2"}),
               {"write_notify_fn(obj+80,40,7,obj+80)", "write_notify_fn(state+6,3,7,state+6)",
                "write_notify_fn(state+5,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(load<uint32_t>(obj.field("mem") + 12), 5u);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0, 0, 0, 2, 2, 0, 0}));
}

TEST(FailedAdjust, of_all_values_at_once_the_runtime_is_given_the_scalars_and_no_enum_is_touched) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, chan_nb);
  const Snapshot before = obj.snapshot();
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_set_all(h, instance, obj, 5, 1, 2, 8, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_set_value(7,obj+12,5,err)",
                     "u_int32_set_value(7,obj+48,8,err)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_TRUE(before.unchanged());
}

TEST(FailedAdjust, a_text_is_written_marked_and_ended) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  std::memcpy(obj.field("dscp_str"), "12345678", 8);
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(h, instance, obj, "abc", 3, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "write_notify_fn"}),
               {"write_notify_fn(obj+280,3,7,obj)", "write_notify_fn(state+29,1,7,null)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_STREQ(reinterpret_cast<const char*>(obj.field("dscp_str")), "abc");
  EXPECT_EQ(obj.state_of("dscp_str"), 2);
}

TEST(FailedAdjust, an_elements_value_is_written_and_the_error_gives_way_to_its_getters) {
  Path path;
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(path.h, instance, path.obj, 0, 3, &path.h.err);
  EXPECT_CALLS(array_doings(log),
               {"u_int32_set_value(7,array,3,err)", "write_notify_fn(state,1,7,null)",
                "write_notify_fn(elements,1,7,null)"});
  path.expect(0, {3, 2}, {2, 0});
}

TEST(FailedAdjust, an_element_is_handed_to_the_runtime_and_marked) {
  Path path;
  const uint32_t src = 7;
  spy::name_at(&src, "src");
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(path.h, instance, path.obj, 1, &src, &path.h.err);
  EXPECT_CALLS(array_doings(log),
               {"u_int32_set(7,array+4,src,err)", "write_notify_fn(state,1,7,null)",
                "write_notify_fn(elements+1,1,7,null)"});
  path.expect(5, {1, 2}, {0, 2});
}

TEST(FailedAdjust, all_elements_at_once_are_replaced) {
  Path path;
  const uint32_t src[] = {4, 5, 6};
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(path.h, instance, path.obj, src, 3, &path.h.err);
  EXPECT_CALLS(array_doings(log),
               {"free_fn(7,array)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,12)=new1",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(state,1,7,null)",
                "free_fn(7,elements)", "write_notify_fn(state+8,8,7,null)", "alloc_fn(7,3)=new2"});
  path.expect(5, {4, 5, 6}, {0, 0, 0});
}

TEST(FailedAdjust, a_state_byte_is_written) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, chan_nb);
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_chan_id_state_flag_set(h, instance, obj, 9, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(state,1,7,null)"});
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{9, 0, 0, 0}));
}

}  // namespace frame
