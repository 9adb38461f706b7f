// Scalar and object fields: who is called in which order, and what a refusal leaves.
#include "behaviour/frame/objects.h"

namespace frame {

TEST(Scalar, get_lends_the_value_and_records_it) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err)),
            obj.field("fwe_num"));
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "u_int32_get(7,obj+12,err)", "orkdb_record_containment2(7,obj+12,obj,1)"});
}

TEST(Scalar, get_value_reads_through_the_lent_pointer) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  store<uint64_t>(obj.field("ppe_addr"), 0x1122334455667788);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(h, instance, obj, &h.err),
            0x1122334455667788u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "u_int64_get(7,obj+16,err)", "orkdb_record_containment2(7,obj+16,obj,1)",
                     "u_int64_get_value(7,obj+16,err)"});
}

TEST(Scalar, a_null_pointer_is_lent_and_recorded_as_such_and_its_value_is_0) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  store<uint32_t>(obj.field("fwe_num"), 5);
  const auto nothing = spy::answer(u_int32_get, nullptr);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err), nullptr);
  EXPECT_CALLS(log.calls_of({"orkdb_record_containment2"}),
               {"orkdb_record_containment2(7,null,obj,1)"});
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(h, instance, obj, &h.err), 0u);
  EXPECT_CALLS(log.calls_of({"orkdb_record_containment2", "u_int32_get_value"}), {});
  EXPECT_EQ(h.err, 0u);
}

TEST(Scalar, set_on_a_tracked_object_writes_marks_and_records_the_source) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const uint32_t src = 5;
  spy::name_at(&src, "src");
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_set(7,obj+12,src,err)",
                     "write_notify_fn(state,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(load<uint32_t>(obj.field("fwe_num")), 5u);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{2, 0, 0}));
}

TEST(Scalar, set_value_on_a_tracked_object_records_the_field_twice) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 5, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_clear_last_error()",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_get(7,obj+12,err)",
                     "orkdb_record_containment2(7,obj+12,obj,1)",
                     "orkdb_record_containment2(7,obj+12,obj,1)",
                     "u_int32_set_value(7,obj+12,5,err)", "write_notify_fn(state,1,7,null)"});
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{2, 0, 0}));
}

TEST(Scalar, without_tracking_and_recording_neither_is_touched) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(h, instance, obj, 9, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_clear_last_error()",
                     "ork_get_instance_variant(obj,1,0)", "u_int64_get(7,obj+24,err)",
                     "u_int64_set_value(7,obj+24,9,err)"});
}

TEST(Scalar, set_value_through_a_null_pointer_gives_2_and_still_records_it) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto nothing = spy::answer(u_int32_get, nullptr);
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 5, &h.err);
  EXPECT_EQ(h.err, 2u);
  EXPECT_CALLS(log.calls_of({"orkdb_record_containment2", "ork_store_err", "u_int32_set_value",
                             "write_notify_fn"}),
               {"orkdb_record_containment2(7,null,obj,1)",
                "orkdb_record_containment2(7,null,obj,1)", "ork_store_err(2)"});
  EXPECT_TRUE(before.unchanged());
}

TEST(Scalar, set_value_stops_behind_the_records_when_the_first_half_failed) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(u_int32_get, 5);
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 5, &h.err);
  EXPECT_EQ(h.err, 5u);
  EXPECT_CALLS(
      log.calls_of(
          {"orkdb_record_containment2", "ork_store_err", "u_int32_set_value", "write_notify_fn"}),
      {"orkdb_record_containment2(7,null,obj,1)", "orkdb_record_containment2(7,null,obj,1)"});
}

TEST(Scalar, set_value_whose_adjust_fails_goes_straight_to_the_second_record) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 5, &h.err);
  EXPECT_CALLS(log,
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                "ork_get_instance_variant(obj,1,0)", "orkdb_record_containment2(7,null,obj,1)"});
  EXPECT_EQ(h.err, 5u);
}

TEST(Scalar, set_value_passes_the_gate_twice) {
  for (const uint32_t slot : {0u, 43u}) {
    for (const auto set_value : {fwe_cl_wayfind_chan_nb_st_chan_id_set_value,
                                 fwe_cl_wayfind_chan_nb_st_tx_state_set_value}) {
      SpiedHandle h(tracked_and_recorded);
      SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
      const Snapshot before = obj.snapshot();
      const auto runtime = slot_becomes(slot);
      spy::Log log;
      {
        const auto lost_in_between =
            spy::replace(ork_get_instance_variant,
                         [asked = 0](const void*, uint32_t, uint32_t) mutable -> int8_t {
                           return asked++ == 0 ? int8_t{0} : int8_t{-1};
                         });
        set_value(h, instance, obj, 1, &h.err);
      }
      std::vector<std::string> expected = {"ork_store_epoch_err(43,err)",
                                           "orkdb_record_containment2(7,null,obj,1)"};
      if (slot == 0) {
        expected.push_back("ork_store_err(2)");
      }
      EXPECT_CALLS(
          log.calls_of({"ork_store_epoch_err", "ork_store_err", "u_int32_get",
                        "orkdb_record_containment2", "u_int32_set_value", "write_notify_fn"}),
          expected);
      EXPECT_EQ(h.err, slot == 0 ? 2u : 43u);
      EXPECT_TRUE(before.unchanged());
    }
  }
}

TEST(Scalar, set_goes_on_when_the_adjust_failed) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const uint32_t src = 5;
  spy::name_at(&src, "src");
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err);
  EXPECT_CALLS(log.calls_of({"u_int32_set", "write_notify_fn", "orkdb_record_containment2"}),
               {"u_int32_set(7,obj+12,src,err)", "write_notify_fn(state,1,7,null)",
                "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(h.err, 5u);
}

TEST(Scalar, a_write_that_the_runtime_refuses_is_marked_and_recorded_all_the_same) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject mem(h, "fwe_cl_wayfind_mem_st");
  const uint32_t src = 5;
  spy::name_at(&src, "src");
  const auto set = spy::fail(u_int32_set, 5);
  const auto set_value = spy::fail(u_int32_set_value, 5);
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, mem, &src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 5u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn", "orkdb_record_containment2"}),
               {"write_notify_fn(state,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(std::exchange(mem.state_of("fwe_num"), 0), 2);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, mem, 5, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 5u);
  EXPECT_EQ(mem.state_of("fwe_num"), 2);

  SpiedObject prefix(h, "fwe_pal_wayfind_site_prefix_data");
  const ork_ip_address address{};
  spy::name_at(&address, "address");
  const auto address_set = spy::fail(ip_address_set, 5);
  log.clear();
  fwe_pal_wayfind_site_prefix_data_pfx_set(h, instance, prefix, &address, &h.err);
  EXPECT_EQ(h.err, 5u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn", "orkdb_record_containment2"}),
               {"write_notify_fn(state+3,1,7,null)", "orkdb_record_containment2(7,address,obj,1)"});
}

TEST(Scalar, an_error_standing_stops_every_accessor_and_is_not_cleared) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_store_err(h, 22);
  h.err = 5;
  const Snapshot before = obj.snapshot();
  const uint32_t src = 1;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 1, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_mem_st_fwe_num_state_flag_set(h, instance, obj, 1, &h.err);
  EXPECT_CALLS(log, {});
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(h.last_error(), 22u);
}

TEST(Scalar, an_object_of_a_negative_variant_has_no_field) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  obj.header().variant = -1;
  const Snapshot before = obj.snapshot();
  const uint32_t src = 1;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 1, &h.err);
  fwe_cl_wayfind_mem_st_fwe_num_state_flag_set(h, instance, obj, 1, &h.err);
  EXPECT_EQ(log.count("ork_store_epoch_err"), 5u);
  EXPECT_EQ(log.count("trace"), 0u);
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 0u) << "this runtime leaves the slot alone";
  obj.header().variant = 0;
}

TEST(Scalar, the_slot_may_be_written_by_the_runtime_and_the_accessor_returns_either_way) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().variant = -1;
  const auto strict = slot_becomes(43);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.err, 43u);
  obj.header().variant = 0;
}

TEST(Scalar, a_child_set_that_fails_is_marked_and_recorded_whatever_became_of_the_slot) {
  for (const uint32_t slot : {0u, 43u}) {
    SpiedHandle h(tracked_and_recorded);
    SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
    SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
    src.header().variant_cap = 1; /* not the child's */
    const Snapshot body(obj.get(), 136);
    const auto runtime = slot_becomes(slot);
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_mem_set(h, instance, obj, src, &h.err);
    EXPECT_EQ(h.err, slot);
    EXPECT_CALLS(
        log.calls_of({"ork_store_epoch_err", "write_notify_fn", "orkdb_record_containment2"}),
        {"ork_store_epoch_err(43,err)", "write_notify_fn(state+5,1,7,null)",
         "orkdb_record_containment2(7,src,obj,1)"});
    EXPECT_EQ(log.calls().back(), "orkdb_record_containment2(7,src,obj,1)");
    EXPECT_TRUE(body.unchanged());
    EXPECT_EQ(obj.state_of("mem"), 2);
    src.header().variant_cap = 0;
  }
}

// ---- Marks ----

TEST(Mark, an_untracked_object_under_a_tracking_handle_gives_22_behind_the_write) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF, .recording = true});
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  const uint32_t src = 5;
  spy::Log log;
  fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &src, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_EQ(load<uint32_t>(obj.field("fwe_num")), 5u) << "the value stays written";
  EXPECT_CALLS(
      log.calls_of({"ork_store_err", "trace", "orkdb_record_containment2", "write_notify_fn"}),
      {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
  h.err = 0;
  log.clear();
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(h, instance, obj, 6, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_EQ(load<uint64_t>(obj.field("ppe_addr")), 6u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace", "write_notify_fn"}),
               {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

TEST(Mark, a_tracked_object_is_not_marked_once_tracking_is_off) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 6, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0}));
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
}

TEST(MarkDeathTest, a_corrupted_mode_word_ends_the_process) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  h->sttr_info->sttr_mode = 7;
  const uint32_t value = 5;
  const char* const words = "trace\\(fatal,Corrupted ORK Handle\\)";
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_fwe_num_set(h, instance, obj, &value, &h.err), words);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 5, &h.err), words);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, obj, &h.err), words);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_fwe_num_state_flag_set(h, instance, obj, 5, &h.err), words);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_set(h, instance, obj, src, &h.err), words);
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(Mark, a_told_distance_leads_to_the_byte) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  auto* const mem = fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, obj, &h.err);
  spy::Log log;
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(h, instance, mem, 6, &h.err);
  // mem's own bytes are 6 to 8 of the parent's block.
  EXPECT_CALLS(log.calls_of({"orklib_get_sttr_offset", "write_notify_fn"}),
               {"orklib_get_sttr_offset(7,obj+80)", "write_notify_fn(state+7,1,7,null)"});
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 2, 0}));
}

// ---- Object fields -----

TEST(ObjectField, an_address_is_lent_with_both_records_and_set_by_its_own_function) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  ork_ip_address src{};
  spy::name(&src, sizeof src, "src");
  src.family = 4;
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(fwe_pal_wayfind_site_prefix_data_pfx_get(h, instance, obj, &h.err)),
            obj.field("pfx"));
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "orkdb_record_containment2(7,obj+24,null,1)",
                     "orkdb_record_containment2(7,obj+24,obj,1)"});
  log.clear();
  fwe_pal_wayfind_site_prefix_data_pfx_set(h, instance, obj, &src, &h.err);
  EXPECT_CALLS(log,
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_pal_wayfind_site_prefix_data),0,err)",
                "ork_get_instance_variant(obj,1,0)", "ip_address_set(7,obj+24,src,err)",
                "write_notify_fn(state+3,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
}

TEST(ObjectField, set_goes_on_when_the_adjust_failed) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  const ork_ip_address src{};
  spy::name_at(&src, "src");
  const auto failing = spy::fail(orklib_adjust_variant, 5);
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_pfx_set(h, instance, obj, &src, &h.err);
  EXPECT_CALLS(log.calls_of({"ip_address_set", "write_notify_fn", "orkdb_record_containment2"}),
               {"ip_address_set(7,obj+24,src,err)", "write_notify_fn(state+3,1,7,null)",
                "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(h.err, 5u);
}

TEST(ObjectField, a_link_type_is_a_scalar) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_enforce_hop");
  spy::Log log;
  fwe_cl_wayfind_enforce_hop_linktype_set_value(h, instance, obj, 6, &h.err);
  EXPECT_CALLS(log.calls_of({"link_type_get", "orkdb_record_containment2", "link_type_set_value",
                             "write_notify_fn"}),
               {"link_type_get(7,obj+24,err)", "orkdb_record_containment2(7,obj+24,obj,1)",
                "orkdb_record_containment2(7,obj+24,obj,1)", "link_type_set_value(7,obj+24,6,err)",
                "write_notify_fn(state+2,1,7,null)"});
  EXPECT_EQ(fwe_cl_wayfind_enforce_hop_linktype_get_value(h, instance, obj, &h.err), 6u);
}

TEST(ObjectField, an_embedded_record_is_set_by_its_own_set_and_marked_in_the_parent) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  SpiedObject src(h, "fwe_cl_wayfind_mem_st", "src");
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, src, 5, &h.err);
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_mem_set(h, instance, obj, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  const auto calls = log.calls();
  ASSERT_GT(calls.size(), 6u);
  EXPECT_CALLS(std::vector<std::string>(calls.begin(), calls.begin() + 6),
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_nb_channel_data),0,err)",
                "ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj+80)",
                "orklib_adjust_variant(7,obj+80,type(fwe_cl_wayfind_mem_st),0,err)"});
  EXPECT_CALLS(log.calls_of({"write_notify_fn", "orkdb_record_containment2"}),
               {"write_notify_fn(obj+80,40,7,obj+80)", "write_notify_fn(state+6,3,7,state+6)",
                "write_notify_fn(state+5,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(load<uint32_t>(obj.field("mem") + 12), 5u);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0, 0, 0, 2, 2, 0, 0}));
}

TEST(ObjectField, a_flag_set_is_copied_by_its_own_set) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_st");
  auto* const src = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  spy::name(src, 24, "src");
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, src, 4, 1, &h.err);
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(fwe_cl_wayfind_hop_chan_st_flags_show_get(h, instance, obj, &h.err)),
            obj.field("flags_show"));
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "orkdb_record_containment2(7,obj+112,null,1)",
                     "orkdb_record_containment2(7,obj+112,obj,1)"});
  log.clear();
  fwe_cl_wayfind_hop_chan_st_flags_show_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "orklib_adjust_variant", "write_notify_fn",
                             "orkdb_record_containment2"}),
               {"ork_clear_last_error()",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_st),1,err)",
                "ork_clear_last_error()",
                "orklib_adjust_variant(7,obj+112,type(fwe_cl_wayfind_hop_chan_flags),0,err)",
                "write_notify_fn(obj+112,24,7,obj+112)", "write_notify_fn(state+14,1,7,null)",
                "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(obj.field("flags_show")[11], 0x10);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, src);
}

}  // namespace frame
