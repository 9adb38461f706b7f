// What to_xml and from_xml of records call, in order.
#include "behaviour/encoders/records.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class XmlCalls : public testing::Test {
 protected:
  explicit XmlCalls(const kit::Mode& mode = kit::plain) : h(mode) {
    spy::name(text, sizeof text, "text");
    spy::name(reason, sizeof reason, "reason");
  }
  ~XmlCalls() override {
    if (object != nullptr) {
      calls->destroy(h, instance, object);
    }
  }

  // The record that a test is about, in place of the one before.
  void make(const char* record) {
    if (object != nullptr) {
      calls->destroy(h, instance, object);
    }
    calls = &calls_of(record);
    object = calls->create(h, instance);
    spy::name(object, 40, "obj");
    h.err = 0;
  }
  template <class Record>
  Record* as() const {
    return static_cast<Record*>(object);
  }
  void set_hops(const std::vector<uint32_t>& hops) {
    make("fwe_cl_wayfind_sel_lb_path_st");
    fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(h, instance, as<fwe_cl_wayfind_sel_lb_path_st>(),
                                                  hops.data(), static_cast<uint32_t>(hops.size()),
                                                  &h.err);
    EXPECT_EQ(h.err, 0u);
  }
  void write(uint8_t state = 0) {
    text[0] = '\0';
    calls->to_xml(h, instance, "m", text, object, sizeof text, state, &h.err);
  }
  void read(const std::string& xml) {
    const Document document = parsed(xml);
    spy::name_at(document.get(), "xml");
    calls->from_xml(h, instance, "//r", document.get(), object, &h.err, reason, sizeof reason);
  }

  SpiedHandle h;
  const Calls* calls = nullptr;
  void* object = nullptr;
  char text[400];
  char reason[10];
};

struct TrackedXmlCalls : XmlCalls {
  TrackedXmlCalls() : XmlCalls(kit::tracked) {}
};

// The nth scratch from now on, counted from 1, cannot be had; with 0 all can.
[[nodiscard]] spy::Replacement refused_scratch(unsigned nth) {
  return spy::replace(u_int32_create, [nth, seen = 0U](auto... arguments) mutable {
    return ++seen == nth ? nullptr : spy::next(u_int32_create)(arguments...);
  });
}

// The calls without their arguments.
std::vector<std::string> names_of(const std::vector<std::string>& lines) {
  std::vector<std::string> names;
  for (const std::string& line : lines) {
    names.push_back(line.substr(0, line.find('(')));
  }
  return names;
}

// ---- Writing ----------------------------------------------------------------

TEST_F(XmlCalls, of_writing_without_tracking_are_the_tags_and_the_fields) {
  make("fwe_cl_wayfind_mem_st");
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
    ork_handle_set_tracking(h, tracking);
    spy::Log log;
    write();
    EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                       "start_tag(7,text,'m',400,0,err)",
                       "u_int32_to_xml(7,'fwe_num',text+4,obj+12,396,0,err)",
                       "u_int64_to_xml(7,'ppe_addr',text+25,obj+16,375,0,err)",
                       "u_int64_to_xml(7,'exmem_addr',text+48,obj+24,352,0,err)",
                       "end_tag(7,text+75,'m',325,err)"});
  }
}

TEST_F(TrackedXmlCalls, of_writing_pass_each_state) {
  make("fwe_cl_wayfind_mem_st");
  fwe_cl_wayfind_mem_st_ppe_addr_state_flag_set(h, instance, as<fwe_cl_wayfind_mem_st>(), 6,
                                                &h.err);
  spy::Log log;
  write(5);
  EXPECT_CALLS(
      log.calls_of({"start_tag", "u_int32_to_xml", "u_int64_to_xml", "end_tag"}),
      {"start_tag(7,text,'m',400,5,err)", "u_int32_to_xml(7,'fwe_num',text+14,obj+12,386,0,err)",
       "u_int64_to_xml(7,'ppe_addr',text+35,obj+16,365,6,err)",
       "u_int64_to_xml(7,'exmem_addr',text+68,obj+24,332,0,err)",
       "end_tag(7,text+95,'m',305,err)"});
}

// The mode is looked at once, before the fields.
TEST_F(TrackedXmlCalls, of_writing_pass_no_state_of_fields_behind_the_one_that_turned_tracking_on) {
  make("fwe_cl_wayfind_mem_st");
  fwe_cl_wayfind_mem_st_ppe_addr_state_flag_set(h, instance, as<fwe_cl_wayfind_mem_st>(), 6,
                                                &h.err);
  ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  const auto turning = spy::replace(u_int32_to_xml, [&](auto... arguments) {
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    return spy::next(u_int32_to_xml)(arguments...);
  });
  write();
  EXPECT_EQ(h.err, 0u);
  EXPECT_STREQ(
      text,
      "<m>\n<fwe_num>0</fwe_num>\n<ppe_addr>0</ppe_addr>\n<exmem_addr>0</exmem_addr>\n</m>\n");
}

TEST_F(XmlCalls, of_writing_skip_fields_once_an_error_stands_but_close_the_element) {
  make("fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(u_int32_to_xml, 5);
  spy::Log log;
  write();
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(names_of(log.calls_of({"start_tag", "u_int32_to_xml", "u_int64_to_xml", "end_tag"})),
            (std::vector<std::string>{"start_tag", "u_int32_to_xml", "end_tag"}));
}

TEST_F(XmlCalls, of_writing_close_the_element_that_could_not_be_opened) {
  make("fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(start_tag, 5);
  spy::Log log;
  write();
  EXPECT_EQ(h.err, 5u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "start_tag(7,text,'m',400,0,err)", "end_tag(7,text,'m',400,err)"});
}

// An untracked record has no state bytes: the getter of its first field fails.
TEST_F(XmlCalls, of_writing_are_still_made_for_the_field_whose_state_cannot_be_had) {
  const std::pair<const char*, const char*> firsts[] = {
      {"fwe_cl_wayfind_mem_st", "u_int32_to_xml"},
      {"fwe_cl_wayfind_hop_id_readable_format_st", "null_string_to_xml"},
      {"fwe_cl_wayfind_hop_chan_state_data", "ork_boolean_to_xml"},
      {"fwe_cl_wayfind_prefixtosite_data", "ip_address_to_xml"}};
  for (const auto& [record, first] : firsts) {
    make(record);
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    {
      spy::Log log;
      write();
      std::vector<std::string> names = names_of(log.calls());
      std::erase_if(names, [](const std::string& name) {
        return !name.ends_with("_to_xml") && !name.ends_with("_tag");
      });
      EXPECT_EQ(names, (std::vector<std::string>{"start_tag", first, "end_tag"})) << record;
    }
    EXPECT_EQ(h.err, 22u) << record;
    ork_handle_set_tracking(h, ORK_TRACKING_ABSENT);
  }
}

TEST_F(XmlCalls, of_writing_look_at_the_error_once_for_a_whole_array) {
  set_hops({1, 2, 3});
  const auto expect_four = [&](uint32_t error) {
    spy::Log log;
    write();
    EXPECT_EQ(h.err, error);
    EXPECT_EQ(log.count("u_int32_to_xml"), 4u) << "the count and every element";
    h.err = 0;
  };
  {
    const auto first_element = spy::fail(u_int32_to_xml, 5, 2);
    expect_four(5);
  }
  {
    const auto counter = spy::fail(u_int32_to_xml, 5);
    spy::Log log;
    write();
    EXPECT_EQ(std::exchange(h.err, 0), 5u);
    EXPECT_EQ(log.count("u_int32_to_xml"), 1u) << "behind the count the error stands";
  }
  // No element's state can be had.
  ork_handle_set_tracking(h, ORK_TRACKING_ON);
  expect_four(22);
  ork_handle_set_tracking(h, ORK_TRACKING_ABSENT);
}

// ---- Reading ----------------------------------------------------------------

// Neither variant nor tracking is asked for, and no state and no store is told.
TEST_F(TrackedXmlCalls, of_reading_ask_for_the_element_then_each_field_and_nothing_else) {
  make("fwe_cl_wayfind_mem_st");
  spy::Log log;
  read("<r><fwe_num>1</fwe_num></r>");
  EXPECT_EQ(h.err, 0u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "xml_get_element_nodecount(xml,'//r',?)",
                     "u_int32_from_xml(7,'//r/fwe_num',xml,obj+12,err,reason,10)",
                     "u_int64_from_xml(7,'//r/ppe_addr',xml,obj+16,err,reason,10)",
                     "u_int64_from_xml(7,'//r/exmem_addr',xml,obj+24,err,reason,10)"});
  EXPECT_TRUE(log.announcements().empty());
}

TEST_F(XmlCalls, of_reading_end_at_a_node_count_that_fails_whatever_the_count) {
  make("fwe_cl_wayfind_mem_st");
  const auto failing = spy::replace(xml_get_element_nodecount, [](auto, auto, uint32_t* count) {
    *count = 1;
    return 5u;
  });
  spy::Log log;
  read("<r><fwe_num>1</fwe_num></r>");
  EXPECT_EQ(h.err, 2u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "xml_get_element_nodecount(xml,'//r',?)",
                     "ork_store_err(2)"});
}

TEST_F(XmlCalls, of_reading_make_a_scratch_for_each_element_and_one_more) {
  make("fwe_cl_wayfind_sel_lb_path_st");
  spy::Log log;
  read("<r><path_id>1</path_id><path_id>2</path_id></r>");
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(names_of(log.calls_of(
                {"u_int32_create", "u_int32_from_xml", "u_int32_set", "u_int32_destroy"})),
            (std::vector<std::string>{"u_int32_create", "u_int32_from_xml", "u_int32_set",
                                      "u_int32_destroy", "u_int32_create", "u_int32_from_xml",
                                      "u_int32_set", "u_int32_destroy", "u_int32_create",
                                      "u_int32_from_xml", "u_int32_destroy"}));
}

TEST_F(XmlCalls, of_reading_go_on_to_the_next_field_when_a_scratch_cannot_be_made) {
  make("fwe_dp_wayfind_debug_data");
  spy::Log log;
  spy::fail_alloc(1);
  read("<r><dbg_per_complex/><is_none>1</is_none></r>");
  EXPECT_EQ(h.err, 12u);
  EXPECT_CALLS(
      log.calls_of({"alloc_fn", "ork_boolean_from_xml"}),
      {"alloc_fn(7,32)=null", "ork_boolean_from_xml(7,'//r/is_none',xml,obj+24,err,reason,10)"});
}

// A runtime in cr mode gives the type's sentinel in place of a scratch. That is no object to give
// back.
TEST_F(XmlCalls, of_reading_in_cr_mode_leave_the_sentinel_alone) {
  make("fwe_dp_wayfind_debug_data");
  const Document document = parsed("<r><dbg_per_complex/></r>");
  h->cr_active = 1;
  spy::fail_alloc(1);
  spy::Log log;
  calls->from_xml(h, instance, "//r", document.get(), object, &h->cr_error, nullptr, 0);
  h->cr_active = 0;
  EXPECT_CALLS(log.calls_of({"alloc_fn", "free_fn", "ork_store_err"}),
               {"alloc_fn(7,32)=null", "ork_store_err(12)"});
  EXPECT_EQ(std::exchange(h->cr_error, 0), 12u);
  EXPECT_EQ(h.last_error(), 12u);
}

// The error that the store left is seen behind the next element only, which is asked for with it
// standing.
TEST_F(XmlCalls, of_reading_make_one_more_scratch_behind_a_store_that_failed) {
  for (const bool refused : {false, true}) {
    make("fwe_cl_wayfind_sel_lb_path_st");
    const auto creates = refused_scratch(refused ? 2 : 0);
    std::vector<std::string> expected = {"u_int32_create", "u_int32_from_xml", "u_int32_destroy",
                                         "u_int32_create", "u_int32_from_xml", "u_int32_destroy"};
    expected.resize(refused ? 4 : 6);
    spy::fail_alloc(2); /* behind the scratch, the array's block */
    spy::Log log;
    read("<r><path_id>1</path_id><path_id>2</path_id></r>");
    EXPECT_EQ(h.err, 12u);
    EXPECT_EQ(names_of(log.calls_of({"u_int32_create", "u_int32_from_xml", "u_int32_destroy"})),
              expected);
    EXPECT_EQ(log.calls().back(),
              refused ? "ork_store_err(12)" : log.calls_of({"u_int32_destroy"}).back());
    EXPECT_EQ(h.last_error(), 12u);
  }
}

TEST_F(XmlCalls, of_reading_end_at_12_when_a_scratch_cannot_be_made_whatever_the_store_left) {
  make("fwe_cl_wayfind_sel_lb_path_st");
  const auto storing = spy::fail(u_int32_set, 5);
  const auto creates = refused_scratch(2);
  read("<r><path_id>1</path_id></r>");
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(h.last_error(), 12u);
}

// An element is copied from its scratch; a clone would go through the workspace and the wire form.
TEST_F(XmlCalls, of_reading_store_a_record_element_by_setting) {
  make("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  {
    spy::Log log;
    read("<r><path_id_str><hop_id_str>a</hop_id_str></path_id_str></r>");
    EXPECT_EQ(
        log.count("orklib_get_handle_ws") + log.count("char_marshal") + log.count("char_unmarshal"),
        0u);
    EXPECT_CALLS(log.calls_of({"alloc_fn", "free_fn"}),
                 {"alloc_fn(7,40)=new1", "alloc_fn(7,40)=new2", "free_fn(7,new1)",
                  "alloc_fn(7,40)=new3", "free_fn(7,new3)"})
        << "a scratch, the array's block, and the scratch that finds nothing";
  }
  auto* const record = as<fwe_cl_wayfind_sel_lb_path_human_readable_st>();
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_human_readable_st_num_hops_str_get_value(h, instance, record,
                                                                                &h.err),
            1u);
  auto* const element =
      fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_get(h, instance, record, 0, &h.err);
  EXPECT_STREQ(reinterpret_cast<const char*>(element) + 11, "a");
  EXPECT_EQ(h.err, 0u);
}

}  // namespace
