// The text and XML of messages call for call, over all of them.
#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::instance;
using messages::Outcome;
using messages::Stage;

using Render = uint32_t (*)(const Message&, ork_handle*, uint32_t, char*, const void*, uint32_t,
                            uint32_t*);

struct Ways {
  const char* what;
  Render hand;
  Render library;
};

const Ways ways[] = {
    {"print", by_hand::print,
     [](const Message& m, ork_handle* handle, uint32_t each, char* buffer, const void* msg,
        uint32_t length,
        uint32_t* err) { return m.print(handle, each, buffer, msg, length, err); }},
    {"to_xml", by_hand::to_xml,
     [](const Message& m, ork_handle* handle, uint32_t each, char* buffer, const void* msg,
        uint32_t length,
        uint32_t* err) { return m.to_xml(handle, each, buffer, msg, length, err); }},
};

Outcome rendered(const Message& message, ork_tracking tracking, Render render, uint32_t length,
                 uint32_t err = 0) {
  Stage stage(message, tracking);
  const messages::Made made(message, stage.handle(), 5, instance);
  stage.name(made.get());
  std::vector<uint8_t>& buffer = stage.give_buffer(length);
  buffer[0] = 0;
  stage.err = err;
  const spy::Log log;
  const uint32_t result =
      render(message, stage.handle(), instance, reinterpret_cast<char*>(buffer.data()), made.get(),
             length, &stage.err);
  return stage.outcome(log, result, made.get());
}

std::string text_in(const Outcome& outcome) {
  return {reinterpret_cast<const char*>(outcome.buffer.data()), outcome.result};
}

class TextCalls : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();

  Outcome same(const Ways& each, ork_tracking tracking, uint32_t length, uint32_t err = 0) const {
    const Outcome hand = rendered(message, tracking, each.hand, length, err);
    const Outcome made = rendered(message, tracking, each.library, length, err);
    messages::expect_same(made, hand, std::string(each.what) + " length " + std::to_string(length));
    return made;
  }
};

TEST_P(TextCalls, in_a_full_buffer) {
  for (const Ways& each : ways) {
    for (const ork_tracking tracking : messages::trackings) {
      const Outcome made = same(each, tracking, 1 << 16);
      EXPECT_EQ(made.err, 0u);
      EXPECT_GT(made.result, 0u);
    }
  }
}

TEST_P(TextCalls, at_every_kind_of_short_buffer) {
  for (const Ways& each : ways) {
    const auto full =
        static_cast<uint32_t>(rendered(message, ORK_TRACKING_OFF, each.library, 1 << 16).result);
    for (uint32_t length = 0; length <= full + 2;
         length += length < 70 || length > full - 40 ? 1 : 53) {
      const Outcome made = same(each, ORK_TRACKING_OFF, length);
      EXPECT_EQ(made.err, length > full ? 0u : 90u) << each.what << " " << length;
    }
  }
}

TEST_P(TextCalls, pending_error_is_traced_and_nothing_else_happens) {
  const std::string name = message.name();
  EXPECT_CALLS(same(ways[0], ORK_TRACKING_OFF, 4096, 5).calls,
               std::vector<std::string>{"trace(debug,Already have error when printing " + name +
                                        ": Input/output error)"});
  EXPECT_CALLS(same(ways[1], ORK_TRACKING_OFF, 4096, 5).calls,
               std::vector<std::string>{"trace(debug,Already have error when rendering XML for " +
                                        name + ": Input/output error)"});
}

TEST_P(TextCalls, form_of_the_text) {
  const std::string text = text_in(rendered(message, ORK_TRACKING_OFF, ways[0].library, 1 << 16));
  EXPECT_EQ(
      text.rfind(std::string("message@") + message.name() + ": {\n  " + message.record(0).name, 0),
      0u)
      << text;
  EXPECT_EQ(text.substr(text.size() - 3), "\n}\n");
}

TEST_P(TextCalls, form_of_the_xml) {
  const std::string text = text_in(rendered(message, ORK_TRACKING_OFF, ways[1].library, 1 << 16));
  const std::string name = message.name();
  const std::string record = message.record(0).name;
  EXPECT_EQ(text.rfind("<" + name + ">\n<" + record + ">", 0), 0u) << text;
  const std::string last = message.record(message.record_count() - 1).name;
  const std::string end = "</" + last + ">\n</" + name + ">\n";
  EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

// Whatever number the header line gives, the text fails with 90 and the records are left out, but
// it is closed.
TEST_P(TextCalls, error_of_the_header_line_becomes_ninety) {
  const auto odd = spy::replace(ork_print_space,
                                [](ork_handle*, uint32_t, char*, uint32_t, int32_t, uint32_t* err) {
                                  *err = *err == 0 ? 5 : *err;
                                  return 0u;
                                });
  const Outcome made = same(ways[0], ORK_TRACKING_OFF, 4096);
  EXPECT_EQ(made.err, 90u);
  EXPECT_EQ(made.last_error, 90u);
  EXPECT_EQ(text_in(made), std::string("message@") + message.name() + ": {\n}\n");
  EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "ork_store_err(90)"), 1);
}

// What ends the last record stands as it is: the rule of 90 is for what keeps a record from being
// printed.
TEST_P(TextCalls, error_of_the_last_record_stays) {
  const std::string last = std::string(message.record(message.record_count() - 1).name) + ": {";
  const auto odd =
      spy::replace(ork_print_space, [&](ork_handle* handle, uint32_t each, char* buffer,
                                        uint32_t indent, int32_t room, uint32_t* err) {
        if (indent == 2 && std::string(buffer).find(last) !=
                               std::string::npos) {  // the blanks in front of its closing line
          *err = 5;
        }
        return spy::next(ork_print_space)(handle, each, buffer, indent, room, err);
      });
  const Outcome made = same(ways[0], ORK_TRACKING_OFF, 1 << 16);
  EXPECT_EQ(made.err, 5u);
  EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "ork_store_err(90)"), 0);
  const std::string text = text_in(made);
  EXPECT_EQ(text.substr(text.size() - 6), "  }\n}\n");
}

TEST_P(TextCalls, xml_is_closed_after_an_error_of_its_opening) {
  const auto odd = spy::replace(
      start_tag, [](ork_handle*, uint32_t, char*, const char*, int32_t, uint8_t, uint32_t* err) {
        *err = 5;
        return 0u;
      });
  const Outcome made = same(ways[1], ORK_TRACKING_OFF, 4096);
  EXPECT_EQ(made.err, 5u) << "no rule of 90 here";
  EXPECT_EQ(made.calls.size(), 3u);
  EXPECT_EQ(text_in(made), std::string("</") + message.name() + ">\n");
}

TEST_P(TextCalls, cr_forms_give_all_ones_after_an_error) {
  const Handle handle;
  const messages::Made made(message, handle.get(), 5);
  std::vector<char> buffer(1 << 16);
  uint32_t err = 0;
  const uint32_t printed = message.print(handle.get(), 0, buffer.data(), made.get(), 1 << 16, &err);
  const std::string text(buffer.data(), printed);
  buffer[0] = 0;
  EXPECT_EQ(message.print_cr(handle.get(), made.get(), buffer.data(), 1 << 16), printed);
  EXPECT_EQ(std::string(buffer.data(), printed), text);
  const uint32_t written =
      message.to_xml(handle.get(), 0, buffer.data(), made.get(), 1 << 16, &err);
  EXPECT_EQ(message.toxml_cr(handle.get(), made.get(), buffer.data(), 1 << 16), written);
  EXPECT_EQ(err, 0u);
  buffer[0] = 0;
  EXPECT_EQ(message.print_cr(handle.get(), made.get(), buffer.data(), 20), 0xFFFFFFFFu);
  EXPECT_EQ(handle->cr_error, 90u);
  handle->cr_error = 0;
  EXPECT_EQ(message.toxml_cr(handle.get(), made.get(), buffer.data(), 20), 0xFFFFFFFFu);
  EXPECT_EQ(handle->cr_error, 90u);
  handle->cr_error = 0;
}

TEST_P(TextCalls, cr_forms_run_the_body_with_a_pending_error) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 5, instance);
  char buffer[64] = "";
  stage.handle()->cr_error = 5;
  const spy::Log log;
  EXPECT_EQ(message.print_cr(stage.handle(), made.get(), buffer, sizeof buffer), 0xFFFFFFFFu);
  EXPECT_EQ(message.toxml_cr(stage.handle(), made.get(), buffer, sizeof buffer), 0xFFFFFFFFu);
  const std::string name = message.name();
  EXPECT_CALLS(log,
               std::vector<std::string>{
                   "trace(debug,Already have error when printing " + name + ": Input/output error)",
                   "trace(debug,Already have error when rendering XML for " + name +
                       ": Input/output error)"});
  EXPECT_EQ(stage.handle()->cr_error, 5u);
  stage.handle()->cr_error = 0;
}

// ---- From XML ---------------------------------------------------------------

struct XmlFree {
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};
using Xml = std::unique_ptr<ork_xml, XmlFree>;

Xml parse(const std::string& text) {
  uint32_t err = 0;
  char reason[128] = "";
  Xml xml(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, 0u) << reason << "\n" << text;
  return xml;
}

using Read = void* (*)(const Message&, ork_handle*, uint32_t, ork_xml*, uint32_t*, char*, uint32_t);

void* library_read(const Message& message, ork_handle* handle, uint32_t each, ork_xml* xml,
                   uint32_t* err, char* err_text, uint32_t err_text_len) {
  return message.from_xml(handle, each, xml, err, err_text, err_text_len);
}

struct ReadCase {
  uint32_t err = 0;
  unsigned fail_alloc = 0;
};

Outcome read(const Message& message, const std::string& document, Read way, const ReadCase& each) {
  Stage stage(message, ORK_TRACKING_OFF);
  const Xml xml = parse(document);
  char reason[64] = "";
  spy::name_at(xml.get(), "xml");
  spy::name_at(reason, "reason");
  stage.err = each.err;
  Outcome outcome;
  void* msg;
  {
    const spy::Log log;
    spy::fail_alloc(each.fail_alloc);
    msg = way(message, stage.handle(), instance, xml.get(), &stage.err, reason, sizeof reason);
    spy::fail_alloc(0);
    outcome = stage.outcome(log, msg != nullptr, msg);
  }
  message.destroy(stage.handle(), instance, msg);
  stage.lose();
  return outcome;
}

class FromXml : public TextCalls {
 protected:
  std::string document() const {
    return text_in(rendered(message, ORK_TRACKING_OFF, ways[1].library, 1 << 16));
  }
  Outcome same_read(const std::string& text, const ReadCase& each = {}) const {
    read(message, text, by_hand::from_xml,
         {});  // what is reported once per process has been reported from here on
    const Outcome hand = read(message, text, by_hand::from_xml, each);
    const Outcome made = read(message, text, library_read, each);
    messages::expect_same(made, hand, "from_xml");
    return made;
  }
};

TEST_P(FromXml, there_and_back_is_the_same) {
  const Handle handle;
  const messages::Made made(message, handle.get(), 5);
  const Xml xml = parse(document());
  uint32_t err = 0;
  void* back = message.from_xml(handle.get(), 0, xml.get(), &err);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(err, 0u);
  for (size_t i = 0; i < message.record_count(); ++i) {
    EXPECT_EQ(messages::Record(message.record(i)).compare(made.record(i), message.slots(back)[i]),
              0)
        << i;
  }
  message.destroy(handle.get(), 0, back);
}

TEST_P(FromXml, calls_in_order) {
  const Outcome made = same_read(document());
  EXPECT_EQ(made.err, 0u);
  EXPECT_EQ(made.result, 1u);
  EXPECT_EQ(made.calls[0], "ork_clear_last_error()");
}

TEST_P(FromXml, missing_element_leaves_defaults) {
  const Outcome made = same_read("<something></something>");
  EXPECT_EQ(made.err, 0u) << "cleared";
  EXPECT_EQ(made.result, 1u);
  const Handle handle;
  const Xml xml = parse("<something></something>");
  uint32_t err = 0;
  void* back = message.from_xml(handle.get(), 0, xml.get(), &err);
  void* fresh = message.create(handle.get(), 0);
  for (size_t i = 0; i < message.record_count(); ++i) {
    EXPECT_EQ(messages::Record(message.record(i))
                  .compare(message.slots(fresh)[i], message.slots(back)[i]),
              0);
  }
  message.destroy(handle.get(), 0, back);
  message.destroy(handle.get(), 0, fresh);
}

TEST_P(FromXml, pending_error_has_its_own_words) {
  const Outcome made = same_read(document(), {5, 0});
  EXPECT_EQ(made.result, 0u);
  EXPECT_CALLS(made.calls, std::vector<std::string>{
                               std::string("trace(debug,Already have error when rendering ") +
                               message.name() + " to XML: Input/output error)"});
}

TEST_P(FromXml, without_memory_gives_twelve) {
  for (const unsigned nth : {1u, 2u}) {
    const Outcome made = same_read(document(), {0, nth});
    EXPECT_EQ(made.result, 0u);
    EXPECT_EQ(made.err, 12u);
    EXPECT_EQ(made.calls.back(), "ork_store_err(12)");
  }
}

// Lets every value of one kind be unreadable.
template <class Target>
[[nodiscard]] spy::Replacement unreadable(void (*function)(ork_handle*, uint32_t, const char*,
                                                           ork_xml*, Target*, uint32_t*, char*,
                                                           uint32_t)) {
  return spy::replace(function, [](ork_handle*, uint32_t, const char*, ork_xml*, Target*,
                                   uint32_t* err, char*, uint32_t) { *err = 22; });
}

TEST_P(FromXml, other_error_loses_the_message) {
  const spy::Replacement all[] = {
      unreadable(u_int8_from_xml),      unreadable(u_int16_from_xml),
      unreadable(u_int32_from_xml),     unreadable(u_int64_from_xml),
      unreadable(ork_boolean_from_xml), unreadable(link_type_from_xml),
      unreadable(ip_address_from_xml),  spy::answer(xml_get_element_value, 22) /* enums */};
  const Outcome made = same_read(document());
  EXPECT_EQ(made.err, 22u);
  EXPECT_EQ(made.result, 0u);
  EXPECT_GT(made.live_blocks, 0u) << "lost to the caller, not destroyed";
  EXPECT_EQ(made.destroyed, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, TextCalls, testing::ValuesIn(messages::all()), messages::ByName());
INSTANTIATE_TEST_SUITE_P(All, FromXml, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
