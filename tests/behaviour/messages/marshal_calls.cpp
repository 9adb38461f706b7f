// Marshal call for call, over all messages.
#include <set>

#include "behaviour/messages/spied.h"
#include "support/bytes.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::instance;
using messages::Outcome;
using messages::Stage;

struct Case {
  std::string what;
  int32_t length;
  uint32_t err = 0;
  std::function<void(ork_handle*)> prepare = [](ork_handle*) {};
  ork_tracking tracking = ORK_TRACKING_ABSENT;
  std::function<void(void*)> alter = [](void*) {};  // the message, before it is sent
};

Outcome run(const Message& message, const Case& each, decltype(&by_hand::marshal) way) {
  Stage stage(message, each.tracking);
  Outcome outcome;
  {
    const messages::Made made(message, stage.handle(), 1, instance);
    stage.handle()->send_sequence = 0x01020304;
    each.prepare(stage.handle());
    each.alter(made.get());
    stage.name(made.get());
    uint8_t* buffer =
        stage.give_buffer(each.length > 0 ? static_cast<size_t>(each.length) : 0).data();
    stage.err = each.err;
    const spy::Log log;
    const uint32_t result =
        way(message, stage.handle(), instance, buffer, made.get(), each.length, &stage.err);
    outcome = stage.outcome(log, result, made.get());
  }
  messages::close(stage.handle());
  return outcome;
}

uint32_t library(const Message& message, ork_handle* handle, uint32_t each, uint8_t* buffer,
                 void* msg, int32_t length, uint32_t* err) {
  return message.marshal(handle, each, buffer, msg, length, err);
}

class MarshalCalls : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();

  Outcome same(const Case& each) const {
    const Outcome hand = run(message, each, by_hand::marshal);
    const Outcome made = run(message, each, library);
    messages::expect_same(made, hand, each.what);
    return made;
  }
  int32_t full_length(ork_tracking tracking) const {
    const Handle handle(tracking);
    const messages::Made made(message, handle.get());
    return static_cast<int32_t>(message.len(handle.get(), 0, made.get()));
  }
  std::function<void(ork_handle*)> in_bundle() const {
    return [bundle = messages::bundle_with(message)](ork_handle* handle) {
      messages::open(bundle, handle);
    };
  }
  std::string error_text(uint32_t number) const { return strerror(static_cast<int>(number)); }
};

TEST_P(MarshalCalls, succeeds_in_order) {
  for (const ork_tracking tracking : messages::trackings) {
    const Case plain{"plain", full_length(tracking) + 16, 0, [](ork_handle*) {}, tracking};
    const Outcome made = same(plain);
    EXPECT_EQ(made.err, 0u);
    EXPECT_GT(made.result, 43u);
    EXPECT_EQ(made.header.length, made.result);
    EXPECT_EQ(made.header.sequence, 0x01020304u);
    EXPECT_EQ(made.calls.front(), "ork_clear_last_error()");
    EXPECT_EQ(made.calls[1],
              std::string("ork_domain_lookup_message_ok(domain,type(") + message.name() + "),err)");
    EXPECT_EQ(made.calls.back(), "_ork_message_header_marshal(7,buffer,msg+12,27,err)");
    const Outcome bundled =
        same({"in a bundle", full_length(tracking) + 16, 0, in_bundle(), tracking});
    EXPECT_EQ(bundled.err, 0u);
    EXPECT_EQ(bundled.calls[2], std::string("bundle_message_validate_add(7,luid,'message ") +
                                    message.name() + "',err)");
    EXPECT_EQ(bundled.calls[bundled.calls.size() - 2], "bundle_message_increment_count(luid,err)");
    EXPECT_EQ(bundled.calls.back(), made.calls.back());
  }
}

TEST_P(MarshalCalls, every_length_leaves_the_same_bytes) {
  const int32_t full = full_length(ORK_TRACKING_OFF);
  for (int32_t length = -1; length <= full + 2;
       length += length < 60 || length > full - 4 ? 1 : 37) {
    const Outcome made =
        same({"length " + std::to_string(length), length, 0, [](ork_handle*) {}, ORK_TRACKING_OFF});
    if (made.err != 0) {
      EXPECT_EQ(made.err, 90u) << length;
      EXPECT_EQ(made.header.length, 0u) << "a failed marshal leaves the object as it was";
    }
    if (length < 27) {
      EXPECT_EQ(made.result, 0u);
      EXPECT_EQ(std::count(made.buffer.begin(), made.buffer.end(), 0xA5),
                static_cast<long>(made.buffer.size()))
          << "not even cleared";
    } else if (length < 43) {
      EXPECT_EQ(made.result, 27u);
      EXPECT_EQ(std::count(made.buffer.begin(), made.buffer.begin() + 27, 0), 27);
      EXPECT_EQ(std::count(made.buffer.begin() + 27, made.buffer.end(), 0xA5),
                static_cast<long>(made.buffer.size() - 27));
    } else if (made.err != 0) {
      EXPECT_EQ(std::count(made.buffer.begin(), made.buffer.begin() + 27, 0), 27)
          << "no header before the end";
      EXPECT_EQ(std::memcmp(made.buffer.data() + 27, message.schema().luid, 16), 0);
    }
  }
}

TEST_P(MarshalCalls, every_length_in_a_bundle_leaves_the_same) {
  const int32_t full = full_length(ORK_TRACKING_ON);
  for (int32_t length = 0; length <= full + 2;
       length += length < 60 || length > full - 4 ? 1 : 41) {
    const Outcome made =
        same({"length " + std::to_string(length), length, 0, in_bundle(), ORK_TRACKING_ON});
    EXPECT_EQ(made.bundle_ctx, 1u) << "the bundle stays open";
    const bool counted = std::count(made.calls.begin(), made.calls.end(),
                                    "bundle_message_increment_count(luid,err)") != 0;
    EXPECT_EQ(counted, made.err == 0) << "counted exactly when written";
  }
}

TEST_P(MarshalCalls, full_buffer_of_its_length_is_enough) {
  for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
    const Outcome made = same({"exact", full_length(tracking), 0, [](ork_handle*) {}, tracking});
    EXPECT_EQ(made.err, 0u);
    EXPECT_EQ(made.result, static_cast<uint64_t>(full_length(tracking)));
  }
}

TEST_P(MarshalCalls, pending_error_does_nothing) {
  for (const auto& prepare : {std::function<void(ork_handle*)>([](ork_handle*) {}), in_bundle()}) {
    const Outcome made = same({"pending", 4096, 22, prepare});
    EXPECT_CALLS(made.calls,
                 {"trace(debug,Error present in call to message marshal: Invalid argument)"});
    EXPECT_EQ(made.result, 0u);
    EXPECT_EQ(made.err, 22u);
  }
}

TEST_P(MarshalCalls, refused_by_the_domain_with_nothing_written) {
  const auto refuse = spy::answer(ork_domain_lookup_message_ok, 0);
  for (const auto& prepare : {std::function<void(ork_handle*)>([](ork_handle*) {}), in_bundle()}) {
    const Outcome made = same({"refused", 4096, 0, prepare});
    const std::string name = message.name();
    EXPECT_CALLS(
        made.calls,
        std::vector<std::string>{
            "ork_clear_last_error()", "ork_domain_lookup_message_ok(domain,type(" + name + "),err)",
            "trace(error,domainfail: Message " + name + " (" + message.schema().luid_text +
                ") is not allowed for the current domain (newest))",
            "ork_store_epoch_err(52,err)"});
    EXPECT_EQ(made.result, 0u);
    EXPECT_EQ(made.err, 52u);
    EXPECT_EQ(std::count(made.buffer.begin(), made.buffer.end(), 0xA5),
              static_cast<long>(made.buffer.size()));
  }
}

// The object's own descriptor may be a copy in shared storage; the trace tells the identifier of
// the library's.
TEST_P(MarshalCalls, domain_is_asked_about_the_objects_own_descriptor) {
  ork_type_info copy = *message.schema().type;
  copy.shared = 1;
  copy.luid_text[0] = 'x';
  Case each{"own descriptor", 4096};
  each.alter = [&](void* msg) { kit::store<const ork_type_info*>(msg, &copy); };
  const std::string name = message.name();
  const std::string question = "ork_domain_lookup_message_ok(domain,shared(" + name + "),err)";
  EXPECT_EQ(same(each).calls[1], question);
  const auto refuse = spy::answer(ork_domain_lookup_message_ok, 0);
  EXPECT_CALLS(same(each).calls,
               std::vector<std::string>{"ork_clear_last_error()", question,
                                        "trace(error,domainfail: Message " + name + " (" +
                                            message.schema().luid_text +
                                            ") is not allowed for the current domain (newest))",
                                        "ork_store_epoch_err(52,err)"});
}

TEST_P(MarshalCalls, domain_is_the_handles_own_and_any_answer_but_zero_is_yes) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 1, instance);
  unsigned asked = 0;
  const auto yes = spy::replace(
      ork_domain_lookup_message_ok,
      [&](ork_handle* handle, const ork_domain* domain, const ork_type_info*, uint32_t*) {
        asked += 1;
        EXPECT_EQ(domain, &handle->domain);
        return 256u;
      });
  const size_t written = made.frame().size();
  EXPECT_EQ(message.header(made.get()).length, written);
  EXPECT_EQ(message.is_valid_cr(stage.handle()), 256u);
  EXPECT_EQ(asked, 2u);
}

// The member is a word of 32 bits: any value but 0 means an open bundle.
TEST_P(MarshalCalls, any_value_but_zero_means_an_open_bundle) {
  const Case each{"256", 4096, 0, [this](ork_handle* handle) {
                    in_bundle()(handle);
                    handle->bundle_ctx = 256;
                  }};
  const Outcome made = same(each);
  EXPECT_EQ(made.err, 0u);
  EXPECT_EQ(
      std::count(made.calls.begin(), made.calls.end(), "bundle_message_increment_count(luid,err)"),
      1);
}

TEST_P(MarshalCalls, refusal_that_the_platform_keeps_from_the_slot_gives_zero_and_no_error) {
  const auto refuse = spy::answer(ork_domain_lookup_message_ok, 0);
  const auto keep = spy::replace(ork_store_epoch_err, [](ork_handle*, uint32_t, uint32_t*) {});
  const Outcome made = same({"kept", 4096});
  EXPECT_EQ(made.err, 0u);
  EXPECT_EQ(made.result, 0u);
  const Handle handle;
  const messages::Made object(message, handle.get());
  uint8_t buffer[43];
  EXPECT_EQ(message.marshal_cr(handle.get(), object.get(), buffer, sizeof buffer), 0u);
}

TEST_P(MarshalCalls, domain_that_answers_yes_with_an_error) {
  const auto odd =
      spy::replace(ork_domain_lookup_message_ok,
                   [](ork_handle*, const ork_domain*, const ork_type_info*, uint32_t* err) {
                     *err = 5;
                     return 1u;
                   });
  const Outcome plain = same({"outside a bundle", 4096});
  EXPECT_EQ(plain.calls.size(), 2u);
  EXPECT_EQ(plain.result, 0u);
  EXPECT_EQ(plain.err, 5u);
  const Outcome bundled = same({"in a bundle", 4096, 0, in_bundle()});
  EXPECT_EQ(bundled.err, 5u);
  EXPECT_EQ(bundled.calls[2], std::string("bundle_message_validate_add(7,luid,'message ") +
                                  message.name() + "',err)");
  EXPECT_EQ(bundled.calls.back(), std::string("trace(error,Message ") + message.name() +
                                      " is not valid for bundle: " + error_text(5) + ")");
}

TEST_P(MarshalCalls, refused_by_the_bundle_with_nothing_written) {
  const messages::Bundle other = messages::bundle_without(message);
  const Outcome natural = same(
      {"not in the table", 4096, 0, [&](ork_handle* handle) { messages::open(other, handle); }});
  EXPECT_EQ(natural.err, 2u);
  for (const uint32_t number : {2u, 12u, 17u}) {
    const auto refuse = spy::replace(
        bundle_message_validate_add,
        [=](ork_handle*, uint32_t, const uint8_t*, const char*, uint32_t* err) { *err = number; });
    const Outcome refused = same({"scripted", 4096, 0, in_bundle()});
    EXPECT_EQ(refused.err, number);
    EXPECT_EQ(refused.result, 0u);
    EXPECT_EQ(refused.last_error, 0u) << "storing it is the bundle's business";
    EXPECT_EQ(refused.bundle_ctx, 1u);
    EXPECT_EQ(refused.calls.back(), std::string("trace(error,Message ") + message.name() +
                                        " is not valid for bundle: " + error_text(number) + ")");
    EXPECT_EQ(std::count(refused.buffer.begin(), refused.buffer.end(), 0xA5),
              static_cast<long>(refused.buffer.size()));
  }
}

TEST_P(MarshalCalls, uncounted_message_keeps_its_header_unwritten) {
  const auto uncounted = spy::replace(bundle_message_increment_count,
                                      [](ork_handle*, const uint8_t*, uint32_t* err) { *err = 2; });
  const Outcome made = same({"uncounted", 4096, 0, in_bundle()});
  EXPECT_EQ(made.err, 2u);
  EXPECT_GT(made.result, 43u) << "the bytes counted so far";
  EXPECT_EQ(made.calls.back(), std::string("trace(error,Message ") + message.name() +
                                   " instance is not present in bundle " + error_text(2) + ")");
  EXPECT_EQ(std::count(made.buffer.begin(), made.buffer.begin() + 27, 0), 27);
  EXPECT_EQ(made.header.length, 0u);
  EXPECT_EQ(made.header.sequence, 0u);
}

TEST_P(MarshalCalls, error_of_the_header_is_not_looked_at) {
  const auto odd = spy::replace(
      _ork_message_header_marshal,
      [](ork_handle*, uint32_t, uint8_t*, const ork_message_header*, int32_t, uint32_t* err) {
        *err = 5;
        return 0u;
      });
  const Outcome made = same({"header fails", 4096});
  EXPECT_EQ(made.err, 5u);
  EXPECT_EQ(made.header.length, made.result);
}

TEST_P(MarshalCalls, suppressed_reports_sink_to_debug) {
  for (const uint32_t suppress : {0u, 1u, 256u}) {
    const auto flag = spy::answer(orklib_suppress_messages_enabled, suppress);
    const std::string level = suppress != 0 ? "debug" : "error";
    for (const int32_t length : {10, 30, 43}) {
      const Outcome made = same({"short", length});
      EXPECT_EQ(made.calls.back(), "trace(" + level + ",Message " + message.name() +
                                       " failed to marshal: " + error_text(90) + ")");
    }
  }
}

TEST_P(MarshalCalls, cr_form_uses_the_handles_slot_and_instance) {
  const Handle handle([](ork_options& options) { options.cr_instance = instance; });
  const messages::Made made(message, handle.get(), 1, instance);
  const std::vector<uint8_t> expected = made.frame();
  std::vector<uint8_t> buffer(expected.size() + 16);
  EXPECT_EQ(message.marshal_cr(handle.get(), made.get(), buffer.data(),
                               static_cast<int32_t>(buffer.size())),
            expected.size());
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin()));
  for (const int32_t length : {0, 26, 27, 42, 43}) {
    handle->cr_error = 0;
    EXPECT_EQ(message.marshal_cr(handle.get(), made.get(), buffer.data(), length), 0xFFFFFFFFu)
        << length;
    EXPECT_EQ(handle->cr_error, 90u);
  }
  EXPECT_EQ(message.marshal_cr(handle.get(), made.get(), buffer.data(),
                               static_cast<int32_t>(buffer.size())),
            0xFFFFFFFFu)
      << "a pending error";
  handle->cr_error = 0;
  messages::set_peer_without(handle, {message.name()});
  EXPECT_EQ(message.marshal_cr(handle.get(), made.get(), buffer.data(), 4096), 0xFFFFFFFFu);
  EXPECT_EQ(handle->cr_error, 52u);
  handle->cr_error = 0;
}

TEST_P(MarshalCalls, may_be_repeated_and_rewrites_sequence) {
  const Handle handle;
  const messages::Made made(message, handle.get());
  handle->send_sequence = 5;
  std::vector<uint8_t> first = made.frame();
  handle->send_sequence = 6;
  const std::vector<uint8_t> second = made.frame();
  EXPECT_EQ(handle->send_sequence, 6u) << "only read here";
  EXPECT_EQ(message.header(made.get()).sequence, 6u);
  EXPECT_EQ(first[11], 5);
  first[11] = 6;
  EXPECT_EQ(first, second);
}

// Also that of a message that came from elsewhere, whatever its sender said.
TEST_P(MarshalCalls, each_success_rewrites_the_length) {
  const Handle handle;
  std::vector<uint8_t> frame = messages::Made(message, handle.get()).frame();
  std::fill_n(frame.begin() + 12, 4, 0x5A);
  uint32_t err = 0;
  void* msg = nullptr;
  message.unmarshal_only(handle.get(), 0, &msg, frame.data(), static_cast<int32_t>(frame.size()),
                         &err);
  EXPECT_EQ(message.header(msg).length, 0x5A5A5A5Au);
  std::set<size_t> lengths;
  bool grows = false;
  for (const uint32_t elements : {2u, 3u, 5u}) {
    for (size_t i = 0; i < message.record_count(); ++i) {
      const std::span fields(message.record(i).fields, message.record(i).field_count);
      grows |= std::any_of(fields.begin(), fields.end(),
                           [](const wayfind_field& field) { return field.cls == WAYFIND_COUNTER; });
      encoders::Filler(handle.get(), elements)
          .fill(message.record(i), message.slots(msg)[i], "changed");
    }
    frame.assign(frame.size() + 4096, 0);
    const uint32_t length = message.marshal(handle.get(), 0, frame.data(), msg,
                                            static_cast<int32_t>(frame.size()), &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(message.header(msg).length, length);
    EXPECT_EQ(frame[12] << 24 | frame[13] << 16 | frame[14] << 8 | frame[15],
              static_cast<int>(length));
    lengths.insert(length);
  }
  EXPECT_TRUE(lengths.size() == 3 || !grows) << "each array made the message longer";
  message.destroy(handle.get(), 0, msg);
}

INSTANTIATE_TEST_SUITE_P(All, MarshalCalls, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
