// Copying whole records.
#include <unistd.h>

#include <csignal>

#include "behaviour/frame/old_objects.h"
#include "behaviour/frame/paths.h"

namespace frame {

TEST(RecordGet, gives_the_object_back_and_reads_no_error) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  h.err = 5;
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(fwe_cl_wayfind_mem_st_get(h, instance, obj, &h.err)), obj.get());
  EXPECT_CALLS(log, {"orkdb_record_containment2(7,obj,null,1)"});
}

// ---- Set ----

TEST(RecordSet, onto_itself_adjusts_and_does_nothing_more) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_set(h, instance, obj, obj, &h.err);
  EXPECT_CALLS(log, {"ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)"});
}

TEST(RecordSet, a_null_destination_has_a_null_descriptor) {
  SpiedHandle h(plain);
  spy::Log log;
  fwe_cl_wayfind_mem_st_set(h, instance, nullptr, nullptr, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
               {"orklib_adjust_variant(7,null,null,0,err)"});
}

TEST(RecordSet, copies_the_body_with_its_type_word_and_the_state_announced) {
  const ork_type_info other = _fwe_cl_wayfind_mem_st_type_info_internal;
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  store(dst.get(), &other);
  fwe_cl_wayfind_mem_st_set_all(h, instance, src, 1, 2, 3, &h.err);
  fwe_cl_wayfind_mem_st_set_all_state_tracking_flag(h, instance, src, 7);
  spy::Log log;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               {"write_notify_fn(dst,40,7,dst)", "write_notify_fn(dst_state,3,7,dst_state)"});
  EXPECT_EQ(std::memcmp(dst.get(), src.get(), 43), 0);
}

TEST(RecordSet, without_a_mode_announces_the_newest_body) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_chan_stats_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_chan_stats_st", "src");
  spy::Log log;
  fwe_cl_wayfind_chan_stats_st_set(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(dst,104,7,dst)"});
}

TEST(RecordSet, without_a_mode_announces_the_newest_body_but_copies_what_an_older_layout_has) {
  SpiedHandle h(plain);
  OldObject dst(h, "fwe_cl_wayfind_chan_stats_st", 0, "dst");
  OldObject src(h, "fwe_cl_wayfind_chan_stats_st", 0, "src");
  std::memset(src.field("recv_bytes"), 0x5A, 88 - 16);
  std::memset(src.get() + 88, 0x77, 104 - 88); /* whatever lies behind it */
  spy::Log log;
  fwe_cl_wayfind_chan_stats_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(dst,104,7,dst)"});
  EXPECT_EQ(std::memcmp(dst.get(), src.get(), 88), 0);
  EXPECT_EQ(std::vector<uint8_t>(dst.get() + 88, dst.get() + 104), std::vector<uint8_t>(16, 0));
  std::memset(src.get() + 88, 0, 104 - 88);
}

TEST(RecordSet, copies_the_body_and_the_state_bytes_that_an_older_layout_has) {
  SpiedHandle h(tracked);
  OldObject dst(h, "fwe_cl_wayfind_chan_stats_st", 0, "dst");
  OldObject src(h, "fwe_cl_wayfind_chan_stats_st", 0, "src");
  std::memset(src.state(), 7, 11); /* eight are its own, three somebody else's */
  spy::Log log;
  fwe_cl_wayfind_chan_stats_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               {"write_notify_fn(dst,88,7,dst)", "write_notify_fn(dst_state,8,7,dst_state)"});
  EXPECT_EQ(std::vector<uint8_t>(dst.state(), dst.state() + 11),
            (std::vector<uint8_t>{7, 7, 7, 7, 7, 7, 7, 7, 0, 0, 0}));
  std::memset(src.state() + 8, 0, 3);
}

TEST(RecordSet, does_not_test_the_error_on_entry) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, src, 4, &h.err);
  h.err = 5;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(load<uint32_t>(dst.field("fwe_num")), 4u);
  SpiedObject parent(h, "fwe_cl_wayfind_nb_channel_data", "parent");
  SpiedObject other(h, "fwe_cl_wayfind_nb_channel_data", "other");
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_set(h, instance, parent, other, &h.err);
  EXPECT_EQ(log.count("orklib_adjust_variant"), 3u) << "the children's sets run as well";
  EXPECT_EQ(h.err, 5u);
}

TEST(RecordSet, a_destination_of_a_lower_variant_is_refused) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_auto_tunnel", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_auto_tunnel", "src");
  dst.header().variant = 0;
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  const Snapshot before = dst.snapshot();
  fwe_cl_wayfind_auto_tunnel_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_TRUE(before.unchanged());
}

TEST(RecordSet, variants_compare_with_their_sign) {
  SpiedHandle h(plain);
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  fwe_cl_wayfind_mem_st_set_all(h, instance, src, 1, 2, 3, &h.err);
  dst.header().variant = -1;
  const Snapshot before = dst.snapshot();
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_TRUE(before.unchanged());

  ork_clear_last_error(h);
  dst.header().variant = 0;
  src.header().variant = -1;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(dst.header().variant, -1);
  EXPECT_EQ(std::memcmp(dst.get(), src.get(), 40), 0);
  dst.header().variant = 0;
  src.header().variant = 0;
}

TEST(RecordSet, a_destination_of_a_lower_variant_rises_first) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_auto_tunnel", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_auto_tunnel", "src");
  fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(h, instance, src, "first", 5, &h.err);
  fwe_cl_wayfind_auto_tunnel_update_ts_msec_set(h, instance, src, "second", 6, &h.err);
  dst.header().variant = 0;
  spy::Log log;
  fwe_cl_wayfind_auto_tunnel_set(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "ork_store_epoch_err"}),
               {"orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_auto_tunnel),1,err)"});
  EXPECT_EQ(dst.header().variant, 1);
  EXPECT_STREQ(reinterpret_cast<const char*>(dst.field("create_ts_msec")), "first");
  EXPECT_STREQ(reinterpret_cast<const char*>(dst.field("update_ts_msec")), "second");
}

TEST(RecordSet, a_destination_of_a_higher_variant_comes_down_to_the_source) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_auto_tunnel", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_auto_tunnel", "src");
  src.header().variant = 0;
  fwe_cl_wayfind_auto_tunnel_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(dst.header().variant, 0);
}

TEST(RecordSet, layouts_that_differ_are_refused_even_where_the_bodies_are_alike) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_chan_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_chan_st", "src");
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  for (SpiedObject* const obj : {&dst, &src}) {
    obj->header().variant = 0;
    obj->header().variant_cap = 0;
  }
  src.header().variant_cap = 1;
  const Snapshot before = dst.snapshot();
  fwe_cl_wayfind_chan_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_TRUE(before.unchanged());
  for (SpiedObject* const obj : {&dst, &src}) {
    obj->header().variant = 3;
    obj->header().variant_cap = 3;
  }
}

TEST(RecordSet, of_the_flags_only_the_told_distance_survives_the_copy) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  constexpr uint8_t all =
      0xE7; /* but 0x10, which says nothing, and that of state tracking, which is off */
  dst.header().obj_flags = all;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(dst.header().obj_flags, 0x40);
  dst.header().obj_flags = 0;
  src.header().obj_flags = all;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(dst.header().obj_flags, 0xA7) << "the source's distance is not the destination's";
  src.header().obj_flags = 0;
  dst.header().obj_flags = 0;
}

TEST(RecordSet, an_untracked_source_gives_22_behind_the_copy_of_the_body) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  {
    auto* const src = fwe_cl_wayfind_nb_channel_data_create(h, instance);
    fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err);
    fwe_cl_wayfind_mem_st_fwe_num_set_value(
        h, instance, fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err), 6, &h.err);
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_set(h, instance, dst, src, &h.err);
    EXPECT_EQ(h.err, 22u);
    EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}),
                 {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
    EXPECT_EQ(load<uint32_t>(dst.field("mem") + 12), 6u) << "the body stays copied";
    EXPECT_EQ(dst.state_bytes(), std::vector<uint8_t>(9, 0));
    fwe_cl_wayfind_nb_channel_data_destroy(h, instance, src);
  }
  h.err = 0;
}

TEST(RecordSet, an_untracked_destination_while_tracking_takes_the_body_and_stays_untracked) {
  struct Case {
    const char* record;
    unsigned body, fwe_num;
    std::vector<size_t> records; /* itself and those inside it */
  };
  for (const auto& [record, body, fwe_num, records] :
       {Case{"fwe_cl_wayfind_mem_st", 40, 12, {0}},
        Case{"fwe_cl_wayfind_nb_channel_data", 136, 80 + 12, {0, 16, 80}}}) {
    SpiedHandle h(untracked);
    SpiedObject dst(h, record, "dst");
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    SpiedObject src(h, record, "src");
    ASSERT_EQ(src.header().obj_flags, OBJ_STATE_TRACKED);
    store<uint32_t>(bytes(src.get()) + fwe_num, 5);
    spy::Log log;
    kit::function<void(ork_handle*, uint32_t, void*, const void*, uint32_t*)>(
        kit::record(record).functions, "_set")(h, instance, dst.get(), src.get(), &h.err);
    EXPECT_EQ(h.err, 22u);
    EXPECT_CALLS(log.calls_of({"write_notify_fn", "ork_store_err", "trace"}),
                 std::vector<std::string>(
                     {"write_notify_fn(dst," + std::to_string(body) + ",7,dst)",
                      "ork_store_err(22)", "trace(error,The object is not state tracked)"}));
    EXPECT_EQ(load<uint32_t>(bytes(dst.get()) + fwe_num), 5u);
    for (const size_t at : records) {
      EXPECT_EQ(bytes(dst.get())[at + 10] & (OBJ_STATE_TRACKED | OBJ_STTR_OFFSET), 0)
          << record << " " << at;
    }
    EXPECT_EQ(dst.header().obj_flags, 0);
  }
}

TEST(RecordSet, between_tracked_records_only_the_body_is_copied_once_tracking_is_off) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, src, 5, &h.err);
  ASSERT_EQ(src.state_of("fwe_num"), 2);
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  spy::Log log;
  fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(dst,40,7,dst)"});
  EXPECT_EQ(load<uint32_t>(dst.field("fwe_num")), 5u);
  EXPECT_EQ(dst.header().obj_flags, OBJ_STATE_TRACKED);
  EXPECT_EQ(dst.state_bytes(), (std::vector<uint8_t>{0, 0, 0}));
}

TEST(RecordSet, re_points_its_children_before_their_state_is_copied_and_sets_them_behind) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_nb_channel_data", "src");
  auto* const mem = fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, src, &h.err);
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(h, instance, mem, 8, &h.err);
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(
      log.calls_of({"orklib_update_sttr_offset", "write_notify_fn", "orklib_adjust_variant"}),
      {"orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_nb_channel_data),0,err)",
       "write_notify_fn(dst,136,7,dst)", "orklib_update_sttr_offset(7,dst+16,121)",
       "orklib_update_sttr_offset(7,dst+80,62)", "write_notify_fn(dst_state,9,7,dst_state)",
       "orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_chan_nb_st),0,err)",
       "write_notify_fn(dst+16,64,7,dst+16)", "write_notify_fn(dst_state+1,4,7,dst_state+1)",
       "orklib_adjust_variant(7,dst+80,type(fwe_cl_wayfind_mem_st),0,err)",
       "write_notify_fn(dst+80,40,7,dst+80)", "write_notify_fn(dst_state+6,3,7,dst_state+6)"});
  EXPECT_EQ(dst.state_bytes(), src.state_bytes());
  EXPECT_EQ(std::memcmp(dst.get(), src.get(), 136), 0);
}

TEST(RecordSet, address_fields_are_set_by_their_own_function_in_field_order) {
  SpiedHandle h(plain);
  SpiedObject dst(h, "fwe_cl_wayfind_prefixtosite_data", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_prefixtosite_data", "src");
  spy::Log log;
  fwe_cl_wayfind_prefixtosite_data_set(h, instance, dst, src, &h.err);
  const auto& told = *told::record("fwe_cl_wayfind_prefixtosite_data");
  const auto stats = std::to_string(told.field("stats").offset);
  EXPECT_CALLS(log.calls_of({"ip_address_set", "orklib_adjust_variant"}),
               std::vector<std::string>{
                   "orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_prefixtosite_data),0,err)",
                   "ip_address_set(7,dst+16,src+16,err)",
                   "orklib_adjust_variant(7,dst+" + stats +
                       ",type(fwe_cl_wayfind_prefixtosite_stats_st),0,err)"});
}

TEST(RecordSet, the_tail_has_no_variant_gate_and_leaves_the_flag_set_out) {
  SpiedHandle h(plain);
  const auto old =
      h.domain({{"fwe_cl_wayfind_hop_chan_data", 0}, {"fwe_cl_wayfind_hop_chan_st", 0}});
  SpiedObject dst(h, "fwe_cl_wayfind_hop_chan_data", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_hop_chan_data", "src");
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_set(h, instance, dst, src, &h.err);
  const std::string serv =
      at("dst", told::record("fwe_cl_wayfind_hop_chan_data")->field("serv").offset);
  EXPECT_CALLS(
      log.calls_of({"orklib_adjust_variant"}),
      std::vector<std::string>({
          "orklib_adjust_variant(7,dst,type(fwe_cl_wayfind_hop_chan_data),1,err)",
          "orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_hop_chan_st),1,err)",
          "orklib_adjust_variant(7,dst+168,type(fwe_cl_wayfind_hop_chan_stats_st),0,err)",
          "orklib_adjust_variant(7,dst+240,type(fwe_cl_wayfind_mem_st),0,err)",
          "orklib_adjust_variant(7,dst+288,type(fwe_cl_wayfind_hop_chan_probe_st),0,err)",
          "orklib_adjust_variant(7," + serv + ",type(fwe_cl_wayfind_hop_chan_serv_st),0,err)",
      }));
}

namespace {

const Snapshot* kept_at_the_end = nullptr;

void tell_what_the_end_found(int) {
  static const char text[] = "unchanged";
  if (kept_at_the_end->unchanged()) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  }
}

}  // namespace

TEST(RecordSetDeathTest, a_corrupted_mode_word_ends_the_process_before_anything_is_changed) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, path_st, "dst");
  SpiedObject src(h, path_st, "src");
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, dst, 1, 5, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, src, 2, 6, &h.err);
  const Snapshot before = dst.snapshot();
  kept_at_the_end = &before;
  h->sttr_info->sttr_mode = 7;
  const auto set = [&] {
    std::signal(SIGABRT, tell_what_the_end_found);
    spy::Log log;
    log.on_announcement = [](const spy::Announcement&) { _exit(0); };
    log.on_free = [](const void*) { _exit(0); };
    fwe_cl_wayfind_sel_lb_path_st_set(h, instance, dst, src, &h.err);
  };
  EXPECT_DEATH(set(), "trace\\(fatal,Corrupted ORK Handle\\)\nunchanged");
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(RecordSetDeathTest, the_mode_word_is_read_afresh_behind_the_body) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_mem_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  const auto set = [&] {
    spy::Log log;
    log.on_announcement = [&](const spy::Announcement& a) {
      if (a.address != dst.get()) {
        _exit(0);
      }
      h->sttr_info->sttr_mode = 7;
    };
    fwe_cl_wayfind_mem_st_set(h, instance, dst, src, &h.err);
  };
  EXPECT_DEATH(set(), "trace\\(fatal,Corrupted ORK Handle\\)");
}

TEST(Cleanup, does_what_set_does_behind_its_raw_copy) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_nb_channel_data", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_nb_channel_data", "src");
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_post_copyout_cleanup(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
               {"orklib_adjust_variant(7,dst+16,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                "orklib_adjust_variant(7,dst+80,type(fwe_cl_wayfind_mem_st),0,err)"});
  log.clear();
  h.err = 5;
  fwe_cl_wayfind_nb_channel_data_post_copyout_cleanup(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log, {});
  h.err = 0;
  SpiedObject plain_dst(h, "fwe_cl_wayfind_mem_st", "a");
  SpiedObject plain_src(h, "fwe_cl_wayfind_mem_st", "b");
  log.clear();
  fwe_cl_wayfind_mem_st_post_copyout_cleanup(h, instance, plain_dst, plain_src, &h.err);
  EXPECT_CALLS(log, {});
}

}  // namespace frame
