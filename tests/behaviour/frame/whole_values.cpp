// All values of a record read or written in one call.
#include "behaviour/frame/objects.h"

namespace frame {

// ---- Get all ----

TEST(GetAll, reads_each_field_through_its_pointer_in_field_order) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
  uint32_t fwe_num = 0;
  uint64_t ppe = 0;
  uint64_t exmem = 0;
  spy::Log log;
  fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
  EXPECT_CALLS(log.calls_of({"u_int32_get", "u_int64_get", "orkdb_record_containment2",
                             "u_int32_get_value", "u_int64_get_value"}),
               {"u_int32_get(7,obj+12,err)", "orkdb_record_containment2(7,obj+12,obj,1)",
                "u_int32_get_value(7,obj+12,err)", "u_int64_get(7,obj+16,err)",
                "orkdb_record_containment2(7,obj+16,obj,1)", "u_int64_get_value(7,obj+16,err)",
                "u_int64_get(7,obj+24,err)", "orkdb_record_containment2(7,obj+24,obj,1)",
                "u_int64_get_value(7,obj+24,err)"});
  EXPECT_EQ(std::make_tuple(fwe_num, ppe, exmem), std::make_tuple(1u, uint64_t{2}, uint64_t{3}));
}

TEST(GetAll, records_an_enum_once_and_reads_it_directly) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  fwe_cl_wayfind_chan_nb_st_set_all(h, instance, obj, 5, 1, 2, 8, &h.err);
  uint32_t out[4] = {};
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_get_all(h, instance, obj, &out[0], &out[1], &out[2], &out[3], &h.err);
  std::vector<std::string> calls = log.calls();
  std::erase(calls, "ork_get_instance_variant(obj,1,0)");
  EXPECT_CALLS(calls,
               {"ork_clear_last_error()", "u_int32_get(7,obj+12,err)",
                "orkdb_record_containment2(7,obj+12,obj,1)", "u_int32_get_value(7,obj+12,err)",
                "orkdb_record_containment2(7,obj+16,obj,1)", "ork_clear_last_error()",
                "orkdb_record_containment2(7,obj+32,obj,1)", "ork_clear_last_error()",
                "u_int32_get(7,obj+48,err)", "orkdb_record_containment2(7,obj+48,obj,1)",
                "u_int32_get_value(7,obj+48,err)"});
  EXPECT_EQ(std::vector<uint32_t>(out, out + 4), (std::vector<uint32_t>{5, 1, 2, 8}));
}

TEST(GetAll, of_a_negative_variant_writes_nothing_and_is_no_error) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().variant = -1;
  uint32_t fwe_num = 77;
  uint64_t ppe = 77;
  uint64_t exmem = 77;
  spy::Log log;
  fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
  EXPECT_EQ(log.count("ork_store_epoch_err"), 0u);
  EXPECT_EQ(std::make_tuple(fwe_num, ppe, exmem), std::make_tuple(77u, uint64_t{77}, uint64_t{77}));
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(h.last_error(), 0u);
  obj.header().variant = 0;
}

TEST(GetAll, a_null_field_pointer_reads_as_0_and_is_not_recorded) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto nothing = spy::answer(u_int32_get, nullptr);
  uint32_t fwe_num = 77;
  uint64_t ppe = 77;
  uint64_t exmem = 77;
  spy::Log log;
  fwe_cl_wayfind_mem_st_get_all(h, instance, obj, &fwe_num, &ppe, &exmem, &h.err);
  EXPECT_EQ(fwe_num, 0u);
  EXPECT_CALLS(
      log.calls_of({"orkdb_record_containment2"}),
      {"orkdb_record_containment2(7,obj+16,obj,1)", "orkdb_record_containment2(7,obj+24,obj,1)"});
}

TEST(GetAll, behind_a_field_that_fails_all_read_as_0) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  fwe_cl_wayfind_chan_nb_st_set_all(h, instance, obj, 5, 1, 2, 8, &h.err);
  const auto failing = spy::fail(u_int32_get, 5);
  uint32_t out[4] = {77, 77, 77, 77};
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_get_all(h, instance, obj, &out[0], &out[1], &out[2], &out[3], &h.err);
  EXPECT_EQ(std::vector<uint32_t>(out, out + 4), (std::vector<uint32_t>{0, 0, 0, 0}));
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(log.count("ork_clear_last_error"), 1u) << "the entry's alone";
}

TEST(GetAll, leaves_out_the_fields_of_later_variants) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_select_state_data");
  uint32_t out[6] = {77, 77, 77, 77, 77, 77};
  const auto read_all = [&] {
    fwe_cl_wayfind_select_state_data_get_all(h, instance, obj, &out[0], &out[1], &out[2], &out[3],
                                             &out[4], &out[5], &h.err);
  };
  obj.header().variant = 0;
  read_all();
  EXPECT_EQ(out[4], 0u);
  EXPECT_EQ(out[5], 77u);
  obj.header().variant = 1;
  read_all();
  EXPECT_EQ(out[5], 0u);
}

TEST(GetAll, gives_the_counts_of_arrays) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
  SpiedObject element(h, "fwe_dp_wayfind_debug_data_per_complex", "element");
  fwe_dp_wayfind_debug_data_dbg_per_complex_set(h, instance, obj, 2, element, &h.err);
  uint8_t complexes = 0;
  uint32_t none = 77;
  fwe_dp_wayfind_debug_data_get_all(h, instance, obj, &complexes, &none, &h.err);
  EXPECT_EQ(complexes, 3u);
  EXPECT_EQ(none, 0u);
}

TEST(GetAll, records_counts_and_fields_of_later_variants_as_it_does_the_others) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
  uint8_t complexes = 0;
  uint32_t none = 0;
  spy::Log log;
  fwe_dp_wayfind_debug_data_get_all(h, instance, obj, &complexes, &none, &h.err);
  EXPECT_CALLS(
      log.calls_of({"u_int8_get", "u_int8_get_value", "ork_boolean_get", "ork_boolean_get_value",
                    "orkdb_record_containment2"}),
      {"u_int8_get(7,obj+11,err)", "orkdb_record_containment2(7,obj+11,obj,1)",
       "u_int8_get_value(7,obj+11,err)", "ork_boolean_get(7,obj+24,err)",
       "orkdb_record_containment2(7,obj+24,obj,1)", "ork_boolean_get_value(7,obj+24,err)"});

  SpiedObject select(h, "fwe_cl_wayfind_select_state_data", "select");
  uint32_t out[6];
  log.clear();
  fwe_cl_wayfind_select_state_data_get_all(h, instance, select, &out[0], &out[1], &out[2], &out[3],
                                           &out[4], &out[5], &h.err);
  EXPECT_CALLS(log.calls_of({"orkdb_record_containment2"}),
               {"orkdb_record_containment2(7,select+16,select,1)",
                "orkdb_record_containment2(7,select+32,select,1)",
                "orkdb_record_containment2(7,select+36,select,1)",
                "orkdb_record_containment2(7,select+40,select,1)",
                "orkdb_record_containment2(7,select+44,select,1)",
                "orkdb_record_containment2(7,select+48,select,1)"});
  EXPECT_EQ(h.err, 0u);
}

TEST(GetAll, a_record_without_values_has_the_entry_steps_only) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_color_data");
  spy::Log log;
  fwe_cl_wayfind_color_data_get_all(h, instance, obj, &h.err);
  fwe_cl_wayfind_color_data_set_all(h, instance, obj, &h.err);
  for (const auto& call : log.calls()) {
    EXPECT_TRUE(
        call.find("ork_clear_last_error") == 0 || call.find("ork_get_instance_variant") == 0 ||
        call.find("ork_get_manifested_type_info") == 0 || call.find("orklib_adjust_variant") == 0)
        << call;
  }
}

// ---- Set all ----

TEST(SetAll, writes_each_field_and_marks_none) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_set_value(7,obj+12,1,err)",
                     "u_int64_set_value(7,obj+16,2,err)", "u_int64_set_value(7,obj+24,3,err)"});
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{0, 0, 0}));
  fwe_cl_wayfind_mem_st_fwe_num_set_value(h, instance, obj, 1, &h.err);
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(h, instance, obj, 2, &h.err);
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(h, instance, obj, 3, &h.err);
  EXPECT_EQ(obj.state_bytes(), (std::vector<uint8_t>{2, 2, 2}));
}

TEST(SetAll, adjusts_and_checks_each_enum_and_records_nothing) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_set_all(h, instance, obj, 5, 1, 2, 8, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_set_value(7,obj+12,5,err)",
                     "ork_clear_last_error()",
                     "orklib_adjust_variant(7,obj+16,type(fwe_cl_wayfind_chan_nb_state_e),0,err)",
                     "ork_get_instance_variant(obj+16,0,1)", "write_notify_fn(obj+28,4,7,obj+16)",
                     "ork_clear_last_error()",
                     "orklib_adjust_variant(7,obj+32,type(fwe_cl_wayfind_chan_tx_state_e),0,err)",
                     "ork_get_instance_variant(obj+32,0,1)", "write_notify_fn(obj+44,4,7,obj+32)",
                     "u_int32_set_value(7,obj+48,8,err)"});
}

TEST(SetAll, in_shared_storage_adjusts_record_and_enums_by_their_shared_types) {
  SpiedHandle h({.shared = true});
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_set_all(h, instance, obj, 5, 1, 2, 8, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
               {"orklib_adjust_variant(7,obj,shared(fwe_cl_wayfind_chan_nb_st),0,err)",
                "orklib_adjust_variant(7,obj+16,shared(fwe_cl_wayfind_chan_nb_state_e),0,err)",
                "orklib_adjust_variant(7,obj+32,shared(fwe_cl_wayfind_chan_tx_state_e),0,err)"});
}

TEST(SetAll, of_a_negative_variant_adjusts_and_does_nothing_more) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  obj.header().variant = -1;
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_set_all(h, instance, obj, 1, 2, 3, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)"});
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(h.last_error(), 0u);
  obj.header().variant = 0;
}

TEST(SetAll, drops_values_of_later_variants_without_an_error) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_select_state_data");
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  obj.header().variant = 0;
  fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 2, 1, 1, 1, 9, 1, &h.err);
  EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u);
  EXPECT_EQ(load<uint32_t>(obj.field("show_human_readable")), 0u);
  EXPECT_EQ(h.last_error(), 0u);
  obj.header().variant = 1;
}

TEST(SetAll, an_enum_out_of_range_is_refused_and_a_written_slot_ends_the_writing) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_select_state_data");
  fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 3, 1, 1, 1, 9, 1, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(load<uint32_t>(obj.field("db_type") + 12), 0u);
  EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u) << "the slot was left at 0";
  const auto strict = slot_becomes(43);
  fwe_cl_wayfind_select_state_data_set_all(h, instance, obj, 3, 1, 1, 1, 10, 1, &h.err);
  EXPECT_EQ(h.err, 43u);
  EXPECT_EQ(load<uint32_t>(obj.field("count")), 9u);
}

TEST(SetAll, and_get_all_do_nothing_with_an_error_standing) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
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
