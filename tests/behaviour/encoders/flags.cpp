// The flag set in all its forms.
#include "behaviour/encoders/small_types.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

constexpr const char* names[] = {"WAYFIND_UI_HOP_CHAN_FLAG_INT_SHUT",
                                 "WAYFIND_UI_HOP_CHAN_FLAG_ADDR_CHANGE",
                                 "WAYFIND_UI_HOP_CHAN_FLAG_ACK", "WAYFIND_UI_HOP_CHAN_FLAG_INIT",
                                 "WAYFIND_UI_HOP_CHAN_FLAG_MUTE"};

class Flags : public testing::Test {
 protected:
  Flags() : flags(fwe_cl_wayfind_hop_chan_flags_create(handle, instance)) {}
  ~Flags() override { fwe_cl_wayfind_hop_chan_flags_destroy(handle, instance, flags); }

  uint8_t& byte() const { return reinterpret_cast<uint8_t*>(flags)[11]; }
  ork_object& header() const { return *reinterpret_cast<ork_object*>(flags); }

  std::string print(const fwe_cl_wayfind_hop_chan_flags* object) {
    char text[400] = "";
    const uint32_t length = fwe_cl_wayfind_hop_chan_flags_print(handle, instance, text, 2, "f",
                                                                object, sizeof text, &err);
    EXPECT_EQ(length, std::strlen(text));
    return text;
  }
  std::string to_xml(const fwe_cl_wayfind_hop_chan_flags* object) {
    char text[400] = "";
    const uint32_t length = fwe_cl_wayfind_hop_chan_flags_to_xml(handle, instance, "f", text,
                                                                 object, sizeof text, 9, &err);
    EXPECT_EQ(length, std::strlen(text));
    return text;
  }
  void from_xml(const std::string& text, char* reason = nullptr, uint32_t size = 0) {
    const Document document = parsed(text);
    fwe_cl_wayfind_hop_chan_flags_from_xml(handle, instance, "//f", document.get(), flags, &err,
                                           reason, size);
  }

  const Handle handle{ORK_TRACKING_OFF};
  fwe_cl_wayfind_hop_chan_flags* flags;
  uint32_t err = 0;
};

TEST_F(Flags, have_all_their_forms_for_each_set) {
  for (unsigned set = 0; set < 32; ++set) {
    byte() = static_cast<uint8_t>(set);
    std::string text = "  f@fwe_cl_wayfind_hop_chan_flags:";
    std::string xml = "<f>\n";
    for (unsigned i = 0; i < 5; ++i) {
      if ((set >> i & 1) != 0) {
        text += std::string(names[i]) + " ";
        xml += std::string("<") + names[i] + "/>";
      }
      EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(handle, instance, flags, i, &err),
                set >> i & 1);
    }
    EXPECT_EQ(print(flags), text + "\n");
    EXPECT_EQ(to_xml(flags), xml + "</f>\n");
    byte() = 0;
    from_xml(xml + "</f>");
    EXPECT_EQ(byte(), set);
    EXPECT_EQ(err, 0u);
  }
}

TEST_F(Flags, beyond_the_table_are_neither_printed_nor_rendered) {
  byte() = 0xe0;
  EXPECT_EQ(print(flags), "  f@fwe_cl_wayfind_hop_chan_flags:\n");
  EXPECT_EQ(to_xml(flags), "<f>\n</f>\n");
}

TEST_F(Flags, of_null_print_nothing_more_unless_the_handle_is_strict) {
  EXPECT_EQ(print(nullptr), "  f@fwe_cl_wayfind_hop_chan_flags:\n");
  EXPECT_EQ(to_xml(nullptr), "<f>\n</f>\n");
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  const Handle strict([&](ork_options& options) { options.strict_epoch = 1; });
  char text[400] = "";
  fwe_cl_wayfind_hop_chan_flags_print(strict, instance, text, 0, "f", nullptr, sizeof text, &err);
  EXPECT_STREQ(text, "f@fwe_cl_wayfind_hop_chan_flags:ERR ERR ERR ERR ERR \n");
  fwe_cl_wayfind_hop_chan_flags_to_xml(strict, instance, "f", text, nullptr, sizeof text, 0, &err);
  EXPECT_STREQ(text,
               "<f>\n<error>ERR</error><error>ERR</error><error>ERR</error><error>ERR</"
               "error><error>ERR</error></f>\n");
  EXPECT_EQ(err, 0u) << "the scratch took the error";
}

// A runtime that refuses only one of the five has one written as refused.
TEST_F(Flags, of_null_are_refused_one_by_one) {
  const std::vector<std::string> refused(5, "ork_store_epoch_err(43,?)");
  for (unsigned nth = 1; nth <= 5; ++nth) {
    {
      const auto strict = spy::fail(ork_store_epoch_err, 43, nth);
      spy::Log log;
      EXPECT_EQ(print(nullptr), "  f@fwe_cl_wayfind_hop_chan_flags:ERR \n") << nth;
      EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}), refused);
    }
    const auto strict = spy::fail(ork_store_epoch_err, 43, nth);
    spy::Log log;
    EXPECT_EQ(to_xml(nullptr), "<f>\n<error>ERR</error></f>\n") << nth;
    EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}), refused);
  }
  EXPECT_EQ(err, 0u);
}

TEST_F(Flags, are_only_ever_added_from_xml) {
  byte() = 0x11;
  from_xml(std::string("<f><") + names[2] + "/></f>");
  EXPECT_EQ(byte(), 0x15);
  from_xml("<f/>");
  EXPECT_EQ(byte(), 0x15);
  EXPECT_EQ(err, 0u);
}

TEST_F(Flags, name_the_given_path_when_a_probe_fails) {
  const auto failing = spy::answer(xml_get_element_value, 5u);
  char reason[64] = "";
  from_xml("<f/>", reason, sizeof reason);
  EXPECT_EQ(err, 5u);
  EXPECT_EQ(ork_handle_last_error(handle), 5u);
  EXPECT_STREQ(reason, "Failed xpath: //f");
  EXPECT_EQ(byte(), 0);
}

TEST_F(Flags, are_looked_for_no_further_once_a_probe_failed_and_keep_those_before_it) {
  const auto failing = failing_probe(2);
  spy::Log log;
  from_xml(std::string("<f><") + names[0] + "/><" + names[4] + "/></f>");
  EXPECT_EQ(err, 5u);
  EXPECT_EQ(log.count("xml_get_element_value"), 2u);
  EXPECT_EQ(byte(), 0x01);
}

TEST_F(Flags, from_xml_without_an_object_is_no_error) {
  const Document document = parsed(std::string("<f><") + names[1] + "/></f>");
  fwe_cl_wayfind_hop_chan_flags_from_xml(handle, instance, "//f", document.get(), nullptr, &err,
                                         nullptr, 0);
  EXPECT_EQ(err, 0u);
}

TEST_F(Flags, found_in_xml_are_upgraded_and_announced_before_their_bit_is_set) {
  SpiedHandle h;
  auto* const object = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  spy::name(object, 24, "obj");
  const Document document = parsed(std::string("<f><") + names[2] + "/></f>");
  spy::Log log;
  fwe_cl_wayfind_hop_chan_flags_from_xml(h, instance, "//f", document.get(), object, &h.err,
                                         nullptr, 0);
  auto calls = log.calls();
  for (std::string& call : calls) {
    call = call.find("xml_get_element_value") == 0 ? "probe" : call;
  }
  std::erase(calls, "ork_get_manifested_type_info(obj)"); /* for the argument of the upgrade */
  EXPECT_CALLS(calls, {"ork_clear_last_error()", "probe", "ork_store_err(2)", "probe",
                       "ork_store_err(2)", "probe", "ork_clear_last_error()",
                       "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_flags),0,err)",
                       "ork_get_instance_variant(obj,0,1)", "write_notify_fn(obj+11,1,7,obj)",
                       "probe", "ork_store_err(2)", "probe", "ork_store_err(2)"});
  EXPECT_EQ(reinterpret_cast<uint8_t*>(object)[11], 0x04);
  log.clear();
  fwe_cl_wayfind_hop_chan_flags_from_xml(h, instance, "//f", document.get(), nullptr, &h.err,
                                         nullptr, 0);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "write_notify_fn"}),
               {"orklib_adjust_variant(7,null,null,0,err)"});
  EXPECT_EQ(h.err, 0u);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, object);
}

TEST_F(Flags, are_not_missing_when_the_upgrade_of_the_last_one_leaves_2) {
  const auto upgrade =
      spy::replace(orklib_adjust_variant, [](ork_handle*, uint32_t, void*, const ork_type_info*,
                                             int32_t, uint32_t* slot) { return *slot = 2; });
  from_xml(std::string("<f><") + names[4] + "/></f>");
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(byte(), 0x10);
}

// The next probe's answer takes the place of any number, and no bit is lost to one.
TEST_F(Flags, keep_the_error_of_an_upgrade_until_the_next_probe) {
  const auto upgrade =
      spy::replace(orklib_adjust_variant, [](ork_handle*, uint32_t, void*, const ork_type_info*,
                                             int32_t, uint32_t* slot) { return *slot = 5; });
  from_xml(std::string("<f><") + names[3] + "/></f>");
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(byte(), 0x08);
  from_xml(std::string("<f><") + names[4] + "/></f>");
  EXPECT_EQ(err, 5u);
  EXPECT_EQ(byte(), 0x18);
}

TEST_F(Flags, need_room_for_all_their_bytes) {
  byte() = 0x1f;
  for (int32_t length = -1; length <= 7; ++length) {
    Bytes buffer(9, 0xa5);
    err = 0;
    const uint32_t written =
        fwe_cl_wayfind_hop_chan_flags_marshal(handle, instance, buffer.data(), flags, length, &err);
    EXPECT_EQ(err, length < 6 ? 90u : 0u) << length;
    EXPECT_EQ(written, length < 1 ? 0u : length < 5 ? 1u : length < 6 ? 5u : 6u) << length;
    if (length >= 6) {
      EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 6), hex("00 00000005 1f"));
    } else {
      EXPECT_EQ(ork_handle_last_error(handle), 90u);
    }
    const auto end = std::min(std::max(length, 0), 6);
    EXPECT_EQ(Bytes(buffer.begin() + end, buffer.end()), Bytes(static_cast<size_t>(9 - end), 0xa5))
        << length;
  }
}

TEST_F(Flags, without_room_for_the_byte_leave_the_reserved_jump) {
  Bytes buffer(6, 0xa5);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_marshal(handle, instance, buffer.data(), flags, 5, &err),
            5u);
  EXPECT_EQ(buffer, hex("00 00000000 a5"));
}

TEST_F(Flags, are_read_from_the_byte_behind_a_short_buffer) {
  const Bytes image = hex("00 00000005 1a");
  EXPECT_EQ(
      fwe_cl_wayfind_hop_chan_flags_unmarshal(handle, instance, image.data(), flags, 5, 0, &err),
      6u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(byte(), 0x1a);
  for (const int32_t length : {0, -4}) {
    EXPECT_EQ(
        fwe_cl_wayfind_hop_chan_flags_unmarshal(handle, instance, nullptr, flags, length, 0, &err),
        0u);
    EXPECT_EQ(err, 90u);
    err = 0;
  }
}

TEST_F(Flags, without_a_jump_are_read_where_it_would_begin) {
  const Bytes image = hex("00 1b 000000");
  for (int32_t length = 1; length < 5; ++length) {
    byte() = 0;
    err = 0;
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_unmarshal(handle, instance, image.data(), flags, length,
                                                      0, &err),
              2u)
        << length;
    EXPECT_EQ(err, 90u);
    EXPECT_EQ(byte(), 0x1b);
  }
}

TEST_F(Flags, step_over_the_bytes_of_a_newer_set) {
  const Bytes image = hex("03 00000008 05 eeeeee");
  EXPECT_EQ(
      fwe_cl_wayfind_hop_chan_flags_unmarshal(handle, instance, image.data(), flags, 9, 0, &err),
      9u);
  EXPECT_EQ(byte(), 5);
  EXPECT_EQ(header().variant, 0);
  EXPECT_EQ(err, 0u);
  const Bytes shorter = hex("00 00000001 06");
  EXPECT_EQ(
      fwe_cl_wayfind_hop_chan_flags_unmarshal(handle, instance, shorter.data(), flags, 6, 0, &err),
      6u);
  EXPECT_EQ(byte(), 6);
}

TEST_F(Flags, trace_the_jump_that_they_follow_also_out_of_the_buffer_and_never_a_backward_one) {
  const struct {
    const char* image;
    uint32_t end;
    const char* jump; /* as traced, if it is followed */
  } rows[] = {{"00 00000008 05 eeeeee", 9, "8"},
              {"00 00000020 05", 33, "32"},
              {"00 00000005 05", 6, nullptr},
              {"00 ffffffff 05", 6, nullptr},
              {"00 80000000 05", 6, nullptr}};
  SpiedHandle h;
  auto* const object = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  for (const auto& row : rows) {
    const Bytes image = hex(row.image);
    reinterpret_cast<uint8_t*>(object)[11] = 0;
    spy::Log log;
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_unmarshal(
                  h, instance, image.data(), object, static_cast<int32_t>(image.size()), 0, &h.err),
              row.end)
        << row.image;
    EXPECT_EQ(h.err, 0u) << row.image;
    EXPECT_EQ(reinterpret_cast<uint8_t*>(object)[11], 5) << row.image;
    std::vector<std::string> expected;
    if (row.jump != nullptr) {
      expected.push_back(
          std::string("trace(info,offset_jump read_len 6 offset_jump_base 1 _ork_variant_jump ") +
          row.jump + ")");
    }
    EXPECT_CALLS(log.calls_of({"trace"}), expected) << row.image;
  }
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, object);
}

TEST_F(Flags, outside_the_table_are_43) {
  for (const uint32_t flag : {5U, 0xffffffffU}) {
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(handle, instance, flags, flag, &err), 0u);
    EXPECT_EQ(ork_handle_last_error(handle), 43u);
    ork_clear_last_error(handle);
    fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, flag, 1, &err);
    EXPECT_EQ(ork_handle_last_error(handle), 43u);
    EXPECT_EQ(byte(), 0);
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_is_valid_cr(handle, flag), 0u);
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_in_range(flag), 0u);
    ork_clear_last_error(handle);
  }
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_is_valid_cr(handle, 4), 1u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_in_range(4), 1u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(handle, instance, nullptr, 1, &err), 0u);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  EXPECT_EQ(err, 0u);
}

TEST_F(Flags, outside_the_table_leave_43_in_the_slot_of_a_strict_handle) {
  const Handle strict([&](ork_options& options) { options.strict_epoch = 1; });
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_cr(strict, flags, 5), 0u);
  EXPECT_EQ(std::exchange(strict->cr_error, 0), 43u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_set_cr(strict, flags, 5, 1), 43u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(strict, instance, nullptr, 1, &err), 0u);
  EXPECT_EQ(std::exchange(err, 0), 43u) << "no object";
  fwe_cl_wayfind_hop_chan_flags_set_value(strict, instance, flags, 5, 1, &err);
  EXPECT_EQ(err, 43u);
  EXPECT_EQ(byte(), 0);
}

TEST_F(Flags, of_a_later_variant_without_a_place_are_dropped_in_silence) {
  header().variant = 1;
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 5, 1, &err);
  EXPECT_EQ(ork_handle_last_error(handle), 0u);
  EXPECT_EQ(byte(), 0);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, nullptr, 2, 1, &err);
  EXPECT_EQ(err, 0u);
  header().variant = 0;
}

TEST_F(Flags, are_set_and_cleared_in_both_styles) {
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 3, 7, &err);
  EXPECT_EQ(byte(), 8);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_set_cr(handle, flags, 0, 1), 0u);
  EXPECT_EQ(byte(), 9);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_cr(handle, flags, 3), 1u);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 3, 0, &err);
  EXPECT_EQ(byte(), 1);
  handle->cr_error = 12;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_set_cr(handle, flags, 4, 1), 12u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_cr(handle, flags, 0), 0u);
  EXPECT_EQ(byte(), 1);
  err = 5;
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 4, 1, &err);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(handle, instance, flags, 0, &err), 0u);
  EXPECT_EQ(byte(), 1);
}

TEST_F(Flags, set_copies_all_24_bytes_and_announces_them_first) {
  SpiedHandle h;
  auto* const source = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  auto* const target = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  std::memset(reinterpret_cast<uint8_t*>(source) + 11, 0x5a, 13);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_flags_set(h, instance, target, source, &h.err);
  EXPECT_EQ(std::memcmp(source, target, 24), 0);
  ASSERT_FALSE(log.announcements().empty());
  EXPECT_EQ(static_cast<const void*>(log.announcements().back().address), target);
  EXPECT_EQ(log.announcements().back().length, 24u);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, source);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, target);
}

TEST_F(Flags, compare_by_their_bytes_and_have_fixed_sizes) {
  auto* const other = fwe_cl_wayfind_hop_chan_flags_create(handle, instance);
  byte() = 0x1f;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(flags, other), 31);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(other, flags), -31);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(nullptr, flags), -1);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(flags, nullptr), 1);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(nullptr, nullptr), 0);
  fwe_cl_wayfind_hop_chan_flags_destroy(handle, instance, other);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_sizeof(), 24u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len(), 6u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len_cr(handle), 6u);
  handle->cr_error = 1;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len_cr(handle), 0u);
  handle->cr_error = 0;
  for (const auto& [variant, index] : {std::pair{5, 0}, {0, 0}, {-3, -3}}) {
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_variant_data_index_cap(variant), index);
  }
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get(handle, instance, flags), flags);
}

TEST_F(Flags, are_lowered_to_a_domain_without_them) {
  handle.set_peer(release_list(9, "fwe_cl_wayfind_hop_chan_flags", -1).get());
  Bytes buffer(6);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_marshal(handle, instance, buffer.data(), flags, 6, &err),
            6u);
  EXPECT_EQ(ork_handle_last_error(handle), 43u);
  EXPECT_EQ(buffer[0], 0xff);
  EXPECT_EQ(buffer[5], byte());
}

}  // namespace
