// Unmarshal call for call, over all messages: the partial message, and the way to a handler.
#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;
using messages::instance;
using messages::Outcome;
using messages::Stage;

struct Case {
  std::string what;
  uint32_t err = 0;
  int32_t cut = 0;          // bytes taken off the end of the frame
  unsigned fail_alloc = 0;  // the allocation that fails
  ork_tracking tracking = ORK_TRACKING_ABSENT;
};

// Destroys a message that may lack records or have unread ones, its calls apart.
void discard(const Message& message, ork_handle* handle, void* msg) {
  message.destroy(handle, instance, msg);
}

class UnmarshalCalls : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();

  std::vector<uint8_t> frame(ork_tracking tracking) const {
    const Handle handle(tracking);
    handle->send_sequence = 0x0A0B0C0D;
    return messages::Made(message, handle.get(), 3).frame();
  }

  Outcome only(const Case& each, decltype(&by_hand::unmarshal_only) way, bool& set) const {
    const std::vector<uint8_t> bytes = frame(each.tracking);
    const auto length = static_cast<int32_t>(bytes.size()) - each.cut;
    Stage stage(message, each.tracking);
    // A copy without the bytes cut off, so that a read behind them is seen.
    std::vector<uint8_t>& buffer = stage.give_buffer(static_cast<size_t>(length));
    std::copy_n(bytes.begin(), length, buffer.begin());
    stage.err = each.err;
    int untouched = 0;
    void* msg = &untouched;
    Outcome outcome;
    {
      const spy::Log log;
      spy::fail_alloc(each.fail_alloc);
      const uint32_t result =
          way(message, stage.handle(), instance, &msg, buffer.data(), length, &stage.err);
      spy::fail_alloc(0);
      set = msg != &untouched;
      outcome = stage.outcome(log, result, set ? msg : nullptr);
    }
    if (set) {
      discard(message, stage.handle(), msg);
    }
    return outcome;
  }

  Outcome same(const Case& each, bool* was_set = nullptr) const {
    bool by_hand_set;
    bool set;
    const Outcome hand = only(each, by_hand::unmarshal_only, by_hand_set);
    const Outcome made = only(
        each,
        [](const Message& m, ork_handle* handle, uint32_t i, void** out, const uint8_t* buffer,
           int32_t length,
           uint32_t* err) { return m.unmarshal_only(handle, i, out, buffer, length, err); },
        set);
    messages::expect_same(made, hand, each.what);
    EXPECT_EQ(set, by_hand_set) << each.what;
    if (was_set != nullptr) {
      *was_set = set;
    }
    return made;
  }
};

TEST_P(UnmarshalCalls, only_reads_header_and_records_in_order) {
  for (const ork_tracking tracking : messages::trackings) {
    bool set;
    const Outcome made = same({"whole", 0, 0, 0, tracking}, &set);
    EXPECT_TRUE(set);
    EXPECT_EQ(made.err, 0u);
    EXPECT_EQ(made.result, frame(tracking).size());
    EXPECT_EQ(made.header.marker, 0xBC);
    EXPECT_EQ(made.header.sequence, 0x0A0B0C0Du);
    EXPECT_EQ(made.header.length, made.result);
    EXPECT_EQ(made.header.sttr_marker, tracking == ORK_TRACKING_ON ? 1 : 0);
    EXPECT_EQ(made.calls.front(), "ork_clear_last_error()");
    EXPECT_EQ(made.calls[1],
              "alloc_fn(7," + std::to_string(message.record_count() == 2 ? 48 : 40) + ")=new1");
    EXPECT_EQ(made.calls[2], "counter_notify_fn(create_count,1,7)");
    EXPECT_EQ(made.calls[3], "_ork_message_header_unmarshal(7,buffer,new1+12," +
                                 std::to_string(made.result) + ",err)");
  }
}

TEST_P(UnmarshalCalls, only_sets_no_tag_and_starts_no_trace) {
  const Outcome made = same({"whole"});
  for (const std::string& call : made.calls) {
    EXPECT_EQ(call.find("tawny"), std::string::npos) << call;
    EXPECT_EQ(call.find("flight"), std::string::npos) << call;
  }
}

TEST_P(UnmarshalCalls, only_with_a_pending_error_does_nothing) {
  bool set;
  const Outcome made = same({"pending", 22}, &set);
  EXPECT_FALSE(set);
  EXPECT_EQ(made.result, 0u);
  EXPECT_CALLS(made.calls,
               std::vector<std::string>{std::string("trace(debug,Error present in call to ") +
                                        message.name() + " unmarshal: Invalid argument)"});
}

TEST_P(UnmarshalCalls, only_leaves_a_partial_message_at_every_truncation) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const auto size = static_cast<int32_t>(frame(tracking).size());
    for (int32_t cut = 1; cut <= size; cut += cut < 20 || size - cut < 60 ? 1 : 23) {
      bool set;
      const Outcome made = same({"cut " + std::to_string(cut), 0, cut, 0, tracking}, &set);
      EXPECT_TRUE(set);
      if (tracking == ORK_TRACKING_OFF || size - cut < 43) {
        EXPECT_EQ(made.err, 90u) << cut;  // a state byte alone may be missing at the end
      }
      EXPECT_EQ(made.records, std::vector<bool>(message.record_count(), true))
          << "each record is made, if not read";
      if (size - cut < 27) {
        EXPECT_EQ(made.result, 16u) << "nothing of the header and the step over the identifier";
      }
    }
  }
}

TEST_P(UnmarshalCalls, only_without_memory_for_the_object) {
  bool set;
  const Outcome made = same({"no memory", 0, 0, 1}, &set);
  EXPECT_FALSE(set);
  EXPECT_EQ(made.result, 0u);
  EXPECT_EQ(made.err, 12u);
  EXPECT_CALLS(made.calls,
               {"ork_clear_last_error()",
                message.record_count() == 2 ? "alloc_fn(7,48)=null" : "alloc_fn(7,40)=null",
                "ork_store_err(12)"});
}

TEST_P(UnmarshalCalls, only_without_memory_for_the_first_record) {
  bool set;
  const Outcome made = same({"no memory", 0, 0, 2}, &set);
  EXPECT_TRUE(set) << "with what there is";
  EXPECT_EQ(made.err, 12u);
  EXPECT_NE(std::find(made.calls.begin(), made.calls.end(), "ork_store_err(12)"), made.calls.end());
  EXPECT_EQ(made.result, 43u);
  EXPECT_FALSE(made.records[0]);
}

TEST_P(UnmarshalCalls, only_without_memory_for_the_first_record_replaces_the_error_of_the_header) {
  bool set;
  const Outcome made = same({"no memory behind an unreadable header", 0,
                             static_cast<int32_t>(frame(ORK_TRACKING_ABSENT).size()) - 20, 2},
                            &set);
  EXPECT_TRUE(set) << "with what there is";
  EXPECT_EQ(made.err, 12u) << "no longer the header's 90";
  EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "ork_store_err(12)"), 1);
  EXPECT_EQ(made.result, 16u);
  EXPECT_FALSE(made.records[0]);
}

TEST_P(UnmarshalCalls, only_survives_every_failing_allocation) {
  for (unsigned nth = 1; nth <= 40; ++nth) {
    same({"allocation " + std::to_string(nth), 0, 0, nth});
  }
}

TEST_P(UnmarshalCalls, only_does_not_look_at_the_identifier_or_the_headers_values) {
  const Handle handle;
  std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  std::fill_n(bytes.begin(), 43, uint8_t{0x5A});
  uint32_t err = 0;
  void* msg = nullptr;
  EXPECT_EQ(message.unmarshal_only(handle.get(), 0, &msg, bytes.data(),
                                   static_cast<int32_t>(bytes.size()), &err),
            bytes.size());
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(message.header(msg).marker, 0x5A) << "kept as it was read";
  message.destroy(handle.get(), 0, msg);
}

TEST_P(UnmarshalCalls, only_asks_no_domain) {
  const Handle handle;
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  messages::set_peer_without(handle, {message.name()});
  uint32_t err = 0;
  void* msg = nullptr;
  message.unmarshal_only(handle.get(), 0, &msg, bytes.data(), static_cast<int32_t>(bytes.size()),
                         &err);
  EXPECT_EQ(err, 0u);
  message.destroy(handle.get(), 0, msg);
}

// A negative length is the header's reader's to refuse; nothing of the buffer is the library's
// then.
TEST_P(UnmarshalCalls, only_hands_a_negative_length_to_the_headers_reader) {
  for (const int32_t length : {-1, INT32_MIN}) {
    Stage stage(message, ORK_TRACKING_OFF);
    uint8_t& byte = stage.give_buffer(0)[0];
    void* msg = nullptr;
    {
      const spy::Log log;
      EXPECT_EQ(message.unmarshal_only(stage.handle(), instance, &msg, &byte, length, &stage.err),
                16u);
      EXPECT_CALLS(log.calls_of({"_ork_message_header_unmarshal"}),
                   std::vector<std::string>{"_ork_message_header_unmarshal(7,buffer,new1+12," +
                                            std::to_string(length) + ",err)"});
    }
    EXPECT_EQ(stage.err, 90u);
    ASSERT_NE(msg, nullptr);
    message.destroy(stage.handle(), instance, msg);
  }
}

// ---- Delivery ---------------------------------------------------------------

struct Delivered {
  int runs = 0;
  ork_handle* handle = nullptr;
  uint32_t instance = 0;
  void* msg = nullptr;
  uint32_t* err = nullptr;
  uint32_t answer = 0;
};

void take(ork_handle* handle, uint32_t each, void* ctx, void* msg, uint32_t* err) {
  spy::Recorder::call("handler");
  *static_cast<Delivered*>(ctx) = {static_cast<Delivered*>(ctx)->runs + 1, handle, each, msg, err,
                                   static_cast<Delivered*>(ctx)->answer};
  *err = static_cast<Delivered*>(ctx)->answer;
}

TEST_P(UnmarshalCalls, delivers_to_the_handler_it_was_given) {
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  for (const uint32_t answer : {0u, 5u}) {
    Stage stage(message, ORK_TRACKING_ABSENT);
    Delivered delivered;
    delivered.answer = answer;
    void* out = &delivered;
    const uint32_t result =
        message.unmarshal(stage.handle(), instance, &delivered, &out, bytes.data(),
                          static_cast<int32_t>(bytes.size()), take, &stage.err);
    EXPECT_EQ(result, bytes.size());
    EXPECT_EQ(delivered.runs, 1);
    EXPECT_EQ(delivered.handle, stage.handle());
    EXPECT_EQ(delivered.instance, instance);
    EXPECT_EQ(delivered.err, &stage.err);
    EXPECT_EQ(delivered.msg, out) << "both hold the same";
    EXPECT_EQ(stage.err, answer) << "the handler's word stands";
    message.destroy(stage.handle(), instance, out);
  }
}

TEST_P(UnmarshalCalls, without_any_handler_gives_38_and_the_message) {
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  for (const bool with_out : {true, false}) {
    Stage stage(message, ORK_TRACKING_ABSENT);
    std::vector<std::vector<std::string>> calls;
    for (const bool library : {false, true}) {
      stage.err = 0;
      std::vector<uint8_t>& buffer = stage.give_buffer(bytes.size());
      std::copy(bytes.begin(), bytes.end(), buffer.begin());
      void* out = nullptr;
      const spy::Log log;
      const auto length = static_cast<int32_t>(bytes.size());
      const uint32_t result =
          library ? message.unmarshal(stage.handle(), instance, nullptr, with_out ? &out : nullptr,
                                      buffer.data(), length, nullptr, &stage.err)
                  : by_hand::unmarshal(message, stage.handle(), instance, nullptr,
                                       with_out ? &out : nullptr, buffer.data(), length, nullptr,
                                       &stage.err);
      calls.push_back(log.calls());
      EXPECT_EQ(result, bytes.size());
      EXPECT_EQ(stage.err, 38u);
      EXPECT_EQ(ork_handle_last_error(stage.handle()), 38u);
      EXPECT_EQ(out != nullptr, with_out);
      message.destroy(stage.handle(), instance, out);
    }
    EXPECT_CALLS(calls[1], calls[0]);
    EXPECT_EQ(calls[1].back(), std::string("trace(info,default fwe_ui_wayfind_") + message.name() +
                                   "_message handler called)");
    EXPECT_EQ(calls[1][calls[1].size() - 2], "ork_store_err(38)");
    if (!with_out) {
      stage.lose();
    }
  }
}

TEST_P(UnmarshalCalls, failed_read_runs_no_handler_and_loses_the_message) {
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  for (const size_t length :
       {size_t{0}, size_t{26}, size_t{27}, size_t{42}, size_t{43}, bytes.size() - 1}) {
    Outcome ways[2];
    for (const bool library : {false, true}) {
      Stage stage(message, ORK_TRACKING_ABSENT);
      std::vector<uint8_t>& buffer = stage.give_buffer(length);
      std::copy_n(bytes.begin(), length, buffer.begin());
      Delivered delivered;
      void* out = &delivered;
      const spy::Log log;
      const auto room = static_cast<int32_t>(length);
      const uint32_t result =
          library ? message.unmarshal(stage.handle(), instance, &delivered, &out, buffer.data(),
                                      room, take, &stage.err)
                  : by_hand::unmarshal(message, stage.handle(), instance, &delivered, &out,
                                       buffer.data(), room, take, &stage.err);
      ways[library] = stage.outcome(log, result, nullptr);
      EXPECT_EQ(delivered.runs, 0);
      EXPECT_EQ(out, nullptr);
      stage.lose();
    }
    const Outcome& made = ways[1];
    messages::expect_same(made, ways[0], "length " + std::to_string(length));
    EXPECT_EQ(made.err, 90u);
    EXPECT_GE(made.live_blocks, 1 + message.record_count())
        << "the partial message stays allocated";
    EXPECT_EQ(made.destroyed, 0u);
    EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "free_fn(7,new1)"), 0);
    EXPECT_EQ(std::count(made.calls.begin(), made.calls.end(), "orklib_msg_recorder_get_state()"),
              0);
  }
}

// What out_msg points at, seen from the two that run between the read and the return.
struct Seen {
  void* out;
  void* at_recorder;
  void* at_handler;
};

TEST_P(UnmarshalCalls, out_msg_holds_the_message_before_it_is_recorded_and_delivered) {
  Stage stage(message, ORK_TRACKING_ABSENT);
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  Seen seen{&stage, nullptr, nullptr};
  const auto look = spy::replace(orklib_msg_recorder_get_state, [&] {
    seen.at_recorder = seen.out;
    return 0u;
  });
  const ork_message_handler handler = [](ork_handle*, uint32_t, void* ctx, void* msg, uint32_t*) {
    auto* held = static_cast<Seen*>(ctx);
    held->at_handler = held->out;
    EXPECT_EQ(held->out, msg);
  };
  message.unmarshal(stage.handle(), instance, &seen, &seen.out, bytes.data(),
                    static_cast<int32_t>(bytes.size()), handler, &stage.err);
  EXPECT_NE(seen.out, nullptr);
  EXPECT_EQ(seen.at_recorder, seen.out);
  EXPECT_EQ(seen.at_handler, seen.out);
  message.destroy(stage.handle(), instance, seen.out);
}

TEST_P(UnmarshalCalls, pending_error_leaves_out_msg_alone) {
  Stage stage(message, ORK_TRACKING_ABSENT);
  stage.err = 5;
  Delivered delivered;
  void* out = &delivered;
  uint8_t buffer[43] = {};
  const spy::Log log;
  EXPECT_EQ(message.unmarshal(stage.handle(), instance, &delivered, &out, buffer, sizeof buffer,
                              take, &stage.err),
            0u);
  EXPECT_EQ(out, &delivered);
  EXPECT_EQ(delivered.runs, 0);
  EXPECT_CALLS(
      log, std::vector<std::string>{std::string("trace(debug,Error present in call to ") +
                                    message.name() + " message unmarshal: Input/output error)"});
}

TEST_P(UnmarshalCalls, order_of_delivery) {
  Stage stage(message, ORK_TRACKING_ABSENT);
  const std::vector<uint8_t> bytes = frame(ORK_TRACKING_ABSENT);
  Delivered delivered;
  void* out = nullptr;
  std::vector<std::string> made;
  {
    const spy::Log log;
    message.unmarshal(stage.handle(), instance, &delivered, &out, bytes.data(),
                      static_cast<int32_t>(bytes.size()), take, &stage.err);
    made = log.calls();
  }
  EXPECT_EQ(made[0], "ork_clear_last_error()");
  EXPECT_EQ(made[1], "ork_clear_last_error()") << "once more in what reads the message";
  EXPECT_EQ(made[made.size() - 2], "orklib_msg_recorder_get_state()");
  EXPECT_EQ(made.back(), "handler");
  message.destroy(stage.handle(), instance, out);
}

INSTANTIATE_TEST_SUITE_P(All, UnmarshalCalls, testing::ValuesIn(messages::all()),
                         messages::ByName());

}  // namespace
