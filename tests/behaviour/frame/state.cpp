// State bytes of fields, and the tracking of whole records.
#include "behaviour/frame/objects.h"

namespace frame {

TEST(State, the_getter_reads_the_byte) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.state()[1] = 200;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_state_flag_get(h, instance, obj, &h.err), 200u);
  EXPECT_CALLS(log, {});
}

TEST(State, the_setter_adjusts_passes_the_gate_and_announces_without_an_owner) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_ppe_addr_state_flag_set(h, instance, obj, 200, &h.err);
  EXPECT_CALLS(
      log.calls_of({"orklib_adjust_variant", "ork_get_instance_variant", "write_notify_fn"}),
      {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
       "ork_get_instance_variant(obj,1,0)", "write_notify_fn(state+1,1,7,null)"});
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 200, 0}));
}

TEST(State, with_tracking_off_both_give_22_without_a_trace) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, obj, &h.err), 0u);
  EXPECT_EQ(h.err, 22u);
  h.err = 0;
  fwe_cl_wayfind_mem_st_fwe_num_state_flag_set(h, instance, obj, 1, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(log, {"ork_store_err(22)", "ork_store_err(22)"});
}

TEST(State, an_untracked_object_is_refused_in_two_wordings_and_two_orders) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, obj, &h.err), 0u);
  EXPECT_EQ(h.err, 22u);
  h.err = 0;
  fwe_cl_wayfind_mem_st_fwe_num_state_flag_set(h, instance, obj, 1, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(log, {"ork_store_err(22)", "trace(error,The object is non state tracked)",
                     "trace(error,The object is not state tracked)", "ork_store_err(22)"});
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

TEST(State, without_a_mode_is_read_after_the_newest_body_and_written_after_the_objects_own) {
  SpiedHandle h(plain);
  // A block with room for state bytes that the handle does not know of.
  alignas(8) uint8_t block[104 + 14] = {};
  auto* const obj = reinterpret_cast<fwe_cl_wayfind_global_info_data*>(block);
  fwe_cl_wayfind_global_info_data_initialize(h, instance, obj,
                                             &_fwe_cl_wayfind_global_info_data_type_info_internal,
                                             0, 1, 0, nullptr, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_global_info_data_num_inst_state_flag_get(h, instance, obj, &h.err), 0u);
  EXPECT_EQ(h.err, 22u) << "not tracked";
  h.err = 0;
  header(obj).obj_flags |= OBJ_STATE_TRACKED;
  block[104] = 9;
  EXPECT_EQ(fwe_cl_wayfind_global_info_data_num_inst_state_flag_get(h, instance, obj, &h.err), 9u);
  header(obj).variant_cap = 0;
  EXPECT_EQ(fwe_cl_wayfind_global_info_data_num_inst_state_flag_get(h, instance, obj, &h.err), 9u);
  EXPECT_EQ(h.err, 0u);
  // The setter goes by the layout that the header names, here the older one of 88 bytes.
  spy::name(block, sizeof block, "obj");
  for (const auto& [cap, byte] : {std::pair<uint8_t, size_t>{1, 104}, {0, 88}}) {
    header(obj).variant_cap = cap;
    std::fill(block + 88, block + sizeof block, uint8_t{0});
    spy::Log log;
    fwe_cl_wayfind_global_info_data_num_inst_state_flag_set(h, instance, obj, 7, &h.err);
    EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
                 std::vector<std::string>{"write_notify_fn(" + at("obj", byte) + ",1,7,null)"});
    EXPECT_EQ(block[byte], 7);
    EXPECT_EQ(fwe_cl_wayfind_global_info_data_num_inst_state_flag_get(h, instance, obj, &h.err),
              cap == 1 ? 7u : 0u);
  }
  EXPECT_EQ(h.err, 0u);
}

TEST(State, without_a_mode_the_getter_follows_a_told_distance) {
  SpiedHandle h(plain);
  alignas(8) uint8_t block[60 + 3] = {};
  auto* const obj = reinterpret_cast<fwe_cl_wayfind_mem_st*>(block);
  fwe_cl_wayfind_mem_st_initialize(h, instance, obj, &_fwe_cl_wayfind_mem_st_type_info_internal, 0,
                                   1, 0, nullptr, &h.err);
  header(obj).obj_flags = OBJ_STATE_TRACKED | OBJ_STTR_OFFSET;
  block[40] = 3; /* behind the body */
  block[60] = 9;
  spy::name(block, sizeof block, "obj");
  const auto distance = spy::answer(orklib_get_sttr_offset, 60);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, obj, &h.err), 9u);
  EXPECT_CALLS(log, {"orklib_get_sttr_offset(7,obj)"});
  EXPECT_EQ(h.err, 0u);
}

TEST(State, the_getter_has_no_gate_and_the_setter_has) {
  SpiedHandle h(tracked);
  const auto old = h.domain({{"fwe_cl_wayfind_chan_st", 0}});
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  obj.state_of("in_burst") = 9;
  EXPECT_EQ(fwe_cl_wayfind_chan_st_in_burst_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.last_error(), 43u);
  ork_clear_last_error(h);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_in_burst_state_flag_get(h, instance, obj, &h.err), 9u);
  EXPECT_EQ(h.last_error(), 0u);
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  fwe_cl_wayfind_chan_st_in_burst_state_flag_set(h, instance, obj, 1, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(obj.state_of("in_burst"), 9);
}

// ---- All bytes of a record at once ----

TEST(StateFill, fills_the_whole_block_with_nested_blocks_in_one_go_and_silently) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  const Snapshot body(obj.get(), 600);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_EQ(log.count("write_notify_fn"), 0u);
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(51, 3));
  EXPECT_TRUE(body.unchanged());
}

TEST(StateFill, returns_without_a_word_when_there_is_nothing_to_fill) {
  for (const Mode& mode : {plain, untracked}) {
    SpiedHandle h(mode);
    SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
    const Snapshot before(obj.get(), 40);
    spy::Log log;
    fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, obj, 3);
    EXPECT_CALLS(log, {});
    EXPECT_TRUE(before.unchanged());
  }
  SpiedHandle h(untracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  spy::Log log;
  fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_CALLS(log, {});
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

TEST(StateFill, a_corrupted_mode_word_is_passed_over_here) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  h->sttr_info->sttr_mode = 7;
  fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, obj, 3);
  h->sttr_info->sttr_mode = ORK_STTR_ON;
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0}));
}

TEST(StateFill, a_child_is_filled_within_its_parents_block) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  auto* const mem = fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, obj, &h.err);
  fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, mem, 3);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 3, 3, 3}));
}

// ---- Where the bytes of embedded records lie ----

TEST(Offsets, update_tells_each_child_in_field_order_and_goes_down) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_channel_data");
  const auto unheard =
      spy::replace(orklib_update_sttr_offset, [](ork_handle*, uint32_t, void*, int32_t) {});
  // From the tables: chan at 16, stats and mem behind it; chan_st embeds four arrays' records
  // from 256 on.
  const auto& channel = *told::record("fwe_cl_wayfind_channel_data");
  const auto& chan = *told::record("fwe_cl_wayfind_chan_st");
  const auto line = [&](int child, int state) {
    return "orklib_update_sttr_offset(7," + at("obj", static_cast<size_t>(child)) + "," +
           std::to_string(static_cast<int>(channel.newest().body) + state - child) + ")";
  };
  const auto child = [](const told::Record& r, const char* f) {
    return static_cast<int>(r.field(f).offset);
  };
  const int chan_at = child(channel, "chan");
  const int chan_state = channel.field("chan").nested;
  spy::Log log;
  fwe_cl_wayfind_channel_data_offset_update(h, instance, obj, obj.state(), &h.err);
  EXPECT_CALLS(
      log, std::vector<std::string>({
               line(chan_at, chan_state),
               line(chan_at + child(chan, "path"), chan_state + chan.field("path").nested),
               line(chan_at + child(chan, "src_intf"), chan_state + chan.field("src_intf").nested),
               line(chan_at + child(chan, "dst_site"), chan_state + chan.field("dst_site").nested),
               line(chan_at + child(chan, "dst_intf"), chan_state + chan.field("dst_intf").nested),
               line(child(channel, "stats"), channel.field("stats").nested),
               line(child(channel, "mem"), channel.field("mem").nested),
           }));
}

TEST(Offsets, a_distance_is_cut_to_32_bits) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  const auto unheard =
      spy::replace(orklib_update_sttr_offset, [](ork_handle*, uint32_t, void*, int32_t) {});
  const auto update = [&](uint64_t beyond) {
    const auto block = reinterpret_cast<uintptr_t>(obj.state()) + beyond; /* nobody reads there */
    fwe_cl_wayfind_nb_channel_data_offset_update(h, instance, obj,
                                                 reinterpret_cast<uint8_t*>(block), &h.err);
  };
  // The body of 136, then chan's bytes from 1 on and mem's from 6 on; the children lie at 16 and
  // 80.
  spy::Log log;
  update(uint64_t{1} << 32);
  EXPECT_CALLS(
      log, {"orklib_update_sttr_offset(7,obj+16,121)", "orklib_update_sttr_offset(7,obj+80,62)"});
  log.clear();
  update(uint64_t{1} << 31);
  EXPECT_CALLS(log, {"orklib_update_sttr_offset(7,obj+16,-2147483527)",
                     "orklib_update_sttr_offset(7,obj+80,-2147483586)"});
}

TEST(Offsets, remove_drops_each_child_in_field_order_and_goes_down) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_channel_data");
  const auto unheard = spy::answer(ork_hd_mapping_destroy, 0);
  spy::Log log;
  fwe_cl_wayfind_channel_data_offset_remove(h, instance, obj, &h.err);
  // chan, within it path, src_intf, dst_site and dst_intf, then stats and mem.
  EXPECT_CALLS(log,
               {"ork_hd_mapping_destroy(7,obj+16,err)", "ork_hd_mapping_destroy(7,obj+272,err)",
                "ork_hd_mapping_destroy(7,obj+304,err)", "ork_hd_mapping_destroy(7,obj+336,err)",
                "ork_hd_mapping_destroy(7,obj+368,err)", "ork_hd_mapping_destroy(7,obj+432,err)",
                "ork_hd_mapping_destroy(7,obj+536,err)"});
}

TEST(Offsets, behind_a_child_that_cannot_be_dropped_its_own_are_left_and_its_siblings_dropped) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_channel_data");
  const auto failing = spy::replace(
      ork_hd_mapping_destroy, [](ork_handle*, uint32_t, void*, uint32_t* err) { return *err = 5; });
  spy::Log log;
  fwe_cl_wayfind_channel_data_offset_remove(h, instance, obj, &h.err);
  EXPECT_CALLS(log,
               {"ork_hd_mapping_destroy(7,obj+16,err)", "ork_hd_mapping_destroy(7,obj+432,err)",
                "ork_hd_mapping_destroy(7,obj+536,err)"});
}

TEST(Offsets, both_are_empty_without_embedded_records_and_with_an_error_standing) {
  SpiedHandle h(tracked);
  SpiedObject mem(h, "fwe_cl_wayfind_mem_st", "mem");
  SpiedObject parent(h, "fwe_cl_wayfind_nb_channel_data");
  spy::Log log;
  fwe_cl_wayfind_mem_st_offset_update(h, instance, mem, mem.state(), &h.err);
  fwe_cl_wayfind_mem_st_offset_remove(h, instance, mem, &h.err);
  h.err = 5;
  fwe_cl_wayfind_nb_channel_data_offset_update(h, instance, parent, parent.state(), &h.err);
  fwe_cl_wayfind_nb_channel_data_offset_remove(h, instance, parent, &h.err);
  EXPECT_CALLS(log, {});
}

}  // namespace frame
