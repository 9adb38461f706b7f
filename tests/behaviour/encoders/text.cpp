// The text form of records.
#include "behaviour/encoders/values.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class TextForm : public testing::Test {
 protected:
  std::string print(const Calls& calls, const void* object, const char* name, uint32_t indent) {
    std::string text(ample, '\0');
    text.resize(calls.print(handle, instance, text.data(), indent, name, object,
                            static_cast<uint32_t>(ample), &err));
    EXPECT_EQ(text.find('\0'), std::string::npos);
    return text;
  }

  const Handle handle{ORK_TRACKING_OFF};
  uint32_t err = 0;
};

TEST_F(TextForm, of_mem_st) {
  const Object object(handle, calls_of("fwe_cl_wayfind_mem_st"));
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), 5, &err);
  char text[200] = "";
  const char* const expected =
      "fwe_cl_wayfind_mem_st@fwe_cl_wayfind_mem_st: {\n"
      "  fwe_num: 0\n"
      "  ppe_addr: 5\n"
      "  exmem_addr: 0\n"
      "}\n";
  EXPECT_EQ(fwe_cl_wayfind_mem_st_print_cr(
                handle, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), text, sizeof text),
            std::strlen(expected));
  EXPECT_STREQ(text, expected);
}

TEST_F(TextForm, of_color_data_indents_each_level_by_two) {
  const Calls& calls = calls_of("fwe_cl_wayfind_color_data");
  const Object object(handle, calls);
  EXPECT_EQ(print(calls, object.get(), calls.name(), 0),
            "fwe_cl_wayfind_color_data@fwe_cl_wayfind_color_data: {\n"
            "  color@fwe_cl_wayfind_color_st: {\n"
            "    fwe_if_h: 0\n"
            "    if_name: \n"
            "    color: \n"
            "    tag: 0\n"
            "  }\n"
            "  mem@fwe_cl_wayfind_mem_st: {\n"
            "    fwe_num: 0\n"
            "    ppe_addr: 0\n"
            "    exmem_addr: 0\n"
            "  }\n"
            "}\n");
}

TEST_F(TextForm, of_an_array_names_each_element_by_its_index) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object object(handle, calls);
  const uint32_t hops[] = {4, 9};
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_mem(
      handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(object.get()), hops, 2, &err);
  EXPECT_EQ(print(calls, object.get(), "path", 2),
            "  path@fwe_cl_wayfind_sel_lb_path_st: {\n"
            "    num_hops: 2\n"
            "    path_id[0]: 4\n"
            "    path_id[1]: 9\n"
            "  }\n");
}

TEST_F(TextForm, of_an_empty_array_is_the_count_alone) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object object(handle, calls);
  EXPECT_EQ(print(calls, object.get(), "path", 0),
            "path@fwe_cl_wayfind_sel_lb_path_st: {\n  num_hops: 0\n}\n");
}

TEST_F(TextForm, of_element_records_names_them_by_field_and_index) {
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data_per_complex");
  const Object object = filled(handle, calls, 2);
  const std::string text = print(calls, object.get(), "x", 0);
  EXPECT_NE(text.find("  dbg_setting[0]@fwe_dp_wayfind_debug_setting: {\n    "), std::string::npos);
  EXPECT_NE(text.find("  }\n  dbg_setting[1]@fwe_dp_wayfind_debug_setting: {\n    "),
            std::string::npos);
}

TEST_F(TextForm, of_a_negative_variant_is_the_header_alone) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  object.header().variant = -1;
  EXPECT_EQ(print(calls, object.get(), "mem", 3), "   mem@fwe_cl_wayfind_mem_st: {\n");
  object.header().variant = 0;
}

TEST_F(TextForm, of_an_older_variant_has_no_closing_line) {
  const Calls& calls = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Object object(handle, calls);
  object.header().variant = 0;
  const std::string fields =
      "t@fwe_cl_wayfind_auto_tunnel: {\n  table_id: 0\n  tunnel_fwe_if_handle: 0\n  "
      "tunnel_flow_counts: 0\n";
  EXPECT_EQ(print(calls, object.get(), "t", 0), fields);
  object.header().variant = 1;
  EXPECT_EQ(print(calls, object.get(), "t", 0),
            fields + "  create_ts_msec: \n  update_ts_msec: \n}\n");
  object.header().variant = 7;
  EXPECT_EQ(print(calls, object.get(), "t", 0),
            fields + "  create_ts_msec: \n  update_ts_msec: \n}\n");
  object.header().variant = 1;
}

TEST_F(TextForm, of_chan_st_closes_from_variant_3_on) {
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_st");
  const Object object(handle, calls);
  for (int8_t variant = 0; variant < 4; ++variant) {
    object.header().variant = variant;
    EXPECT_EQ(print(calls, object.get(), "c", 0).ends_with("\n}\n"), variant == 3)
        << "variant " << +variant;
  }
}

TEST_F(TextForm, of_an_older_record_inside_leaves_it_open_and_goes_on) {
  const Calls& calls = calls_of("fwe_cl_wayfind_hop_chan_data");
  const Object object(handle, calls);
  auto* const data = static_cast<fwe_cl_wayfind_hop_chan_data*>(object.get());
  reinterpret_cast<ork_object*>(
      fwe_cl_wayfind_hop_chan_data_hop_chan_get(handle, instance, data, &err))
      ->variant = 0;
  const std::string text = print(calls, object.get(), "x", 0);
  EXPECT_NE(text.find("    sa_id: 0\n  stats@fwe_cl_wayfind_hop_chan_stats_st: {\n"),
            std::string::npos)
      << text;
  EXPECT_TRUE(text.ends_with("  }\n}\n"));
}

TEST_F(TextForm, of_a_record_inside_without_a_variant_is_its_header) {
  const Calls& calls = calls_of("fwe_cl_wayfind_color_data");
  const Object object(handle, calls);
  auto* const data = static_cast<fwe_cl_wayfind_color_data*>(object.get());
  ork_object& inner = *reinterpret_cast<ork_object*>(
      fwe_cl_wayfind_color_data_color_get(handle, instance, data, &err));
  inner.variant = -1;
  EXPECT_TRUE(print(calls, object.get(), "c", 0)
                  .starts_with("c@fwe_cl_wayfind_color_data: {\n"
                               "  color@fwe_cl_wayfind_color_st: {\n"
                               "  mem@fwe_cl_wayfind_mem_st: {\n"
                               "    fwe_num: 0\n"));
  inner.variant = 0;
}

TEST_F(TextForm, follows_the_records_own_variant_not_the_domain_or_the_newest_of_its_storage) {
  const Calls& calls = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Object object = filled(handle, calls, 0);
  const std::string before = print(calls, object.get(), "t", 0);
  EXPECT_NE(before.find("\n  update_ts_msec: "), std::string::npos);
  EXPECT_TRUE(before.ends_with("\n}\n"));
  handle.set_peer(release_list(0).get());
  EXPECT_EQ(print(calls, object.get(), "t", 0), before);
  object.header().variant_cap = 0;
  EXPECT_EQ(print(calls, object.get(), "t", 0), before);
  object.header().variant_cap = 1;
}

TEST_F(TextForm, of_enum_and_flag_fields_is_a_line_each) {
  const Calls& probe = calls_of("fwe_cl_wayfind_hop_chan_probe_st");
  const Object object(handle, probe);
  EXPECT_TRUE(print(probe, object.get(), "p", 0)
                  .starts_with("p@fwe_cl_wayfind_hop_chan_probe_st: {\n"
                               "  "
                               "rx_ctrl_state@fwe_cl_wayfind_hop_chan_state_e:WAYFIND_UI_HOP_CHAN_"
                               "STATE_UNREACHABLE\n"
                               "  rx_state@"));
  const Calls& channel = calls_of("fwe_cl_wayfind_hop_chan_st");
  const Object flagged(handle, channel);
  EXPECT_TRUE(print(channel, flagged.get(), "h", 0)
                  .ends_with("\n  flags_show@fwe_cl_wayfind_hop_chan_flags:\n}\n"));
}

TEST_F(TextForm, a_value_out_of_range_has_no_newline_and_the_next_field_goes_on_behind_it) {
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_nb_st");
  const Object object(handle, calls);
  Bytes image = marshalled(handle, calls, object.get());
  image[14] = 3;
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  0, &err);
  EXPECT_EQ(print(calls, object.get(), "c", 0),
            "c@fwe_cl_wayfind_chan_nb_st: {\n"
            "  chan_id: 0\n"
            "  state@fwe_cl_wayfind_chan_nb_state_e:Enum value out of range"
            "  tx_state@fwe_cl_wayfind_chan_tx_state_e:WAYFIND_UI_CHAN_TX_STATE_REACHABLE\n"
            "  vrf_id: 0\n"
            "}\n");
}

TEST_F(TextForm, in_a_too_small_buffer_stops_growing_and_returns) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  char text[20] = "";
  const uint32_t length = calls.print(handle, instance, text, 0, "mem", object.get(), 10, &err);
  EXPECT_EQ(err, 90u);
  EXPECT_LE(length, 9u);
  EXPECT_STREQ(text, "mem@fwe_c");
  EXPECT_EQ(fwe_cl_wayfind_mem_st_print_cr(
                handle, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), text, 0),
            0xffffffffu);
}

TEST_F(TextForm, in_cr_style_is_minus_one_on_any_error_and_writes_nothing_when_one_stands) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  char text[300] = "untouched";
  handle->cr_error = 5;
  EXPECT_EQ(calls.print_cr(handle, object.get(), text, sizeof text), 0xffffffffu);
  EXPECT_STREQ(text, "untouched");
  handle->cr_error = 0;
  text[0] = '\0';
  EXPECT_EQ(calls.print_cr(handle, object.get(), text, 30), 0xffffffffu);
  EXPECT_EQ(handle->cr_error, 90u);
}

TEST_F(TextForm, indents_the_closing_line_at_the_end_of_a_text_that_begins_with_a_nul) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  EXPECT_TRUE(print(calls, object.get(), "m", 4).ends_with("      exmem_addr: 0\n    }\n"));
}

// ---- A fixed text on its own ------------------------------------------------

TEST_F(TextForm, a_short_text_is_read_with_zeros_up_to_the_width_of_its_field) {
  const Object object(handle, calls_of("fwe_cl_wayfind_hop_chan_data"));
  auto* const data = static_cast<fwe_cl_wayfind_hop_chan_data*>(object.get());
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(handle, instance, data, "1234567", 7, &err);
  fwe_cl_wayfind_hop_chan_data_dscp_str_set(handle, instance, data, "abc", 3, &err);
  // What lies behind the end in the field stays there, and so does what lies behind nine bytes of
  // the target.
  const auto expect_read = [&](uint32_t size, const std::string& expected, uint32_t error) {
    std::string target(12, '#');
    fwe_cl_wayfind_hop_chan_data_dscp_str_get(handle, instance, data, target.data(), size, &err);
    EXPECT_EQ(target, expected) << size;
    EXPECT_EQ(std::exchange(err, 0), error) << size;
  };
  expect_read(9, std::string("abc\0\0\0\0\0\0###", 12), 0);
  expect_read(12, std::string("abc\0\0\0\0\0\0###", 12), 0);
  expect_read(6, std::string("abc\0\0\0######", 12), 28);
}

// ---- Call for call ----------------------------------------------------------

class TextCalls : public testing::Test {
 protected:
  ~TextCalls() override { calls->destroy(h, instance, object); }

  // The record that a test is about.
  void make(const char* record) {
    calls = &calls_of(record);
    object = calls->create(h, instance);
    spy::name(object, 40, "obj");
    spy::name(text, sizeof text, "text");
  }
  uint32_t print(const char* name, uint32_t indent) {
    return calls->print(h, instance, text, indent, name, object, sizeof text, &h.err);
  }

  SpiedHandle h;
  const Calls* calls = nullptr;
  void* object = nullptr;
  char text[500] = "";
};

TEST_F(TextCalls, give_ork_print_space_the_start_of_the_text_both_times) {
  make("fwe_cl_wayfind_mem_st");
  spy::Log log;
  print("mem", 2);
  // "  mem@fwe_cl_wayfind_mem_st: {" has 31 characters with its newline, the fields 15, 16 and
  // 18.
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "ork_print_space(7,text,2,500,err)",
                     "ork_snprintf(7,text+2,498,err,'mem@fwe_cl_wayfind_mem_st: {\n')",
                     "u_int32_print(7,text+31,4,'fwe_num',obj+12,469,err)",
                     "u_int64_print(7,text+46,4,'ppe_addr',obj+16,454,err)",
                     "u_int64_print(7,text+62,4,'exmem_addr',obj+24,438,err)",
                     "ork_print_space(7,text,2,420,err)", "ork_snprintf(7,text+82,418,err,'}\n')"});
  EXPECT_EQ(h.err, 0u);
}

TEST_F(TextCalls, give_ork_print_space_the_start_of_the_record_inside) {
  make("fwe_cl_wayfind_color_data");
  spy::Log log;
  print("c", 0);
  // The header has 31 characters, all of color 35 + 16 + 14 + 12 + 11 + 4, all of mem 31 + 15 +
  // 16 + 18 + 4.
  EXPECT_CALLS(log.calls_of({"ork_print_space"}),
               {"ork_print_space(7,text,0,500,err)", "ork_print_space(7,text+31,2,469,err)",
                "ork_print_space(7,text+31,2,381,err)", "ork_print_space(7,text+123,2,377,err)",
                "ork_print_space(7,text+123,2,297,err)", "ork_print_space(7,text,0,293,err)"});
  EXPECT_EQ(h.err, 0u);
}

TEST_F(TextCalls, are_all_made_after_an_error_too) {
  make("fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(u_int32_print, 5);
  spy::Log log;
  EXPECT_EQ(print("mem", 0), 31u);
  EXPECT_EQ(h.err, 5u);
  EXPECT_STREQ(text, "mem@fwe_cl_wayfind_mem_st: {\n}\n");
  EXPECT_CALLS(
      log.calls_of({"u_int32_print", "u_int64_print", "ork_print_space"}),
      {"ork_print_space(7,text,0,500,err)", "u_int32_print(7,text+29,2,'fwe_num',obj+12,471,err)",
       "u_int64_print(7,text+29,2,'ppe_addr',obj+16,471,err)",
       "u_int64_print(7,text+29,2,'exmem_addr',obj+24,471,err)",
       "ork_print_space(7,text,0,471,err)"});
}

TEST_F(TextCalls, are_all_made_after_an_error_in_the_first_too) {
  make("fwe_cl_wayfind_mem_st");
  const auto failing = spy::fail(ork_print_space, 5);
  spy::Log log;
  EXPECT_EQ(print("mem", 3), 29u + 3 + 2);
  EXPECT_EQ(h.err, 5u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
                     "ork_print_space(7,text,3,500,err)",
                     "ork_snprintf(7,text,500,err,'mem@fwe_cl_wayfind_mem_st: {\n')",
                     "u_int32_print(7,text+29,5,'fwe_num',obj+12,471,err)",
                     "u_int64_print(7,text+29,5,'ppe_addr',obj+16,471,err)",
                     "u_int64_print(7,text+29,5,'exmem_addr',obj+24,471,err)",
                     "ork_print_space(7,text,3,471,err)", "ork_snprintf(7,text+32,468,err,'}\n')"});
}

TEST_F(TextCalls, of_a_record_behind_an_error_are_not_made) {
  make("fwe_cl_wayfind_color_data");
  const auto failing = spy::fail(u_int32_print, 5);
  spy::Log log;
  print("c", 0);
  // color has the field that fails; mem comes behind it.
  EXPECT_EQ(log.count("null_string_print") + log.count("u_int16_print"), 3u);
  EXPECT_EQ(log.count("u_int64_print"), 0u);
  EXPECT_EQ(log.count("ork_print_space"), 4u);
  EXPECT_EQ(log.count("ork_get_instance_variant"), 2u);
}

}  // namespace
