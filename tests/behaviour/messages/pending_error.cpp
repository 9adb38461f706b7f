// An error slot is a word of 32 bits: a number whose lower half is 0 stops every function like any
// other.
#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Control;
using messages::Message;
using messages::instance;
using messages::Stage;

constexpr uint32_t pending = 65536;
constexpr uint32_t none = 0xFFFFFFFF;

class PendingError : public testing::TestWithParam<Message> {};

TEST_P(PendingError, stops_every_function_of_a_message_with_one_trace) {
  const Message message = GetParam();
  Stage stage(message, ORK_TRACKING_OFF);
  ork_handle* const handle = stage.handle();
  const messages::Made made(message, handle, 1, instance);
  const std::vector<void*> records = message.slots(made.get());
  std::vector<uint8_t> bytes(4096);
  auto* const chars = reinterpret_cast<char*>(bytes.data());
  void* out = &stage;
  stage.err = pending;
  const spy::Log log;
  for (size_t i = 0; i < message.record_count(); ++i) {
    EXPECT_EQ(message.get(handle, instance, made.get(), &stage.err, i), nullptr);
    EXPECT_EQ(message.get_detach(handle, instance, made.get(), &stage.err, i), nullptr);
    message.set(handle, instance, made.get(), nullptr, &stage.err, i);
    message.free_and_set(handle, instance, made.get(), nullptr, &stage.err, i);
  }
  EXPECT_EQ(message.marshal(handle, instance, bytes.data(), made.get(), 4096, &stage.err), 0u);
  EXPECT_EQ(message.unmarshal_only(handle, instance, &out, bytes.data(), 4096, &stage.err), 0u);
  EXPECT_EQ(
      message.unmarshal(handle, instance, nullptr, &out, bytes.data(), 4096, nullptr, &stage.err),
      0u);
  EXPECT_EQ(message.print(handle, instance, chars, made.get(), 4096, &stage.err), 0u);
  EXPECT_EQ(message.to_xml(handle, instance, chars, made.get(), 4096, &stage.err), 0u);
  EXPECT_EQ(message.from_xml(handle, instance, nullptr, &stage.err), nullptr);
  EXPECT_EQ(log.calls().size(), 4 * message.record_count() + 6);
  for (const std::string& call : log.calls()) {
    EXPECT_EQ(call.rfind("trace(debug,", 0), 0u) << call;
    EXPECT_NE(call.find(": Unknown error 65536)"), std::string::npos) << call;
  }
  EXPECT_EQ(stage.err, pending);
  EXPECT_EQ(out, &stage);
  EXPECT_EQ(message.slots(made.get()), records);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), 4096);
}

TEST_P(PendingError, of_the_handle_stops_the_cr_forms) {
  const Message message = GetParam();
  Stage stage(message, ORK_TRACKING_OFF);
  ork_handle* const handle = stage.handle();
  const messages::Made made(message, handle, 1, instance);
  char buffer[64] = "";
  handle->cr_error = pending;
  const spy::Log log;
  EXPECT_EQ(message.len_cr(handle, made.get()), 0u);
  EXPECT_EQ(
      message.marshal_cr(handle, made.get(), reinterpret_cast<uint8_t*>(buffer), sizeof buffer),
      none);
  EXPECT_EQ(message.print_cr(handle, made.get(), buffer, sizeof buffer), none);
  EXPECT_EQ(message.toxml_cr(handle, made.get(), buffer, sizeof buffer), none);
  message.create_cr(handle);
  EXPECT_EQ(log.count("alloc_fn"), 0u);
  EXPECT_EQ(log.count("ork_store_err"), 0u);
  EXPECT_EQ(std::exchange(handle->cr_error, 0), pending);
}

INSTANTIATE_TEST_SUITE_P(All, PendingError, testing::ValuesIn(messages::all()), messages::ByName());

class ControlPendingError : public testing::TestWithParam<Control> {};

TEST_P(ControlPendingError, stops_every_function_of_a_control_message_silently) {
  const Control control = GetParam();
  const Handle handle;
  spy::observe(handle.get());
  handle->bundle_ctx = 1;
  uint8_t bytes[64] = {};
  auto* const chars = reinterpret_cast<char*>(bytes);
  uint32_t err = pending;
  handle->cr_error = pending;
  {
    const spy::Log log;
    EXPECT_EQ(control.marshal(handle.get(), instance, bytes, sizeof bytes, &err), 0u);
    EXPECT_EQ(control.marshal_cr(handle.get(), bytes, sizeof bytes), none);
    EXPECT_EQ(control.unmarshal(handle.get(), instance, nullptr, nullptr, bytes, sizeof bytes,
                                nullptr, &err),
              43u);
    EXPECT_EQ(control.print(handle.get(), instance, chars, sizeof bytes, &err), 0u);
    EXPECT_EQ(control.print_cr(handle.get(), chars, sizeof bytes), none);
    EXPECT_EQ(control.to_xml(handle.get(), instance, chars, sizeof bytes, &err), 0u);
    EXPECT_EQ(control.toxml_cr(handle.get(), chars, sizeof bytes), none);
    EXPECT_EQ(control.from_xml(handle.get(), instance, nullptr, &err), nullptr);
    EXPECT_EQ(control.len_cr(handle.get()), 0u);
    control.create_cr(handle.get());
    EXPECT_CALLS(log, std::initializer_list<const char*>{});
  }
  EXPECT_EQ(err, pending);
  EXPECT_EQ(std::exchange(handle->cr_error, 0), pending);
  EXPECT_EQ(std::count(std::begin(bytes), std::end(bytes), 0), 64);
  EXPECT_EQ(std::exchange(handle->bundle_ctx, 0), 1u);
  spy::forget(handle.get());
}

INSTANTIATE_TEST_SUITE_P(All, ControlPendingError, testing::ValuesIn(messages::controls()),
                         messages::ByName());

}  // namespace
