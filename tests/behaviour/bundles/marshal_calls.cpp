// The sending side of all control messages call for call, and what is simple about them.
#include "behaviour/bundles/by_hand.h"
#include "behaviour/messages/spied.h"

namespace {

using messages::Bundle;
using messages::Control;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 7;
constexpr Kind kinds[] = {messages::start, messages::abort, messages::commit};

struct Sent {
  std::vector<std::string> calls;
  uint32_t result;
  uint32_t err;
  uint32_t last_error;
  std::vector<uint8_t> buffer;
  uint32_t bundle_ctx;
  const ork_bundle_message_row* table;
  bool list_empty;
  bool list_untouched;

  bool operator==(const Sent&) const = default;
};

struct Case {
  bool open;
  int32_t length;
  uint32_t err = 0;
  ork_tracking tracking = ORK_TRACKING_OFF;
};

class MarshalCalls : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();

  Sent send(Kind kind, const Case& each, bool library) const {
    const Handle handle(each.tracking);
    handle->send_sequence = 0x01020304;
    if (each.open) {
      uint8_t buffer[43];
      uint32_t err = 0;
      bundle.start().marshal(handle.get(), instance, buffer, 43, &err);
      const wayfind_message& member = *bundle.schema().members[0].message;
      bundle_message_validate_add(handle.get(), instance, member.luid, member.bundle_name, &err);
    }
    ork_list_head& list = handle->bundle_send_list;
    ork_list_head stale_entry;
    if (!each.open && kind == messages::start) {  // the others walk the list
      list = {&stale_entry, &stale_entry};
    }
    const ork_list_head list_before = list;
    std::vector<uint8_t> buffer(64, 0xA5);
    spy::forget_names();
    spy::name(buffer.data(), buffer.size(), "buffer");
    uint32_t err = each.err;
    spy::name_at(&err, "err");
    Sent sent{};
    {
      const spy::Log log;
      sent.result = library ? bundle.control(kind).marshal(handle.get(), instance, buffer.data(),
                                                           each.length, &err)
                            : by_hand::marshal(bundle, kind, handle.get(), instance, buffer.data(),
                                               each.length, &err);
      sent.calls = log.calls();
    }
    sent.err = err;
    sent.last_error = ork_handle_last_error(handle.get());
    sent.buffer = buffer;
    sent.bundle_ctx = handle->bundle_ctx;
    sent.table = handle->bundle_table;
    sent.list_empty = list.next == &list && list.prev == &list;
    sent.list_untouched = list.next == list_before.next && list.prev == list_before.prev;
    if (list.next == &stale_entry) {
      list = {&list, &list};
    }
    messages::close(handle.get());
    return sent;
  }
  Sent same(Kind kind, const Case& each) const {
    const Sent hand = send(kind, each, false);
    const Sent made = send(kind, each, true);
    EXPECT_CALLS(made.calls, hand.calls) << bundle.control(kind).name() << " " << each.length;
    EXPECT_TRUE(made == hand) << bundle.control(kind).name() << " " << each.length;
    return made;
  }
};

TEST_P(MarshalCalls, every_state_length_and_pending_error_goes_the_same_way) {
  for (const Kind kind : kinds) {
    for (const bool open : {false, true}) {
      for (const uint32_t err : {0u, 5u}) {
        for (int32_t length = -1; length <= 50; ++length) {
          same(kind, {open, length, err});
        }
      }
    }
  }
}

TEST_P(MarshalCalls, start_opens_and_writes_forty_three_bytes) {
  for (const ork_tracking tracking : messages::trackings) {
    const Sent sent = same(messages::start, {false, 43, 0, tracking});
    EXPECT_EQ(sent.result, 43u);
    EXPECT_EQ(sent.bundle_ctx, 1u);
    EXPECT_TRUE(sent.list_empty);
    EXPECT_EQ(sent.buffer[7], 0) << "never marked as tracked";
    EXPECT_CALLS(sent.calls,
                 {"ork_clear_last_error()", "_ork_message_header_marshal(7,buffer,?,27,err)"});
    EXPECT_EQ(std::memcmp(sent.buffer.data() + 27, bundle.start().luid(), 16), 0);
  }
}

TEST_P(MarshalCalls, second_start_leaves_the_open_bundle) {
  const Sent sent = same(messages::start, {true, 43});
  EXPECT_EQ(sent.result, 0u);
  EXPECT_EQ(sent.err, 17u);
  EXPECT_EQ(sent.last_error, 17u);
  EXPECT_EQ(sent.bundle_ctx, 1u);
  EXPECT_FALSE(sent.list_empty);
  EXPECT_TRUE(sent.list_untouched);
  EXPECT_EQ(sent.buffer, std::vector<uint8_t>(64, 0xA5));
  EXPECT_CALLS(sent.calls, {"ork_clear_last_error()", "ork_store_err(17)"});
}

TEST_P(MarshalCalls, short_buffers_of_a_start) {
  for (const int32_t length : {0, 26, 27, 42}) {
    const Sent sent = same(messages::start, {false, length});
    EXPECT_EQ(sent.result, length < 27 ? 0u : 27u);
    EXPECT_EQ(sent.err, 90u);
    EXPECT_EQ(sent.bundle_ctx, 0u) << "stays idle";
    EXPECT_TRUE(sent.list_untouched);
    EXPECT_EQ(std::count(sent.buffer.begin(), sent.buffer.end(), 0xA5), length < 27 ? 64 : 64 - 27);
    EXPECT_CALLS(sent.calls, {"ork_clear_last_error()", "ork_store_err(90)"});
  }
}

TEST_P(MarshalCalls, end_writes_forty_three_bytes_and_closes) {
  for (const Kind kind : {messages::abort, messages::commit}) {
    for (const ork_tracking tracking : messages::trackings) {
      const Sent sent = same(kind, {true, 43, 0, tracking});
      EXPECT_EQ(sent.result, 43u);
      EXPECT_EQ(sent.err, 0u);
      EXPECT_EQ(sent.bundle_ctx, 0u);
      EXPECT_TRUE(sent.list_empty);
      EXPECT_EQ(sent.buffer[7], 0);
      EXPECT_EQ(std::memcmp(sent.buffer.data() + 27, bundle.control(kind).luid(), 16), 0);
      EXPECT_CALLS(sent.calls,
                   {"ork_clear_last_error()", "_ork_message_header_marshal(7,buffer,?,27,err)",
                    "bundle_send_message_list_destroy(7,err)"});
    }
  }
}

TEST_P(MarshalCalls, end_without_a_bundle_gives_two) {
  for (const Kind kind : {messages::abort, messages::commit}) {
    const Sent sent = same(kind, {false, 43});
    EXPECT_EQ(sent.result, 0u);
    EXPECT_EQ(sent.err, 2u);
    EXPECT_EQ(sent.last_error, 2u);
    EXPECT_EQ(sent.buffer, std::vector<uint8_t>(64, 0xA5));
    EXPECT_CALLS(sent.calls, {"ork_clear_last_error()", "ork_store_err(2)"});
  }
}

TEST_P(MarshalCalls, end_in_a_short_buffer_still_closes) {
  for (const Kind kind : {messages::abort, messages::commit}) {
    for (const int32_t length : {10, 26, 27, 30, 42}) {
      const Sent sent = same(kind, {true, length});
      EXPECT_EQ(sent.result, length < 27 ? 0u : 27u);
      EXPECT_EQ(sent.err, 90u);
      EXPECT_EQ(sent.bundle_ctx, 0u);
      EXPECT_TRUE(sent.list_empty);
      EXPECT_EQ(std::count(sent.buffer.begin(), sent.buffer.begin() + 27, 0), length < 27 ? 0 : 27);
      EXPECT_EQ(std::count(sent.buffer.begin() + 27, sent.buffer.end(), 0xA5), 64 - 27);
      EXPECT_CALLS(sent.calls, {"ork_clear_last_error()", "ork_store_err(90)",
                                "bundle_send_message_list_destroy(7,err)"})
          << "stored once";
    }
  }
}

TEST_P(MarshalCalls, error_of_the_header_is_not_looked_at) {
  const auto odd = spy::replace(
      _ork_message_header_marshal,
      [](ork_handle*, uint32_t, uint8_t*, const ork_message_header*, int32_t, uint32_t* err) {
        *err = 5;
        return 0u;
      });
  EXPECT_EQ(same(messages::start, {false, 43}).result, 43u);
  EXPECT_EQ(same(messages::commit, {true, 43}).result, 43u);
}

TEST_P(MarshalCalls, header_carries_sequence_and_length) {
  const auto look = spy::replace(
      _ork_message_header_marshal,
      [](ork_handle* handle, uint32_t each, uint8_t* buffer, const ork_message_header* header,
         int32_t length, uint32_t* err) {
        EXPECT_EQ(header->marker, 0xBC);
        EXPECT_EQ(std::count(std::begin(header->filler), std::end(header->filler), 0xFF), 6);
        EXPECT_EQ(header->sttr_marker, 0);
        EXPECT_EQ(header->sequence, 0x01020304u);
        EXPECT_EQ(header->length, 43u);
        return spy::next(_ork_message_header_marshal)(handle, each, buffer, header, length, err);
      });
  for (const Kind kind : kinds) {
    EXPECT_EQ(same(kind, {kind != messages::start, 43, 0, ORK_TRACKING_ON}).result, 43u);
  }
}

TEST_P(MarshalCalls, start_has_opened_the_bundle_when_the_header_is_written) {
  const Handle handle;
  ork_list_head& list = handle->bundle_send_list;
  ork_list_head stale_entry;
  list = {&stale_entry, &stale_entry};
  bool seen = false;
  const auto look = spy::replace(
      _ork_message_header_marshal,
      [&](ork_handle*, uint32_t, uint8_t* buffer, const ork_message_header*, int32_t, uint32_t*) {
        seen = true;
        EXPECT_EQ(handle->bundle_ctx, 1u);
        EXPECT_EQ(handle->bundle_table, bundle.table());
        EXPECT_TRUE(list.next == &list && list.prev == &list);
        EXPECT_EQ(std::memcmp(buffer + 27, bundle.start().luid(), 16), 0);
        return 27u;
      });
  uint8_t buffer[43];
  uint32_t err = 0;
  bundle.start().marshal(handle.get(), instance, buffer, 43, &err);
  EXPECT_TRUE(seen);
}

// The member is a word of 32 bits: any value but 0 means an open bundle.
TEST_P(MarshalCalls, any_value_but_zero_means_an_open_bundle) {
  const Handle handle;
  uint8_t buffer[43];
  for (const auto& [kind, expected] :
       {std::pair(messages::start, 17u), {messages::abort, 0u}, {messages::commit, 0u}}) {
    handle->bundle_ctx = 256;
    uint32_t err = 0;
    EXPECT_EQ(bundle.control(kind).marshal(handle.get(), instance, buffer, 43, &err),
              expected == 0 ? 43u : 0u);
    EXPECT_EQ(err, expected);
    EXPECT_EQ(handle->bundle_ctx, expected == 0 ? 0u : 256u);
  }
}

TEST_P(MarshalCalls, asks_neither_domain_nor_table) {
  const Handle handle;
  messages::set_peer_without(handle, {});
  for (const Kind kind : kinds) {
    const Case each{kind != messages::start, 43};
    for (const std::string& call : send(kind, each, true).calls) {
      EXPECT_EQ(call.find("domain"), std::string::npos);
      EXPECT_EQ(call.find("validate"), std::string::npos);
    }
    EXPECT_EQ(bundle.control(kind).valid_cr(), 1u);
  }
}

TEST_P(MarshalCalls, cr_forms_use_the_handles_slot) {
  const Handle handle;
  uint8_t buffer[43];
  EXPECT_EQ(bundle.commit().marshal_cr(handle.get(), buffer, 43), 0xFFFFFFFFu) << "no bundle";
  EXPECT_EQ(handle->cr_error, 2u);
  EXPECT_EQ(bundle.start().marshal_cr(handle.get(), buffer, 43), 0xFFFFFFFFu) << "a pending error";
  EXPECT_EQ(handle->bundle_ctx, 0u);
  handle->cr_error = 0;
  EXPECT_EQ(bundle.start().marshal_cr(handle.get(), buffer, 30), 0xFFFFFFFFu);
  EXPECT_EQ(handle->cr_error, 90u);
  handle->cr_error = 0;
  EXPECT_EQ(bundle.start().marshal_cr(handle.get(), buffer, 43), 43u);
  EXPECT_EQ(bundle.abort().marshal_cr(handle.get(), buffer, 43), 43u);
  EXPECT_EQ(handle->cr_error, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, MarshalCalls, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

// ---- The simple functions of a control message ------------------------------

class ControlMessage : public testing::TestWithParam<Control> {
 protected:
  const Control control = GetParam();
};

TEST_P(ControlMessage, create_is_an_allocation_of_no_bytes) {
  const Handle handle([](ork_options& options) { options.cr_instance = 9; });
  spy::forget_names();
  spy::observe(handle.get());
  {
    const spy::Log log;
    void* msg = control.create(handle.get(), instance);
    control.destroy(handle.get(), instance, msg);
    void* cr = control.create_cr(handle.get());
    control.destroy_cr(handle.get(), cr);
    EXPECT_CALLS(
        log, {"alloc_fn(7,0)=new1", "free_fn(7,new1)", "alloc_fn(9,0)=new2", "free_fn(9,new2)"});
  }
  {
    const spy::Log log;
    control.destroy(handle.get(), instance, nullptr);
    control.destroy_cr(handle.get(), nullptr);
    spy::fail_alloc(1);
    EXPECT_EQ(control.create(handle.get(), instance), nullptr);
    spy::fail_alloc(0);
    EXPECT_CALLS(log, {"alloc_fn(7,0)=null"}) << "null is harmless, and no error is stored";
  }
  spy::forget(handle.get());
}

TEST_P(ControlMessage, cr_create_gives_the_sentinel) {
  const Handle handle([](ork_options& options) { options.cr_instance = 9; });
  spy::forget_names();
  spy::observe(handle.get());
  void* sentinel;
  {
    const spy::Log log;
    spy::fail_alloc(1);
    sentinel = control.create_cr(handle.get());
    spy::fail_alloc(0);
    EXPECT_CALLS(log, {"alloc_fn(9,0)=null", "ork_store_err(12)"});
  }
  ASSERT_NE(sentinel, nullptr);
  EXPECT_EQ(handle->cr_error, 12u);
  handle->cr_error = 5;
  {
    const spy::Log log;
    EXPECT_EQ(control.create_cr(handle.get()), sentinel);
    control.destroy_cr(handle.get(), sentinel);
    EXPECT_CALLS(log, std::initializer_list<const char*>{})
        << "nothing is allocated with a pending error, nor freed";
  }
  EXPECT_EQ(handle->cr_error, 5u);
  handle->cr_error = 0;
  spy::forget(handle.get());
}

TEST_P(ControlMessage, length_is_forty_three) {
  const Handle handle;
  EXPECT_EQ(control.len(), 43u);
  EXPECT_EQ(control.len_cr(handle.get()), 43u);
  handle->cr_error = 5;
  EXPECT_EQ(control.len_cr(handle.get()), 0u);
  handle->cr_error = 0;
  EXPECT_EQ(control.unmarshal_only(), 0u);
  EXPECT_EQ(control.valid_cr(), 1u);
}

TEST_P(ControlMessage, from_xml_looks_at_no_document) {
  const Handle handle;
  spy::forget_names();
  spy::observe(handle.get());
  uint32_t err = 0;
  const spy::Log log;
  void* msg = control.from_xml(handle.get(), instance, nullptr, &err);
  control.destroy(handle.get(), instance, msg);
  err = 5;
  EXPECT_EQ(control.from_xml(handle.get(), instance, nullptr, &err), nullptr);
  EXPECT_CALLS(log, {"alloc_fn(7,0)=new1", "free_fn(7,new1)"});
  spy::forget(handle.get());
}

TEST_P(ControlMessage, from_xml_may_give_null_without_an_error) {
  const Handle handle;
  spy::forget_names();
  spy::observe(handle.get());
  uint32_t err = 0;
  const spy::Log log;
  spy::fail_alloc(1);
  EXPECT_EQ(control.from_xml(handle.get(), instance, nullptr, &err), nullptr);
  spy::fail_alloc(0);
  EXPECT_EQ(err, 0u);
  EXPECT_CALLS(log, {"alloc_fn(7,0)=null"}) << "and no error is stored";
  spy::forget(handle.get());
}

INSTANTIATE_TEST_SUITE_P(All, ControlMessage, testing::ValuesIn(messages::controls()),
                         messages::ByName());

}  // namespace
