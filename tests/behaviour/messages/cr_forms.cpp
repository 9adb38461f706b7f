// The cr forms of messages that have a body in common with a plain form: the same calls, with the
// handle's own instance and error.
#include "behaviour/messages/spied.h"

namespace {

using messages::Message;
using messages::Record;
using messages::instance;
using messages::Stage;

constexpr uint32_t room = 1 << 16;

struct Form {
  const char* what;
  uint32_t (*hand)(const Message&, ork_handle*, char* buffer, void* msg, uint32_t* err);
  uint32_t (*library)(const Message&, ork_handle*, char* buffer, void* msg);
};

uint8_t* bytes(char* buffer) { return reinterpret_cast<uint8_t*>(buffer); }

const Form forms_in_common[] = {
    {"len",
     [](const Message& m, ork_handle* handle, char*, void* msg, uint32_t*) {
       uint32_t sum = 43;
       for (size_t i = 0; i < m.record_count(); ++i) {
         sum += Record(m.record(i)).len(handle, instance, m.slots(msg)[i]);
       }
       return sum;
     },
     [](const Message& m, ork_handle* handle, char*, void* msg) { return m.len_cr(handle, msg); }},
    {"marshal",
     [](const Message& m, ork_handle* handle, char* buffer, void* msg, uint32_t* err) {
       return by_hand::marshal(m, handle, instance, bytes(buffer), msg, room, err);
     },
     [](const Message& m, ork_handle* handle, char* buffer, void* msg) {
       return m.marshal_cr(handle, msg, bytes(buffer), room);
     }},
    {"print",
     [](const Message& m, ork_handle* handle, char* buffer, void* msg, uint32_t* err) {
       return by_hand::print(m, handle, instance, buffer, msg, room, err);
     },
     [](const Message& m, ork_handle* handle, char* buffer, void* msg) {
       return m.print_cr(handle, msg, buffer, room);
     }},
    {"toxml",
     [](const Message& m, ork_handle* handle, char* buffer, void* msg, uint32_t* err) {
       return by_hand::to_xml(m, handle, instance, buffer, msg, room, err);
     },
     [](const Message& m, ork_handle* handle, char* buffer, void* msg) {
       return m.toxml_cr(handle, msg, buffer, room);
     }},
};

class CrForms : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
};

TEST_P(CrForms, do_the_same_with_the_handles_instance_and_error) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    Stage stage(message, tracking);
    const messages::Made made(message, stage.handle(), 3, instance + 1);
    stage.handle()->cr_instance = instance;
    stage.name(made.get());
    spy::name_at(&stage.err, "error");
    spy::name_at(&stage.handle()->cr_error, "error");
    for (const Form& form : forms_in_common) {
      std::vector<std::string> calls[2];
      std::vector<uint8_t> written[2];
      uint32_t results[2];
      for (const bool library : {false, true}) {
        std::vector<uint8_t>& memory = stage.give_buffer(room);
        auto* const buffer = reinterpret_cast<char*>(memory.data());
        buffer[0] = '\0';
        const spy::Log log;
        results[library] = library
                               ? form.library(message, stage.handle(), buffer, made.get())
                               : form.hand(message, stage.handle(), buffer, made.get(), &stage.err);
        calls[library] = log.calls();
        written[library] = memory;
      }
      EXPECT_CALLS(calls[1], calls[0]) << form.what;
      EXPECT_EQ(results[1], results[0]) << form.what;
      EXPECT_EQ(written[1], written[0]) << form.what;
    }
    EXPECT_EQ(stage.handle()->cr_error, 0u);
  }
}

TEST_P(CrForms, marshal_with_a_pending_error_only_traces) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 3, instance);
  std::vector<uint8_t>& buffer = stage.give_buffer(room);
  stage.handle()->cr_error = 5;
  const spy::Log log;
  EXPECT_EQ(message.marshal_cr(stage.handle(), made.get(), buffer.data(), room), 0xFFFFFFFFu);
  EXPECT_CALLS(log, {"trace(debug,Error present in call to message marshal: Input/output error)"});
  EXPECT_EQ(stage.handle()->cr_error, 5u);
  stage.handle()->cr_error = 0;
}

// All bytes were written and counted by then.
TEST_P(CrForms, marshal_gives_all_ones_after_an_error_of_its_last_steps) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 3, instance);
  std::vector<uint8_t>& buffer = stage.give_buffer(room);
  {
    const auto fails = spy::fail(_ork_message_header_marshal, 5);
    EXPECT_EQ(message.marshal_cr(stage.handle(), made.get(), buffer.data(), room), 0xFFFFFFFFu);
  }
  EXPECT_EQ(std::exchange(stage.handle()->cr_error, 0), 5u);
  messages::open(messages::bundle_with(message), stage.handle());
  {
    const auto fails = spy::fail(bundle_message_increment_count, 2);
    EXPECT_EQ(message.marshal_cr(stage.handle(), made.get(), buffer.data(), room), 0xFFFFFFFFu);
  }
  EXPECT_EQ(std::exchange(stage.handle()->cr_error, 0), 2u);
  messages::close(stage.handle());
}

INSTANTIATE_TEST_SUITE_P(All, CrForms, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
