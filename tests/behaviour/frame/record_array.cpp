// Variable arrays of records.
#include <cstdio>
#include <cstdlib>

#include "behaviour/frame/record_arrays.h"

namespace frame {

namespace {

constexpr const char* lb_channels = "fwe_cl_wayfind_select_tc_lb_channels_st";
constexpr const char* lb_channel = "fwe_cl_wayfind_select_loadbalance_channel_st";

const std::string once =
    "trace(error,Reallocating resource for fwe_dp_wayfind_debug_data_per_complex)";

// What the array does, without the calls that make or copy its elements.
std::vector<std::string> doings(const spy::Log& log) {
  auto calls =
      log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "ork_store_err",
                    "ork_store_epoch_err", "trace", "orkdb_record_containment2",
                    "orkdb_plat_set_detach", "orklib_update_sttr_offset", "ork_hd_mapping_destroy",
                    "orklib_type_stats_create_object", "orklib_type_stats_destroy_object"});
  std::erase_if(calls,
                [](const std::string& call) { return call.find("trace(error,Reallocating") == 0; });
  return any_slot(calls);
}

void grow(SpiedHandle& h, SpiedObject& obj, uint32_t index) {
  SpiedObject src(h, setting, "seed");
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, src,
                                                 static_cast<uint8_t>(100 + index), &h.err);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, index, src, &h.err);
}

}  // namespace

TEST(RecordArray, the_first_set_makes_tells_initialises_and_copies_in_this_order) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(
      doings(log),
      {"alloc_fn(7,130)=new1", "write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(obj+11,1,7,obj)",
       "orklib_update_sttr_offset(7,new1,112)", "orklib_update_sttr_offset(7,new1+56,65)",
       // the header of element 0, then of element 1
       "write_notify_fn(new1+9,1,7,new1)", "write_notify_fn(new1+8,1,7,new1)",
       "write_notify_fn(new1,8,7,new1)", "write_notify_fn(new1+10,1,7,new1)",
       "write_notify_fn(new1+10,1,7,new1)",
       "orklib_type_stats_create_object(7,type(fwe_dp_wayfind_debug_setting),?,err)",
       "write_notify_fn(new1+65,1,7,new1+56)", "write_notify_fn(new1+64,1,7,new1+56)",
       "write_notify_fn(new1+56,8,7,new1+56)", "write_notify_fn(new1+66,1,7,new1+56)",
       "write_notify_fn(new1+66,1,7,new1+56)",
       "orklib_type_stats_create_object(7,type(fwe_dp_wayfind_debug_setting),?,err)",
       "write_notify_fn(state+8,8,7,null)", "alloc_fn(7,2)=new2",
       "orkdb_record_containment2(7,new1+56,obj,1)",
       // the copy of src
       "write_notify_fn(new1+56,56,7,new1+56)", "write_notify_fn(new1+121,9,7,new1+121)",
       "write_notify_fn(state,1,7,null)", "write_notify_fn(new2+1,1,7,null)"});
  const uint8_t* const block = block_of(obj, "dbg_setting");
  EXPECT_EQ(block[10], OBJ_NESTED | OBJ_STATE_TRACKED | OBJ_STTR_OFFSET);
  EXPECT_EQ(count_of<uint8_t>(obj, "num_fwes"), 2u);
  EXPECT_EQ(obj.state()[0], 2);
  EXPECT_EQ(elements_of(obj, "dbg_setting")[0], 0);
  EXPECT_EQ(elements_of(obj, "dbg_setting")[1], 2);
}

TEST(RecordArray, without_tracking_the_block_holds_the_elements_alone) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 2, src, &h.err);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "orklib_update_sttr_offset"}), {"alloc_fn(7,168)=new1"});
  EXPECT_EQ(block_of(obj, "dbg_setting")[10], OBJ_NESTED);
}

TEST(RecordArray, growth_tells_new_places_moves_and_forgets_old_ones) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 0);
  grow(h, obj, 1);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_state_flag_set(h, instance, obj, 0, 9, &h.err);
  SpiedObject src(h, setting, "src");
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 3, src, &h.err);
  spy::name(block_of(obj, "dbg_setting"), 4 * 65, "old");
  spy::name(elements_of(obj, "dbg_setting"), 4, "elements");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 4, src, &h.err);
  auto calls = doings(log);
  std::erase_if(calls, [](const std::string& call) {
    return call.find("write_notify_fn(new") == 0;
  }); /* the new element's own */
  const std::string block = calls.at(0).substr(calls.at(0).find('=') + 1);
  const auto in = [&](size_t offset) { return at(block, offset); };
  EXPECT_CALLS(calls,
               std::vector<std::string>({
                   "alloc_fn(7,325)=" + block,
                   "write_notify_fn(obj+16,8,7,obj)",
                   "orklib_update_sttr_offset(7," + in(0) + ",280)",
                   "orklib_update_sttr_offset(7," + in(56) + ",233)",
                   "orklib_update_sttr_offset(7," + in(112) + ",186)",
                   "orklib_update_sttr_offset(7," + in(168) + ",139)",
                   "ork_hd_mapping_destroy(7,old)",
                   "orkdb_record_containment2(7,old,obj,1)",
                   "ork_hd_mapping_destroy(7,old+56)",
                   "orkdb_record_containment2(7,old+56,obj,1)",
                   "ork_hd_mapping_destroy(7,old+112)",
                   "orkdb_record_containment2(7,old+112,obj,1)",
                   "ork_hd_mapping_destroy(7,old+168)",
                   "orkdb_record_containment2(7,old+168,obj,1)",
                   "free_fn(7,old)",
                   "write_notify_fn(obj+11,1,7,obj)",
                   "orklib_update_sttr_offset(7," + in(224) + ",92)",
                   "orklib_type_stats_create_object(7,type(fwe_dp_wayfind_debug_setting),?,err)",
                   "write_notify_fn(state+8,8,7,null)",
                   calls.at(19),
                   "free_fn(7,elements)",
                   "orkdb_record_containment2(7," + in(224) + ",obj,1)",
                   "write_notify_fn(state,1,7,null)",
               }));
  EXPECT_EQ(h.err, 0u);
  for (uint32_t i = 0; i < 2; ++i) {
    auto* const element =
        fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, i, &h.err);
    EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, element, &h.err),
              100 + i);
    EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_state_flag_get(h, instance, element, &h.err), 2u)
        << "state moved along";
  }
  const uint8_t* const bytes_now = elements_of(obj, "dbg_setting");
  EXPECT_EQ(std::vector<uint8_t>(bytes_now, bytes_now + 5), (std::vector<uint8_t>{9, 2, 0, 2, 2}));
}

TEST(RecordArray, embedded_records_of_moved_elements_keep_their_state) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, all_policies);
  SpiedObject src(h, policy, "src");
  auto* const src_mem = fwe_cl_wayfind_select_policy_mem_get(h, instance, src, &h.err);
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(h, instance, src_mem, 77, &h.err);
  fwe_cl_wayfind_select_all_policies_policy_set(h, instance, obj, 0, src, &h.err);
  ASSERT_EQ(h.err, 0u);
  fwe_cl_wayfind_select_all_policies_policy_set(h, instance, obj, 1, src, &h.err);
  ASSERT_EQ(h.err, 0u);
  for (uint32_t i = 0; i < 2; ++i) {
    auto* const element =
        fwe_cl_wayfind_select_all_policies_policy_get(h, instance, obj, i, &h.err);
    auto* const mem = fwe_cl_wayfind_select_policy_mem_get(h, instance, element, &h.err);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(h, instance, mem, &h.err), 77u);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_state_flag_get(h, instance, mem, &h.err), 2u);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(h, instance, mem, &h.err), 0u);
  }
  EXPECT_EQ(h.err, 0u);
}

TEST(RecordArray, arrays_inside_moved_elements_move_along) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, lb_channels);
  for (uint32_t i = 0; i < 3; ++i) {
    SpiedObject src(h, lb_channel, "src");
    auto* const path =
        fwe_cl_wayfind_select_loadbalance_channel_st_path_get(h, instance, src, &h.err);
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, path, i, 10 + i, &h.err);
    fwe_cl_wayfind_select_tc_lb_channels_st_channels_set(h, instance, obj, i, src, &h.err);
    ASSERT_EQ(h.err, 0u);
  }
  for (uint32_t i = 0; i < 3; ++i) {
    auto* const element =
        fwe_cl_wayfind_select_tc_lb_channels_st_channels_get(h, instance, obj, i, &h.err);
    auto* const path =
        fwe_cl_wayfind_select_loadbalance_channel_st_path_get(h, instance, element, &h.err);
    EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_num_hops_get_value(h, instance, path, &h.err), i + 1);
    EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, path, i, &h.err),
              10 + i);
    EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, path, i, &h.err),
              2u);
  }
  EXPECT_EQ(h.err, 0u);
}

TEST(RecordArray, get_records_the_element_as_entry_point_and_in_the_object) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 1);
  spy::name(block_of(obj, "dbg_setting"), 112, "block");
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(
                fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, 1, &h.err)),
            block_of(obj, "dbg_setting") + 56);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "orkdb_record_containment2(7,block+56,null,1)",
                     "orkdb_record_containment2(7,block+56,obj,1)"});
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, 2, &h.err),
            nullptr);
  EXPECT_EQ(h.err, 2u);
}

TEST(RecordArray, a_null_source_only_grows_without_tracking) {
  SpiedHandle h(plain);
  SpiedObject obj(h, per_complex);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, nullptr, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(count_of<uint8_t>(obj, "num_fwes"), 2u);
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, nullptr, &h.err);
  EXPECT_CALLS(doings(log), {});
}

TEST(RecordArray, untracked_objects_and_sources_are_refused_behind_the_gate_each_in_its_words) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  SpiedObject tracked_src(h, setting, "tracked_src");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 0, tracked_src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 5), 22u);
  EXPECT_CALLS(log,
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_dp_wayfind_debug_data_per_complex),0,err)",
                "ork_get_instance_variant(obj,1,0)", "ork_store_err(22)",
                "trace(error,The object is not state tracked)"});
  log.clear();
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 0, tracked_src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 5u) << "an error stands";
  EXPECT_CALLS(log, {});
  SpiedObject tracked_obj(h, per_complex, "tracked_obj");
  log.clear();
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, tracked_obj, 0, src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 22u);
  EXPECT_CALLS(doings(log),
               {"ork_store_err(22)", "trace(error,The val object is not state tracked)"});
}

TEST(RecordArray, without_memory_nothing_changes) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 0);
  SpiedObject src(h, setting, "src");
  const Snapshot before = obj.snapshot();
  spy::fail_alloc(1);
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 12u);
  EXPECT_EQ(log.count("write_notify_fn"), 0u);
  EXPECT_TRUE(before.unchanged());
}

TEST(RecordArray, without_memory_for_the_element_bytes_the_array_has_grown) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 0);
  SpiedObject src(h, setting, "src");
  spy::fail_alloc(2);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, src, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 12u);
  EXPECT_EQ(count_of<uint8_t>(obj, "num_fwes"), 2u);
  EXPECT_EQ(elements_of(obj, "dbg_setting"), nullptr);
  auto* const element =
      fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, 0, &h.err);
  EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, element, &h.err), 100u);
}

TEST(RecordArray, a_count_of_one_byte_wraps_at_256) {
  SpiedHandle h(plain);
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  const auto& entry = _fwe_dp_wayfind_debug_setting_type_info_internal.varinfo->entries[0];
  const uint64_t created = entry.create_count;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 255, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(count_of<uint8_t>(obj, "num_fwes"), 0u);
  EXPECT_EQ(entry.create_count, created + 256);
  EXPECT_NE(block_of(obj, "dbg_setting"), nullptr);
}

TEST(RecordArray, remove_destroys_each_element_in_order) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 1);
  spy::name(block_of(obj, "dbg_setting"), 130, "block");
  const uint8_t* const elements = elements_of(obj, "dbg_setting");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_remove_elements(h, instance, obj);
  EXPECT_CALLS(doings(log),
               {"orklib_type_stats_destroy_object(7,type(fwe_dp_wayfind_debug_setting),?,?)",
                "ork_hd_mapping_destroy(7,block)",
                "orklib_type_stats_destroy_object(7,type(fwe_dp_wayfind_debug_setting),?,?)",
                "ork_hd_mapping_destroy(7,block+56)", "free_fn(7,block)",
                "write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(obj+11,1,7,obj)"});
  EXPECT_EQ(count_of<uint8_t>(obj, "num_fwes"), 0u);
  EXPECT_EQ(elements_of(obj, "dbg_setting"), elements);
}

TEST(RecordArray, destroy_visits_each_element_and_frees_both_blocks) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  grow(h, obj, 1);
  spy::name(block_of(obj, "dbg_setting"), 130, "block");
  spy::name(elements_of(obj, "dbg_setting"), 2, "elements");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_destroy(
      h, instance, static_cast<fwe_dp_wayfind_debug_data_per_complex*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"ork_hd_mapping_destroy", "free_fn", "write_notify_fn"}),
               {"ork_hd_mapping_destroy(7,block,?)", "ork_hd_mapping_destroy(7,block+56,?)",
                "free_fn(7,block)", "write_notify_fn(obj+16,8,7,null)", "free_fn(7,elements)",
                "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(RecordArray, set_cr_uses_the_slot_of_the_handle_and_gives_it_back) {
  SpiedHandle h({.cr_instance = 11});
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, src, 42, &h.err);
  spy::Log log;
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(h, obj, 0, src, 1), 0u);
  EXPECT_EQ(log.calls_of({"alloc_fn"})[0], "alloc_fn(11,56)=new1");
  EXPECT_EQ(log.count("orklib_get_handle_ws"), 0u);
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(h, obj, 1, src, 0), 0u);
  for (uint32_t i = 0; i < 2; ++i) {
    auto* const element =
        fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, i, &h.err);
    EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, element, &h.err), 42u);
  }
  h->cr_error = 5;
  log.clear();
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(h, obj, 2, src, 0), 5u);
  EXPECT_CALLS(log, {});
  h->cr_error = 0;
}

TEST(RecordArray, a_clone_into_an_element_that_fails_leaves_a_fresh_element) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  SpiedObject src(h, setting, "src");
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, src, 42, &h.err);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, src, &h.err);
  spy::name(block_of(obj, "dbg_setting"), 130, "block");
  const auto& entry = _fwe_dp_wayfind_debug_setting_type_info_internal.varinfo->entries[0];
  const uint64_t alive = entry.create_count - entry.destroy_count;
  const auto failing = spy::fail(u_int8_unmarshal, 5);
  spy::Log log;
  EXPECT_NE(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(h, obj, 1, src, 0), 0u);
  for (const auto& call : log.calls_of({"free_fn"})) {
    EXPECT_EQ(call.find("block"), std::string::npos) << call;
  }
  h->cr_error = 0;
  EXPECT_EQ(entry.create_count - entry.destroy_count, alive);
  auto* const element =
      fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, 1, &h.err);
  EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, element, &h.err), 0u);
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, element, 7, &h.err);
  EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_state_flag_get(h, instance, element, &h.err), 2u);
  EXPECT_EQ(h.err, 0u);
}

TEST(RecordArray, the_fill_of_an_array_of_records_goes_on_to_each_element) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, per_complex);
  const auto count = obj.field("num_fwes");
  fwe_dp_wayfind_debug_data_per_complex_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(16, 3));
  std::memset(obj.state(), 0, 16);
  // Elements without a block of element bytes, and a fill with zeros: the pointer it makes is
  // null.
  grow(h, obj, 0);
  auto* const elements = elements_of(obj, "dbg_setting");
  *count = 0;
  fwe_dp_wayfind_debug_data_per_complex_set_all_state_tracking_flag(h, instance, obj, 0);
  *count = 1;
  h->free_fn(h->mem_pool, instance, elements);
}

TEST(RecordArrayDeathTest, reallocation_is_traced_once_for_each_field_before_it_is_tried) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        SpiedHandle h(plain);
        SpiedObject a(h, per_complex, "a");
        SpiedObject b(h, per_complex, "b");
        SpiedObject src(h, setting, "src");
        grow(h, a, 0);
        spy::Log log;
        spy::fail_alloc(1);
        fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, a, 1, src, &h.err);
        h.err = 0;
        for (uint32_t index = 0; index < 3; ++index) {
          grow(h, a, index);
          grow(h, b, index);
        }
        for (const auto& call : log.calls_of({"trace", "ork_store_err"})) {
          std::fprintf(stderr, "%s\n", call.c_str());
        }
        std::_Exit(0);
      },
      testing::ExitedWithCode(0),
      "^trace\\(error,Reallocating resource for "
      "fwe_dp_wayfind_debug_data_per_complex\\)\nork_store_err\\(12\\)\n$");
}

TEST(RecordArray, a_scalar_behind_an_array_has_its_byte_behind_the_entry) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
  fwe_dp_wayfind_debug_data_is_none_set_value(h, instance, obj, 1, &h.err);
  EXPECT_EQ(obj.state()[16], 2);
  EXPECT_EQ(obj.state_bytes()[0], 0);
}

}  // namespace frame
