// Messages and bundles through the dispatcher: what reaches whom, and that no stream of bad frames
// fills the memory.
#include "behaviour/bundles/rows.h"
#include "ork/show_core.h"

namespace {

using messages::Bundle;
using messages::control_frame;
using kit::Handle;
using messages::look;
using messages::Message;
using messages::Rows;
using messages::Seen;

class DispatchedBundle : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();
  const Handle sender;
  const Handle receiver;
  const Rows rows{look};
  Seen seen;

  uint32_t receive(const std::vector<uint8_t>& frame) {
    return rows.dispatch(receiver, &seen, frame);
  }
  // Sends every member, a repeatable one three times.
  std::vector<std::string> send_members() {
    std::vector<std::string> sent;
    for (const wayfind_member& member :
         std::span(bundle.schema().members, bundle.schema().member_count)) {
      const Message message(*member.message);
      for (uint32_t i = 0; i < (member.repeatable != 0 ? 3u : 1u); ++i) {
        EXPECT_EQ(receive(messages::Made(message, sender.get(), i).frame()), 0u);
        sent.emplace_back(message.name());
      }
    }
    return sent;
  }
};

TEST_P(DispatchedBundle, commit_shows_all_members_in_order) {
  EXPECT_EQ(receive(control_frame(sender.get(), bundle.start())), 0u);
  const std::vector<std::string> sent = send_members();
  EXPECT_TRUE(seen.members.empty());
  EXPECT_EQ(receive(control_frame(sender.get(), bundle.commit())), 0u);
  EXPECT_EQ(seen.commits, 1);
  EXPECT_EQ(seen.members, sent);
  EXPECT_EQ(messages::live_blocks(receiver), 0u) << "the members went with the bundle";
}

TEST_P(DispatchedBundle, abort_drops_all_members) {
  EXPECT_EQ(receive(control_frame(sender.get(), bundle.start())), 0u);
  send_members();
  EXPECT_GT(messages::live_blocks(receiver), 0u);
  EXPECT_EQ(receive(control_frame(sender.get(), bundle.abort())), 0u);
  EXPECT_EQ(seen.commits, 0);
  EXPECT_EQ(messages::live_blocks(receiver), 0u);
  EXPECT_EQ(receiver->bundle_rx_active, 0u);
}

TEST_P(DispatchedBundle, message_that_may_stand_once_is_refused_the_second_time) {
  control_frame(sender.get(), bundle.start());
  for (const wayfind_member& member :
       std::span(bundle.schema().members, bundle.schema().member_count)) {
    const Message message(*member.message);
    const messages::Made made(message, sender.get());
    made.frame();
    std::vector<uint8_t> buffer(message.len(sender.get(), 0, made.get()));
    uint32_t err = 0;
    const uint32_t written = message.marshal(sender.get(), 0, buffer.data(), made.get(),
                                             static_cast<int32_t>(buffer.size()), &err);
    EXPECT_EQ(err, member.repeatable != 0 ? 0u : 17u) << message.name();
    EXPECT_EQ(written > 0, member.repeatable != 0);
    EXPECT_EQ(sender->bundle_ctx, 1u) << "the bundle stays open";
  }
  control_frame(sender.get(), bundle.commit());
}

TEST_P(DispatchedBundle, request_message_is_a_member_that_may_stand_once) {
  control_frame(sender.get(), bundle.start());
  uint32_t err = 0;
  const auto add = [&] {
    bundle_message_validate_add(sender.get(), 0, message_ui_req_msg_luid, message_ui_req_msg_name,
                                &err);
  };
  add();
  EXPECT_EQ(err, 0u);
  bundle_message_increment_count(sender.get(), message_ui_req_msg_luid, &err);
  EXPECT_EQ(err, 0u);
  add();
  EXPECT_EQ(err, 17u);
  EXPECT_EQ(sender->bundle_ctx, 1u) << "the bundle stays open";
  control_frame(sender.get(), bundle.commit());
}

TEST_P(DispatchedBundle, sending_and_receiving_on_one_handle_are_independent) {
  const Handle both;
  EXPECT_EQ(rows.dispatch(both, &seen, control_frame(sender.get(), bundle.start())), 0u);
  EXPECT_EQ(both->bundle_rx_active, 1u);
  EXPECT_EQ(both->bundle_ctx, 0u);
  control_frame(both.get(), bundle.start());
  EXPECT_EQ(rows.dispatch(both, &seen, control_frame(sender.get(), bundle.abort())), 0u);
  EXPECT_EQ(both->bundle_rx_active, 0u);
  EXPECT_EQ(both->bundle_ctx, 1u);
  control_frame(both.get(), bundle.commit());
  EXPECT_EQ(both->bundle_ctx, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, DispatchedBundle, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

TEST(Dispatch, show_inside_another_show_is_refused_and_the_first_goes_on) {
  const Handle sender;
  const Handle other;
  const Handle receiver;
  const Rows rows(look);
  Seen seen;
  const std::vector<Bundle> bundles = messages::bundles();
  EXPECT_EQ(rows.dispatch(receiver, &seen, control_frame(sender.get(), bundles[1].start())), 0u);
  EXPECT_EQ(rows.dispatch(receiver, &seen, control_frame(other.get(), bundles[2].start())), 17u);
  EXPECT_EQ(rows.dispatch(receiver, &seen, control_frame(sender.get(), bundles[1].commit())), 0u);
  EXPECT_EQ(seen.commits, 1);
  control_frame(other.get(), bundles[2].abort());
}

// ---- Memory -----------------------------------------------------------------

// Deterministic damage; the header's length is kept true so that the message's own reader has to
// cope.
class Damage {
 public:
  void spoil(std::vector<uint8_t>& frame) {
    frame.resize(43 + next() % (frame.size() - 43));
    for (uint32_t i = next() % 8; i > 0 && frame.size() > 43; --i) {
      frame[43 + next() % (frame.size() - 43)] = static_cast<uint8_t>(next());
    }
    const auto length = static_cast<uint32_t>(frame.size());
    for (unsigned i = 0; i < 4; ++i) {
      frame[12 + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    }
  }

 private:
  uint32_t next() { return state_ = state_ * 1664525 + 1013904223, state_ >> 8; }

  uint32_t state_ = 1;
};

TEST(Dispatch, a_million_bad_frames_leave_the_memory_flat) {
  constexpr unsigned bad_frames = 1'000'000;
  const Handle sender;
  const Handle receiver([](ork_options& options) { options.memory_budget = 1 << 22; });
  const Rows rows;
  std::vector<std::vector<uint8_t>> frames;
  for (const Message& message : messages::all()) {
    frames.push_back(messages::Made(message, sender.get()).frame());
  }
  Damage damage;
  unsigned failed = 0;
  for (unsigned i = 0; i < bad_frames; ++i) {
    std::vector<uint8_t> frame = frames[i % frames.size()];
    damage.spoil(frame);
    failed += rows.dispatch(receiver, nullptr, frame) != 0 ? 1 : 0;
    ASSERT_EQ(messages::live_blocks(receiver), 0u) << i;
  }
  EXPECT_EQ(failed, bad_frames) << "whole ones find no handler";
}

TEST(Dispatch, bad_frames_inside_a_bundle_leave_its_members_alone) {
  const Handle sender;
  const Handle receiver;
  const Rows rows(look);
  Seen seen;
  const Bundle bundle = messages::bundle("fwe_cl_wayfind_show_hop_chan_response");
  const Message member = messages::message("fwe_cl_wayfind_hop_chan_msg");
  ASSERT_EQ(rows.dispatch(receiver, &seen, control_frame(sender.get(), bundle.start())), 0u);
  const std::vector<uint8_t> good = messages::Made(member, sender.get()).frame();
  ASSERT_EQ(rows.dispatch(receiver, &seen, good), 0u);
  const uint64_t blocks = messages::live_blocks(receiver);
  for (size_t length = 43; length < good.size(); ++length) {
    std::vector<uint8_t> frame(
        good.begin(), good.begin() + static_cast<long>(length) + 1);  // the byte behind may be read
    frame.pop_back();
    for (unsigned i = 0; i < 4; ++i) {
      frame[12 + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    }
    EXPECT_EQ(rows.dispatch(receiver, &seen, frame), 90u) << length;
    ASSERT_EQ(messages::live_blocks(receiver), blocks) << length;
  }
  EXPECT_EQ(rows.dispatch(receiver, &seen, good), 0u);
  EXPECT_EQ(rows.dispatch(receiver, &seen, control_frame(sender.get(), bundle.commit())), 0u);
  EXPECT_EQ(seen.members.size(), 2u);
}

}  // namespace
