// What every enum and the flag set do alike in all their forms.
#include "behaviour/encoders/small_types.h"

#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

using Marshal = uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
using CrForm = uint32_t(ork_handle*, const void*, char*, uint32_t);
using FromXml = void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*,
                     uint32_t);

// An enum of value 1, or the flag set with flag 2 alone.
class SmallTypeForms : public testing::TestWithParam<unsigned> {
 protected:
  SmallTypeForms()
      : object(function<void*(ork_handle*, uint32_t)>(schema.functions, "_create")(h, instance)) {
    if (small.flags) {
      kit::bytes(object)[11] = 0x04;
    } else {
      static_cast<EnumObject*>(object)->value = 1;
    }
    spy::name(text, sizeof text, "text");
  }
  ~SmallTypeForms() override {
    function<void(ork_handle*, uint32_t, void*)>(schema.functions, "_destroy")(h, instance, object);
  }

  uint32_t print(const char* name, uint32_t room) {
    return function<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                             uint32_t, uint32_t*)>(schema.functions, "_print")(
        h, instance, text, 0, name, object, room, &h.err);
  }
  uint32_t to_xml(const char* tag, uint32_t room) {
    return function<uint32_t(ork_handle*, uint32_t, const char*, char*, const void*, uint32_t,
                             uint8_t, uint32_t*)>(schema.functions, "_to_xml")(
        h, instance, tag, text, object, room, 5, &h.err);
  }

  const wayfind_small_type& schema = wayfind_small_types[GetParam()];
  const told::Small& small = *told::small(schema.name);
  const std::string type = small.name;
  const std::string value = small.values[small.flags ? 2 : 1];
  SpiedHandle h{{.cr_instance = 9}};
  void* object;
  char text[200] = "";
};

TEST_P(SmallTypeForms, are_made_of_the_same_calls_whatever_the_variant) {
  const std::string head = "e@" + type + ":";
  const std::string line = value + (small.flags ? " " : "\n");
  const std::string element = "<" + value + "/>";
  // The call that prints what behind so much text, up to the end of the buffer.
  const auto put = [](const std::string& what, size_t behind) {
    const std::string place = "text" + (behind != 0 ? "+" + std::to_string(behind) : std::string());
    return "ork_snprintf(7," + place + "," + std::to_string(200 - behind) + ",err,'" + what + "')";
  };
  for (const int8_t variant : {int8_t{0}, int8_t{-1}}) {
    static_cast<ork_object*>(object)->variant = variant;
    text[0] = '\0';
    {
      spy::Log log;
      EXPECT_EQ(print("e", 200), head.size() + value.size() + (small.flags ? 2 : 1));
      std::vector<std::string> expected = {"ork_clear_last_error()",
                                           "ork_print_space(7,text,0,200,err)", put(head, 0),
                                           put(line, head.size())};
      if (small.flags) {
        expected.push_back(put("\n", head.size() + line.size()));
      }
      EXPECT_CALLS(log, expected);
    }
    EXPECT_EQ(text, head + line + (small.flags ? "\n" : ""));
    spy::Log log;
    const size_t length = 4 + element.size() + 5; /* "<e>" and "</e>" with a newline each */
    EXPECT_EQ(to_xml("e", 200), length);
    EXPECT_CALLS(
        log, std::vector<std::string>{"ork_clear_last_error()", "start_tag(7,text,'e',200,0,err)",
                                      "xml_enum_print(7,text+4,'" + element + "',196," +
                                          std::to_string(element.size()) + ",err)",
                                      "end_tag(7,text+" + std::to_string(length - 5) + ",'e'," +
                                          std::to_string(200 - (length - 5)) + ",err)"});
    EXPECT_EQ(text, "<e>\n" + element + "</e>\n");
  }
  EXPECT_EQ(h.err, 0u);
  static_cast<ork_object*>(object)->variant = 0;
}

// The runtime prints on whatever error stands, and writes no element then.
TEST_P(SmallTypeForms, are_made_of_all_their_calls_after_an_error_in_the_first) {
  const std::string head = "e@" + type + ":";
  {
    const auto failing = spy::fail(ork_print_space, 5);
    spy::Log log;
    EXPECT_EQ(print("e", 200), head.size() + value.size() + (small.flags ? 2 : 1));
    EXPECT_EQ(log.count("ork_snprintf"), small.flags ? 3u : 2u);
    EXPECT_EQ(log.calls_of({"ork_snprintf"}).front(),
              "ork_snprintf(7,text,200,err,'" + head + "')");
    EXPECT_EQ(std::exchange(h.err, 0), 5u);
  }
  EXPECT_EQ(text, head + value + (small.flags ? " \n" : "\n"));
  const auto failing = spy::fail(start_tag, 5);
  const std::string element = "<" + value + "/>";
  spy::Log log;
  to_xml("e", 200);
  EXPECT_CALLS(log.calls_of({"xml_enum_print", "end_tag"}),
               std::vector<std::string>{"xml_enum_print(7,text,'" + element + "',200," +
                                            std::to_string(element.size()) + ",err)",
                                        "end_tag(7,text,'e',200,err)"});
  EXPECT_EQ(h.err, 5u);
}

TEST_P(SmallTypeForms, on_the_wire_are_made_of_all_their_calls_after_an_error_in_the_first) {
  spy::name(object, small.size, "obj");
  const auto failing = spy::fail(_ork_instance_variant_marshal, 5);
  const std::vector<std::string> behind =
      small.flags ? std::vector<std::string>{"_ork_variant_jump_marshal(7,text,?,10,err)",
                                             "_ork_variant_jump_marshal(7,text,?,4,err)"}
                  : std::vector<std::string>{"u_int32_marshal(7,text,obj+12,10,err)"};
  spy::Log log;
  EXPECT_EQ(function<Marshal>(schema.functions, "_marshal")(
                h, instance, reinterpret_cast<uint8_t*>(text), object, 10, &h.err),
            0u);
  EXPECT_CALLS(log.calls_of({"_ork_variant_jump_marshal", "u_int32_marshal"}), behind);
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(std::string(text, sizeof text), std::string(sizeof text, '\0'));
}

TEST_P(SmallTypeForms, in_cr_style_are_for_the_handles_instance_and_slot_under_the_types_name) {
  const std::pair<const char*, std::string> forms[] = {
      {"_print_cr", type + "@" + type + ":" + value + (small.flags ? " \n" : "\n")},
      {"_toxml_cr", "<" + type + ">\n<" + value + "/></" + type + ">\n"}};
  for (const auto& [suffix, expected] : forms) {
    const auto form = function<CrForm>(schema.functions, suffix);
    {
      text[0] = '\0';
      spy::Log log;
      EXPECT_EQ(form(h, object, text, 200), expected.size());
      const auto calls = log.calls();
      EXPECT_GT(calls.size(), 2u);
      for (const std::string& call : calls) {
        EXPECT_TRUE(call == "ork_clear_last_error()" ||
                    (call.find("(9,") == call.find('(') && call.find(",cr_error") < call.size()))
            << call;
      }
    }
    EXPECT_EQ(text, expected);
    text[0] = '\0';
    EXPECT_EQ(form(h, object, text, static_cast<uint32_t>(expected.size())), 0xFFFFFFFFu)
        << "one byte short of its NUL";
    EXPECT_EQ(h->cr_error, 90u);
    h->cr_error = 5;
    ork_store_err(h, 77);
    std::strcpy(text, "untouched");
    spy::Log log;
    EXPECT_EQ(form(h, object, text, 200), 0xFFFFFFFFu);
    EXPECT_CALLS(log, {});
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(std::exchange(h->cr_error, 0), 5u);
    EXPECT_EQ(h.last_error(), 77u);
  }
}

TEST_P(SmallTypeForms, are_neither_written_nor_read_once_an_error_stands) {
  const Document document = parsed("<e><" + small.values[0] + "/></e>");
  const kit::Snapshot before(object, small.size);
  std::strcpy(text, "untouched");
  h.err = 5;
  spy::Log log;
  EXPECT_EQ(print("e", 200), 0u);
  EXPECT_EQ(to_xml("e", 200), 0u);
  function<FromXml>(schema.functions, "_from_xml")(h, instance, "//e", document.get(), object,
                                                   &h.err, text, 200);
  EXPECT_CALLS(log, {});
  EXPECT_STREQ(text, "untouched");
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 5u);
}

TEST_P(SmallTypeForms, on_the_wire_are_of_the_one_variant_unless_they_or_the_domain_have_none) {
  const struct {
    int8_t variant, known;
    uint8_t sent;
    uint32_t error;
  } rows[] = {{0, 0, 0, 0},      {0, -1, 0xff, 43},   {-2, -1, 0xfe, 0},
              {-2, -2, 0xfe, 0}, {-2, 0, 0xfe, 0},    {6, 9, 0, 0},
              {6, 4, 0, 43},     {6, -128, 0x80, 43}, {-1, -2, 0xfe, 43}};
  const auto marshal = function<Marshal>(schema.functions, "_marshal");
  auto* const buffer = reinterpret_cast<uint8_t*>(text);
  for (const auto& row : rows) {
    static_cast<ork_object*>(object)->variant = row.variant;
    const auto known = spy::answer(ork_domain_lookup_variant, row.known);
    spy::Log log;
    EXPECT_EQ(marshal(h, instance, buffer, object, 6, &h.err), small.flags ? 6u : 5u);
    EXPECT_CALLS(log.calls_of({"ork_store_epoch_err"}),
                 std::vector<std::string>(row.error / 43, "ork_store_epoch_err(43,err)"));
    EXPECT_EQ(h.last_error(), row.error) << +row.variant << " of " << +row.known;
    EXPECT_EQ(buffer[0], row.sent) << +row.variant << " of " << +row.known;
  }
  EXPECT_EQ(h.err, 0u);
  static_cast<ork_object*>(object)->variant = 0;
}

INSTANTIATE_TEST_SUITE_P(Types, SmallTypeForms, testing::Range(0U, 12U), [](const auto& which) {
  return std::string(wayfind_small_types[which.param].name);
});

// ---- Paths that do not fit --------------------------------------------------

// Reads an object from an element under a path of so many characters that holds all values. Gives
// the number of probes.
size_t probes_of(SpiedHandle& h, const std::string& type, void* object, size_t length) {
  const std::string name(length - 2, 'n');
  std::string children;
  for (const std::string& value : told::small(type)->values) {
    children += "<" + value + "/>";
  }
  const Document document = parsed("<" + name + ">" + children + "</" + name + ">");
  const wayfind_small_type* schema = wayfind_small_types;
  while (type != schema->name) {
    ++schema;
  }
  char reason[20] = "";
  spy::Log log;
  function<FromXml>(schema->functions, "_from_xml")(
      h, instance, ("//" + name).c_str(), document.get(), object, &h.err, reason, sizeof reason);
  EXPECT_EQ(h.err, 0u) << length;
  EXPECT_STREQ(reason, "") << length;
  return log.count("xml_get_element_value");
}

// A slash and the names have 24, 23 and 22 characters, and a path of 255 is the longest that fits.
TEST(EnumPath, that_does_not_fit_is_a_value_that_is_not_there) {
  const struct {
    size_t length;
    uint32_t value;
    size_t probes;
  } rows[] = {{231, 0, 1}, {232, 1, 1}, {233, 2, 1}, {234, 99, 0}};
  SpiedHandle h;
  auto* const object = fwe_cl_wayfind_show_global_type_e_create(h, instance);
  for (const auto& row : rows) {
    reinterpret_cast<EnumObject*>(object)->value = 99;
    EXPECT_EQ(probes_of(h, "fwe_cl_wayfind_show_global_type_e", object, row.length), row.probes)
        << row.length;
    EXPECT_EQ(reinterpret_cast<EnumObject*>(object)->value, row.value) << row.length;
  }
  fwe_cl_wayfind_show_global_type_e_destroy(h, instance, object);
}

// A slash and the names have 34, 37, 29, 30 and 30 characters.
TEST(FlagPath, that_does_not_fit_is_a_flag_that_is_not_there) {
  const struct {
    size_t length;
    uint8_t bits;
    size_t probes;
  } rows[] = {{218, 0x1f, 5}, {219, 0x1d, 4}, {221, 0x1d, 4}, {222, 0x1c, 3},
              {225, 0x1c, 3}, {226, 0x04, 1}, {227, 0, 0}};
  SpiedHandle h;
  auto* const object = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  uint8_t& bits = kit::bytes(object)[11];
  for (const auto& row : rows) {
    bits = 0;
    EXPECT_EQ(probes_of(h, "fwe_cl_wayfind_hop_chan_flags", object, row.length), row.probes)
        << row.length;
    EXPECT_EQ(bits, row.bits) << row.length;
  }
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, object);
}

}  // namespace
