// What marshal, unmarshal and length of records call, in order, and what the forms of the small
// types do.
#include "behaviour/encoders/arrays.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

// A mem_st under a spy: fields at 12, 16 and 24, its states behind the body of 40.
class MemStCalls : public testing::Test {
 protected:
  explicit MemStCalls(const kit::Mode& mode = kit::plain)
      : h(mode), object(mem.create(h, instance)) {
    spy::name(object, 40, "obj");
    spy::name(buffer, sizeof buffer, "buf");
  }
  ~MemStCalls() override { mem.destroy(h, instance, object); }

  const Calls& mem = calls_of("fwe_cl_wayfind_mem_st");
  SpiedHandle h;
  void* object;
  uint8_t buffer[100] = {};
};

struct TrackedMemStCalls : MemStCalls {
  TrackedMemStCalls() : MemStCalls(kit::tracked) {}
};

TEST_F(MemStCalls, of_marshal) {
  spy::Log log;
  mem.marshal(h, instance, buffer, object, 90, &h.err);
  EXPECT_CALLS(
      log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,0)",
            "ork_get_manifested_type_info(obj)",
            "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_mem_st),err)",
            "_ork_instance_variant_marshal(7,buf,?,90,err)", "ork_get_instance_obj_flag(obj,1,0)",
            "_ork_instance_obj_flag_marshal(7,buf+1,?,89,err)",
            "_ork_variant_jump_marshal(7,buf+2,?,88,err)", "u_int32_marshal(7,buf+6,obj+12,84,err)",
            "u_int64_marshal(7,buf+10,obj+16,80,err)", "u_int64_marshal(7,buf+18,obj+24,72,err)",
            "_ork_variant_jump_marshal(7,buf+2,?,4,err)"});
}

TEST_F(TrackedMemStCalls, of_marshal_leave_room_for_the_states) {
  spy::Log log;
  mem.marshal(h, instance, buffer, object, 90, &h.err);
  EXPECT_CALLS(
      log.calls_of({"u_int32_marshal", "u_int64_marshal", "_ork_variant_jump_marshal",
                    "orklib_get_sttr_offset"}),
      {"_ork_variant_jump_marshal(7,buf+2,?,88,err)", "u_int32_marshal(7,buf+6,obj+12,84,err)",
       "u_int64_marshal(7,buf+11,obj+16,79,err)", "u_int64_marshal(7,buf+20,obj+24,70,err)",
       "_ork_variant_jump_marshal(7,buf+2,?,4,err)"});
}

TEST_F(MemStCalls, of_marshal_for_clone_ask_the_domain_as_well_and_do_not_heed_it) {
  const auto older = spy::answer(ork_domain_lookup_variant, int8_t{-1});
  spy::Log log;
  EXPECT_EQ(mem.marshal_for_clone(h, instance, buffer, object, 90, &h.err), 26u);
  EXPECT_EQ(log.count("ork_domain_lookup_variant"), 1u);
  EXPECT_EQ(log.count("ork_store_epoch_err"), 0u);
}

TEST_F(MemStCalls, of_marshal_report_a_lowered_variant) {
  const auto older = spy::answer(ork_domain_lookup_variant, int8_t{-1});
  spy::Log log;
  EXPECT_EQ(mem.marshal(h, instance, buffer, object, 90, &h.err), 6u);
  EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}), {"ork_store_epoch_err(43,err)"});
}

TEST_F(MemStCalls, of_marshal_report_a_variant_that_the_library_does_not_know_either) {
  const auto known = spy::answer(ork_domain_lookup_variant, int8_t{0});
  static_cast<ork_object*>(object)->variant = 5;
  spy::Log log;
  EXPECT_EQ(mem.marshal(h, instance, buffer, object, 90, &h.err), 26u);
  EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}), {"ork_store_epoch_err(43,err)"});
  EXPECT_EQ(Bytes(buffer, buffer + 26),
            hex("00 00 00000018 00000000 0000000000000000 0000000000000000"));
  static_cast<ork_object*>(object)->variant = 0;
}

struct MemStWithRaDataCalls : MemStCalls {
  MemStWithRaDataCalls() { static_cast<ork_object*>(object)->obj_flags |= OBJ_RA_DATA; }
  ~MemStWithRaDataCalls() override {
    static_cast<ork_object*>(object)->obj_flags &= static_cast<uint8_t>(~OBJ_RA_DATA);
  }
};

TEST_F(MemStWithRaDataCalls, of_marshal_write_it_from_a_zero_word_and_byte) {
  spy::Log log;
  EXPECT_EQ(mem.marshal(h, instance, buffer, object, 90, &h.err), 35u);
  EXPECT_CALLS(log.calls_of({"_ork_instance_ra_data_marshal", "_ork_variant_jump_marshal"}),
               {"_ork_instance_ra_data_marshal(7,buf+2,?,?,88,err)",
                "_ork_variant_jump_marshal(7,buf+11,?,79,err)",
                "_ork_variant_jump_marshal(7,buf+11,?,4,err)"});
}

TEST_F(MemStWithRaDataCalls, go_as_far_as_the_runtime_says_it_reaches) {
  {
    const auto five = spy::answer(_ork_instance_ra_data_marshal, 5u);
    EXPECT_EQ(mem.marshal(h, instance, buffer, object, 90, &h.err), 31u);
  }
  EXPECT_EQ(Bytes(buffer, buffer + 31),
            hex("00 20 0000000000 00000018 00000000 0000000000000000 0000000000000000"));
  const Bytes image = hex("00 20 0011223344 00000018 01020304 1112131415161718 2122232425262728");
  {
    const auto five = spy::answer(_ork_instance_ra_data_unmarshal, 5u);
    EXPECT_EQ(mem.unmarshal(h, instance, image.data(), object, 31, 0, &h.err), 31u);
  }
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(
                h, instance, static_cast<fwe_cl_wayfind_mem_st*>(object), &h.err),
            0x01020304u);
}

TEST_F(MemStWithRaDataCalls, stop_behind_the_flags_where_it_does_not_fit) {
  const Bytes image = hex("00 20 001122334455667788");
  for (int32_t length = 2; length <= 10; ++length) {
    std::memset(buffer, 0xa5, sizeof buffer);
    h.err = 0;
    EXPECT_EQ(mem.marshal(h, instance, buffer, object, length, &h.err), 2u) << "length " << length;
    EXPECT_EQ(h.err, 90u);
    EXPECT_EQ(Bytes(buffer, buffer + 12), hex("00 20 a5a5a5a5a5a5a5a5a5a5"));
    h.err = 0;
    EXPECT_EQ(mem.unmarshal(h, instance, image.data(), object, length, 0, &h.err), 2u)
        << "length " << length;
    EXPECT_EQ(h.err, 90u);
  }
}

TEST_F(MemStCalls, of_marshal_are_all_made_after_an_error_too) {
  const auto failing = spy::fail(u_int32_marshal, 5);
  spy::Log log;
  mem.marshal(h, instance, buffer, object, 90, &h.err);
  EXPECT_EQ(h.err, 5u);
  EXPECT_CALLS(
      log.calls_of({"u_int32_marshal", "u_int64_marshal", "_ork_variant_jump_marshal"}),
      {"_ork_variant_jump_marshal(7,buf+2,?,88,err)", "u_int32_marshal(7,buf+6,obj+12,84,err)",
       "u_int64_marshal(7,buf+6,obj+16,84,err)", "u_int64_marshal(7,buf+6,obj+24,84,err)",
       "_ork_variant_jump_marshal(7,buf+2,?,4,err)"});
}

TEST_F(MemStCalls, of_unmarshal_hand_reuse_storage_on) {
  mem.marshal(h, instance, buffer, object, 90, &h.err);
  spy::Log log;
  mem.unmarshal(h, instance, buffer, object, 90, 3, &h.err);
  EXPECT_CALLS(
      log.calls_of({"ork_clear_last_error", "_ork_instance_variant_unmarshal",
                    "_ork_instance_obj_flag_unmarshal", "_ork_variant_jump_unmarshal",
                    "u_int32_unmarshal", "u_int64_unmarshal"}),
      {"ork_clear_last_error()", "_ork_instance_variant_unmarshal(7,buf,?,90,err)",
       "_ork_instance_obj_flag_unmarshal(7,buf+1,?,89,err)",
       "_ork_variant_jump_unmarshal(7,buf+2,?,88,err)",
       "u_int32_unmarshal(7,buf+6,obj+12,84,3,err)", "u_int64_unmarshal(7,buf+10,obj+16,80,3,err)",
       "u_int64_unmarshal(7,buf+18,obj+24,72,3,err)"});
}

TEST_F(MemStCalls, of_length_ask_for_each_width) {
  spy::Log log;
  mem.len(h, instance, object);
  EXPECT_CALLS(log.calls_of({"u_int32_len", "u_int64_len"}),
               {"u_int32_len(7,obj+12)", "u_int64_len(7,obj+16)", "u_int64_len(7,obj+24)"});
}

TEST_F(MemStCalls, of_length_in_cr_style_are_for_the_handles_instance) {
  const SpiedHandle other({.cr_instance = 9});
  spy::Log log;
  EXPECT_EQ(mem.len_cr(other, object), 26u);
  EXPECT_CALLS(log.calls_of({"u_int32_len", "u_int64_len"}),
               {"u_int32_len(9,obj+12)", "u_int64_len(9,obj+16)", "u_int64_len(9,obj+24)"});
}

TEST_F(MemStCalls, of_length_of_null_ask_with_null) {
  spy::Log log;
  mem.len(h, instance, nullptr);
  EXPECT_CALLS(log.calls_of({"u_int32_len", "u_int64_len"}),
               {"u_int32_len(7,null)", "u_int64_len(7,null)", "u_int64_len(7,null)"});
}

TEST(RecordCalls, forget_the_last_error_in_each_record_inside) {
  SpiedHandle h;
  const Calls& policy = calls_of("fwe_cl_wayfind_select_policy");
  const Object object(h, policy);
  uint8_t buffer[100] = {};
  spy::name(buffer, sizeof buffer, "buf");
  spy::Log log;
  policy.marshal(h, instance, buffer, object.get(), 90, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "_ork_instance_variant_marshal"}),
               {"ork_clear_last_error()", "_ork_instance_variant_marshal(7,buf,?,90,err)",
                "ork_clear_last_error()", "_ork_instance_variant_marshal(7,buf+10,?,80,err)"});
  log.clear();
  policy.unmarshal(h, instance, buffer, object.get(), 90, 0, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "_ork_instance_variant_unmarshal"}),
               {"ork_clear_last_error()", "_ork_instance_variant_unmarshal(7,buf,?,90,err)",
                "ork_clear_last_error()", "_ork_instance_variant_unmarshal(7,buf+10,?,80,err)"});
}

// Each record with its length as it is and with every value of the primitive 100 bytes wide.
template <class Value>
void expect_widths(uint32_t (*len)(ork_handle*, uint32_t, const Value*),
                   std::initializer_list<std::tuple<const char*, uint32_t, uint32_t>> records) {
  const SpiedHandle h;
  for (const auto& [name, usual, wide] : records) {
    const Object object(h, calls_of(name));
    EXPECT_EQ(calls_of(name).len(h, instance, object.get()), usual) << name;
    const auto hundred = spy::answer(len, 100u);
    EXPECT_EQ(calls_of(name).len(h, instance, object.get()), wide) << name;
  }
}

TEST(RecordCalls, of_length_take_the_width_that_the_primitive_reports_at_that_time) {
  expect_widths(ork_boolean_len, {{"fwe_cl_wayfind_debug_data", 27, 126},
                                  {"fwe_cl_wayfind_channel_state_data", 16, 610}});
  expect_widths(ip_address_len, {{"fwe_cl_wayfind_dcid_siteip_map", 29, 111},
                                 {"fwe_cl_wayfind_multi_nh_map", 48, 212}});
  expect_widths(link_type_len, {{"fwe_cl_wayfind_enforce_hop", 91, 186}});
}

TEST(ArrayCalls, of_unmarshal_announce_the_state_entry_without_an_owner) {
  SpiedHandle h(kit::tracked);
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  void* const object = path.create(h, instance);
  const Bytes image = hex("00 08 0000000f 00000001 0a0b0c0d 02 02");
  {
    spy::Log log;
    path.unmarshal(h, instance, image.data(), object, static_cast<int32_t>(image.size()), 0,
                   &h.err);
    EXPECT_EQ(h.err, 0u);
    const uint8_t* const entry = static_cast<const uint8_t*>(object) + 32;
    bool pointer_told = false;
    for (const spy::Announcement& announcement : log.announcements()) {
      if (announcement.address >= entry && announcement.address < entry + 16) {
        EXPECT_EQ(announcement.owner, nullptr);
        pointer_told =
            pointer_told || (announcement.address == entry + 8 && announcement.length == 8);
      }
    }
    EXPECT_TRUE(pointer_told);
  }
  path.destroy(h, instance, object);
}

TEST(ArrayCalls, of_length_of_fixed_elements_ask_the_first_one) {
  SpiedHandle h;
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  void* const object = path.create(h, instance);
  fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_set(
      h, instance, static_cast<fwe_cl_wayfind_sel_lb_path_human_readable_st*>(object), 4, nullptr,
      &h.err);
  {
    spy::Log log;
    EXPECT_EQ(path.len(h, instance, object), 10u + 5 * 20);
    EXPECT_EQ(log.count("char_len"), 1u);
  }
  path.destroy(h, instance, object);
}

TEST(ArrayCalls, of_length_of_numbers_ask_the_first_one_once) {
  for (const auto& [record, width] : {std::pair{"fwe_cl_wayfind_sel_lb_path_st", "u_int32_len"},
                                      {"fwe_cl_wayfind_sel_lb_dst_site_st", "u_int16_len"},
                                      {"fwe_cl_wayfind_sel_lb_src_intf_st", "u_int8_len"}}) {
    const SpiedHandle h;
    const Object object = filled(h, calls_of(record), 3);
    spy::name(object.get(), 32, "obj");
    spy::name(array_of(object).block, 3, "block");
    const spy::Log log;
    calls_of(record).len(h, instance, object.get());
    EXPECT_CALLS(
        log.calls_of({"u_int32_len", "u_int16_len", "u_int8_len"}),
        std::vector<std::string>{"u_int32_len(7,obj+12)", std::string(width) + "(7,block)"});
  }
}

TEST(ArrayCalls, of_bytes_are_none_for_the_elements) {
  for (const char* record :
       {"fwe_cl_wayfind_sel_lb_src_intf_st", "fwe_cl_wayfind_sel_lb_dst_intf_st"}) {
    SpiedHandle h;
    const Calls& calls = calls_of(record);
    const Object object = filled(h, calls, 3);
    const spy::Log log;
    const Bytes image = marshalled(h, calls, object.get());
    calls.unmarshal(h, instance, image.data(), object.get(), static_cast<int32_t>(image.size()), 0,
                    &h.err);
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(log.count("u_int8_marshal"), 0u);
    EXPECT_EQ(log.count("u_int8_unmarshal"), 0u);
  }
}

// The counter, one element, and the one that ends early.
TEST(ArrayCalls, of_unmarshal_end_with_the_first_element_that_fails) {
  SpiedHandle h;
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object object(h, path);
  const Bytes image = hex("00 00 0000001c 00000005 0000000a 0000");
  const spy::Log log;
  EXPECT_EQ(path.unmarshal(h, instance, image.data(), object.get(),
                           static_cast<int32_t>(image.size()), 0, &h.err),
            30u)
      << "the jump is followed";
  EXPECT_EQ(h.err, 90u);
  EXPECT_EQ(log.count("u_int32_unmarshal"), 3u);
}

TEST(ArrayCalls, of_unmarshal_tell_no_distance_without_tracking) {
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle source(writer);
    const Bytes image = marshalled(source, path, filled(source, path, 2).get());
    for (const ork_tracking reader : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
      SpiedHandle h({.tracking = reader});
      const Object object(h, path);
      const spy::Log log;
      path.unmarshal(h, instance, image.data(), object.get(), static_cast<int32_t>(image.size()), 0,
                     &h.err);
      EXPECT_EQ(h.err, 0u);
      EXPECT_EQ(log.count("orklib_update_sttr_offset"), 0u);
      auto* const block = static_cast<uint8_t*>(array_of(object).block);
      EXPECT_EQ(kit::header(block).obj_flags, OBJ_NESTED);
      EXPECT_EQ(kit::header(block + 40).obj_flags, OBJ_NESTED);
    }
  }
}

TEST(ArrayCalls, of_unmarshal_tell_the_distance_before_the_element_is_initialised) {
  SpiedHandle h(kit::tracked);
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  void* const object = path.create(h, instance);
  const Bytes image =
      hex("00 08 00000024 00000001 00 08 00000013 6162000000000000000000000000 02 02 02");
  {
    spy::Log log;
    path.unmarshal(h, instance, image.data(), object, static_cast<int32_t>(image.size()), 0,
                   &h.err);
    EXPECT_EQ(h.err, 0u);
    std::vector<std::string> names;
    for (const std::string& call : log.calls_of(
             {"orklib_update_sttr_offset", "orklib_type_stats_create_object", "char_unmarshal"})) {
      if (names.empty() || names.back() != call.substr(0, call.find('('))) {
        names.push_back(call.substr(0, call.find('(')));
      }
    }
    EXPECT_EQ(names,
              (std::vector<std::string>{"orklib_update_sttr_offset",
                                        "orklib_type_stats_create_object", "char_unmarshal"}));
  }
  path.destroy(h, instance, object);
}

// ---- Enums and the flag set -------------------------------------------------

TEST(EnumCalls, of_marshal_and_unmarshal) {
  SpiedHandle h;
  auto* const state = fwe_cl_wayfind_chan_state_e_create(h, instance);
  spy::name(state, 16, "obj");
  uint8_t buffer[10] = {};
  spy::name(buffer, sizeof buffer, "buf");
  {
    spy::Log log;
    fwe_cl_wayfind_chan_state_e_marshal(h, instance, buffer, state, 10, &h.err);
    EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,0,1)",
                       "ork_get_manifested_type_info(obj)",
                       "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_chan_state_e),err)",
                       "_ork_instance_variant_marshal(7,buf,?,10,err)",
                       "u_int32_marshal(7,buf+1,obj+12,9,err)"});
    log.clear();
    fwe_cl_wayfind_chan_state_e_unmarshal(h, instance, buffer, state, 10, 4, &h.err);
    EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "_ork_instance_variant_unmarshal",
                               "u_int32_unmarshal", "write_notify_fn"}),
                 {"ork_clear_last_error()", "_ork_instance_variant_unmarshal(7,buf,?,10,err)",
                  "u_int32_unmarshal(7,buf+1,obj+12,9,4,err)", "write_notify_fn(obj+12,4,7,obj)"});
  }
  fwe_cl_wayfind_chan_state_e_destroy(h, instance, state);
}

TEST(EnumCalls, of_from_xml_probe_each_name_in_turn_until_one_is_there) {
  SpiedHandle h;
  auto* const type = fwe_cl_wayfind_show_global_type_e_create(h, instance);
  const Document document = parsed("<e><WAYFIND_UI_GLOBAL_INFO/></e>");
  spy::name_at(document.get(), "xml");
  {
    spy::Log log;
    fwe_cl_wayfind_show_global_type_e_from_xml(h, instance, "//e", document.get(), type, &h.err,
                                               nullptr, 0);
    EXPECT_CALLS(log, {"ork_clear_last_error()",
                       "xml_get_element_value(xml,'//e/WAYFIND_UI_GLOBAL_PARAM',?,128,0)",
                       "ork_store_err(2)",
                       "xml_get_element_value(xml,'//e/WAYFIND_UI_GLOBAL_INFO',?,128,0)"});
  }
  EXPECT_EQ(h.err, 0u);
  fwe_cl_wayfind_show_global_type_e_destroy(h, instance, type);
}

TEST(FlagCalls, of_marshal_and_print) {
  SpiedHandle h;
  auto* const flags = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, flags, 2, 1, &h.err);
  spy::name(flags, 24, "obj");
  uint8_t buffer[10] = {};
  char text[100] = "";
  spy::name(buffer, sizeof buffer, "buf");
  spy::name(text, sizeof text, "text");
  {
    spy::Log log;
    fwe_cl_wayfind_hop_chan_flags_marshal(h, instance, buffer, flags, 10, &h.err);
    EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,0,1)",
                       "ork_get_manifested_type_info(obj)",
                       "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_hop_chan_flags),err)",
                       "_ork_instance_variant_marshal(7,buf,?,10,err)",
                       "_ork_variant_jump_marshal(7,buf+1,?,9,err)",
                       "_ork_variant_jump_marshal(7,buf+1,?,4,err)"});
    log.clear();
    fwe_cl_wayfind_hop_chan_flags_print(h, instance, text, 2, "f", flags, 100, &h.err);
    EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_print_space(7,text,2,100,err)",
                       "ork_snprintf(7,text+2,98,err,'f@fwe_cl_wayfind_hop_chan_flags:')",
                       "ork_snprintf(7,text+34,66,err,'WAYFIND_UI_HOP_CHAN_FLAG_ACK ')",
                       "ork_snprintf(7,text+63,37,err,'\n')"});
  }
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, flags);
}

}  // namespace
