// Clones of records: what survives, and what a failure leaves.
#include "behaviour/encoders/values.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class Clone : public testing::Test {
 protected:
  void clone_internal(const Calls& calls, const void* source, void** slot, uint8_t* ws,
                      int32_t ws_len) {
    calls.clone_internal(handle, instance, source, slot, ws, ws_len, &err);
  }

  const Calls& mem = calls_of("fwe_cl_wayfind_mem_st");
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Handle handle{ORK_TRACKING_OFF};
  Bytes workspace = Bytes(ample + 1);
  uint32_t err = 0;
};

TEST_F(Clone, without_slot_or_workspace_is_2) {
  const Object source(handle, mem);
  void* slot = nullptr;
  for (const auto function : {mem.clone, mem.clone_internal}) {
    for (const bool has_slot : {false, true}) {
      err = 0;
      function(handle, instance, source.get(), has_slot ? &slot : nullptr,
               has_slot ? nullptr : workspace.data(), ample, &err);
      EXPECT_EQ(err, 2u);
      EXPECT_EQ(ork_handle_last_error(handle), 2u);
    }
  }
  const Object target = filled(handle, mem, 0);
  void* filled_slot = target.get();
  err = 0;
  clone_internal(mem, source.get(), &filled_slot, nullptr, ample);
  EXPECT_EQ(err, 2u);
  EXPECT_EQ(filled_slot, target.get()) << "nothing touched";
}

TEST_F(Clone, clears_the_slot_even_when_an_error_stands) {
  const Object source(handle, mem);
  void* slot = &err;
  err = 5;
  mem.clone(handle, instance, source.get(), &slot, workspace.data(), ample, &err);
  EXPECT_EQ(slot, nullptr);
  slot = &err;
  clone_internal(mem, source.get(), &slot, workspace.data(), ample);
  EXPECT_EQ(slot, &err);
  EXPECT_EQ(err, 5u);
}

TEST_F(Clone, overwrites_the_object_in_the_slot) {
  const Object source = filled(handle, path, 3);
  const Object target = filled(handle, path, 1);
  void* slot = target.get();
  clone_internal(path, source.get(), &slot, workspace.data(), ample);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(slot, target.get());
  EXPECT_EQ(path.compare(source.get(), target.get()), 0);
}

TEST_F(Clone, in_a_too_small_workspace_makes_nothing_and_touches_nothing) {
  const Object source = filled(handle, path, 3);
  const int32_t needed = 22;
  for (int32_t length = -1; length < needed; ++length) {
    err = 0;
    void* slot = nullptr;
    clone_internal(path, source.get(), &slot, workspace.data(), length);
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(slot, nullptr);
    const Object target = filled(handle, path, 1);
    const uint32_t before = path.hash(target.get(), 0);
    slot = target.get();
    err = 0;
    clone_internal(path, source.get(), &slot, workspace.data(), length);
    EXPECT_EQ(slot, target.get());
    EXPECT_EQ(path.hash(target.get(), 0), before);
  }
  err = 0;
  void* slot = nullptr;
  clone_internal(path, source.get(), &slot, workspace.data(), needed);
  EXPECT_EQ(err, 0u);
  path.destroy(handle, instance, slot);
}

TEST_F(Clone, in_cr_style_uses_the_handles_workspace) {
  const Handle small([&](ork_options& options) { options.workspace_size = 21; });
  const Object source = filled(small, path, 3);
  EXPECT_EQ(path.clone_cr(small, source.get()), nullptr);
  EXPECT_EQ(small->cr_error, 90u);
}

TEST_F(Clone, without_memory_for_the_object_is_12) {
  const Object source(handle, mem);
  void* slot = nullptr;
  ork_handle_fail_allocation(handle, 1);
  clone_internal(mem, source.get(), &slot, workspace.data(), ample);
  EXPECT_EQ(err, 12u);
  EXPECT_EQ(slot, nullptr);
  ork_handle_fail_allocation(handle, 1);
  EXPECT_EQ(mem.clone_cr(handle, source.get()), nullptr) << "not the sentinel";
  EXPECT_EQ(handle->cr_error, 12u);
}

TEST_F(Clone, whose_unmarshal_fails_destroys_the_callers_object) {
  const Object source = filled(handle, path, 3);
  void* slot = filled(handle, path, 1).release();
  ork_handle_fail_allocation(handle, 1);
  clone_internal(path, source.get(), &slot, workspace.data(), ample);
  EXPECT_EQ(err, 12u);
  EXPECT_EQ(slot, nullptr);
}

TEST_F(Clone, keeps_its_variant_under_an_older_domain) {
  const Calls& tunnel = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Object source = filled(handle, tunnel, 0);
  handle.set_peer(release_list(0).get());
  const Object copy(handle, tunnel, tunnel.clone_cr(handle, source.get()));
  ASSERT_NE(copy.get(), nullptr);
  EXPECT_EQ(copy.header().variant, 1);
  EXPECT_EQ(tunnel.compare(source.get(), copy.get()), 0);
  EXPECT_EQ(handle->cr_error, 0u);
}

TEST_F(Clone, lowers_what_is_inside_under_an_older_domain) {
  const Calls& data = calls_of("fwe_cl_wayfind_hop_chan_data");
  const Object source = filled(handle, data, 0);
  handle.set_peer(release_list(0).get());
  {
    const spy::Log log;
    const Object copy(handle, data, data.clone_cr(handle, source.get()));
    ASSERT_NE(copy.get(), nullptr);
    EXPECT_EQ(log.count("ork_store_epoch_err"), 1u) << "hop_chan alone";
    EXPECT_EQ(copy.header().variant, 1);
    auto* const inside = fwe_cl_wayfind_hop_chan_data_hop_chan_get(
        handle, instance, static_cast<fwe_cl_wayfind_hop_chan_data*>(copy.get()), &err);
    EXPECT_EQ(reinterpret_cast<const ork_object*>(inside)->variant, 0);
  }
}

TEST_F(Clone, lowers_the_elements_of_an_array_under_an_older_domain) {
  const Calls& channels = calls_of("fwe_cl_wayfind_select_tc_lb_channels_st");
  const Object source(handle, channels);
  const Object element(handle, calls_of("fwe_cl_wayfind_select_loadbalance_channel_st"));
  auto* const record = static_cast<fwe_cl_wayfind_select_tc_lb_channels_st*>(source.get());
  auto* const channel = static_cast<fwe_cl_wayfind_select_loadbalance_channel_st*>(element.get());
  fwe_cl_wayfind_select_tc_lb_channels_st_channels_set(handle, instance, record, 1, channel, &err);
  ASSERT_EQ(err, 0u);
  // An element of variant 0 with empty arrays has 97 bytes; path_rf, which variant 1 adds, would
  // make 10 more.
  const auto image_length = [&] {
    return channels.marshal_for_clone(handle, instance, workspace.data(), record, ample, &err);
  };
  EXPECT_EQ(image_length(), 10u + 2 * 107);
  handle.set_peer(release_list(0).get());
  const spy::Log log;
  EXPECT_EQ(image_length(), 10u + 2 * 97);
  EXPECT_EQ(Bytes(workspace.begin() + 10, workspace.begin() + 16), hex("00 00 0000005f"));
  EXPECT_EQ(Bytes(workspace.begin() + 107, workspace.begin() + 113), hex("00 00 0000005f"));
  EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}),
               {"ork_store_epoch_err(43,?)", "ork_store_epoch_err(43,?)"});
}

TEST_F(Clone, has_arrays_of_its_own) {
  const Object source = filled(handle, path, 3);
  const uint32_t before = path.hash(source.get(), 0);
  const Object copy(handle, path, path.clone_cr(handle, source.get()));
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(copy.get()), 9, 1, &err);
  EXPECT_EQ(path.hash(source.get(), 0), before);
}

TEST_F(Clone, fills_an_array_element_and_leaves_the_source_its_arrays) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle h(tracking);
    const Calls& data = calls_of("fwe_dp_wayfind_debug_data");
    const Calls& complex = calls_of("fwe_dp_wayfind_debug_data_per_complex");
    const Object object(h, data);
    const Object source = filled(h, complex, 2);
    auto* const record = static_cast<fwe_dp_wayfind_debug_data*>(object.get());
    auto* const element = static_cast<fwe_dp_wayfind_debug_data_per_complex*>(source.get());
    const uint32_t before = complex.hash(source.get(), 0);
    EXPECT_EQ(fwe_dp_wayfind_debug_data_dbg_per_complex_set_cr(h, record, 1, element, 0), 0u);
    EXPECT_EQ(complex.hash(source.get(), 0), before);
    uint32_t error = 0;
    EXPECT_EQ(
        complex.compare(
            fwe_dp_wayfind_debug_data_dbg_per_complex_get(h, instance, record, 1, &error), element),
        0);
    EXPECT_EQ(fwe_dp_wayfind_debug_data_dbg_per_complex_set_cr(h, record, 0, element, 1), 0u);
    EXPECT_EQ(
        fwe_dp_wayfind_debug_data_per_complex_num_fwes_get_value(h, instance, element, &error), 0)
        << "moved, not cloned";
  }
}

TEST_F(Clone, of_an_array_element_leaves_it_alone_where_the_handles_workspace_is_too_small) {
  for (const size_t room : {38u, 39u}) { /* the image has 39 bytes */
    const Handle h([&](ork_options& options) {
      options.tracking = ORK_TRACKING_OFF;
      options.workspace_size = room;
    });
    const Object object(h, calls_of("fwe_dp_wayfind_debug_data_per_complex"));
    const Object source(h, calls_of("fwe_dp_wayfind_debug_setting"));
    auto* const record = static_cast<fwe_dp_wayfind_debug_data_per_complex*>(object.get());
    auto* const setting = static_cast<fwe_dp_wayfind_debug_setting*>(source.get());
    fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, record, 0, nullptr, &err);
    auto* const element =
        fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, record, 0, &err);
    fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, element, 5, &err);
    fwe_dp_wayfind_debug_setting_fwe_num_set_value(h, instance, setting, 42, &err);
    const bool fits = room == 39;
    EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(h, record, 0, setting, 0),
              fits ? 0u : 90u);
    EXPECT_EQ(h->cr_error, fits ? 0u : 90u);
    EXPECT_EQ(fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, element, &err),
              fits ? 42u : 5u);
    EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_num_fwes_get_value(h, instance, record, &err),
              1u);
    EXPECT_EQ(err, 0u);
  }
}

// ---- Call order -------------------------------------------------------------

TEST_F(Clone, of_an_array_element_goes_by_way_of_the_handles_workspace) {
  SpiedHandle h({.cr_instance = 11});
  const Object object(h, calls_of("fwe_dp_wayfind_debug_data_per_complex"));
  const Object source(h, calls_of("fwe_dp_wayfind_debug_setting"));
  uint8_t* own = nullptr;
  int32_t room = 0;
  orklib_get_handle_ws(h, &own, &room);
  spy::name(own, 100, "ws");
  spy::Log log;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(
      h, static_cast<fwe_dp_wayfind_debug_data_per_complex*>(object.get()), 0,
      static_cast<fwe_dp_wayfind_debug_setting*>(source.get()), 0);
  EXPECT_EQ(log.count("orklib_get_handle_ws"), 1u);
  EXPECT_CALLS(log.calls_of({"_ork_instance_variant_marshal", "_ork_instance_variant_unmarshal"}),
               std::vector<std::string>{
                   "_ork_instance_variant_marshal(11,ws,?," + std::to_string(room) + ",cr_error)",
                   "_ork_instance_variant_unmarshal(11,ws,?,39,cr_error)"});
}

TEST_F(Clone, starts_the_trace_module_and_creates_only_for_an_empty_slot) {
  SpiedHandle h;
  void* const source = mem.create(h, instance);
  spy::name(source, 40, "src");
  spy::name(workspace.data(), workspace.size(), "ws");
  const std::initializer_list<std::string> names = {"ork_fwe_ui_wayfind_trace_init",
                                                    "flight_module_init_fn", "alloc_fn", "free_fn",
                                                    "orklib_type_stats_create_object"};
  void* slot = nullptr;
  {
    spy::Log log;
    mem.clone_internal(h, instance, source, &slot, workspace.data(), 100, &h.err);
    const std::vector<std::string> made = log.calls_of({"flight_module_init_fn", "alloc_fn"});
    ASSERT_EQ(made.size(), 2u);
    EXPECT_TRUE(made[0].starts_with("flight_module_init_fn(")) << made[0];
    EXPECT_EQ(made[1], "alloc_fn(7,40)=new1");
  }
  {
    spy::Log log;
    mem.clone_internal(h, instance, source, &slot, workspace.data(), 100, &h.err);
    EXPECT_TRUE(log.calls_of(names).empty());
  }
  EXPECT_EQ(h.err, 0u);
  mem.destroy(h, instance, slot);
  mem.destroy(h, instance, source);
}

TEST_F(Clone, reads_no_more_than_was_written_for_the_instance_of_its_style) {
  SpiedHandle h({.cr_instance = 9});
  void* const source = mem.create(h, instance);
  spy::name(source, 40, "src");
  uint8_t* own = nullptr;
  int32_t room = 0;
  orklib_get_handle_ws(h, &own, &room);
  for (const bool cr : {false, true}) {
    const std::string number = cr ? "9" : "7";
    const std::string slot_name = cr ? "cr_error" : "err";
    spy::name(cr ? own : workspace.data(), 100, "ws");
    void* copy = nullptr;
    spy::Log log;
    if (cr) {
      copy = mem.clone_cr(h, source);
    } else {
      mem.clone(h, instance, source, &copy, workspace.data(), 100, &h.err);
    }
    const std::string left = std::to_string((cr ? room : 100) - 6);
    EXPECT_CALLS(log.calls_of({"u_int32_marshal", "alloc_fn", "_ork_instance_variant_unmarshal",
                               "u_int32_unmarshal"}),
                 std::vector<std::string>{
                     "u_int32_marshal(" + number + ",ws+6,src+12," + left + "," + slot_name + ")",
                     "alloc_fn(" + number + ",40)=new1",
                     "_ork_instance_variant_unmarshal(" + number + ",ws,?,26," + slot_name + ")",
                     "u_int32_unmarshal(" + number + ",ws+6,new1+12,20,0," + slot_name + ")"});
    mem.destroy(h, instance, copy);
  }
  mem.destroy(h, instance, source);
}

TEST_F(Clone, whose_unmarshal_fails_leaves_the_sentinel_alive) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF});
  const Object source = filled(h, path, 3);
  const auto failed_create = [&] {
    spy::fail_alloc(1);
    void* const sentinel = fwe_cl_wayfind_sel_lb_path_st_create_cr(h);
    h->cr_error = 0;
    return sentinel;
  };
  void* const sentinel = failed_create();
  ASSERT_NE(sentinel, nullptr);
  const kit::Snapshot before(sentinel, 32);
  void* slot = sentinel;
  {
    spy::fail_alloc(1);
    const spy::Log log;
    path.clone_internal(h, instance, source.get(), &slot, workspace.data(), 100, &h.err);
    EXPECT_EQ(log.count("free_fn"), 0u);
  }
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(slot, nullptr);
  EXPECT_EQ(failed_create(), sentinel);
  std::copy(before.before().begin(), before.before().end(), static_cast<uint8_t*>(sentinel));
}

// An image of variant -1 hides every field of its target. Nobody else owns the arrays in them: what
// is not freed fails the count of blocks.
TEST_F(Clone, that_fails_frees_the_arrays_that_the_variant_of_its_target_hides) {
  const Object source = filled(handle, path, 2);
  source.header().variant = -1;
  Object target = filled(handle, path, 3);
  void* slot = target.release();
  const auto failing = spy::fail(_ork_variant_jump_unmarshal, 5);
  clone_internal(path, source.get(), &slot, workspace.data(), ample);
  source.header().variant = 0;
  EXPECT_EQ(err, 5u);
  EXPECT_EQ(slot, nullptr);
}

TEST_F(Clone, into_an_element_that_fails_frees_the_arrays_that_the_variant_of_the_element_hides) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF});
  const Calls& data = calls_of("fwe_dp_wayfind_debug_data");
  const Object source = filled(h, calls_of("fwe_dp_wayfind_debug_data_per_complex"), 2);
  source.header().variant = -1;
  const Object object = filled(h, data, 2);
  auto* const owner = static_cast<fwe_dp_wayfind_debug_data*>(object.get());
  auto* const element =
      fwe_dp_wayfind_debug_data_dbg_per_complex_get(h, instance, owner, 0, &h.err);
  ASSERT_NE(element, nullptr);
  const uint64_t before = h.memory().live_blocks;
  {
    const auto failing = spy::fail(_ork_variant_jump_unmarshal, 5);
    const auto* const from =
        static_cast<const fwe_dp_wayfind_debug_data_per_complex*>(source.get());
    EXPECT_NE(fwe_dp_wayfind_debug_data_dbg_per_complex_set_cr(h, owner, 0, from, 0), 0u);
  }
  source.header().variant = 0;
  h->cr_error = 0;
  EXPECT_EQ(h.memory().live_blocks, before - 1) << "the element's array, and nothing else";
}

}  // namespace
