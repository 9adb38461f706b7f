// Records as XML and back.
#include "behaviour/encoders/xml_form.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

TEST_F(XmlForm, of_mem_st) {
  const Object object(handle, mem);
  fwe_cl_wayfind_mem_st_fwe_num_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), 12, &err);
  const std::string expected =
      "<fwe_cl_wayfind_mem_st>\n<fwe_num>12</fwe_num>\n<ppe_addr>0</ppe_addr>\n"
      "<exmem_addr>0</exmem_addr>\n</fwe_cl_wayfind_mem_st>\n";
  EXPECT_EQ(as_xml(handle, mem, object.get()), expected);
}

TEST_F(XmlForm, carries_each_state_and_that_of_the_record_itself) {
  const Handle tracking(ORK_TRACKING_ON);
  const Object object(tracking, mem);
  auto* const record = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(tracking, instance, record, 3, &err);
  fwe_cl_wayfind_mem_st_exmem_addr_state_flag_set(tracking, instance, record, 7, &err);
  char text[300] = "";
  mem.to_xml(tracking, instance, "mem", text, object.get(), sizeof text, 9, &err);
  EXPECT_STREQ(text,
               "<mem state=\"9\">\n<fwe_num>0</fwe_num>\n<ppe_addr state=\"2\">3</ppe_addr>\n"
               "<exmem_addr state=\"7\">0</exmem_addr>\n</mem>\n");
}

TEST_F(XmlForm, of_a_tracked_record_without_tracking_has_no_states_but_the_callers) {
  const Handle tracking(ORK_TRACKING_ON);
  const Object object = filled(tracking, mem, 0);
  ork_handle_set_tracking(tracking, ORK_TRACKING_OFF);
  char text[300] = "";
  mem.to_xml(tracking, instance, "mem", text, object.get(), sizeof text, 9, &err);
  ork_handle_set_tracking(tracking, ORK_TRACKING_ON);
  EXPECT_TRUE(std::string(text).starts_with("<mem state=\"9\">\n<fwe_num>"));
  EXPECT_EQ(std::string(text).find("state", 12), std::string::npos);
}

TEST_F(XmlForm, of_an_untracked_record_while_tracking_writes_only_the_field_whose_state_failed) {
  // Enums have a state as well, though they do not write it.
  for (const char* record : {"fwe_cl_wayfind_mem_st", "fwe_cl_wayfind_hop_chan_probe_st",
                             "fwe_cl_wayfind_global_show_type_data"}) {
    const Calls& calls = calls_of(record);
    const Object object(handle, calls);
    ork_handle_set_tracking(handle, ORK_TRACKING_ON);
    char text[300] = "";
    const uint32_t length =
        calls.to_xml(handle, instance, "m", text, object.get(), sizeof text, 0, &err);
    ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
    EXPECT_EQ(std::exchange(err, 0), 22u) << record;
    // The field's own call is made with the error standing, and nothing is written then.
    EXPECT_STREQ(text, "<m>\n</m>\n") << record;
    EXPECT_EQ(length, std::strlen(text)) << record;
  }
}

TEST_F(XmlForm, of_a_negative_variant_is_two_tags) {
  const Object object(handle, mem);
  object.header().variant = -1;
  EXPECT_EQ(as_xml(handle, mem, object.get()),
            "<fwe_cl_wayfind_mem_st>\n</fwe_cl_wayfind_mem_st>\n");
  object.header().variant = 0;
}

TEST_F(XmlForm, of_an_older_variant_lacks_later_fields_and_is_closed) {
  const Object object = filled(handle, tunnel, 0);
  object.header().variant = 0;
  const std::string text = as_xml(handle, tunnel, object.get());
  EXPECT_EQ(text.find("create_ts_msec"), std::string::npos);
  EXPECT_TRUE(text.ends_with("</tunnel_flow_counts>\n</fwe_cl_wayfind_auto_tunnel>\n"));
  object.header().variant = 1;
}

TEST_F(XmlForm, follows_the_records_own_variant_not_the_newest_of_its_storage) {
  const Object object = filled(handle, tunnel, 0);
  const std::string before = as_xml(handle, tunnel, object.get());
  for (const char* element : {"<create_ts_msec>", "<update_ts_msec>"}) {
    EXPECT_NE(before.find(element), std::string::npos);
  }
  object.header().variant_cap = 0;
  EXPECT_EQ(as_xml(handle, tunnel, object.get()), before);
  object.header().variant_cap = 1;
}

TEST_F(XmlForm, of_a_record_inside_without_a_variant_is_two_tags_and_is_read_all_the_same) {
  const Calls& calls = calls_of("fwe_cl_wayfind_color_data");
  const Object object(handle, calls);
  auto* const data = static_cast<fwe_cl_wayfind_color_data*>(object.get());
  auto* const color = fwe_cl_wayfind_color_data_color_get(handle, instance, data, &err);
  reinterpret_cast<ork_object*>(color)->variant = -1;
  EXPECT_TRUE(as_xml(handle, calls, object.get())
                  .starts_with("<fwe_cl_wayfind_color_data>\n<color>\n</color>\n<mem>\n<fwe_num>"));
  read(calls, "<fwe_cl_wayfind_color_data><color><tag>5</tag></color></fwe_cl_wayfind_color_data>",
       object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(reinterpret_cast<ork_object*>(color)->variant, -1);
  reinterpret_cast<ork_object*>(color)->variant = 0;
  EXPECT_EQ(fwe_cl_wayfind_color_st_tag_get_value(handle, instance, color, &err), 5u);
}

TEST_F(XmlForm, in_a_too_small_buffer_is_still_closed_where_that_fits) {
  const Object object(handle, mem);
  char text[60] = "";
  // Room for the opening tag, the first field and the closing tag, but for no other field.
  const uint32_t length = mem.to_xml(handle, instance, "m", text, object.get(), 32, 0, &err);
  EXPECT_EQ(err, 90u);
  EXPECT_STREQ(text, "<m>\n<fwe_num>0</fwe_num>\n</m>\n");
  EXPECT_EQ(length, std::strlen(text));
}

TEST_F(XmlForm, in_cr_style_is_minus_one_on_an_error) {
  const Object object(handle, mem);
  char text[300] = "";
  EXPECT_EQ(mem.toxml_cr(handle, object.get(), text, 20), 0xffffffffu);
  EXPECT_EQ(handle->cr_error, 90u);
}

// ---- Reading ----------------------------------------------------------------

TEST_F(XmlForm, leaves_fields_that_the_document_lacks) {
  const Object object = filled(handle, mem, 0);
  auto* const record = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  const uint64_t ppe = fwe_cl_wayfind_mem_st_ppe_addr_get_value(handle, instance, record, &err);
  read(mem, "<fwe_cl_wayfind_mem_st><fwe_num>77</fwe_num></fwe_cl_wayfind_mem_st>", object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(handle, instance, record, &err), 77u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(handle, instance, record, &err), ppe);
}

TEST_F(XmlForm, without_the_element_is_2_and_touches_nothing) {
  const Object object = filled(handle, mem, 0);
  const uint32_t before = mem.hash(object.get(), 0);
  read(mem, "<other><fwe_num>77</fwe_num></other>", object);
  EXPECT_EQ(err, 2u);
  EXPECT_EQ(ork_handle_last_error(handle), 2u);
  EXPECT_STREQ(reason, "");
  EXPECT_EQ(mem.hash(object.get(), 0), before);
}

TEST_F(XmlForm, with_a_path_that_is_none_is_2) {
  const Object object(handle, mem);
  read(mem, "<a/>", object, "///[");
  EXPECT_EQ(err, 2u);
  EXPECT_EQ(ork_handle_last_error(handle), 2u);
}

TEST_F(XmlForm, stores_fields_of_later_variants_and_leaves_the_variant) {
  const Object object(handle, tunnel);
  object.header().variant = 0;
  read(tunnel,
       "<fwe_cl_wayfind_auto_tunnel><create_ts_msec>now</create_ts_msec></"
       "fwe_cl_wayfind_auto_tunnel>",
       object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(object.header().variant, 0);
  EXPECT_STREQ(static_cast<const char*>(object.get()) + 24, "now");
  object.header().variant = 1;
}

TEST_F(XmlForm, ends_at_an_error_other_than_2_and_keeps_what_came_before) {
  const Object object = filled(handle, mem, 0);
  auto* const record = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  const uint64_t exmem = fwe_cl_wayfind_mem_st_exmem_addr_get_value(handle, instance, record, &err);
  read(mem,
       "<fwe_cl_wayfind_mem_st><fwe_num>1</fwe_num><ppe_addr>two</ppe_addr><exmem_addr>3</"
       "exmem_addr></fwe_cl_wayfind_mem_st>",
       object);
  EXPECT_EQ(err, 22u);
  EXPECT_STREQ(reason, "Failed xpath: //fwe_cl_wayfind_mem_st/ppe_addr");
  EXPECT_EQ(mem.schema->field_count, 3);
  err = 0;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(handle, instance, record, &err), 1u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_exmem_addr_get_value(handle, instance, record, &err), exmem);
}

TEST_F(XmlForm, an_error_in_the_third_field_leaves_the_first_two_stored) {
  const Object object(handle, mem);
  auto* const record = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  read(mem,
       "<fwe_cl_wayfind_mem_st><fwe_num>1</fwe_num><ppe_addr>2</ppe_addr><exmem_addr>x</"
       "exmem_addr></fwe_cl_wayfind_mem_st>",
       object);
  EXPECT_EQ(err, 22u);
  err = 0;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(handle, instance, record, &err), 1u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(handle, instance, record, &err), 2u);
}

TEST_F(XmlForm, a_missing_record_inside_is_a_missing_field) {
  const Calls& calls = calls_of("fwe_cl_wayfind_select_policy");
  const Object object(handle, calls);
  read(calls,
       "<fwe_cl_wayfind_select_policy><blackhole_packets>5</blackhole_packets></"
       "fwe_cl_wayfind_select_policy>",
       object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(fwe_cl_wayfind_select_policy_blackhole_packets_get_value(
                handle, instance, static_cast<fwe_cl_wayfind_select_policy*>(object.get()), &err),
            5u);
}

TEST_F(XmlForm, states_do_not_come_back) {
  const Handle tracking(ORK_TRACKING_ON);
  const Object object(tracking, mem);
  const Document document =
      parsed("<fwe_cl_wayfind_mem_st><fwe_num state=\"5\">1</fwe_num></fwe_cl_wayfind_mem_st>");
  mem.from_xml(tracking, instance, "//fwe_cl_wayfind_mem_st", document.get(), object.get(), &err,
               nullptr, 0);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_state_flag_get(
                tracking, instance, static_cast<fwe_cl_wayfind_mem_st*>(object.get()), &err),
            0);
  EXPECT_EQ(err, 0u);
}

TEST_F(XmlForm, a_path_that_does_not_fit_is_a_missing_node) {
  // "/fwe_num" and "/exmem_addr" behind a path of 246 characters: the first fits its 256 bytes,
  // the last does not.
  const std::string name(244, 'n');
  const Object object(handle, mem);
  auto* const record = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  read(mem,
       "<" + name + "><fwe_num>1</fwe_num><ppe_addr>2</ppe_addr><exmem_addr>3</exmem_addr></" +
           name + ">",
       object, ("//" + name).c_str());
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(handle, instance, record, &err), 1u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(handle, instance, record, &err), 2u)
      << "255 characters";
  EXPECT_EQ(fwe_cl_wayfind_mem_st_exmem_addr_get_value(handle, instance, record, &err), 0u)
      << "257 characters";
}

// The place for the reason goes to the enum or the flag set as it was given.
TEST_F(XmlForm, names_the_small_field_whose_probe_fails) {
  const struct {
    const char *record, *field;
  } rows[] = {{"fwe_cl_wayfind_chan_nb_st", "state"}, {"fwe_cl_wayfind_hop_chan_st", "flags_show"}};
  const auto failing = spy::answer(xml_get_element_value, 5u);
  const Document document = parsed("<r><chan_id>1</chan_id></r>");
  for (const auto& row : rows) {
    const Calls& calls = calls_of(row.record);
    const Object object(handle, calls);
    const std::string expected = std::string("Failed xpath: //r/") + row.field;
    for (const size_t room : {expected.size() + 1, expected.size(), size_t{0}}) {
      err = 0;
      std::strcpy(reason, "untouched");
      calls.from_xml(handle, instance, "//r", document.get(), object.get(), &err,
                     room != 0 ? reason : nullptr, static_cast<uint32_t>(room));
      EXPECT_EQ(err, 5u) << row.record;
      EXPECT_EQ(reason, room != 0 ? expected.substr(0, room - 1) : "untouched");
    }
  }
}

// ---- What XML cannot carry --------------------------------------------------

class XmlText : public XmlForm {
 protected:
  // Writes a text into a field of 32 bytes, renders it, parses it and reads it back.
  std::string there_and_back(const std::string& chars) {
    const Object object(handle, tunnel);
    fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(
        handle, instance, static_cast<fwe_cl_wayfind_auto_tunnel*>(object.get()), chars.data(),
        static_cast<uint32_t>(chars.size()), &err);
    const Object copy(handle, tunnel);
    read(tunnel, as_xml(handle, tunnel, object.get()), copy);
    EXPECT_EQ(err, 0u);
    const auto* const bytes = static_cast<const char*>(copy.get()) + 24;
    return {bytes, strnlen(bytes, 32)};
  }
};

TEST_F(XmlText, every_byte_comes_back) {
  for (int byte = 1; byte < 256; ++byte) {
    for (const std::string& around : {std::string(), std::string("a"), std::string("\xc3")}) {
      const std::string chars = around + static_cast<char>(byte) + around;
      EXPECT_EQ(there_and_back(chars), chars) << byte;
    }
  }
}

TEST_F(XmlText, texts_of_many_kinds_come_back) {
  for (const char* chars : {"",
                            " ",
                            "  x  ",
                            "\n",
                            "a\r\nb",
                            "\t",
                            "]]>",
                            "<a>&amp;</a>",
                            "\\",
                            "\\x41",
                            "\\\\",
                            "\"'",
                            "\xc3\xa9\xe2\x82\xac",
                            "\xf0\x9f\x98\x80",
                            "\xc0\x80",
                            "\xed\xa0\x80",
                            "\xef\xbf\xbf",
                            "\xc2\x85",
                            "\x7f",
                            "0123456789abcdef0123456789abcdef"}) {
    EXPECT_EQ(there_and_back(chars), chars);
  }
}

TEST_F(XmlText, bytes_behind_the_terminator_do_not_travel) {
  const Object object(handle, tunnel);
  auto* const record = static_cast<fwe_cl_wayfind_auto_tunnel*>(object.get());
  fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(handle, instance, record, "abcdef", 6, &err);
  fwe_cl_wayfind_auto_tunnel_create_ts_msec_set(handle, instance, record, "ab", 2, &err);
  const Object copy(handle, tunnel);
  read(tunnel, as_xml(handle, tunnel, object.get()), copy);
  EXPECT_EQ(std::memcmp(static_cast<const char*>(copy.get()) + 24, "ab\0\0\0\0\0", 8), 0);
  EXPECT_NE(tunnel.compare(object.get(), copy.get()), 0);
}

TEST_F(XmlText, too_long_for_its_field_is_28_and_a_bad_escape_22) {
  const Object object(handle, tunnel);
  read(tunnel,
       "<fwe_cl_wayfind_auto_tunnel><create_ts_msec>0123456789abcdef0123456789abcdefX</"
       "create_ts_msec></fwe_cl_wayfind_auto_tunnel>",
       object);
  EXPECT_EQ(err, 28u);
  err = 0;
  read(tunnel,
       "<fwe_cl_wayfind_auto_tunnel><create_ts_msec>\\q</create_ts_msec></"
       "fwe_cl_wayfind_auto_tunnel>",
       object);
  EXPECT_EQ(err, 22u);
}

TEST_F(XmlText, an_enum_out_of_range_is_read_as_an_empty_element_and_keeps_the_value) {
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_nb_st");
  const Object object(handle, calls);
  Bytes image = marshalled(handle, calls, object.get());
  image[14] = 77;
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  0, &err);
  const std::string text = as_xml(handle, calls, object.get());
  EXPECT_NE(text.find("<state>\n<fwe_cl_wayfind_chan_nb_state_e value out of range/></state>\n"),
            std::string::npos)
      << text;
  const Object copy(handle, calls);
  fwe_cl_wayfind_chan_nb_st_state_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_chan_nb_st*>(copy.get()), 1, &err);
  read(calls, text, copy);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_state_get_value(
                handle, instance, static_cast<fwe_cl_wayfind_chan_nb_st*>(copy.get()), &err),
            1u);
}

}  // namespace
