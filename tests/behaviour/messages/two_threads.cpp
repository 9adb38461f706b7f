// Two threads on two handles share the descriptors and nothing else. Made to be run under the
// thread sanitizer too.
#include <thread>

#include "behaviour/bundles/rows.h"
#include "fwe_ui_wayfind/module.h"

namespace {

using messages::Bundle;
using messages::control_frame;
using kit::Handle;
using messages::Message;
using messages::Rows;
using messages::Seen;

constexpr unsigned rounds = 20;

// What one thread does with every message: all forms, there and back.
void exercise(const Message& message, ork_handle* handle, uint32_t seed) {
  const messages::Made made(message, handle, seed);
  const std::vector<uint8_t> frame = made.frame();
  uint32_t err = 0;
  void* msg = nullptr;
  message.unmarshal_only(handle, 0, &msg, frame.data(), static_cast<int32_t>(frame.size()), &err);
  EXPECT_EQ(err, 0u);
  for (size_t i = 0; i < message.record_count(); ++i) {
    EXPECT_EQ(messages::Record(message.record(i)).compare(message.slots(msg)[i], made.record(i)),
              0);
  }
  std::vector<char> text(1 << 16);
  message.print(handle, 0, text.data(), msg, 1 << 16, &err);
  message.to_xml(handle, 0, text.data(), msg, 1 << 16, &err);
  EXPECT_EQ(err, 0u);
  message.destroy(handle, 0, msg);
  message.destroy_cr(handle, message.create_cr(handle));
  err = 22;
  message.get(handle, 0, nullptr, &err);  // a trace
}

// One show sent and received on the same handle. Every second one is aborted.
void run_show(const Rows& rows, const Bundle& bundle, const Handle& handle, uint32_t seed) {
  Seen seen;
  std::vector<std::string> sent;
  EXPECT_EQ(rows.dispatch(handle, &seen, control_frame(handle.get(), bundle.start())), 0u);
  for (const wayfind_member& member :
       std::span(bundle.schema().members, bundle.schema().member_count)) {
    for (uint32_t i = 0; i < (member.repeatable != 0 ? 3u : 1u); ++i) {
      const std::vector<uint8_t> frame =
          messages::Made(Message(*member.message), handle.get(), seed + i).frame();
      EXPECT_EQ(rows.dispatch(handle, &seen, frame), 0u);
      sent.emplace_back(member.message->name);
    }
  }
  const bool committed = seed % 2 == 0;
  EXPECT_EQ(
      rows.dispatch(handle, &seen,
                    control_frame(handle.get(), committed ? bundle.commit() : bundle.abort())),
      0u);
  EXPECT_EQ(seen.commits, committed ? 1 : 0);
  EXPECT_EQ(seen.members, committed ? sent : std::vector<std::string>{});
  EXPECT_EQ(messages::live_blocks(handle), 0u);
}

class TwoThreads : public testing::TestWithParam<ork_tracking> {
 protected:
  // Runs work on a handle of its own in each of two threads.
  void run(const std::function<void(const Handle&, uint32_t)>& work) const {
    const auto thread = [&](uint32_t first) {
      const Handle handle(GetParam());
      for (uint32_t round = 0; round < rounds; ++round) {
        work(handle, first + round);
      }
    };
    std::thread other(thread, 0);
    thread(1000);
    other.join();
  }
};

TEST_P(TwoThreads, every_message) {
  const std::vector<Message> messages = messages::all();
  run([&](const Handle& handle, uint32_t seed) {
    for (const Message& message : messages) {
      exercise(message, handle.get(), seed);
    }
  });
}

TEST_P(TwoThreads, every_show) {
  const std::vector<Bundle> bundles = messages::bundles();
  const Rows rows(messages::look);
  run([&](const Handle& handle, uint32_t seed) {
    for (const Bundle& bundle : bundles) {
      run_show(rows, bundle, handle, seed);
    }
  });
}

TEST_P(TwoThreads, counters_lose_nothing) {
  const Message message = messages::all()[0];
  const ork_variant_entry& entry = message.schema().type->varinfo->entries[0];
  const ork_variant_entry before = entry;
  constexpr unsigned each = 5000;
  run([&](const Handle& handle, uint32_t) {
    for (unsigned i = 0; i < each; ++i) {
      message.destroy(handle.get(), 0, message.create_shallow(handle.get(), 0));
    }
  });
  EXPECT_EQ(entry.create_count - before.create_count, 2 * rounds * each);
  EXPECT_EQ(entry.destroy_count - before.destroy_count, 2 * rounds * each);
}

TEST_P(TwoThreads, start_of_the_trace_channel) {
  run([](const Handle&, uint32_t) { EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 0); });
  EXPECT_NE(g_ork_fwe_ui_wayfind_trace_module_id, 0);
}

INSTANTIATE_TEST_SUITE_P(All, TwoThreads, testing::Values(ORK_TRACKING_OFF, ORK_TRACKING_ON),
                         [](const auto& each) {
                           return each.param == ORK_TRACKING_ON ? "tracked" : "untracked";
                         });

}  // namespace
