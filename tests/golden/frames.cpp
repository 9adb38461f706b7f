// The frame of every message and control message against the files that the independent encoder
// wrote, and back.
#include <fstream>
#include <iterator>

#include "behaviour/bundles/family.h"

namespace {

using messages::Bundle;
using kit::Handle;
using messages::Message;

constexpr uint32_t sequence = 0x01020304;

struct Section {
  std::string title;
  std::vector<uint8_t> bytes;
};

// What a file holds: sections of a title and lines of an offset and sixteen bytes.
std::vector<Section> golden(const std::string& name) {
  std::ifstream file(std::string(WAYFIND_GOLDEN_FRAMES) + "/" + name + ".golden");
  EXPECT_TRUE(file) << name;
  std::vector<Section> sections;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("== ")) {
      sections.push_back({line.substr(3, line.find(',') - 3), {}});
      continue;
    }
    for (size_t at = 8; at + 1 < line.size(); at += 3) {
      sections.back().bytes.push_back(
          static_cast<uint8_t>(std::stoul(line.substr(at, 2), nullptr, 16)));
    }
  }
  return sections;
}

class GoldenMessage : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
};

TEST_P(GoldenMessage, marshals_to_the_frame) {
  const std::vector<Section> sections = golden(message.name());
  ASSERT_EQ(sections.size(), 2u);
  for (const Section& section : sections) {
    const Handle handle(section.title == "tracking on" ? ORK_TRACKING_ON : ORK_TRACKING_OFF);
    handle->send_sequence = sequence;
    void* msg = message.create(handle.get(), 0);
    for (size_t i = 0; i < message.record_count(); ++i) {
      encoders::Filler(handle.get(), 2)
          .fill(message.record(i), message.slots(msg)[i], message.record(i).name);
    }
    std::vector<uint8_t> buffer(message.len(handle.get(), 0, msg) + 1);
    uint32_t err = 0;
    buffer.resize(message.marshal(handle.get(), 0, buffer.data(), msg,
                                  static_cast<int32_t>(buffer.size()) - 1, &err));
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(buffer, section.bytes) << section.title;
    message.destroy(handle.get(), 0, msg);
  }
}

TEST_P(GoldenMessage, unmarshals_and_marshals_back_the_same) {
  for (const Section& section : golden(message.name())) {
    const Handle handle(section.title == "tracking on" ? ORK_TRACKING_ON : ORK_TRACKING_OFF);
    handle->send_sequence = sequence;
    void* msg = nullptr;
    uint32_t err = 0;
    const auto length = static_cast<int32_t>(section.bytes.size());
    EXPECT_EQ(message.unmarshal_only(handle.get(), 0, &msg, section.bytes.data(), length, &err),
              section.bytes.size());
    EXPECT_EQ(err, 0u);
    std::vector<uint8_t> again(section.bytes.size() + 1);
    EXPECT_EQ(message.marshal(handle.get(), 0, again.data(), msg, length, &err),
              section.bytes.size());
    again.pop_back();
    EXPECT_EQ(again, section.bytes) << section.title;
    message.destroy(handle.get(), 0, msg);
  }
}

INSTANTIATE_TEST_SUITE_P(All, GoldenMessage, testing::ValuesIn(messages::all()),
                         messages::ByName());

class GoldenBundle : public testing::TestWithParam<Bundle> {};

TEST_P(GoldenBundle, control_messages_marshal_to_their_frames) {
  const Bundle bundle = GetParam();
  const std::vector<Section> sections = golden(bundle.name());
  ASSERT_EQ(sections.size(), 3u);
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    handle->send_sequence = sequence;
    const auto frame = [&](messages::Kind kind) {
      std::vector<uint8_t> bytes(43);
      uint32_t err = 0;
      EXPECT_EQ(bundle.control(kind).marshal(handle.get(), 0, bytes.data(), 43, &err), 43u);
      EXPECT_EQ(err, 0u);
      return bytes;
    };
    EXPECT_EQ(sections[0].title, "start");
    EXPECT_EQ(frame(messages::start), sections[0].bytes);
    EXPECT_EQ(frame(messages::abort), sections[1].bytes);
    frame(messages::start);
    EXPECT_EQ(frame(messages::commit), sections[2].bytes);
  }
}

INSTANTIATE_TEST_SUITE_P(All, GoldenBundle, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
