// Arrays of records that grow: what goes with an element to its new place, and counters of one byte
// that wrap.
#include "behaviour/encoders/records.h"
#include "behaviour/frame/record_arrays.h"

namespace frame {

namespace {

// All that happens up to the end of the old block.
std::vector<std::string> until_the_old_block_goes(const spy::Log& log) {
  auto calls =
      any_slot(log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "orklib_update_sttr_offset",
                             "orklib_adjust_variant", "ork_hd_mapping_destroy"}));
  const auto end = std::find(calls.begin(), calls.end(), "free_fn(7,old)");
  calls.erase(end == calls.end() ? end : end + 1, calls.end());
  return calls;
}

}  // namespace

// ---- What goes along ----

TEST(RecordArrayGrowth, sets_an_embedded_record_into_place_before_its_distance_is_forgotten) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, all_policies);
  SpiedObject src(h, policy, "src");
  fwe_cl_wayfind_select_all_policies_policy_set(h, instance, obj, 0, src, &h.err);
  spy::name(block_of(obj, "policy"), 95, "old");
  spy::Log log;
  fwe_cl_wayfind_select_all_policies_policy_set(h, instance, obj, 1, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  // Two bodies of 88, then the states: element 0's own at 176, those of its mem at 178.
  EXPECT_CALLS(
      until_the_old_block_goes(log),
      {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_select_all_policies),0,err)",
       "alloc_fn(7,190)=new1", "write_notify_fn(obj+16,8,7,obj)",
       "orklib_update_sttr_offset(7,new1,176)", "orklib_update_sttr_offset(7,new1+16,162)",
       "orklib_adjust_variant(7,new1+16,type(fwe_cl_wayfind_mem_st),0,err)",
       "write_notify_fn(new1+16,40,7,new1+16)", "write_notify_fn(new1+178,3,7,new1+178)",
       "ork_hd_mapping_destroy(7,old+16)", "ork_hd_mapping_destroy(7,old)", "free_fn(7,old)"});
}

TEST(RecordArrayGrowth, an_array_leaves_the_old_element_before_its_distance_is_forgotten) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
  SpiedObject src(h, per_complex, "src");
  fwe_dp_wayfind_debug_data_dbg_per_complex_set(h, instance, obj, 0, src, &h.err);
  spy::name(block_of(obj, "dbg_per_complex"), 48, "old");
  spy::Log log;
  fwe_dp_wayfind_debug_data_dbg_per_complex_set(h, instance, obj, 1, src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(
      until_the_old_block_goes(log),
      {"orklib_adjust_variant(7,obj,type(fwe_dp_wayfind_debug_data),0,err)", "alloc_fn(7,96)=new1",
       "write_notify_fn(obj+16,8,7,obj)", "orklib_update_sttr_offset(7,new1,64)",
       "write_notify_fn(old+16,8,7,old)", "write_notify_fn(old+11,1,7,old)",
       "ork_hd_mapping_destroy(7,old)", "free_fn(7,old)"});
}

TEST(RecordArrayGrowth, records_then_detaches_each_watched_old_element_before_its_block_goes) {
  Settings s(shared_and_recorded);
  s.set(1);
  spy::name(block_of(s.obj, "dbg_setting"), 112, "old");
  spy::Log log;
  s.set(2);
  EXPECT_CALLS(log.calls_of({"orkdb_record_containment2", "orkdb_plat_set_detach", "free_fn"}),
               {"orkdb_record_containment2(7,old,obj,1)", "orkdb_plat_set_detach(7,old,0)",
                "orkdb_record_containment2(7,old+56,obj,1)", "orkdb_plat_set_detach(7,old+56,0)",
                "free_fn(7,old)", "orkdb_record_containment2(7,new1+112,obj,1)"});
  log.clear();
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(s.h, ORK_NO_INSTANCE, s.obj, 3, s.src,
                                                        &s.h.err);
  EXPECT_EQ(log.count("orkdb_plat_set_detach"), 0u);
}

// ---- Failures ----

TEST(RecordArrayGrowth, goes_on_when_the_mapping_of_an_old_element_cannot_be_removed) {
  Settings s(tracked);
  s.set(1);
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(s.h, instance, s.get(0), 42, &s.h.err);
  spy::name(block_of(s.obj, "dbg_setting"), 130, "old");
  {
    const auto failing = spy::fail(ork_hd_mapping_destroy, 5);
    spy::Log log;
    s.set(2);
    EXPECT_CALLS(any_slot(log.calls_of({"ork_hd_mapping_destroy"})),
                 {"ork_hd_mapping_destroy(7,old)", "ork_hd_mapping_destroy(7,old+56)"});
  }
  EXPECT_EQ(s.h.err, 0u);
  EXPECT_EQ(*s.obj.field("num_fwes"), 3u);
  EXPECT_EQ(s.number(0), 42u);
  EXPECT_EQ(s.state(0), 2u);
  s.h.expect_leaks();  // the runtime still knows the old places
}

TEST(RecordArrayGrowth, asks_for_its_block_in_64_bits_but_with_states_only_up_to_31_bits) {
  static std::vector<size_t> asked;
  struct Row {
    Mode mode;
    uint32_t index;
    std::vector<size_t> sizes;
  };
  // 88 bytes an element, 95 with its states.
  for (const Row& row :
       {Row{plain, 0xFFFFFFFE, {377957121960}}, Row{plain, 0xFFFFFFFF, {377957122048}},
        Row{tracked, 22605090, {2147483645}}, Row{tracked, 22605091, {}},
        Row{tracked, 0xFFFFFFFF, {}}}) {
    SpiedHandle h(row.mode);
    SpiedObject obj(h, all_policies);
    SpiedObject src(h, policy, "src");
    asked.clear();
    const auto before = h->alloc_fn;
    h->alloc_fn = [](void*, uint32_t, size_t size) -> void* {
      asked.push_back(size);
      return nullptr;
    };
    spy::Log log;
    fwe_cl_wayfind_select_all_policies_policy_set(h, instance, obj, row.index, src, &h.err);
    h->alloc_fn = before;
    EXPECT_EQ(h.err, 12u);
    EXPECT_EQ(asked, row.sizes);
    EXPECT_CALLS(log.calls_of({"ork_store_err", "write_notify_fn", "trace"}),
                 {"ork_store_err(12)"});
    EXPECT_EQ(count_of<uint32_t>(obj, "num_policies"), 0u);
  }
}

TEST(RecordArrayGrowth, a_clone_that_fails_is_marked_all_the_same) {
  Settings s(tracked);
  const auto failing = spy::fail(u_int8_unmarshal, 5);
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set_cr(s.h, s.obj, 1, s.src, 0), 5u);
  s.h->cr_error = 0;
  EXPECT_EQ(s.obj.state()[0], 2);
  EXPECT_EQ(element_bytes(s.obj, "dbg_setting", 2), (std::vector<uint8_t>{0, 2}));
}

TEST(RecordArrayGrowth, moves_elements_left_by_a_failed_read_together_announced_with_their_states) {
  Settings from(tracked);
  for (uint8_t i = 0; i < 3; ++i) {
    from.set(i);
    fwe_dp_wayfind_debug_setting_fwe_num_set_value(from.h, instance, from.get(i),
                                                   static_cast<uint8_t>(100 + i), &from.h.err);
    fwe_dp_wayfind_debug_setting_fwe_num_state_flag_set(from.h, instance, from.get(i),
                                                        static_cast<uint8_t>(10 + i), &from.h.err);
  }
  // Seven bytes, three images of 48, the array's four states and the byte that a writer may touch
  // behind them. What is read ends in the second element, behind its first field.
  std::vector<uint8_t> image(7 + 3 * 48 + 4 + 1);
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_marshal(from.h, instance, image.data(), from.obj,
                                                          155, &from.h.err),
            155u);
  EXPECT_EQ(from.h.err, 0u);
  image.resize(7 + 48 + 20);
  Settings s(tracked);
  {
    spy::Log log;
    fwe_dp_wayfind_debug_data_per_complex_unmarshal(s.h, instance, image.data(), s.obj, 75, 0,
                                                    &s.h.err);
    EXPECT_EQ(std::exchange(s.h.err, 0), 90u);
    // Made for three, which would have had their states from 168 on; two are left, with theirs
    // from 112 on.
    EXPECT_CALLS(
        log.calls_of({"alloc_fn", "orklib_update_sttr_offset"}),
        {"alloc_fn(7,195)=new1", "alloc_fn(7,3)=new2", "orklib_update_sttr_offset(7,new1,168)",
         "orklib_update_sttr_offset(7,new1+56,121)", "orklib_update_sttr_offset(7,new1,112)",
         "orklib_update_sttr_offset(7,new1+56,65)"});
    auto announced = log.calls_of({"write_notify_fn"});
    std::erase_if(announced, [](const std::string& call) { return !call.ends_with(",null)"); });
    EXPECT_CALLS(announced,
                 {"write_notify_fn(state+8,8,7,null)", "write_notify_fn(new1+112,18,7,null)"});
  }
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 2u);
  for (const uint32_t count : {2u, 3u, 4u}) {
    for (uint8_t i = 0; i < 2; ++i) {
      EXPECT_EQ(s.number(i), 100 + i) << count;
      EXPECT_EQ(s.state(i), 10 + i) << count;
    }
    s.set(count);
    EXPECT_EQ(s.h.err, 0u);
  }
}

TEST(RecordArrayGrowth, that_fails_at_an_element_keeps_those_before_it_and_their_states) {
  Settings s(tracked);
  spy::Log log;
  {
    const auto failing = spy::fail(ork_domain_lookup_variant, 5, 2);
    s.set(2);
  }
  EXPECT_EQ(std::exchange(s.h.err, 0), 5u);
  auto calls = log.calls_of({"alloc_fn", "write_notify_fn", "orklib_update_sttr_offset"});
  std::erase_if(
      calls, [](const std::string& call) { /* the elements' own headers, but not a copy into one */
                                           return call.find(",7,new1") != std::string::npos &&
                                                  call.find(",56,") == std::string::npos;
      });
  // Made for three elements with their states from 168 on; one is left, with its own from 56 on.
  EXPECT_CALLS(
      calls,
      {"alloc_fn(7,195)=new1", "write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(obj+11,1,7,obj)",
       "orklib_update_sttr_offset(7,new1,168)", "orklib_update_sttr_offset(7,new1+56,121)",
       "orklib_update_sttr_offset(7,new1+112,74)", "write_notify_fn(obj+11,1,7,obj)",
       "write_notify_fn(new1+56,9,7,null)", "orklib_update_sttr_offset(7,new1,56)",
       "write_notify_fn(state+8,8,7,null)", "alloc_fn(7,3)=new2"});
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 1u);
  EXPECT_EQ(s.obj.state()[0], 0);
  EXPECT_EQ(element_bytes(s.obj, "dbg_setting", 3), (std::vector<uint8_t>{0, 0, 0}));
  s.set(2);
  EXPECT_EQ(s.h.err, 0u);
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 3u);
}

TEST(RecordArrayGrowth, tells_records_in_elements_left_by_a_failed_read_where_their_states_are) {
  SpiedHandle h(tracked);
  const auto mem = [&](const SpiedObject& obj, uint32_t i) {
    auto* const element =
        fwe_cl_wayfind_select_all_policies_policy_get(h, instance, obj, i, &h.err);
    return fwe_cl_wayfind_select_policy_mem_get(h, instance, element, &h.err);
  };
  // Ten bytes, three images of 59, the array's four states and the byte that a writer may touch
  // behind them.
  std::vector<uint8_t> image(10 + 3 * 59 + 4 + 1);
  {
    SpiedObject from(h, all_policies, "from");
    SpiedObject src(h, policy, "src");
    for (uint8_t i = 0; i < 3; ++i) {
      fwe_cl_wayfind_select_all_policies_policy_set(h, instance, from, i, src, &h.err);
      fwe_cl_wayfind_mem_st_ppe_addr_state_flag_set(h, instance, mem(from, i),
                                                    static_cast<uint8_t>(10 + i), &h.err);
    }
    EXPECT_EQ(
        fwe_cl_wayfind_select_all_policies_marshal(h, instance, image.data(), from, 191, &h.err),
        191u);
    EXPECT_EQ(h.err, 0u);
  }
  image.resize(10 + 59 +
               40); /* the second ends behind its mem, which has the bytes from 10 to 38 */
  SpiedObject obj(h, all_policies);
  spy::Log log;
  fwe_cl_wayfind_select_all_policies_unmarshal(h, instance, image.data(), obj, 109, 0, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 90u);
  auto told = log.calls_of({"orklib_update_sttr_offset"});
  ASSERT_GE(told.size(), 4u);
  told.erase(told.begin(), told.end() - 4);
  // Two bodies of 88, then two blocks of seven, in each that of its mem at 2.
  EXPECT_CALLS(
      told,
      {"orklib_update_sttr_offset(7,new1,176)", "orklib_update_sttr_offset(7,new1+16,162)",
       "orklib_update_sttr_offset(7,new1+88,95)", "orklib_update_sttr_offset(7,new1+104,81)"});
  EXPECT_EQ(count_of<uint32_t>(obj, "num_policies"), 2u);
  for (uint8_t i = 0; i < 2; ++i) {
    EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_state_flag_get(h, instance, mem(obj, i), &h.err),
              10 + i);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_exmem_addr_state_flag_get(h, instance, mem(obj, i), &h.err), 0);
  }
  EXPECT_EQ(h.err, 0u);
}

// ---- Counters of one byte ----

TEST(ByteCount, holds_255_elements_on_the_wire_and_back) {
  Settings s(plain);
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(s.h, instance, s.src, 42, &s.h.err);
  s.set(254);
  std::vector<uint8_t> image(
      7 + 255 * 39); /* six bytes and the counter, then in each element six, one and eight fours */
  const auto size = static_cast<int32_t>(image.size());
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_marshal(s.h, instance, image.data(), s.obj, size,
                                                          &s.h.err),
            image.size());
  EXPECT_EQ(image[6], 255);
  Settings read(plain);
  EXPECT_EQ(fwe_dp_wayfind_debug_data_per_complex_unmarshal(read.h, instance, image.data(),
                                                            read.obj, size, 0, &read.h.err),
            image.size());
  EXPECT_EQ(count_of<uint8_t>(read.obj, "num_fwes"), 255u);
  EXPECT_EQ(read.number(254), 42u);
  EXPECT_EQ(read.h.err, 0u);
}

TEST(ByteCount, at_index_255_is_0_while_the_element_is_marked) {
  Settings s(tracked);
  s.set(255);
  EXPECT_EQ(s.h.err, 0u);
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 0u);
  EXPECT_EQ(s.obj.state()[0], 2);
  std::vector<uint8_t> expected(256);
  expected[255] = 2;
  EXPECT_EQ(element_bytes(s.obj, "dbg_setting", 256), expected);
}

TEST(ByteCount, that_has_wrapped_still_leads_growth_to_the_states_of_the_elements_that_it_counts) {
  Settings s(tracked);
  s.set(256);
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 1u);
  fwe_dp_wayfind_debug_setting_fwe_num_set_value(s.h, instance, s.get(0), 42, &s.h.err);
  fwe_dp_wayfind_debug_setting_mode_ft_enabled_state_flag_set(s.h, instance, s.get(0), 9, &s.h.err);
  s.set(1);
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 2u);
  EXPECT_EQ(s.number(0), 42u);
  EXPECT_EQ(s.state(0), 2u);
  EXPECT_EQ(fwe_dp_wayfind_debug_setting_mode_ft_enabled_state_flag_get(s.h, instance, s.get(0),
                                                                        &s.h.err),
            9u);
  EXPECT_EQ(s.state(1), 0u) << "a copy of a source that nobody wrote";
  EXPECT_EQ(s.h.err, 0u);
}

TEST(ByteCount, wraps_while_elements_are_read_from_xml) {
  std::string text = "<d>";
  for (int i = 0; i < 258; ++i) {
    text += "<dbg_per_complex/>";
  }
  const encoders::Document document = encoders::parsed(text + "</d>");
  for (const Mode& mode : {plain, tracked}) {
    SpiedHandle h(mode);
    SpiedObject obj(h, "fwe_dp_wayfind_debug_data");
    fwe_dp_wayfind_debug_data_from_xml(h, instance, "//d", document.get(), obj, &h.err, nullptr, 0);
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(count_of<uint8_t>(obj, "num_complexes"), 2u);
  }
}

}  // namespace frame
