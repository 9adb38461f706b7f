#include "tools/look/json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/look/received.h"
#include "tools/look/function.h"

namespace look {
namespace {

using Json = nlohmann::ordered_json;

std::string line(const Received& received, const Message& message, bool states = false) {
  std::string out;
  JsonDocument document(received.handle(), {.lines = true, .states = states});
  document.open(out);
  document.put(out, message);
  document.close(out);
  return out;
}

Json record(const Received& received, const Message& message, bool states = false) {
  return Json::parse(line(received, message, states))[message.type->records[0]->name];
}

// Where a field lies, for values that no accessor sets.
uint8_t* place(const Message& message, const char* record, const char* field) {
  return const_cast<uint8_t*>(message.at[0]) + field_named(record, field).offset;
}

TEST(Json, a_message_is_its_name_and_its_record_in_wire_order) {
  Received received;
  const Message& message = received.add(
      "nb_channel_msg",
      "<chan_nb><chan_id>7</chan_id><state><WAYFIND_UI_CHAN_NB_STATE_UP/></state>"
      "<tx_state><WAYFIND_UI_CHAN_TX_STATE_MAX/></tx_state><vrf_id>4294967295</vrf_id></chan_nb>"
      "<mem><fwe_num>1</fwe_num><ppe_addr>18446744073709551615</ppe_addr></mem>");
  EXPECT_EQ(
      line(received, message),
      "{\"message\":\"fwe_cl_wayfind_nb_channel_msg\",\"fwe_cl_wayfind_nb_channel_data\":{"
      "\"chan_nb\":{\"chan_id\":7,\"state\":\"WAYFIND_UI_CHAN_NB_STATE_UP\","
      "\"tx_state\":\"WAYFIND_UI_CHAN_TX_STATE_MAX\",\"vrf_id\":4294967295},"
      "\"mem\":{\"fwe_num\":1,\"ppe_addr\":\"18446744073709551615\",\"exmem_addr\":\"0\"}}}\n");
}

TEST(Json, the_message_with_two_records_has_both) {
  Received received;
  const Message& message =
      received.add("auto_tunnel_show",
                   "<fwe_cl_wayfind_auto_tunnel><table_id>7</table_id></fwe_cl_wayfind_auto_tunnel>"
                   "<fwe_cl_wayfind_auto_tunnel_misc><intf_name>tu1</intf_name></"
                   "fwe_cl_wayfind_auto_tunnel_misc>");
  EXPECT_EQ(line(received, message),
            "{\"message\":\"fwe_cl_wayfind_auto_tunnel_show\",\"fwe_cl_wayfind_auto_tunnel\":{"
            "\"table_id\":7,\"tunnel_fwe_if_handle\":0,\"tunnel_flow_counts\":0,"
            "\"create_ts_msec\":\"\",\"update_ts_msec\":\"\"},"
            "\"fwe_cl_wayfind_auto_tunnel_misc\":{\"intf_name\":\"tu1\"}}\n");
}

TEST(Json, documents_are_one_array_or_a_line_for_each_message) {
  Received received;
  const Message& message =
      received.add("intf_sum_msg", "<sel_dbg_path_enabled>1</sel_dbg_path_enabled>");
  const std::string object =
      "{\"message\":\"fwe_cl_wayfind_intf_sum_msg\",\"fwe_cl_wayfind_intf_sum\":{"
      "\"sel_dbg_path_enabled\":1,\"smp_dbg_path_enabled\":0}}";
  for (const bool lines : {false, true}) {
    std::string out;
    JsonDocument document(received.handle(), {.lines = lines});
    document.open(out);
    document.put(out, message);
    document.put(out, message);
    document.close(out);
    EXPECT_EQ(out,
              lines ? object + "\n" + object + "\n" : "[\n" + object + ",\n" + object + "\n]\n");
  }
  std::string empty;
  const JsonDocument document(received.handle(), {});
  document.open(empty);
  document.close(empty);
  EXPECT_EQ(Json::parse(empty), Json::array());
}

TEST(Json, booleans_are_true_and_false) {
  Received received;
  const Message& message = received.add("hop_chan_state_msg", "<show_all>true</show_all>");
  EXPECT_EQ(record(received, message)["show_all"], true);
  EXPECT_EQ(record(received, message)["new_walk"], false);
}

TEST(Json, an_enum_that_has_no_name_for_its_value_is_a_number) {
  Received received;
  const Message& message = received.add("intf_data_msg", "");
  constexpr size_t enum_value = 12;
  place(message, "intf_data", "plr_type")[enum_value] = 5;
  EXPECT_EQ(record(received, message)["plr_type"], 5);
  place(message, "intf_data", "plr_type")[enum_value] = 4;
  EXPECT_EQ(record(received, message)["plr_type"], "WAYFIND_UI_INTF_PLR_MAX");
}

TEST(Json, flags_are_an_array_of_names_and_of_numbers_of_unknown_bits) {
  Received received;
  const Message& message = received.add("hop_chan_msg", "");
  uint8_t* bits = place(message, "hop_chan_data", "hop_chan") +
                  field_named("hop_chan_st", "flags_show").offset + ORK_OBJECT_HEADER_SIZE;
  const auto flags = [&] { return record(received, message)["hop_chan"]["flags_show"].dump(); };
  EXPECT_EQ(flags(), "[]");
  *bits = 0x14;
  EXPECT_EQ(flags(), "[\"WAYFIND_UI_HOP_CHAN_FLAG_ACK\",\"WAYFIND_UI_HOP_CHAN_FLAG_MUTE\"]");
  *bits = 0xa1;
  EXPECT_EQ(flags(), "[\"WAYFIND_UI_HOP_CHAN_FLAG_INT_SHUT\",5,7]");
}

TEST(Json, texts_stand_as_they_are_printed) {
  Received received;
  const auto shown = [&](const std::string& xml) {
    return record(received,
                  received.add("hop_chan_msg", "<dscp_str>" + xml + "</dscp_str>"))["dscp_str"]
        .get<std::string>();
  };
  EXPECT_EQ(shown("ef"), "ef");
  EXPECT_EQ(shown("a\"b/c"), "a\"b/c");
  EXPECT_EQ(shown("a\\\\b"), "a\\\\b");  // one backslash in the field
  EXPECT_EQ(shown("\\x01\\xff"), "\\x01\\xff");
  EXPECT_EQ(shown("\xc3\xa9"), "\xc3\xa9");
  EXPECT_EQ(shown("\\xc2\\x80\\x7f"), "\\xc2\\x80\\x7f");
}

TEST(Json, addresses_are_texts_null_or_a_foreign_family_and_its_bytes) {
  Received received;
  const Message& message = received.add("multi_nh_map_msg",
                                        "<remote_endpoint>10.0.0.1/24</remote_endpoint>"
                                        "<remote_ip>2001:db8::1/64</remote_ip>");
  EXPECT_EQ(record(received, message)["remote_endpoint"], "10.0.0.1/24");
  EXPECT_EQ(record(received, message)["remote_ip"], "2001:db8::1/64");
  EXPECT_EQ(record(received, received.add("multi_nh_map_msg", ""))["remote_ip"], nullptr);
  constexpr size_t family = 11;
  place(message, "multi_nh_map", "remote_endpoint")[family] = 9;
  EXPECT_EQ(record(received, message)["remote_endpoint"].dump(),
            "{\"family\":9,\"bytes\":\"0a000001000000000000000000000000\"}");
}

TEST(Json, a_link_type_is_a_number) {
  Received received;
  const Message& message = received.add("enforce_hop_msg", "<linktype>4000000000</linktype>");
  EXPECT_EQ(record(received, message)["linktype"], 4000000000u);
}

TEST(Json, arrays_stand_without_their_counters) {
  Received received;
  const Message& message =
      received.add("fwe_dp_wayfind_debug_msg",
                   "<dbg_per_complex><dbg_setting><fwe_num>1</fwe_num></dbg_setting>"
                   "<dbg_setting><fwe_num>2</fwe_num></dbg_setting></dbg_per_complex>"
                   "<dbg_per_complex/><is_none>true</is_none>");
  const Json told = record(received, message);
  EXPECT_EQ(told.size(), 2u);
  EXPECT_EQ(told["is_none"], true);
  ASSERT_EQ(told["dbg_per_complex"].size(), 2u);
  EXPECT_EQ(told["dbg_per_complex"][1].dump(), "{\"dbg_setting\":[]}");
  EXPECT_EQ(told["dbg_per_complex"][0]["dbg_setting"][1]["fwe_num"], 2);
  const Json channel =
      record(received, received.add("channel_msg",
                                    "<chan><path><path_id>7</path_id><path_id>9</path_id>"
                                    "</path></chan>"));
  EXPECT_EQ(channel["chan"]["path"].dump(), "{\"path_id\":[7,9]}");
  EXPECT_EQ(channel["chan"]["src_intf"].dump(), "{\"src_intf_id\":[]}");
}

TEST(Json, fields_past_the_variant_are_absent) {
  Received received(ORK_TRACKING_OFF, "variant-0");
  const Message& message = received.add("enforce_hop_msg", "<hop_id>1</hop_id>");
  EXPECT_EQ(record(received, message).dump(),
            "{\"hop_id\":1,\"inst_id\":0,\"linktype\":0,\"adj_id\":0,\"sa_id\":0}");
}

TEST(Json, a_record_of_a_negative_variant_is_empty) {
  Received received;
  const Message& message = received.add("enforce_hop_msg", "<hop_id>1</hop_id>");
  const_cast<uint8_t*>(message.at[0])[ORK_OFFSET_VARIANT] = 0xff;
  EXPECT_EQ(record(received, message).dump(), "{}");
}

TEST(Json, states_that_are_not_0_stand_in_their_record) {
  Received received(ORK_TRACKING_ON);
  const Message& message = received.add("select_flow_msg", "");
  for (const auto& [field, index] : {std::pair("table_id", 0), std::pair("mem", 1)}) {
    using Set = void(ork_handle*, uint32_t, const void*, uint8_t, uint32_t*);
    uint32_t err = 0;
    function<Set>(field_named("select_flow_data", field).functions, "_state_flag_set")(
        received.handle(), ORK_NO_INSTANCE, message.at[0], static_cast<uint8_t>(2 + index), &err);
    ASSERT_EQ(err, 0u);
  }
  const Json told = record(received, message, true);
  EXPECT_EQ(told["@states"].dump(), "{\"table_id\":2,\"mem\":3}");
  EXPECT_EQ(told["mem"]["@states"].dump(), "{}");
  EXPECT_FALSE(record(received, message).contains("@states"));
}

TEST(Json, states_of_elements_stand_in_an_array) {
  Received received(ORK_TRACKING_ON);
  const Message& message = received.add(
      "channel_msg", "<chan><path><path_id>7</path_id><path_id>9</path_id></path></chan>");
  const Json path = record(received, message, true)["chan"]["path"];
  EXPECT_EQ(path["@states"].dump(), "{\"path_id\":[2,2]}");
}

TEST(Json, elements_whose_states_are_all_0_have_none) {
  Received received(ORK_TRACKING_ON);
  const Message& message =
      received.add("channel_msg", "<chan><path><path_id>7</path_id></path></chan>");
  using Set = void(ork_handle*, uint32_t, const void*, uint32_t, uint8_t, uint32_t*);
  const wayfind_field& array = field_named("sel_lb_path_st", "path_id");
  const uint8_t* path = message.at[0] + size_t{field_named("channel_data", "chan").offset} +
                        field_named("chan_st", "path").offset;
  uint32_t err = 0;
  function<Set>(array.functions, "_state_flag_set")(received.handle(), ORK_NO_INSTANCE, path, 0, 0,
                                                    &err);
  ASSERT_EQ(err, 0u);
  EXPECT_EQ(record(received, message, true)["chan"]["path"]["@states"].dump(), "{}");
}

TEST(Json, a_handle_that_tracks_nothing_reads_no_states) {
  Received tracking(ORK_TRACKING_ON);
  const Received other(ORK_TRACKING_OFF);
  const Message& message = tracking.add("enforce_hop_msg", "<hop_id>1</hop_id>");
  EXPECT_TRUE(record(tracking, message, true).contains("@states"));
  EXPECT_FALSE(record(other, message, true).contains("@states"));
}

TEST(Json, records_without_state_bytes_have_no_states) {
  Received received(ORK_TRACKING_OFF);
  const Message& message = received.add("enforce_hop_msg", "<hop_id>1</hop_id>");
  EXPECT_FALSE(record(received, message, true).contains("@states"));
}

}  // namespace
}  // namespace look
