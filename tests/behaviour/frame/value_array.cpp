// Variable arrays of integers: growing, reading and writing one element.
#include <cstdio>
#include <cstdlib>

#include "behaviour/frame/paths.h"

namespace frame {

// ---- Set ----

TEST(ValueArray, the_first_set_makes_array_count_and_element_bytes_in_this_order) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  const uint32_t src = 5;
  spy::name_at(&src, "src");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 2, &src, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_sizeof()", "alloc_fn(7,12)=new1",
                     "write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(obj+12,4,7,obj)",
                     "write_notify_fn(state+8,8,7,null)", "alloc_fn(7,3)=new2",
                     "orkdb_record_containment2(7,new1+8,obj,1)", "u_int32_set(7,new1+8,src,err)",
                     "write_notify_fn(state,1,7,null)", "write_notify_fn(new2+2,1,7,null)"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 0, 5}));
  EXPECT_EQ(obj.state()[0], 2);
  EXPECT_EQ(element_bytes(obj, "path_id", 3), (std::vector<uint8_t>{0, 0, 2}));
  EXPECT_EQ(h.err, 0u);
}

TEST(ValueArray, a_set_inside_moves_nothing) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 2, 5, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 12, "array");
  spy::name(elements_of(obj, "path_id"), 3, "elements");
  const uint32_t src = 6;
  spy::name_at(&src, "src");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, &src, &h.err);
  EXPECT_CALLS(array_doings(log),
               {"orkdb_record_containment2(7,array+4,obj,1)", "u_int32_set(7,array+4,src,err)",
                "write_notify_fn(state,1,7,null)", "write_notify_fn(elements+1,1,7,null)"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 6, 5}));
}

TEST(ValueArray, growth_copies_values_and_element_bytes_and_gives_both_blocks_back) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 5, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(h, instance, obj, 0, 9, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  const uint32_t src = 6;
  spy::name_at(&src, "src");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 3, &src, &h.err);
  EXPECT_EQ(log.count("u_int32_sizeof"), 1u);
  auto calls = array_doings(log);
  std::erase(
      calls,
      "trace(error,Reallocating resource for fwe_cl_wayfind_sel_lb_path_st)");  // once per process
  EXPECT_CALLS(calls,
               {"alloc_fn(7,16)=new1", "write_notify_fn(obj+16,8,7,obj)", "free_fn(7,array)",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(state+8,8,7,null)",
                "alloc_fn(7,4)=new2", "free_fn(7,elements)",
                "orkdb_record_containment2(7,new1+12,obj,1)", "u_int32_set(7,new1+12,src,err)",
                "write_notify_fn(state,1,7,null)", "write_notify_fn(new2+3,1,7,null)"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 5, 0, 6}));
  EXPECT_EQ(element_bytes(obj, "path_id", 4), (std::vector<uint8_t>{9, 2, 0, 2}));
}

TEST(ValueArray, a_null_source_only_grows) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, nullptr, &h.err);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 0}));
  EXPECT_EQ(obj.state()[0], 0) << "nothing is marked";
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 0, nullptr, &h.err);
  EXPECT_CALLS(array_doings(log), {});
}

TEST(ValueArray, elements_of_one_and_two_bytes_have_the_functions_of_their_kind) {
  SpiedHandle h(plain);
  SpiedObject intf(h, "fwe_cl_wayfind_sel_lb_src_intf_st", "intf");
  SpiedObject site(h, "fwe_cl_wayfind_sel_lb_dst_site_st", "site");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_src_intf_st_src_intf_id_set_value(h, instance, intf, 3, 200, &h.err);
  fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_set_value(h, instance, site, 3, 60000, &h.err);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "u_int8_set_value", "u_int16_set_value"}),
               {"alloc_fn(7,4)=new1", "u_int8_set_value(7,new1+3,200,err)", "alloc_fn(7,8)=new2",
                "u_int16_set_value(7,new2+6,60000,err)"});
  EXPECT_EQ(log.count("u_int8_sizeof"), 1u);
  EXPECT_EQ(log.count("u_int16_sizeof"), 1u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_src_intf_st_src_intf_id_get_value(h, instance, intf, 3, &h.err),
            200u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_get_value(h, instance, site, 3, &h.err),
            60000u);
}

TEST(ValueArray, an_untracked_object_while_tracking_is_refused_after_the_gate_before_any_change) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, path_st);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  const uint32_t src = 1;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 0, &src, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_store_err(22)",
                     "trace(error,The object is not state tracked)"});
  log.clear();
  h.err = 5;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 0, &src, &h.err);
  EXPECT_EQ(h.err, 5u) << "an error stands";
  EXPECT_CALLS(log, {});
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

TEST(ValueArrayDeathTest, a_corrupted_mode_word_ends_the_process) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  const uint32_t src = 1;
  h->sttr_info->sttr_mode = 3;
  const char* const words = "trace\\(fatal,Corrupted ORK Handle\\)";
  EXPECT_DEATH(fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 0, &src, &h.err), words);
  EXPECT_DEATH(fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, &src, 1, &h.err),
               words);
  EXPECT_DEATH(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_get(h, instance, obj, &h.err),
               words);
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(ValueArray, without_memory_the_old_array_and_count_stay) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 5, &h.err);
  spy::fail_alloc(1);
  const uint32_t src = 6;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 4, &src, &h.err);
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(log.count("ork_store_err"), 1u);
  EXPECT_EQ(log.count("write_notify_fn"), 0u);
  h.err = 0;
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 5}));
}

TEST(ValueArray, without_memory_for_the_element_bytes_they_are_gone_and_the_array_has_grown) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 5, &h.err);
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  spy::fail_alloc(2);
  const uint32_t src = 6;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 2, &src, &h.err);
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(log.calls_of({"free_fn"}).back(), "free_fn(7,elements)");
  h.err = 0;
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 5, 0})) << "grown, and the value not written";
  EXPECT_EQ(elements_of(obj, "path_id"), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, obj, 1, &h.err), 0u)
      << "no block reads as 0";
  EXPECT_EQ(h.err, 0u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 7, &h.err);
  EXPECT_EQ(h.err, 0u) << "no block is not marked";
  EXPECT_EQ(obj.state()[0], 2);
}

TEST(ValueArray, grown_without_tracking_a_tracked_array_gives_its_short_element_bytes_back) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 5, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 5, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  EXPECT_EQ(elements_of(obj, "path_id"), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, obj, 4, &h.err), 0u);
  EXPECT_EQ(h.err, 0u);
}

TEST(ValueArray, the_largest_indices_want_more_memory_than_there_is) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  static size_t asked;
  const auto before = h->alloc_fn;
  h->alloc_fn = [](void*, uint32_t, size_t size) -> void* {
    asked = size;
    return nullptr;
  };
  const uint32_t src = 1;
  for (const uint32_t index : {0xFFFFFFFEu, 0xFFFFFFFFu}) {
    fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, index, &src, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), 12u);
    EXPECT_EQ(asked, size_t{4} * (size_t{index} + 1)) << "worked out in 64 bits";
  }
  h->alloc_fn = before;
}

TEST(ValueArrayDeathTest, reallocation_is_traced_once_before_it_is_tried_even_for_a_block_of_none) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        SpiedHandle h(plain);
        SpiedObject a(h, path_st, "a");
        SpiedObject b(h, path_st, "b");
        SpiedObject site(h, "fwe_cl_wayfind_sel_lb_dst_site_st", "site");
        fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, a, nullptr, 0, &h.err);
        spy::Log log;
        spy::fail_alloc(1);
        fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, a, 0, nullptr, &h.err);
        h.err = 0;
        for (uint32_t index = 0; index < 3; ++index) {
          fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, a, index, 1, &h.err);
          fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, b, index, 1, &h.err);
          fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_set_value(h, instance, site, index, 1,
                                                                  &h.err);
        }
        for (const auto& call : log.calls_of({"trace", "ork_store_err"})) {
          std::fprintf(stderr, "%s\n", call.c_str());
        }
        std::_Exit(0);
      },
      testing::ExitedWithCode(0),
      "^trace\\(error,Reallocating resource for "
      "fwe_cl_wayfind_sel_lb_path_st\\)\nork_store_err\\(12\\)\n"
      "trace\\(error,Reallocating resource for fwe_cl_wayfind_sel_lb_dst_site_st\\)\n$");
}

// ---- Get ----

TEST(ValueArray, get_lends_the_element_and_records_it_in_the_object) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 20, "array");
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 0, 0, 0, 8}))
      << "indices below the written one are 0";
  spy::Log log;
  EXPECT_EQ(*fwe_cl_wayfind_sel_lb_path_st_path_id_get(h, instance, obj, 4, &h.err), 8u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "orkdb_record_containment2(7,array+16,obj,1)"});
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, obj, 4, &h.err), 8u);
  EXPECT_CALLS(
      log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)", "ork_clear_last_error()",
            "ork_get_instance_variant(obj,1,0)", "orkdb_record_containment2(7,array+16,obj,1)",
            "u_int32_get_value(7,array+16,err)"});
}

TEST(ValueArray, an_index_at_the_count_gives_2_and_a_longer_read_22) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 8, &h.err);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get(h, instance, obj, 5, &h.err), nullptr);
  EXPECT_EQ(std::exchange(h.err, 0), 2u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, obj, 5, &h.err), 0u);
  EXPECT_EQ(std::exchange(h.err, 0), 2u);
  uint32_t out[6] = {9, 9, 9, 9, 9, 9};
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(h, instance, obj, out, 6, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 22u);
  EXPECT_EQ(out[0], 9u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}),
               {"ork_store_err(2)", "ork_store_err(2)", "ork_store_err(22)"});
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(h, instance, obj, out, 2, &h.err);
  EXPECT_EQ(h.err, 0u) << "fewer than there are is no error";
  EXPECT_EQ(out[1], 0u);
  EXPECT_EQ(out[2], 9u);
}

TEST(ValueArray, an_object_of_a_negative_variant_has_no_array) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  obj.header().variant = -1;
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  const Snapshot before = obj.snapshot();
  uint32_t value = 5;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get(h, instance, obj, 0, &h.err), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, obj, 0, &h.err), 0u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(h, instance, obj, &value, 0, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 0, &value, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 1, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, &value, 1, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_set(h, instance, obj, 1, &h.err);
  EXPECT_EQ(log.count("ork_store_epoch_err"), 7u);
  EXPECT_EQ(log.count("alloc_fn"), 0u);
  EXPECT_TRUE(before.unchanged());
  obj.header().variant = 0;
}

// ---- Set value ----

TEST(ValueArray, set_value_raises_the_object_before_the_gate) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 2, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  obj.header().variant = -1;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 7, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "ork_clear_last_error()",
                     "ork_get_instance_variant(obj,1,0)", "u_int32_set_value(7,array,7,err)"});
  EXPECT_EQ(obj.header().variant, 0);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{7, 2}));
}

TEST(ValueArray, set_value_inside_asks_for_the_element_with_a_slot_of_its_own) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 3, &h.err);
  EXPECT_CALLS(array_doings(log),
               {"orkdb_record_containment2(7,array,obj,1)",
                "orkdb_record_containment2(7,array,obj,1)", "u_int32_set_value(7,array,3,err)",
                "write_notify_fn(state,1,7,null)", "write_notify_fn(elements,1,7,null)"});
}

TEST(ValueArray, set_value_behind_the_end_grows_first) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 3, &h.err);
  EXPECT_CALLS(array_doings(log),
               {"alloc_fn(7,8)=new1", "write_notify_fn(obj+16,8,7,obj)",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(state+8,8,7,null)",
                "alloc_fn(7,2)=new2", "orkdb_record_containment2(7,new1+4,obj,1)",
                "orkdb_record_containment2(7,new1+4,obj,1)", "u_int32_set_value(7,new1+4,3,err)",
                "write_notify_fn(state,1,7,null)", "write_notify_fn(new2+1,1,7,null)"});
}

TEST(ValueArray, set_value_takes_another_error_of_the_private_slot_over) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  unsigned asked = 0;
  // The gate inside the element's getter refuses, and the runtime writes the slot.
  const auto gate = spy::replace(ork_get_instance_variant, [&](const void*, uint32_t, uint32_t) {
    return ++asked == 2 ? int8_t{-1} : int8_t{0};
  });
  const auto strict = spy::replace(
      ork_store_epoch_err, [](ork_handle*, uint32_t number, uint32_t* err) { *err = number; });
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 3, &h.err);
  EXPECT_EQ(h.err, 43u);
  EXPECT_EQ(log.calls_of({"ork_store_err"}), (std::vector<std::string>{"ork_store_err(43)"}));
  EXPECT_EQ(log.count("u_int32_set_value"), 0u);
}

TEST(ValueArray, set_value_without_an_element_or_an_error_gives_2) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  unsigned asked = 0;
  // The gate inside the element's getter refuses, and the runtime leaves the slot alone.
  const auto gate = spy::replace(ork_get_instance_variant, [&](const void*, uint32_t, uint32_t) {
    return ++asked == 2 ? int8_t{-1} : int8_t{0};
  });
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 3, &h.err);
  EXPECT_EQ(h.err, 2u);
  EXPECT_CALLS(array_doings(log), {"ork_store_epoch_err(43,?)",
                                   "orkdb_record_containment2(7,null,obj,1)", "ork_store_err(2)"});
}

TEST(ValueArray, set_value_that_cannot_grow_records_no_element_and_ends) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  const Snapshot before = obj.snapshot();
  spy::fail_alloc(1);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 3, &h.err);
  EXPECT_EQ(h.err, 12u);
  EXPECT_CALLS(array_doings(log), {"alloc_fn(7,8)=null", "ork_store_err(12)",
                                   "orkdb_record_containment2(7,null,obj,1)"});
  EXPECT_TRUE(before.unchanged());
}

TEST(ValueArray, a_write_that_the_runtime_refuses_is_marked_all_the_same) {
  SpiedHandle h(tracked);
  const auto refused = [&](const std::function<void(const SpiedObject&)>& set) {
    SpiedObject obj(h, path_st);
    set(obj);
    EXPECT_EQ(std::exchange(h.err, 0), 5u);
    EXPECT_EQ(obj.state()[0], 2);
    EXPECT_EQ(element_bytes(obj, "path_id", 2), (std::vector<uint8_t>{0, 2}));
  };
  const auto setter = spy::fail(u_int32_set, 5);
  const auto value_setter = spy::fail(u_int32_set_value, 5);
  const uint32_t src = 3;
  refused([&](const SpiedObject& obj) {
    fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, &src, &h.err);
  });
  refused([&](const SpiedObject& obj) {
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 3, &h.err);
  });
}

TEST(ValueArray, set_value_of_an_untracked_object_gives_22_behind_the_write) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 8, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 3, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 22u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}),
               {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{3}));
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
}

}  // namespace frame
