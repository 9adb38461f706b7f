// Text and XML of all control messages.
#include "behaviour/bundles/by_hand.h"

namespace {

using messages::Bundle;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 7;
constexpr Kind kinds[] = {messages::start, messages::abort, messages::commit};

class TextCalls : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();

  struct Text {
    std::vector<std::string> calls;
    uint32_t result;
    uint32_t err;
    uint32_t last_error;
    std::string buffer;

    bool operator==(const Text&) const = default;
  };
  Text render(Kind kind, bool xml, bool library, uint32_t length, uint32_t pending) const {
    const Handle handle;
    std::string buffer(256, '\xA5');
    buffer[0] = '\0';
    spy::forget_names();
    spy::name(buffer.data(), buffer.size(), "buffer");
    uint32_t err = pending;
    spy::name_at(&err, "err");
    Text text{};
    {
      const spy::Log log;
      if (library) {
        text.result =
            xml ? bundle.control(kind).to_xml(handle.get(), instance, buffer.data(), length, &err)
                : bundle.control(kind).print(handle.get(), instance, buffer.data(), length, &err);
      } else {
        text.result =
            xml ? by_hand::to_xml(bundle, kind, handle.get(), instance, buffer.data(), length, &err)
                : by_hand::print(bundle, kind, handle.get(), instance, buffer.data(), length, &err);
      }
      text.calls = log.calls();
    }
    text.err = err;
    text.last_error = ork_handle_last_error(handle.get());
    text.buffer = buffer;
    return text;
  }
  Text same(Kind kind, bool xml, uint32_t length, uint32_t pending = 0) const {
    const Text hand = render(kind, xml, false, length, pending);
    const Text made = render(kind, xml, true, length, pending);
    EXPECT_CALLS(made.calls, hand.calls) << bundle.name() << " " << length;
    EXPECT_TRUE(made == hand) << bundle.name() << " " << length;
    return made;
  }
  std::string expected(Kind kind, bool xml) const {
    const std::string word = messages::kind_names[kind];
    return xml ? "<bundle_" + word + " name=\"" + bundle.name() + "\">\n</bundle_" + word + ">\n"
               : "bundle " + word + "@" + bundle.name() + ": <<<<<<<<\n";
  }
};

TEST_P(TextCalls, form_of_both) {
  for (const Kind kind : kinds) {
    for (const bool xml : {false, true}) {
      const Text text = same(kind, xml, 200);
      EXPECT_EQ(text.buffer.substr(0, text.result), expected(kind, xml));
      EXPECT_EQ(text.err, 0u);
    }
  }
}

TEST_P(TextCalls, every_short_buffer) {
  for (const Kind kind : kinds) {
    for (const bool xml : {false, true}) {
      const size_t full = expected(kind, xml).size();
      for (uint32_t length = 0; length < full + 3; ++length) {
        EXPECT_EQ(same(kind, xml, length).err, length > full ? 0u : 90u) << length;
      }
    }
  }
}

TEST_P(TextCalls, pending_error_calls_nothing) {
  for (const Kind kind : kinds) {
    for (const bool xml : {false, true}) {
      const Text text = same(kind, xml, 200, 5);
      EXPECT_EQ(text.result, 0u);
      EXPECT_EQ(text.err, 5u);
      EXPECT_TRUE(text.calls.empty());
    }
  }
}

TEST_P(TextCalls, cr_forms_test_before_and_after) {
  const Handle handle;
  for (const Kind kind : kinds) {
    const messages::Control control = bundle.control(kind);
    char buffer[256] = "";
    EXPECT_EQ(control.print_cr(handle.get(), buffer, sizeof buffer), expected(kind, false).size());
    EXPECT_EQ(buffer, expected(kind, false));
    EXPECT_EQ(control.toxml_cr(handle.get(), buffer, sizeof buffer), expected(kind, true).size());
    EXPECT_EQ(buffer, expected(kind, true));
    EXPECT_EQ(control.print_cr(handle.get(), buffer, 5), 0xFFFFFFFFu);
    EXPECT_EQ(handle->cr_error, 90u);
    const spy::Log log;
    EXPECT_EQ(control.print_cr(handle.get(), buffer, sizeof buffer), 0xFFFFFFFFu);
    EXPECT_EQ(control.toxml_cr(handle.get(), buffer, sizeof buffer), 0xFFFFFFFFu);
    EXPECT_CALLS(log, std::initializer_list<const char*>{});
    handle->cr_error = 0;
    EXPECT_EQ(control.toxml_cr(handle.get(), buffer, 5), 0xFFFFFFFFu);
    handle->cr_error = 0;
  }
}

INSTANTIATE_TEST_SUITE_P(All, TextCalls, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
