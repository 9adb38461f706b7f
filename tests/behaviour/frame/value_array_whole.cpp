// Variable arrays of integers: all at once, none at all, and moved with their record.
#include "behaviour/frame/paths.h"

namespace frame {

namespace {

// The calls of one that writes to a path, with those that it begins with.
std::vector<std::string> opened(const std::string& owner, const std::string& slot,
                                const std::vector<std::string>& calls) {
  std::vector<std::string> all = {
      "ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
      "orklib_adjust_variant(" + owner + ",obj,type(fwe_cl_wayfind_sel_lb_path_st),0," + slot + ")",
      "ork_get_instance_variant(obj,1,0)"};
  all.insert(all.end(), calls.begin(), calls.end());
  return all;
}

}  // namespace

// ---- All at once ----

TEST(SetMem, replaces_everything_in_the_order_told) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 20, "array");
  spy::name(elements_of(obj, "path_id"), 5, "elements");
  const uint32_t src[] = {1, 2, 3};
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 3, &h.err);
  EXPECT_CALLS(array_doings(log),
               {"free_fn(7,array)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,12)=new1",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(state,1,7,null)",
                "free_fn(7,elements)", "write_notify_fn(state+8,8,7,null)", "alloc_fn(7,3)=new2"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2, 3}));
  EXPECT_EQ(obj.state()[0], 2);
  EXPECT_EQ(element_bytes(obj, "path_id", 3), (std::vector<uint8_t>{0, 0, 0}));
  EXPECT_EQ(h.err, 0u);
}

TEST(SetMem, raises_the_object_before_the_gate) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  obj.header().variant = -1;
  const uint32_t src[] = {1, 2};
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 2, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                     "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                     "ork_get_instance_variant(obj,1,0)", "write_notify_fn(obj+16,8,7,obj)",
                     "u_int32_sizeof()", "alloc_fn(7,8)=new1", "write_notify_fn(obj+12,4,7,obj)"});
  EXPECT_EQ(obj.header().variant, 0);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2}));
}

TEST(SetMem, without_tracking_ends_with_the_count) {
  SpiedHandle h(untracked);
  SpiedObject obj(h, path_st);
  const uint32_t src[] = {1, 2, 3};
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 3, &h.err);
  EXPECT_CALLS(array_doings(log), {"write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,12)=new1",
                                   "write_notify_fn(obj+12,4,7,obj)"});
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2, 3}));
}

TEST(SetMem, without_memory_the_old_array_is_lost_and_its_count_stays) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 8, &h.err);
  const uint32_t src[] = {1, 2, 3};
  spy::fail_alloc(1);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 3, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 12u);
  EXPECT_EQ(count_of<uint32_t>(obj, "num_hops"), 5u);
  EXPECT_EQ(load<void*>(obj.field("path_id")), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get(h, instance, obj, 0, &h.err), nullptr)
      << "a null block has no element";
  EXPECT_EQ(std::exchange(h.err, 0), 2u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, obj, 0, &h.err), 0u);
  EXPECT_EQ(std::exchange(h.err, 0), 2u);
  // A later set makes the array anew.
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 4, &h.err);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 4}));
}

TEST(SetMem, of_an_untracked_object_leaves_a_zeroed_block_and_the_smaller_count) {
  for (const uint32_t count : {2u, 9u}) {
    SpiedHandle h(untracked);
    SpiedObject obj(h, path_st);
    const uint32_t first[] = {1, 2, 3, 4, 5};
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, first, 5, &h.err);
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    const uint32_t src[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
    spy::Log log;
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, count, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), 22u);
    EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}),
                 {"ork_store_err(22)", "trace(error,The object is not state tracked)"});
    ork_handle_set_tracking(h, ORK_TRACKING_OFF);
    EXPECT_EQ(values(h, obj), std::vector<uint32_t>(std::min(count, 5u), 0));
  }
}

TEST(SetMem, without_memory_for_the_element_bytes_the_values_are_there) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 8, &h.err);
  const uint32_t src[] = {1, 2, 3};
  spy::fail_alloc(2);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 3, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 12u);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2, 3}));
  EXPECT_EQ(obj.state()[0], 2);
  EXPECT_EQ(elements_of(obj, "path_id"), nullptr);
}

TEST(SetMem, without_tracking_a_tracked_object_keeps_no_element_bytes_that_are_too_short) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  const uint32_t src[] = {1, 2, 3};
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 3, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  EXPECT_EQ(elements_of(obj, "path_id"), nullptr);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2, 3}));
}

TEST(SetMem, without_tracking_a_tracked_object_keeps_element_bytes_that_fit_and_what_they_hold) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  const uint8_t* const elements = elements_of(obj, "path_id");
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  const uint32_t src[] = {1, 2};
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 2, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  EXPECT_CALLS(array_doings(log), {"free_fn(7,array)", "write_notify_fn(obj+16,8,7,obj)",
                                   "alloc_fn(7,8)=new1", "write_notify_fn(obj+12,4,7,obj)"});
  ASSERT_EQ(elements_of(obj, "path_id"), elements);
  EXPECT_EQ(element_bytes(obj, "path_id", 2), (std::vector<uint8_t>{0, 2}));
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2}));
  EXPECT_EQ(h.err, 0u);
}

TEST(SetMem, of_no_elements_is_what_the_allocator_says) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, nullptr, 0, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(count_of<uint32_t>(obj, "num_hops"), 0u);
  spy::fail_alloc(1);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, nullptr, 0, &h.err);
  EXPECT_EQ(h.err, 12u);
}

TEST(SetMem, a_count_of_all_ones_is_asked_for_in_64_bits) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  static size_t asked;
  asked = 0;
  const auto before = h->alloc_fn;
  h->alloc_fn = [](void*, uint32_t, size_t size) -> void* {
    asked = size;
    return nullptr;
  };
  const uint32_t src = 1;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, &src, 0xFFFFFFFF, &h.err);
  h->alloc_fn = before;
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(asked, size_t{4} * 0xFFFFFFFF);
}

TEST(ValueArrayWhole, set_value_past_the_end_of_an_untracked_object_gives_22_before_growth) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF, .recording = true});
  SpiedObject obj(h, path_st);
  const uint32_t src[] = {1, 2};
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, src, 2, &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 4, 3, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 22u);
  EXPECT_CALLS(log,
               opened("7", "err",
                      opened("7", "err",
                             {"ork_store_err(22)", "trace(error,The object is not state tracked)",
                              "orkdb_record_containment2(7,null,obj,1)"})))
      << "set_value's own opening, and that of the setter it grows with";
  EXPECT_TRUE(before.unchanged());
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{1, 2}));
}

TEST(ValueArrayWhole, cr_forms_use_the_slot_of_the_handle_and_give_it_back) {
  SpiedHandle h({.cr_instance = 11});
  SpiedObject obj(h, path_st);
  const uint32_t src[] = {3};
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_set_cr(h, obj, 1, 5), 0u);
  EXPECT_CALLS(
      log, opened("11", "cr_error",
                  {"u_int32_sizeof()", "alloc_fn(11,8)=new1", "write_notify_fn(obj+16,8,11,obj)",
                   "write_notify_fn(obj+12,4,11,obj)", "u_int32_set(11,new1+4,?,cr_error)"}));
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem_cr(h, obj, src, 1), 0u);
  EXPECT_CALLS(log,
               opened("11", "cr_error",
                      {"free_fn(11,new1)", "write_notify_fn(obj+16,8,11,obj)", "u_int32_sizeof()",
                       "alloc_fn(11,4)=new2", "write_notify_fn(obj+12,4,11,obj)"}));
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{3}));
  spy::fail_alloc(1);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_set_cr(h, obj, 4, 5), 12u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem_cr(h, obj, src, 1), 12u)
      << "an error stands";
  h->cr_error = 0;
}

TEST(GetMem, copies_elements_of_one_and_two_bytes_and_nothing_behind_them) {
  SpiedHandle h(plain);
  SpiedObject intf(h, "fwe_cl_wayfind_sel_lb_src_intf_st", "intf");
  SpiedObject site(h, "fwe_cl_wayfind_sel_lb_dst_site_st", "site");
  const uint8_t bytes_in[] = {1, 2, 3};
  const uint16_t words_in[] = {1000, 2000, 3000};
  fwe_cl_wayfind_sel_lb_src_intf_st_src_intf_id_set_mem(h, instance, intf, bytes_in, 3, &h.err);
  fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_set_mem(h, instance, site, words_in, 3, &h.err);
  std::vector<uint8_t> bytes_out(4, 9);
  std::vector<uint16_t> words_out(4, 9);
  fwe_cl_wayfind_sel_lb_src_intf_st_src_intf_id_get_mem(h, instance, intf, bytes_out.data(), 3,
                                                        &h.err);
  fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_get_mem(h, instance, site, words_out.data(), 3,
                                                        &h.err);
  EXPECT_EQ(bytes_out, (std::vector<uint8_t>{1, 2, 3, 9}));
  EXPECT_EQ(words_out, (std::vector<uint16_t>{1000, 2000, 3000, 9}));
  EXPECT_EQ(h.err, 0u);
}

TEST(GetMem, raises_no_object_and_asks_the_gate_before_the_count) {
  SpiedHandle h(plain);
  SpiedObject obj(h, path_st);
  obj.header().variant = -1;
  uint32_t out = 9;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(h, instance, obj, &out, 1, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "ork_store_epoch_err(43,err)"});
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(out, 9u);
  EXPECT_EQ(obj.header().variant, -1);
  obj.header().variant = 0;
}

// ---- Removing ----

TEST(Remove, gives_the_block_back_and_leaves_the_element_bytes) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  uint8_t* const elements = elements_of(obj, "path_id");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_remove_elements(h, instance, obj);
  EXPECT_CALLS(log, {"free_fn(7,array)", "write_notify_fn(obj+16,8,7,obj)",
                     "write_notify_fn(obj+12,4,7,obj)"});
  EXPECT_EQ(count_of<uint32_t>(obj, "num_hops"), 0u);
  EXPECT_EQ(elements_of(obj, "path_id"), elements);
  EXPECT_EQ(elements[1], 2);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 8, &h.err);
  EXPECT_EQ(h.err, 0u);
}

TEST(Remove, null_and_an_empty_array_are_nothing) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_remove_elements(h, instance, obj);
  fwe_cl_wayfind_sel_lb_path_st_path_id_remove_elements(h, instance, nullptr);
  EXPECT_CALLS(log, {});
}

TEST(ValueArrayWhole, destroy_gives_both_blocks_back_and_announces_the_pointer_alone) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  spy::name(pointer_at<uint32_t*>(obj.field("path_id")), 8, "array");
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_destroy(h, instance,
                                        static_cast<fwe_cl_wayfind_sel_lb_path_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"free_fn", "write_notify_fn"}),
               {"free_fn(7,array)", "write_notify_fn(obj+16,8,7,null)", "free_fn(7,elements)",
                "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(ValueArrayWhole, destroy_of_an_empty_one_frees_no_null_but_announces_its_pointer) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_destroy(h, instance,
                                        static_cast<fwe_cl_wayfind_sel_lb_path_st*>(obj.release()));
  EXPECT_CALLS(
      log.calls_of({"free_fn", "write_notify_fn"}),
      {"write_notify_fn(obj+16,8,7,null)", "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(ValueArrayWhole, destroy_at_a_negative_variant_keeps_the_array_but_frees_the_element_bytes) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 8, &h.err);
  void* const array = load<void*>(obj.field("path_id"));
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  obj.header().variant = -1;
  const auto uncounted = spy::answer(orklib_type_stats_destroy_object, 0);
  {
    spy::Log log;
    fwe_cl_wayfind_sel_lb_path_st_destroy(
        h, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(obj.release()));
    EXPECT_CALLS(log.calls_of({"free_fn"}), {"free_fn(7,elements)", "free_fn(7,obj)"});
  }
  h->free_fn(h->mem_pool, instance, array);
}

// ---- Whole records with an array ----

TEST(ArrayMove, set_moves_the_array_and_leaves_the_source_empty) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, path_st, "dst");
  SpiedObject src(h, path_st, "src");
  const uint32_t three[] = {1, 2, 3};
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, src, three, 3, &h.err);
  const void* const array = load<void*>(src.field("path_id"));
  const uint8_t* const elements = elements_of(src, "path_id");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_set(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn", "free_fn", "alloc_fn"}),
               {"write_notify_fn(dst,32,7,dst)", "write_notify_fn(dst_state,16,7,dst_state)",
                "write_notify_fn(src_state+8,8,7,null)", "write_notify_fn(src+16,8,7,src)",
                "write_notify_fn(src+12,4,7,src)"});
  EXPECT_EQ(load<void*>(dst.field("path_id")), array);
  EXPECT_EQ(elements_of(dst, "path_id"), elements);
  EXPECT_EQ(count_of<uint32_t>(dst, "num_hops"), 3u);
  EXPECT_EQ(load<void*>(src.field("path_id")), nullptr);
  EXPECT_EQ(elements_of(src, "path_id"), nullptr);
  EXPECT_EQ(count_of<uint32_t>(src, "num_hops"), 0u);
  EXPECT_EQ(src.state()[0], 2) << "whole stays";
}

TEST(ArrayMove, the_destinations_own_array_is_overwritten_and_not_freed) {
  SpiedHandle h(plain);
  SpiedObject dst(h, path_st, "dst");
  SpiedObject src(h, path_st, "src");
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, dst, 0, 1, &h.err);
  void* const lost = load<void*>(dst.field("path_id"));
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(log.count("free_fn"), 0u);
  EXPECT_EQ(load<void*>(dst.field("path_id")), nullptr);
  h->free_fn(h->mem_pool, instance, lost);
}

TEST(ArrayMove, cleanup_detaches_the_source_alone) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, path_st, "dst");
  SpiedObject src(h, path_st, "src");
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, src, 0, 1, &h.err);
  void* const array = load<void*>(src.field("path_id"));
  uint8_t* const elements = elements_of(src, "path_id");
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_post_copyout_cleanup(h, instance, dst, src, &h.err);
  EXPECT_CALLS(log, {"write_notify_fn(src+16,8,7,src)", "write_notify_fn(src+12,4,7,src)"});
  EXPECT_EQ(elements_of(src, "path_id"), elements);
  h->free_fn(h->mem_pool, instance, array);
}

TEST(ArrayMove, an_embedded_array_is_moved_with_its_parent) {
  SpiedHandle h(tracked);
  SpiedObject dst(h, "fwe_cl_wayfind_chan_st", "dst");
  SpiedObject src(h, "fwe_cl_wayfind_chan_st", "src");
  auto* const from = fwe_cl_wayfind_chan_st_path_get(h, instance, src, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, from, 2, 9, &h.err);
  fwe_cl_wayfind_chan_st_set(h, instance, dst, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  auto* const to = fwe_cl_wayfind_chan_st_path_get(h, instance, dst, &h.err);
  EXPECT_EQ(values(h, to), (std::vector<uint32_t>{0, 0, 9}));
  EXPECT_EQ(values(h, from), (std::vector<uint32_t>{}));
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, to, 2, &h.err), 2u);
  EXPECT_EQ(h.err, 0u);
}

}  // namespace frame
