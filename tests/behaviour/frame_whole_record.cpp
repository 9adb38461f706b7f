// Copying, reading and writing whole records.
#include "frame_objects.h"

namespace frame {

TEST(FrameRecordGet, gives_the_object_back_and_reads_no_error) {
    Handle h(recorded);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    h.err = 5;
    spy::Log log;
    EXPECT_EQ(static_cast<void *>(fwe_cl_wayfind_mem_st_get(h, instance, obj, &h.err)), obj.get());
    EXPECT_CALLS(log, {"orkdb_record_containment2(7,obj,null,1)"});
}

// ---- Set ----

TEST(FrameRecordSet, onto_itself_adjusts_and_does_nothing_more) {
    Handle h(tracked_and_recorded);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    spy::Log log;
    fwe_cl_wayfind_mem_st_set(h, instance, obj, obj, &h.err);
    EXPECT_CALLS(log, {"ork_get_manifested_type_info(obj)", "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)"});
}

TEST(FrameRecordSet, a_null_destination_has_a_null_descriptor) {
    Handle h(plain);
    spy::Log log;
    fwe_cl_wayfind_mem_st_set(h, instance, nullptr, nullptr, &h.err);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}), {"orklib_adjust_variant(7,null,null,0,err)"});
}

TEST(FrameRecordSet, copies_body_and_state_announced) {
    Handle h(tracked);
    Object dst(h, "fwe_cl_wayfind_mem_st", "dst");
    Object src(h, "fwe_cl_wayfind_mem_st", "src");
    fwe_cl_wayfind_mem_st_set_all(h, instance, src, 1, 2, 3, &h.err);
    fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, src, 7);
    spy::Log log;
    fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
    EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(dst,40,7,dst)", "write_notify_fn(dst_state,3,7,dst_state)"});
    EXPECT_EQ(std::memcmp(dst.get(), src.get(), 43), 0);
}

TEST(FrameRecordSet, without_a_mode_announces_the_newest_body) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_chan_stats_st", "dst");
    Object src(h, "fwe_cl_wayfind_chan_stats_st", "src");
    spy::Log log;
    fwe_cl_wayfind_chan_stats_st_set(h, instance, dst, src, &h.err);
    EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(dst,104,7,dst)"});
}

TEST(FrameRecordSet, does_not_test_the_error_on_entry) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_mem_st", "dst");
    Object src(h, "fwe_cl_wayfind_mem_st", "src");
    fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, src, 4, &h.err);
    h.err = 5;
    fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(load<uint32_t>(dst.field("fwe_num")), 4u);
    Object parent(h, "fwe_cl_wayfind_nb_channel_data", "parent");
    Object other(h, "fwe_cl_wayfind_nb_channel_data", "other");
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_set(h, instance, parent, other, &h.err);
    EXPECT_EQ(log.count("orklib_adjust_variant"), 3u) << "the children's sets run as well";
    EXPECT_EQ(h.err, 5u);
}

TEST(FrameRecordSet, a_destination_of_a_lower_variant_is_refused) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_auto_tunnel", "dst");
    Object src(h, "fwe_cl_wayfind_auto_tunnel", "src");
    dst.head().variant = 0;
    const auto stay = spy::answer(orklib_adjust_variant, 0);
    const Snapshot before = dst.snapshot();
    fwe_cl_wayfind_auto_tunnel_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(h.last_error(), 43u);
    EXPECT_TRUE(before.unchanged());
}

TEST(FrameRecordSet, a_destination_of_a_higher_variant_comes_down_to_the_source) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_auto_tunnel", "dst");
    Object src(h, "fwe_cl_wayfind_auto_tunnel", "src");
    src.head().variant = 0;
    fwe_cl_wayfind_auto_tunnel_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(h.last_error(), 0u);
    EXPECT_EQ(dst.head().variant, 0);
}

TEST(FrameRecordSet, layouts_that_differ_are_refused_even_where_the_bodies_are_alike) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_chan_st", "dst");
    Object src(h, "fwe_cl_wayfind_chan_st", "src");
    const auto stay = spy::answer(orklib_adjust_variant, 0);
    for (Object *const obj : {&dst, &src}) {
        obj->head().variant = 0;
        obj->head().variant_cap = 0;
    }
    src.head().variant_cap = 1;
    const Snapshot before = dst.snapshot();
    fwe_cl_wayfind_chan_st_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(h.last_error(), 43u);
    EXPECT_TRUE(before.unchanged());
    for (Object *const obj : {&dst, &src}) {
        obj->head().variant = 3;
        obj->head().variant_cap = 3;
    }
}

TEST(FrameRecordSet, of_the_flags_only_the_told_distance_survives_the_copy) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_mem_st", "dst");
    Object src(h, "fwe_cl_wayfind_mem_st", "src");
    dst.head().obj_flags = OBJ_EMBEDDED | OBJ_NESTED | OBJ_STTR_OFFSET;
    fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(dst.head().obj_flags, OBJ_STTR_OFFSET);
    dst.head().obj_flags = 0;
    src.head().obj_flags = OBJ_EMBEDDED | OBJ_STTR_OFFSET;
    fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(dst.head().obj_flags, OBJ_EMBEDDED) << "the source's distance is not the destination's";
    src.head().obj_flags = 0;
    dst.head().obj_flags = 0;
}

TEST(FrameRecordSet, an_untracked_source_gives_22_behind_the_copy_of_the_body) {
    Handle h(tracked);
    Object dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
    ork_handle_set_tracking(h, ORK_TRACKING_OFF);
    {
        auto *const src = fwe_cl_wayfind_nb_channel_data_create(h, instance);
        fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err);
        fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err), 6, &h.err);
        ork_handle_set_tracking(h, ORK_TRACKING_ON);
        spy::Log log;
        fwe_cl_wayfind_nb_channel_data_set(h, instance, dst, src, &h.err);
        EXPECT_EQ(h.err, 22u);
        EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}), {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
        EXPECT_EQ(load<uint32_t>(dst.field("mem") + 12), 6u) << "the body stays copied";
        EXPECT_EQ(dst.state_bytes(), std::vector<uint8_t>(9, 0));
        fwe_cl_wayfind_nb_channel_data_destroy(h, instance, src);
    }
    h.err = 0;
}

TEST(FrameRecordSet, re_points_its_children_before_their_state_is_copied_and_sets_them_behind) {
    Handle h(tracked);
    Object dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
    Object src(h, "fwe_cl_wayfind_nb_channel_data", "src");
    auto *const mem = fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err);
    fwe_cl_wayfind_mem_st_exmem_addr_set_value(h, instance, mem, 8, &h.err);
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(h.err, 0u);
    EXPECT_CALLS(
        log.calls_of({"orklib_update_sttr_offset", "write_notify_fn", "orklib_adjust_variant"}),
        {"orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_nb_channel_data),0,err)", "write_notify_fn(dst,136,7,dst)",
         "orklib_update_sttr_offset(7,dst+16,121)", "orklib_update_sttr_offset(7,dst+80,62)", "write_notify_fn(dst_state,9,7,dst_state)",
         "orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_chan_nb_st),0,err)", "write_notify_fn(dst+16,64,7,dst+16)",
         "write_notify_fn(dst_state+1,4,7,dst_state+1)", "orklib_adjust_variant(7,dst+80,type(fwe_cl_wayfind_mem_st),0,err)",
         "write_notify_fn(dst+80,40,7,dst+80)", "write_notify_fn(dst_state+6,3,7,dst_state+6)"});
    EXPECT_EQ(dst.state_bytes(), src.state_bytes());
    EXPECT_EQ(std::memcmp(dst.get(), src.get(), 136), 0);
}

TEST(FrameRecordSet, address_fields_are_set_by_their_own_function_in_field_order) {
    Handle h(plain);
    Object dst(h, "fwe_cl_wayfind_prefixtosite_data", "dst");
    Object src(h, "fwe_cl_wayfind_prefixtosite_data", "src");
    spy::Log log;
    fwe_cl_wayfind_prefixtosite_data_set(h, instance, dst, src, &h.err);
    const auto &told = *told::record("fwe_cl_wayfind_prefixtosite_data");
    const auto stats = std::to_string(told.field("stats").offset);
    EXPECT_CALLS(log.calls_of({"ip_address_set", "orklib_adjust_variant"}),
                 std::vector<std::string>{"orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_prefixtosite_data),0,err)",
                                          "ip_address_set(7,dst+16,src+16,err)",
                                          "orklib_adjust_variant(7,dst+" + stats + ",type(fwe_cl_wayfind_prefixtosite_stats_st),0,err)"});
}

TEST(FrameRecordSet, the_tail_has_no_variant_gate_and_leaves_the_flag_set_out) {
    Handle h(plain);
    const auto old = h.domain({{"fwe_cl_wayfind_hop_chan_data", 0}, {"fwe_cl_wayfind_hop_chan_st", 0}});
    Object dst(h, "fwe_cl_wayfind_hop_chan_data", "dst");
    Object src(h, "fwe_cl_wayfind_hop_chan_data", "src");
    spy::Log log;
    fwe_cl_wayfind_hop_chan_data_set(h, instance, dst, src, &h.err);
    const std::string serv = at("dst", told::record("fwe_cl_wayfind_hop_chan_data")->field("serv").offset);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
                 std::vector<std::string>({
                     "orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_hop_chan_data),1,err)",
                     "orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_hop_chan_st),1,err)",
                     "orklib_adjust_variant(7,dst+168,type(fwe_cl_wayfind_hop_chan_stats_st),0,err)",
                     "orklib_adjust_variant(7,dst+240,type(fwe_cl_wayfind_mem_st),0,err)",
                     "orklib_adjust_variant(7,dst+288,type(fwe_cl_wayfind_hop_chan_probe_st),0,err)",
                     "orklib_adjust_variant(7," + serv + ",type(fwe_cl_wayfind_hop_chan_serv_st),0,err)",
                 }));
}

TEST(FrameCleanup, does_what_set_does_behind_its_raw_copy) {
    Handle h(tracked);
    Object dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
    Object src(h, "fwe_cl_wayfind_nb_channel_data", "src");
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_post_copyout_cleanup(h, instance, dst, src, &h.err);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}), {"orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                                                           "orklib_adjust_variant(7,dst+80,type(fwe_cl_wayfind_mem_st),0,err)"});
    log.clear();
    h.err = 5;
    fwe_cl_wayfind_nb_channel_data_post_copyout_cleanup(h, instance, dst, src, &h.err);
    EXPECT_CALLS(log, {});
    h.err = 0;
    Object plain_dst(h, "fwe_cl_wayfind_mem_st", "a");
    Object plain_src(h, "fwe_cl_wayfind_mem_st", "b");
    log.clear();
    fwe_cl_wayfind_mem_st_post_copyout_cleanup(h, instance, plain_dst, plain_src, &h.err);
    EXPECT_CALLS(log, {});
}

// ---- Get all ----

TEST(FrameGetAll, reads_each_field_through_its_pointer_in_field_order) {
    Handle h(recorded);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
    uint32_t fwe_num = 0;
    uint64_t ppe = 0;
    uint64_t exmem = 0;
    spy::Log log;
    fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
    EXPECT_CALLS(log.calls_of({"u_int32_get", "u_int64_get", "orkdb_record_containment2", "u_int32_get_value", "u_int64_get_value"}),
                 {"u_int32_get(7,obj+12,err)", "orkdb_record_containment2(7,obj+12,obj,1)", "u_int32_get_value(7,obj+12,err)",
                  "u_int64_get(7,obj+16,err)", "orkdb_record_containment2(7,obj+16,obj,1)", "u_int64_get_value(7,obj+16,err)",
                  "u_int64_get(7,obj+24,err)", "orkdb_record_containment2(7,obj+24,obj,1)", "u_int64_get_value(7,obj+24,err)"});
    EXPECT_EQ(std::make_tuple(fwe_num, ppe, exmem), std::make_tuple(1u, uint64_t{2}, uint64_t{3}));
}

TEST(FrameGetAll, of_a_negative_variant_writes_nothing_and_is_no_error) {
    Handle h(plain);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    obj.head().variant = -1;
    uint32_t fwe_num = 77;
    uint64_t ppe = 77;
    uint64_t exmem = 77;
    spy::Log log;
    fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
    EXPECT_EQ(log.count("ork_store_epoch_err"), 0u);
    EXPECT_EQ(std::make_tuple(fwe_num, ppe, exmem), std::make_tuple(77u, uint64_t{77}, uint64_t{77}));
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(h.last_error(), 0u);
    obj.head().variant = 0;
}

TEST(FrameGetAll, a_null_field_pointer_reads_as_0) {
    Handle h(plain);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    const auto nothing = spy::answer(u_int32_get, nullptr);
    uint32_t fwe_num = 77;
    uint64_t ppe = 77;
    uint64_t exmem = 77;
    fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
    EXPECT_EQ(fwe_num, 0u);
}

TEST(FrameGetAll, leaves_out_the_fields_of_later_variants) {
    Handle h(plain);
    Object obj(h, "fwe_cl_wayfind_select_state_data");
    uint32_t out[6] = {77, 77, 77, 77, 77, 77};
    const auto read_all = [&] {
        fwe_cl_wayfind_select_state_data_get_all(h, instance, obj, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &h.err);
    };
    obj.head().variant = 0;
    read_all();
    EXPECT_EQ(out[4], 0u);
    EXPECT_EQ(out[5], 77u);
    obj.head().variant = 1;
    read_all();
    EXPECT_EQ(out[5], 0u);
}

TEST(FrameGetAll, gives_the_counts_of_arrays) {
    Handle h(plain);
    Object obj(h, "fwe_dp_wayfind_debug_data");
    Object element(h, "fwe_dp_wayfind_debug_data_per_complex", "element");
    fwe_dp_wayfind_debug_data_dbg_per_complex_set(h, instance, obj, 2, element, &h.err);
    uint8_t complexes = 0;
    uint32_t none = 77;
    fwe_dp_wayfind_debug_data_get_all(h, instance, obj, &complexes, &none, &h.err);
    EXPECT_EQ(complexes, 3u);
    EXPECT_EQ(none, 0u);
}

TEST(FrameGetAll, a_record_without_values_has_the_entry_steps_only) {
    Handle h(recorded);
    Object obj(h, "fwe_cl_wayfind_color_data");
    spy::Log log;
    fwe_cl_wayfind_color_data_get_all(h, instance, obj, &h.err);
    fwe_cl_wayfind_color_data_set_all(h, instance, obj, &h.err);
    for (const auto &call : log.calls()) {
        EXPECT_TRUE(call.find("ork_clear_last_error") == 0 || call.find("ork_get_instance_variant") == 0 ||
                    call.find("ork_get_manifested_type_info") == 0 || call.find("orklib_adjust_variant") == 0)
            << call;
    }
}

// ---- Set all ----

TEST(FrameSetAll, writes_each_field_and_marks_none) {
    Handle h(tracked_and_recorded);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    spy::Log log;
    fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
    EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                       "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)", "ork_get_instance_variant(obj,1,0)",
                       "u_int32_set_value(7,obj+12,1,err)", "u_int64_set_value(7,obj+16,2,err)", "u_int64_set_value(7,obj+24,3,err)"});
    EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0}));
    fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 1, &h.err);
    fwe_cl_wayfind_mem_st_ppe_addr_set_value(h, instance, obj, 2, &h.err);
    fwe_cl_wayfind_mem_st_exmem_addr_set_value(h, instance, obj, 3, &h.err);
    EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{2, 2, 2}));
}

TEST(FrameSetAll, drops_values_of_later_variants_without_an_error) {
    Handle h(plain);
    Object obj(h, "fwe_cl_wayfind_select_state_data");
    const auto stay = spy::answer(orklib_adjust_variant, 0);
    obj.head().variant = 0;
    fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 2, 1, 1, 1, 9, 1, &h.err);
    EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u);
    EXPECT_EQ(load<uint32_t>(obj.field("show_human_readable")), 0u);
    EXPECT_EQ(h.last_error(), 0u);
    obj.head().variant = 1;
}

TEST(FrameSetAll, an_enum_out_of_range_is_refused_and_a_written_slot_ends_the_writing) {
    Handle h(plain);
    Object obj(h, "fwe_cl_wayfind_select_state_data");
    fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 3, 1, 1, 1, 9, 1, &h.err);
    EXPECT_EQ(h.last_error(), 43u);
    EXPECT_EQ(load<uint32_t>(obj.field("db_type") + 12), 0u);
    EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u) << "the slot was left at 0";
    const auto strict = spy::replace(ork_store_epoch_err, [](ork_handle *, uint32_t number, uint32_t *err) { *err = number; });
    fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 3, 1, 1, 1, 10, 1, &h.err);
    EXPECT_EQ(h.err, 43u);
    EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u);
}

TEST(FrameSetAll, and_get_all_do_nothing_with_an_error_standing) {
    Handle h(tracked_and_recorded);
    Object obj(h, "fwe_cl_wayfind_mem_st");
    const Snapshot before = obj.snapshot();
    uint32_t fwe_num = 77;
    uint64_t ppe = 77;
    h.err = 5;
    spy::Log log;
    fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
    fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &ppe, &h.err);
    EXPECT_CALLS(log, {});
    EXPECT_TRUE(before.unchanged());
    EXPECT_EQ(fwe_num, 77u);
}

}  // namespace frame
