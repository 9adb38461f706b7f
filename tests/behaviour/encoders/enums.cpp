// Enums in all their forms.
#include "behaviour/encoders/small_types.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

// Names in the order of their values, as every reader of text and XML knows them.
const std::vector<std::pair<std::string, std::vector<std::string>>> told = {
    {"fwe_cl_wayfind_select_tc_ui_status_e",
     {"WAYFIND_UI_SELECT_TC_STATUS_NORAMAL", "WAYFIND_UI_SELECT_TC_STATUS_NULL_PATH",
      "WAYFIND_UI_SELECT_TC_STATUS_ALL_UNREACH"}},
    {"fwe_cl_wayfind_select_tc_type_e",
     {"WAYFIND_UI_SELECT_TC_TYPE_NONE", "WAYFIND_UI_SELECT_TC_TYPE_DSCP",
      "WAYFIND_UI_SELECT_TC_TYPE_APP_SET", "WAYFIND_UI_SELECT_TC_TYPE_APP",
      "WAYFIND_UI_SELECT_TC_TYPE_DEFAULT"}},
    {"fwe_cl_wayfind_select_ui_type_e",
     {"WAYFIND_UI_SELECT_TC", "WAYFIND_UI_SELECT_FLOW", "WAYFIND_UI_SELECT_ALL"}},
    {"fwe_cl_wayfind_hop_chan_state_e",
     {"WAYFIND_UI_HOP_CHAN_STATE_UNREACHABLE", "WAYFIND_UI_HOP_CHAN_STATE_REACHABLE",
      "WAYFIND_UI_HOP_CHAN_STATE_INITIATED"}},
    {"fwe_cl_wayfind_chan_state_e",
     {"WAYFIND_UI_CHAN_STATE_INITIATED", "WAYFIND_UI_CHAN_STATE_REACHABLE",
      "WAYFIND_UI_CHAN_STATE_UNREACHABLE", "WAYFIND_UI_CHAN_STATE_MAX"}},
    {"fwe_cl_wayfind_chan_rx_state_e",
     {"WAYFIND_UI_CHAN_RX_STATE_SMP_INITIAL_STATE", "WAYFIND_UI_CHAN_RX_STATE_SMP_REACHABLE",
      "WAYFIND_UI_CHAN_RX_STATE_SMP_UNREACHABLE", "WAYFIND_UI_CHAN_RX_STATE_MAX"}},
    {"fwe_cl_wayfind_chan_tx_state_e",
     {"WAYFIND_UI_CHAN_TX_STATE_REACHABLE", "WAYFIND_UI_CHAN_TX_STATE_UNREACHABLE",
      "WAYFIND_UI_CHAN_TX_STATE_MAX"}},
    {"fwe_cl_wayfind_chan_nb_state_e",
     {"WAYFIND_UI_CHAN_NB_STATE_DOWN", "WAYFIND_UI_CHAN_NB_STATE_UP",
      "WAYFIND_UI_CHAN_NB_STATE_MAX"}},
    {"fwe_cl_wayfind_show_db_type_e",
     {"WAYFIND_UI_DB_INST", "WAYFIND_UI_DB_COLOR", "WAYFIND_UI_DB_INFO", "WAYFIND_UI_DB_ALL"}},
    {"fwe_cl_wayfind_show_global_type_e",
     {"WAYFIND_UI_GLOBAL_PARAM", "WAYFIND_UI_GLOBAL_INFO", "WAYFIND_UI_GLOBAL_ALL"}},
    {"fwe_cl_wayfind_intf_plr_state_e",
     {"WAYFIND_UI_INTF_PLR_DISABLED", "WAYFIND_UI_INTF_PLR_STANDBY",
      "WAYFIND_UI_INTF_PLR_STANDBY_SHUTDOWN", "WAYFIND_UI_INTF_PLR_ACTIVE",
      "WAYFIND_UI_INTF_PLR_MAX"}},
};

const wayfind_small_type& schema_of(const std::string& name) {
  for (const wayfind_small_type* schema : all_enums()) {
    if (name == schema->name) {
      return *schema;
    }
  }
  throw std::runtime_error("no enum " + name);
}

class EveryEnum : public testing::TestWithParam<size_t> {
 protected:
  const std::string& name() const { return told[GetParam()].first; }
  const std::vector<std::string>& values() const { return told[GetParam()].second; }
  uint32_t count() const { return static_cast<uint32_t>(values().size()); }

  const Handle handle{ORK_TRACKING_OFF};
  const Enum object{handle, schema_of(name())};
  uint32_t err = 0;
};

TEST_P(EveryEnum, has_all_its_forms_for_each_value) {
  EXPECT_EQ(all_enums().size(), told.size());
  for (uint32_t value = 0; value < count(); ++value) {
    object.set_value(value, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(object.print("state", 2), "  state@" + name() + ":" + values()[value] + "\n");
    EXPECT_EQ(object.to_xml("state"), "<state>\n<" + values()[value] + "/></state>\n")
        << "the state is dropped";
    Bytes buffer(6, 0xa5);
    EXPECT_EQ(object.marshal(buffer.data(), 5, &err), 5u);
    EXPECT_EQ(buffer, (Bytes{0, 0, 0, 0, static_cast<uint8_t>(value), 0xa5}));
    const Enum copy(handle, schema_of(name()));
    EXPECT_EQ(copy.unmarshal({buffer.begin(), buffer.begin() + 5}, &err), 5u);
    EXPECT_EQ(copy.object().value, value);
    copy.object().value = 99;
    copy.from_xml(object.to_xml("state"), "//state", &err, nullptr, 0);
    EXPECT_EQ(copy.object().value, value);
    EXPECT_EQ(err, 0u);
  }
}

TEST_P(EveryEnum, out_of_range_is_refused_by_the_setter_only) {
  const auto is_valid = object.call<uint32_t(ork_handle*, int32_t)>("_is_valid_cr");
  EXPECT_EQ(is_valid(handle, static_cast<int32_t>(count()) - 1), 1u);
  EXPECT_EQ(is_valid(handle, static_cast<int32_t>(count())), 0u);
  EXPECT_EQ(is_valid(handle, -1), 1u) << "compared with a sign";
  for (const uint32_t value : {count(), 0xffffffffU}) {
    object.set_value(1, &err);
    object.set_value(value, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(ork_handle_last_error(handle), 43u);
    EXPECT_EQ(object.object().value, 1u);

    EXPECT_EQ(
        object.unmarshal({0, static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)},
                         &err),
        5u);
    EXPECT_EQ(object.object().value, value) << "taken from the wire as it is";
    EXPECT_EQ(object.print("e", 0), "e@" + name() + ":Enum value out of range");
    EXPECT_EQ(object.to_xml("e"), "<e>\n<" + name() + " value out of range/></e>\n");
  }
}

TEST_P(EveryEnum, set_copies_the_whole_source_unless_its_value_is_out_of_range) {
  const Enum source(handle, schema_of(name()));
  source.set_value(2, &err);
  source.object().header.variant_cap = 0;
  source.object().header.obj_flags = OBJ_EMBEDDED;
  const auto set = object.call<void(ork_handle*, uint32_t, void*, const void*, uint32_t*)>("_set");
  set(handle, instance, object.get(), source.get(), &err);
  EXPECT_EQ(std::memcmp(object.get(), source.get(), 16), 0);
  source.object().value = count();
  set(handle, instance, object.get(), source.get(), &err);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  EXPECT_EQ(object.object().value, 2u);
  EXPECT_EQ(err, 0u);
}

TEST_P(EveryEnum, compares_by_the_difference_of_the_values) {
  const auto compare = object.call<int32_t(const void*, const void*)>("_compare");
  const Enum other(handle, schema_of(name()));
  object.object().value = 1;
  other.object().value = 4;
  EXPECT_EQ(compare(object.get(), other.get()), -3);
  EXPECT_EQ(compare(other.get(), object.get()), 3);
  object.object().value = 0xffffffff;
  EXPECT_EQ(compare(object.get(), other.get()), -5) << "32 bits";
  EXPECT_EQ(compare(nullptr, object.get()), -1);
  EXPECT_EQ(compare(object.get(), nullptr), 1);
  EXPECT_EQ(compare(nullptr, nullptr), 0);
}

TEST_P(EveryEnum, keeps_its_value_without_a_child_and_takes_the_lowest_of_two) {
  object.object().value = 99;
  object.from_xml("<e/>", "//e", &err, nullptr, 0);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(object.object().value, 99u);
  object.from_xml("<e><" + values()[2] + "/><" + values()[1] + "/></e>", "//e", &err, nullptr, 0);
  EXPECT_EQ(object.object().value, 1u);
  object.object().value = 99;
  object.from_xml("<other/>", "//e", &err, nullptr, 0);
  EXPECT_EQ(err, 0u) << "an element that is missing altogether is no error here";
  EXPECT_EQ(object.object().value, 99u);
}

TEST_P(EveryEnum, names_the_given_path_when_a_probe_fails) {
  const auto failing = spy::answer(xml_get_element_value, 5u);
  char reason[64] = "";
  object.from_xml("<e/>", "//e", &err, reason, sizeof reason);
  EXPECT_EQ(err, 5u);
  EXPECT_EQ(ork_handle_last_error(handle), 5u);
  EXPECT_STREQ(reason, "Failed xpath: //e");
  err = 0;
  char cut[8] = "xxxxxxx";
  object.from_xml("<e/>", "//e", &err, cut, 5);
  EXPECT_STREQ(cut, "Fail");
  err = 0;
  object.from_xml("<e/>", "//e", &err, nullptr, 0);
  EXPECT_EQ(err, 5u);
}

// The value that the document holds lies behind the probe that fails.
TEST_P(EveryEnum, looks_for_no_further_value_once_a_probe_failed) {
  for (unsigned nth = 1; nth < count(); ++nth) {
    const auto failing = failing_probe(nth);
    object.object().value = 99;
    err = 0;
    char reason[64] = "";
    spy::Log log;
    object.from_xml("<e><" + values().back() + "/></e>", "//e", &err, reason, sizeof reason);
    EXPECT_EQ(err, 5u) << nth;
    EXPECT_EQ(log.count("xml_get_element_value"), nth);
    EXPECT_EQ(object.object().value, 99u) << nth;
    EXPECT_STREQ(reason, "Failed xpath: //e") << nth;
  }
}

TEST_P(EveryEnum, needs_room_for_all_its_bytes) {
  for (int32_t length = -1; length < 5; ++length) {
    Bytes buffer(8, 0xa5);
    err = 0;
    EXPECT_EQ(object.marshal(buffer.data(), length, &err), length < 1 ? 0u : 1u) << length;
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(ork_handle_last_error(handle), 90u);
    EXPECT_EQ(Bytes(buffer.begin() + std::max(length, 0), buffer.end()),
              Bytes(8 - static_cast<size_t>(std::max(length, 0)), 0xa5));
    err = 0;
    EXPECT_EQ(object.unmarshal(Bytes(static_cast<size_t>(std::max(length, 0))), &err),
              length < 1 ? 0u : 1u);
    EXPECT_EQ(err, 90u);
  }
}

TEST_P(EveryEnum, announces_its_value_even_when_none_could_be_read) {
  SpiedHandle h;
  const Enum target(h, schema_of(name()));
  target.object().value = 2;
  spy::name(target.get(), 16, "obj");
  spy::Log log;
  EXPECT_EQ(target.unmarshal({0}, &h.err), 1u);
  EXPECT_EQ(h.err, 90u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(obj+12,4,7,obj)"});
  EXPECT_EQ(target.object().value, 2u);
}

TEST_P(EveryEnum, is_lowered_to_a_domain_without_it_and_read_at_its_layout) {
  handle.set_peer(release_list(9, name(), -1).get());
  Bytes buffer(5);
  EXPECT_EQ(object.marshal(buffer.data(), 5, &err), 5u);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  EXPECT_EQ(buffer[0], 0xff);
  handle.set_peer(nullptr);
  object.object().header.variant = 6;
  EXPECT_EQ(object.marshal(buffer.data(), 5, &err), 5u);
  EXPECT_EQ(buffer[0], 0) << "there is one variant";
  EXPECT_EQ(object.unmarshal({7, 0, 0, 0, 1}, &err), 5u);
  EXPECT_EQ(object.object().header.variant, 0);
  EXPECT_EQ(object.unmarshal({0x80, 0, 0, 0, 1}, &err), 5u);
  EXPECT_EQ(object.object().header.variant, -128);
  object.object().header.variant = 0;
  EXPECT_EQ(err, 0u);
}

TEST_P(EveryEnum, has_fixed_sizes) {
  EXPECT_EQ(object.call<uint32_t()>("_sizeof")(), 16u);
  EXPECT_EQ(object.call<uint32_t()>("_len")(), 5u);
  const auto len_cr = object.call<uint32_t(ork_handle*)>("_len_cr");
  EXPECT_EQ(len_cr(handle), 5u);
  handle->cr_error = 3;
  EXPECT_EQ(len_cr(handle), 0u);
  const auto cap = object.call<int32_t(int32_t)>("_variant_data_index_cap");
  EXPECT_EQ(cap(-3), -3);
  EXPECT_EQ(cap(0), 0);
  EXPECT_EQ(cap(5), 0);
  for (const char* map : {"_map_to_user_value", "_map_to_internal_value"}) {
    EXPECT_EQ(object.call<uint32_t(uint32_t)>(map)(0xfffffffe), 0xfffffffeu);
  }
}

TEST_P(EveryEnum, gets_its_value_and_22_of_null) {
  const auto get_value =
      object.call<uint32_t(ork_handle*, uint32_t, const void*, uint32_t*)>("_get_value");
  object.set_value(2, &err);
  EXPECT_EQ(get_value(handle, instance, object.get(), &err), 2u);
  EXPECT_EQ(get_value(handle, instance, nullptr, &err), 0u);
  EXPECT_EQ(err, 22u);
  EXPECT_EQ(ork_handle_last_error(handle), 22u);
  EXPECT_EQ(get_value(handle, instance, object.get(), &err), 0u) << "the error stands";
  EXPECT_EQ(
      (object.call<void*(ork_handle*, uint32_t, void*)>("_get")(handle, instance, object.get())),
      object.get());
}

TEST_P(EveryEnum, does_nothing_once_an_error_stands) {
  object.set_value(1, &err);
  err = 5;
  object.set_value(2, &err);
  Bytes buffer(5, 0xa5);
  EXPECT_EQ(object.marshal(buffer.data(), 5, &err), 0u);
  EXPECT_EQ(object.unmarshal({0, 0, 0, 0, 0}, &err), 0u);
  object.from_xml("<e><" + values()[0] + "/></e>", "//e", &err, nullptr, 0);
  EXPECT_EQ(object.object().value, 1u);
  EXPECT_EQ(buffer, Bytes(5, 0xa5));
  EXPECT_EQ(err, 5u);
}

INSTANTIATE_TEST_SUITE_P(Enums, EveryEnum, testing::Range(size_t{0}, told.size()),
                         [](const auto& which) { return told[which.param].first; });

TEST(EnumField, refuses_a_value_out_of_range_and_is_marked_all_the_same) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object(handle, calls_of("fwe_cl_wayfind_chan_st"));
  auto* const channel = static_cast<fwe_cl_wayfind_chan_st*>(object.get());
  uint32_t err = 0;
  fwe_cl_wayfind_chan_st_tx_state_set_value(handle, instance, channel, 3, &err);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_tx_state_get_value(handle, instance, channel, &err), 0u);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_tx_state_state_flag_get(handle, instance, channel, &err), 2);
}

}  // namespace
