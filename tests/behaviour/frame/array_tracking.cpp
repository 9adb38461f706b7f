// Arrays whose object, source or handle is tracked at one time and untracked at another.
#include "behaviour/frame/record_arrays.h"

namespace frame {

namespace {

void untrack(const SpiedObject& obj) {
  obj.header().obj_flags = static_cast<uint8_t>(obj.header().obj_flags & ~OBJ_STATE_TRACKED);
}

// From now on the object loses its claim to state bytes whenever that place is announced.
void untrack_at(spy::Log& log, const SpiedObject& obj, const uint8_t* place) {
  log.on_announcement = [&obj, place](const spy::Announcement& announced) {
    if (announced.address == place) {
      untrack(obj);
    }
  };
}

// What a growth does, without what it traces once in a process and without the announcements of its
// new elements.
std::vector<std::string> growth(const spy::Log& log) {
  auto calls = array_doings(log);
  std::erase_if(calls, [](const std::string& call) {
    return call.find("trace(error,Reallocating") == 0 ||
           (call.find("write_notify_fn(new1") == 0 && call.find(",7,new1") != std::string::npos);
  });
  return calls;
}

uint8_t* element(const Settings& s, uint32_t index) {
  return block_of(s.obj, "dbg_setting") + size_t{56} * index;
}

const std::string refusal = "trace(error,The object is not state tracked)";

}  // namespace

// ---- Looked at again ----

TEST(ArrayTracking, is_looked_at_again_before_a_grown_array_of_values_gets_its_element_bytes) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  const uint32_t src = 5;
  {
    spy::Log log;
    untrack_at(log, obj, obj.field("num_hops"));
    fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, &src, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), 22u);
    EXPECT_CALLS(array_doings(log),
                 {"alloc_fn(7,8)=new1", "write_notify_fn(obj+16,8,7,obj)",
                  "write_notify_fn(obj+12,4,7,obj)", "ork_store_err(22)", refusal});
  }
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 0}));
  EXPECT_EQ(obj.state_bytes(), std::vector<uint8_t>(16)) << "neither a mark nor element bytes";
}

TEST(ArrayTracking, is_looked_at_again_before_a_value_is_marked) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, nullptr, &h.err);
  const uint32_t src = 5;
  {
    const auto untracking = spy::replace(
        u_int32_set,
        [&](ork_handle* handle, uint32_t i, uint32_t* to, const uint32_t* from, uint32_t* err) {
          spy::next(u_int32_set)(handle, i, to, from, err);
          untrack(obj);
        });
    spy::Log log;
    fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 1, &src, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), 22u);
    EXPECT_CALLS(log.calls_of({"write_notify_fn", "ork_store_err", "trace"}),
                 {"ork_store_err(22)", refusal});
  }
  obj.header().obj_flags |= OBJ_STATE_TRACKED;
  EXPECT_EQ(values(h, obj), (std::vector<uint32_t>{0, 5}));
  EXPECT_EQ(obj.state()[0], 0);
  EXPECT_EQ(element_bytes(obj, "path_id", 2), (std::vector<uint8_t>{0, 0}));
}

TEST(ArrayTracking, is_looked_at_again_before_a_grown_array_of_records_gets_its_element_bytes) {
  Settings s(tracked);
  *s.src.field("fwe_num") = 5;
  spy::Log log;
  untrack_at(log, s.obj, s.obj.field("num_fwes"));
  s.set(1);
  EXPECT_EQ(std::exchange(s.h.err, 0), 22u);
  EXPECT_CALLS(growth(log), {"alloc_fn(7,130)=new1", "write_notify_fn(obj+16,8,7,obj)",
                             "write_notify_fn(obj+11,1,7,obj)", "ork_store_err(22)", refusal});
  EXPECT_EQ(count_of<uint8_t>(s.obj, "num_fwes"), 2u);
  EXPECT_EQ(element(s, 1)[11], 0) << "nothing is copied";
  EXPECT_EQ(s.obj.state_bytes(), std::vector<uint8_t>(16)) << "neither a mark nor element bytes";
}

TEST(ArrayTracking, is_looked_at_again_before_a_record_is_marked) {
  Settings s(tracked);
  s.set(1);
  *s.src.field("fwe_num") = 5;
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_state_flag_whole_set(s.h, instance, s.obj, 7,
                                                                         &s.h.err);
  fwe_dp_wayfind_debug_data_per_complex_dbg_setting_state_flag_set(s.h, instance, s.obj, 0, 9,
                                                                   &s.h.err);
  spy::name(element(s, 0), 130, "block");
  {
    spy::Log log;
    untrack_at(log, s.obj, element(s, 0));
    s.set(0);
    EXPECT_EQ(std::exchange(s.h.err, 0), 22u);
    // The copy of body and state bytes, and no more.
    EXPECT_CALLS(log.calls_of({"write_notify_fn", "ork_store_err", "trace"}),
                 {"write_notify_fn(block,56,7,block)", "write_notify_fn(block+112,9,7,block+112)",
                  "ork_store_err(22)", refusal});
  }
  s.obj.header().obj_flags |= OBJ_STATE_TRACKED;
  EXPECT_EQ(element(s, 0)[11], 5);
  EXPECT_EQ(s.obj.state()[0], 7);
  EXPECT_EQ(element_bytes(s.obj, "dbg_setting", 2), (std::vector<uint8_t>{9, 2}));
}

TEST(ArrayTracking, of_the_object_is_looked_at_before_that_of_the_source) {
  Settings s(untracked);
  ork_handle_set_tracking(s.h, ORK_TRACKING_ON);
  spy::Log log;
  s.set(0);
  EXPECT_EQ(std::exchange(s.h.err, 0), 22u);
  EXPECT_CALLS(array_doings(log), {"ork_store_err(22)", refusal});
  ork_handle_set_tracking(s.h, ORK_TRACKING_OFF);
}

// ---- Off for a while ----

TEST(ArrayTracking, that_is_off_announces_the_loss_of_element_bytes_behind_the_count) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, path_st);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, obj, 1, 5, &h.err);
  spy::name(pointer_at<uint32_t>(obj.field("path_id")), 8, "array");
  spy::name(elements_of(obj, "path_id"), 2, "elements");
  const uint32_t src = 6;
  spy::name_at(&src, "src");
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  spy::Log log;
  fwe_cl_wayfind_sel_lb_path_st_path_id_set(h, instance, obj, 4, &src, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(growth(log),
               {"alloc_fn(7,20)=new1", "write_notify_fn(obj+16,8,7,obj)", "free_fn(7,array)",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(state+8,8,7,null)",
                "free_fn(7,elements)", "orkdb_record_containment2(7,new1+16,obj,1)",
                "u_int32_set(7,new1+16,src,err)"});
}

TEST(ArrayTracking, that_is_off_takes_a_moved_elements_distance_even_after_a_copy_took_its_states) {
  Settings s(tracked);
  s.set(0);
  ork_handle_set_tracking(s.h, ORK_TRACKING_OFF);
  SpiedObject bare(s.h, setting, "bare");
  s.set(0, bare);
  EXPECT_EQ(header(element(s, 0)).obj_flags, OBJ_STTR_OFFSET)
      << "its own distance stays with an element that is copied over";
  spy::name(element(s, 0), 65, "old");
  spy::name(elements_of(s.obj, "dbg_setting"), 1, "elements");
  spy::Log log;
  s.set(1, bare);
  EXPECT_EQ(s.h.err, 0u);
  EXPECT_EQ(header(element(s, 0)).obj_flags, 0);
  EXPECT_CALLS(any_slot(log.calls_of({"ork_hd_mapping_destroy", "free_fn"})),
               {"ork_hd_mapping_destroy(7,old)", "free_fn(7,old)", "free_fn(7,elements)"});
}

TEST(ArrayTracking, off_for_the_first_element_leaves_the_others_their_states_when_growth_fails) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_sel_lb_path_human_readable_st");
  SpiedObject src(h, "fwe_cl_wayfind_hop_id_readable_format_st", "src");
  const auto set = [&](uint32_t index) {
    fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_set(h, instance, obj, index, src,
                                                                 &h.err);
  };
  const auto get = [&](uint32_t index) {
    return fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_get(h, instance, obj, index,
                                                                        &h.err);
  };
  const auto state = [&](uint32_t index) {
    return fwe_cl_wayfind_hop_id_readable_format_st_hop_id_str_state_flag_get(h, instance,
                                                                              get(index), &h.err);
  };
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  set(0);
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  set(1);
  fwe_cl_wayfind_hop_id_readable_format_st_hop_id_str_state_flag_set(h, instance, get(1), 9,
                                                                     &h.err);
  ASSERT_EQ(h.err, 0u);
  ASSERT_FALSE(header(get(0)).obj_flags & OBJ_STATE_TRACKED);
  {
    const auto failing = spy::fail(ork_domain_lookup_variant, 5, 2);
    set(3);
  }
  EXPECT_EQ(std::exchange(h.err, 0), 5u);
  EXPECT_EQ(count_of<uint32_t>(obj, "num_hops_str"), 3u);
  EXPECT_EQ(state(1), 9u);
  set(3);
  EXPECT_EQ(state(1), 9u) << "found behind the three elements that were left";
  EXPECT_EQ(state(2), 0u);
  EXPECT_EQ(h.err, 0u);
}

}  // namespace frame
