// State bytes of variable arrays: the whole, the elements, and two calls that work on different
// places.
#include <numeric>

#include "behaviour/frame/objects.h"

namespace frame {

namespace {

struct Path {
  explicit Path(const Mode& mode, uint32_t count = 3)
      : h(mode), obj(h, "fwe_cl_wayfind_sel_lb_path_st") {
    const std::vector<uint32_t> values(count, 1);
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, obj, values.data(), count, &h.err);
    if (h.tracking()) {
      spy::name(elements(), count, "elements");
    }
  }
  uint8_t* elements() const { return load<uint8_t*>(obj.state() + 8); }
  SpiedHandle h;
  SpiedObject obj;
};

}  // namespace

TEST(ArrayState, whole_is_read_and_written_like_the_byte_of_a_scalar) {
  Path p(tracked);
  EXPECT_EQ(
      fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_get(p.h, instance, p.obj, &p.h.err),
      2u);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_set(p.h, instance, p.obj, 200, &p.h.err);
  EXPECT_CALLS(
      log.calls_of({"orklib_adjust_variant", "ork_get_instance_variant", "write_notify_fn"}),
      {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
       "ork_get_instance_variant(obj,1,0)", "write_notify_fn(state,1,7,null)"});
  EXPECT_EQ(p.obj.state()[0], 200);
}

TEST(ArrayState, the_element_block_is_lent_and_writing_through_it_sets_bytes) {
  Path p(tracked);
  uint8_t* lent = nullptr;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get_arr(p.h, instance, p.obj, &lent, &p.h.err);
  EXPECT_EQ(lent, p.elements());
  lent[1] = 9;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, 1, &p.h.err),
            9u);
}

TEST(ArrayState, set_arr_copies_to_the_start_of_the_entry_and_not_to_the_elements) {
  Path p(tracked);
  const uint8_t src[] = {7, 8, 9};
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, p.obj, src, 3, &p.h.err);
  EXPECT_EQ(log.count("write_notify_fn"), 0u);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "ork_get_instance_variant"}),
               {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                "ork_get_instance_variant(obj,1,0)"});
  EXPECT_EQ(std::vector<uint8_t>(p.obj.state(), p.obj.state() + 8),
            (std::vector<uint8_t>{7, 8, 9, 0, 0, 0, 0, 0}));
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(
        fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, i, &p.h.err),
        0u);
  }
}

TEST(ArrayState, set_arr_of_more_than_eight_goes_over_the_pointer) {
  Path p(tracked, 12);
  uint8_t* const elements = p.elements();
  uint8_t src[12];
  std::memset(src, 0x11, sizeof src);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, p.obj, src, 12, &p.h.err);
  EXPECT_EQ(std::memcmp(p.obj.state(), src, 12), 0);
  store(p.obj.state() + 8, elements);
}

TEST(ArrayState, set_arr_of_more_than_the_entry_holds_ends_with_the_entry) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
  SpiedObject element(h, "fwe_dp_wayfind_debug_data_per_complex", "element");
  fwe_dp_wayfind_debug_data_dbg_per_complex_set(h, instance, obj, 19, element, &h.err);
  fwe_dp_wayfind_debug_data_is_none_state_flag_set(h, instance, obj, 9, &h.err);
  auto* const elements = load<uint8_t*>(obj.state() + 8);
  std::vector<uint8_t> src(20);
  std::iota(src.begin(), src.end(), uint8_t{1});
  std::vector<uint8_t> expected(src.begin(), src.begin() + 16);
  expected.push_back(9); /* is_none's, behind the entry */
  fwe_dp_wayfind_debug_data_dbg_per_complex_state_flag_set_arr(h, instance, obj, src.data(), 20,
                                                               &h.err);
  EXPECT_EQ(std::vector<uint8_t>(obj.state(), obj.state() + 17), expected);
  EXPECT_EQ(h.err, 0u);
  store(obj.state() + 8, elements);
}

TEST(ArrayState, set_arr_wants_the_arrays_own_count) {
  Path p(tracked);
  const uint8_t src[] = {7, 8, 9, 10};
  const Snapshot before = p.obj.snapshot();
  for (const uint32_t count : {0u, 2u, 4u}) {
    spy::Log log;
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, p.obj, src, count,
                                                             &p.h.err);
    EXPECT_EQ(std::exchange(p.h.err, 0), 2u);
    EXPECT_CALLS(log.calls_of({"ork_store_err", "orklib_adjust_variant"}), {"ork_store_err(2)"});
  }
  EXPECT_TRUE(before.unchanged());
}

TEST(ArrayState, set_arr_copies_nothing_to_an_object_without_the_array) {
  Path p(tracked);
  p.obj.header().variant = -1;
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  const uint8_t src[] = {7, 8, 9};
  const Snapshot before = p.obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, p.obj, src, 3, &p.h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "ork_get_instance_variant",
                             "ork_store_epoch_err", "ork_store_err"}),
               {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
                "ork_get_instance_variant(obj,1,0)", "ork_store_epoch_err(43,err)"});
  EXPECT_EQ(p.h.err, 0u);
  EXPECT_EQ(p.h.last_error(), 43u);
  EXPECT_TRUE(before.unchanged());
  p.obj.header().variant = 0;
}

TEST(ArrayState, an_elements_byte_is_announced_without_an_owner_behind_index_adjust_and_gate) {
  Path p(tracked);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(p.h, instance, p.obj, 2, 200, &p.h.err);
  EXPECT_CALLS(
      log.calls_of({"orklib_adjust_variant", "ork_get_instance_variant", "write_notify_fn"}),
      {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_sel_lb_path_st),0,err)",
       "ork_get_instance_variant(obj,1,0)", "write_notify_fn(elements+2,1,7,null)"});
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, 2, &p.h.err),
            200u);
}

TEST(ArrayState, an_index_at_the_count_gives_2) {
  Path p(tracked);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, 3, &p.h.err),
            0u);
  EXPECT_EQ(std::exchange(p.h.err, 0), 2u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(p.h, instance, p.obj, 3, 1, &p.h.err);
  EXPECT_EQ(std::exchange(p.h.err, 0), 2u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace", "orklib_adjust_variant"}),
               {"ork_store_err(2)", "ork_store_err(2)"});
}

TEST(ArrayState, an_array_whose_block_was_lost_has_no_elements_whatever_its_count) {
  Path p(tracked, 5);
  const uint32_t src[] = {1, 2, 3};
  spy::fail_alloc(1);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(p.h, instance, p.obj, src, 3, &p.h.err);
  EXPECT_EQ(std::exchange(p.h.err, 0), 12u);
  EXPECT_EQ(count_of<uint32_t>(p.obj, "num_hops"), 5u);
  const Snapshot before = p.obj.snapshot();
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, 0, &p.h.err),
            0u);
  EXPECT_EQ(std::exchange(p.h.err, 0), 2u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(p.h, instance, p.obj, 0, 9, &p.h.err);
  EXPECT_EQ(std::exchange(p.h.err, 0), 2u);
  uint32_t out = 77;
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(p.h, instance, p.obj, &out, 1, &p.h.err);
  EXPECT_EQ(std::exchange(p.h.err, 0), 22u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(p.h, instance, p.obj, &out, 0, &p.h.err);
  EXPECT_EQ(p.h.err, 0u);
  EXPECT_EQ(out, 77u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace", "write_notify_fn"}),
               {"ork_store_err(2)", "ork_store_err(2)", "ork_store_err(22)"});
  EXPECT_TRUE(before.unchanged());
}

TEST(ArrayState, with_tracking_off_all_give_22_without_a_trace) {
  Path p(untracked);
  uint8_t* lent = nullptr;
  uint8_t byte = 1;
  spy::Log log;
  const auto refused = [&] { EXPECT_EQ(std::exchange(p.h.err, 0), 22u); };
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_get(p.h, instance, p.obj, &p.h.err),
      refused();
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_set(p.h, instance, p.obj, 1, &p.h.err),
      refused();
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get_arr(p.h, instance, p.obj, &lent, &p.h.err),
      refused();
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, p.obj, &byte, 3,
                                                           &p.h.err),
      refused();
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, p.obj, 0, &p.h.err),
      refused();
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(p.h, instance, p.obj, 0, 1, &p.h.err),
      refused();
  EXPECT_CALLS(log, std::vector<std::string>(6, "ork_store_err(22)"));
}

TEST(ArrayState, an_untracked_object_is_refused_with_the_words_of_getter_and_setter) {
  Path p(untracked);
  ork_handle_set_tracking(p.h, ORK_TRACKING_ON);
  uint8_t* lent = nullptr;
  uint8_t byte = 1;
  const std::vector<std::string> getter = {"ork_store_err(22)",
                                           "trace(error,The object is non state tracked)"};
  const std::vector<std::string> setter = {"trace(error,The object is not state tracked)",
                                           "ork_store_err(22)"};
  const auto expect = [&](const std::vector<std::string>& calls, const std::function<void()>& act) {
    spy::Log log;
    act();
    EXPECT_EQ(std::exchange(p.h.err, 0), 22u);
    EXPECT_CALLS(log, calls);
  };
  auto* const obj = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(p.obj);
  uint32_t* const err = &p.h.err;
  expect(getter, [&] {
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_get(p.h, instance, obj, err);
  });
  expect(setter, [&] {
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_whole_set(p.h, instance, obj, 1, err);
  });
  expect(getter, [&] {
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get_arr(p.h, instance, obj, &lent, err);
  });
  expect(setter, [&] {
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set_arr(p.h, instance, obj, &byte, 3, err);
  });
  expect(getter,
         [&] { fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(p.h, instance, obj, 0, err); });
  expect(setter, [&] {
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_set(p.h, instance, obj, 0, 1, err);
  });
  ork_handle_set_tracking(p.h, ORK_TRACKING_OFF);
}

TEST(ArrayState, a_refused_request_for_the_element_block_leaves_the_callers_pointer_alone) {
  Path p(untracked);
  uint8_t byte = 1;
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    ork_handle_set_tracking(p.h, tracking);
    uint8_t* lent = &byte;
    fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get_arr(p.h, instance, p.obj, &lent, &p.h.err);
    EXPECT_EQ(std::exchange(p.h.err, 0), 22u);
    EXPECT_EQ(lent, &byte);
  }
  ork_handle_set_tracking(p.h, ORK_TRACKING_OFF);
}

TEST(ArrayState, the_fill_of_an_empty_array_takes_its_entry_and_nothing_else) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_sel_lb_path_st");
  fwe_cl_wayfind_sel_lb_path_st_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(16, 3));
  std::memset(obj.state(), 0, 16);
}

TEST(ArrayState, the_fill_with_elements_loses_their_bytes_and_harms_nothing_else) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_sel_lb_path_st");
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 0, 1, &h.err);
  auto* const elements = load<uint8_t*>(obj.state() + 8);
  fwe_cl_wayfind_sel_lb_path_st_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(16, 3));
  EXPECT_EQ(elements[0], 2) << "the pointer was gone before they were looked for";
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, obj, 0, &h.err), 0u);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 3, 1, &h.err);
  EXPECT_EQ(h.err, 0u) << "the next growth makes new ones";
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get(h, instance, obj, 3, &h.err), 2u);
  h->free_fn(h->mem_pool, instance, elements);
}

TEST(ArrayState, the_fill_of_an_array_of_records_goes_into_each_element) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data_per_complex");
  SpiedObject element(h, "fwe_dp_wayfind_debug_setting", "element");
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, 1, element, &h.err);
  ASSERT_EQ(h.err, 0u);
  auto* const elements = load<uint8_t*>(obj.state() + 8);
  fwe_dp_wayfind_debug_data_per_complex_set_all_state_tracking_flag(h, instance, obj, 3);
  // Two bodies of 56, and behind them nine bytes for each.
  const auto* const states = load<uint8_t*>(obj.field("dbg_setting")) + 112;
  EXPECT_EQ(std::vector<uint8_t>(states, states + 18), std::vector<uint8_t>(18, 3));
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(16, 3));
  store(obj.state() + 8, elements);
}

TEST(ArrayState, destroy_gives_the_element_bytes_back_and_clears_their_pointer_unannounced) {
  Path p(tracked);
  const uint8_t* const pointer = p.obj.state() + 8;
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_destroy_internal(p.h, instance, p.obj, 0);
  const auto freed = log.calls_of({"free_fn"});
  EXPECT_EQ(std::count(freed.begin(), freed.end(), "free_fn(7,elements)"), 1);
  EXPECT_EQ(load<uint64_t>(pointer), 0u);
  for (const auto& announced : log.announcements()) {
    EXPECT_FALSE(announced.address < pointer + 8 && pointer < announced.address + announced.length);
  }
}

TEST(ArrayState, a_fill_over_the_pointer_leaves_no_block_to_lend) {
  Path p(tracked);
  uint8_t* const elements = p.elements();
  fwe_cl_wayfind_sel_lb_path_st_set_all_state_tracking_flag(p.h, instance, p.obj, 3);
  uint8_t* lent = elements;
  fwe_cl_wayfind_sel_lb_path_st_path_id_state_flag_get_arr(p.h, instance, p.obj, &lent, &p.h.err);
  EXPECT_EQ(lent, nullptr);
  EXPECT_EQ(p.h.err, 0u);
  p.h->free_fn(p.h->mem_pool, instance, elements);
}

TEST(ArrayState, a_parents_fill_goes_over_the_pointer_of_an_embedded_array_and_leaves_its_bytes) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  auto* const path = fwe_cl_wayfind_chan_st_path_get(h, instance, obj, &h.err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, path, 0, 1, &h.err);
  uint8_t* const entry = obj.state() + told::record("fwe_cl_wayfind_chan_st")->field("path").nested;
  auto* const elements = load<uint8_t*>(entry + 8);
  fwe_cl_wayfind_chan_st_set_all_state_tracking_flag(h, instance, obj, 3);
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(120, 3));
  EXPECT_EQ(elements[0], 2);
  std::memset(obj.state(), 0, 120);
  store(entry + 8, elements);
}

}  // namespace frame
