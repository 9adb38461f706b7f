// Every message there and back, between all kinds of handles.
#include "behaviour/messages/family.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;

struct Pairing {
  ork_tracking sender;
  ork_tracking receiver;
};

const Pairing pairings[] = {{ORK_TRACKING_ABSENT, ORK_TRACKING_ABSENT},
                            {ORK_TRACKING_OFF, ORK_TRACKING_OFF},
                            {ORK_TRACKING_ON, ORK_TRACKING_ON},
                            {ORK_TRACKING_ON, ORK_TRACKING_OFF},
                            {ORK_TRACKING_OFF, ORK_TRACKING_ON}};

class RoundTrip : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();

  void* receive(const Handle& handle, const std::vector<uint8_t>& frame) const {
    uint32_t err = 0;
    void* msg = nullptr;
    const auto length = static_cast<int32_t>(frame.size());
    EXPECT_EQ(message.unmarshal_only(handle.get(), 0, &msg, frame.data(), length, &err),
              frame.size());
    EXPECT_EQ(err, 0u);
    return msg;
  }
  std::vector<uint8_t> send(const Handle& handle, void* msg) const {
    std::vector<uint8_t> frame(message.len(handle.get(), 0, msg) + 1);
    uint32_t err = 0;
    frame.resize(message.marshal(handle.get(), 0, frame.data(), msg,
                                 static_cast<int32_t>(frame.size()) - 1, &err));
    EXPECT_EQ(err, 0u);
    return frame;
  }
};

TEST_P(RoundTrip, records_come_back_equal) {
  for (const auto& [sends, receives] : pairings) {
    const Handle sender(sends);
    const Handle receiver(receives);
    const messages::Made made(message, sender.get(), 9);
    void* msg = receive(receiver, send(sender, made.get()));
    for (size_t i = 0; i < message.record_count(); ++i) {
      EXPECT_EQ(Record(message.record(i)).compare(message.slots(msg)[i], made.record(i)), 0);
    }
    EXPECT_EQ(message.header(msg).sttr_marker, sends == ORK_TRACKING_ON ? 1 : 0)
        << "as the sender's was";
    message.destroy(receiver.get(), 0, msg);
  }
}

TEST_P(RoundTrip, marshal_of_what_came_back_is_identical) {
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle sender(tracking);
    const Handle receiver(tracking);
    const messages::Made made(message, sender.get(), 9);
    const std::vector<uint8_t> frame = send(sender, made.get());
    void* msg = receive(receiver, frame);
    EXPECT_EQ(send(receiver, msg), frame);
    message.destroy(receiver.get(), 0, msg);
  }
}

TEST_P(RoundTrip, consumed_is_the_length_of_the_result) {
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
    const Handle handle(tracking);
    const messages::Made made(message, handle.get(), 9);
    const std::vector<uint8_t> frame = send(handle, made.get());
    void* msg = receive(handle, frame);
    EXPECT_EQ(message.len(handle.get(), 0, msg), frame.size());
    message.destroy(handle.get(), 0, msg);
  }
}

TEST_P(RoundTrip, length_is_never_too_short) {
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const messages::Made made(message, handle.get(), 9);
    EXPECT_LE(send(handle, made.get()).size(), message.len(handle.get(), 0, made.get()));
  }
}

TEST_P(RoundTrip, frame_ends_with_the_records_images) {
  const Handle handle(ORK_TRACKING_OFF);
  const messages::Made made(message, handle.get(), 9);
  const std::vector<uint8_t> frame = send(handle, made.get());
  EXPECT_TRUE(std::equal(message.schema().luid, message.schema().luid + 16, frame.begin() + 27));
  std::vector<uint8_t> images;
  for (size_t i = 0; i < message.record_count(); ++i) {
    std::vector<uint8_t> image(frame.size());
    uint32_t err = 0;
    image.resize(Record(message.record(i))
                     .marshal(handle.get(), 0, image.data(), made.record(i),
                              static_cast<int32_t>(image.size()), &err));
    EXPECT_EQ(err, 0u);
    images.insert(images.end(), image.begin(), image.end());
  }
  EXPECT_EQ(std::vector<uint8_t>(frame.begin() + 43, frame.end()), images)
      << "one behind the other and nothing after them";
}

TEST_P(RoundTrip, xml_there_and_back_gives_the_same_frame) {
  const Handle handle(ORK_TRACKING_OFF);
  const messages::Made made(message, handle.get(), 9);
  std::string text(1 << 16, '\0');
  uint32_t err = 0;
  text.resize(message.to_xml(handle.get(), 0, text.data(), made.get(), 1 << 16, &err));
  ork_xml* xml = ork_xml_parse(text.data(), text.size(), &err, nullptr, 0);
  ASSERT_NE(xml, nullptr);
  void* back = message.from_xml(handle.get(), 0, xml, &err);
  ork_xml_free(xml);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(send(handle, back), send(handle, made.get()));
  message.destroy(handle.get(), 0, back);
}

TEST_P(RoundTrip, two_messages_of_another_seed_differ) {
  const Handle handle;
  const messages::Made one(message, handle.get(), 1);
  const messages::Made other(message, handle.get(), 3);
  EXPECT_NE(send(handle, one.get()), send(handle, other.get()))
      << "else the laws above would say nothing";
}

INSTANTIATE_TEST_SUITE_P(All, RoundTrip, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
