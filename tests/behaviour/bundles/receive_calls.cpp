// The receiving side of all bundles call for call: start, abort and commit, and the chain of
// handlers.
#include "behaviour/bundles/by_hand.h"
#include "behaviour/messages/spied.h"
#include "fwe_ui_wayfind/module.h"

namespace {

using messages::Bundle;
using messages::Control;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 7;
constexpr Kind kinds[] = {messages::start, messages::abort, messages::commit};

// Each writes its name down, so that the log shows who ran and when.
template <char Name>
void handler(ork_handle*, uint32_t each, void* ctx, uint32_t* err) {
  spy::Recorder::call(std::string("handler ") + Name + " " + std::to_string(each) + " " +
                      spy::symbol(ctx) + " " + spy::symbol(err));
}

// Who could run at a commit: the dispatch information's, the handle's, the module's and the
// bundle's handler.
struct Chain {
  bool info = false;
  bool handle = false;
  bool module = false;
  bool bundle = false;
};

struct Case {
  uint32_t err = 0;
  bool accumulating = true;
  bool in_dispatch = true;
  bool with_message = false;
  Chain chain{};
};

struct Received {
  std::vector<std::string> calls;
  uint32_t err;
  uint32_t last_error;
  uint32_t active;
  bool list_empty;
  bool list_untouched;
  const void* rx_dispatch;
  const void* rx_lut;
  const void* commit_dispatch;

  bool operator==(const Received&) const = default;
};

// What the handle holds of a dispatch and of a list before a call.
int lut_object;
int stale_lut;
ork_bundle_dispatch_info stale_start;
ork_bundle_dispatch_info stale_commit;
ork_list_head stale_entry;

class ReceiveCalls : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();
  ork_bundle_dispatch_info info{nullptr, "the row", nullptr, nullptr, nullptr};
  const std::string name = bundle.name();

  void TearDown() override {
    bundle.unregister();
    fwe_ui_wayfind_bundle_handler_unregister();
  }

  Received receive(Kind kind, const Case& each, bool library) {
    const Handle handle;
    spy::forget_names();
    spy::observe(handle.get());
    uint32_t err = each.err;
    int ctx;
    spy::name_at(&err, "err");
    spy::name_at(&ctx, "ctx");
    spy::name_at(&lut_object, "lut");
    info.bundle_handler = each.chain.info ? handler<'i'> : nullptr;
    handle->bundle_handler = each.chain.handle ? handler<'h'> : nullptr;
    fwe_ui_wayfind_bundle_handler_register(each.chain.module ? handler<'m'> : nullptr);
    bundle.do_register(each.chain.bundle ? handler<'b'> : nullptr);
    handle->bundle_rx_active = each.accumulating ? 1 : 0;
    handle->bundle_rx_dispatch = &stale_start;
    handle->bundle_rx_lut = &stale_lut;
    handle->bundle_commit_dispatch = &stale_commit;
    ork_list_head& list = handle->bundle_receive_list;
    if (kind == messages::start) {  // the others walk the list
      list = {&stale_entry, &stale_entry};
    }
    const ork_list_head list_before = list;
    void* msg = each.with_message ? handle->alloc_fn(handle->mem_pool, instance, 0) : nullptr;
    const auto dispatching =
        spy::replace(orklib_in_dispatch_message_info, [&](ork_handle*, void** lut) {
          if (lut != nullptr) {
            *lut = &lut_object;
          }
          return static_cast<const ork_bundle_dispatch_info*>(each.in_dispatch ? &info : nullptr);
        });
    spy::name_at(msg, "msg");
    Received received{};
    {
      const spy::Log log;
      if (library) {
        bundle.control(kind).handle_message(handle.get(), instance, &ctx, msg, &err);
      } else {
        by_hand::handle_message(bundle, kind, handle.get(), instance, &ctx, msg, &err);
      }
      received.calls = log.calls();
    }
    received.err = err;
    received.last_error = ork_handle_last_error(handle.get());
    received.active = handle->bundle_rx_active;
    received.list_empty = list.next == &list && list.prev == &list;
    received.list_untouched = list.next == list_before.next && list.prev == list_before.prev;
    received.rx_dispatch = handle->bundle_rx_dispatch;
    received.rx_lut = handle->bundle_rx_lut;
    received.commit_dispatch = handle->bundle_commit_dispatch;
    list = {&list, &list};
    spy::forget(handle.get());
    return received;
  }
  Received same(Kind kind, const Case& each) {
    const Received hand = receive(kind, each, false);
    const Received made = receive(kind, each, true);
    EXPECT_CALLS(made.calls, hand.calls) << bundle.control(kind).name();
    EXPECT_TRUE(made == hand) << bundle.control(kind).name();
    return made;
  }
  static void expect_dispatch_forgotten(const Received& received) {
    EXPECT_EQ(received.rx_dispatch, nullptr);
    EXPECT_EQ(received.rx_lut, nullptr);
    EXPECT_EQ(received.commit_dispatch, nullptr);
  }
  // The calls that are told in words, without the questions to the platform.
  static std::vector<std::string> steps(const Received& received) {
    std::vector<std::string> lines;
    for (const std::string& call : received.calls) {
      if (call.rfind("orklib_in_dispatch", 0) != 0) {
        lines.push_back(call);
      }
    }
    return lines;
  }
};

TEST_P(ReceiveCalls, every_combination_goes_the_same_way) {
  for (const Kind kind : kinds) {
    for (unsigned bits = 0; bits < 256; ++bits) {
      const auto bit = [&](unsigned i) { return (bits >> i & 1) != 0; };
      same(kind, {bit(0) ? 5u : 0u, bit(1), bit(2), bit(3), {bit(4), bit(5), bit(6), bit(7)}});
    }
  }
}

TEST_P(ReceiveCalls, start_opens_and_keeps_the_dispatch) {
  const Received in = same(messages::start, {0, false, true});
  EXPECT_EQ(in.active, 1u);
  EXPECT_TRUE(in.list_empty);
  EXPECT_EQ(in.rx_dispatch, &info);
  EXPECT_EQ(in.rx_lut, &lut_object);
  EXPECT_EQ(in.commit_dispatch, nullptr);
  EXPECT_EQ(in.calls.back(), "trace(debug,Bundle starting for the row with LUT lut)");
  const Received out = same(messages::start, {0, false, false});
  EXPECT_EQ(out.rx_dispatch, nullptr);
  EXPECT_EQ(out.rx_lut, &lut_object) << "also without a result";
  EXPECT_EQ(out.calls.back(),
            "trace(debug,Bundle fwe_ui_wayfind_" + name + " start message handler with LUT lut)");
}

TEST_P(ReceiveCalls, start_does_not_look_at_a_pending_error) {
  const Received received = same(messages::start, {5, false, true});
  EXPECT_EQ(received.err, 5u);
  EXPECT_EQ(received.active, 1u);
}

TEST_P(ReceiveCalls, second_start_is_seventeen_and_changes_nothing_else) {
  const Received received = same(messages::start, {0, true, true, true});
  EXPECT_EQ(received.err, 17u);
  EXPECT_EQ(received.last_error, 17u);
  EXPECT_EQ(received.active, 1u);
  EXPECT_TRUE(received.list_untouched);
  EXPECT_EQ(received.rx_dispatch, &stale_start);
  EXPECT_EQ(received.rx_lut, &stale_lut);
  EXPECT_EQ(received.commit_dispatch, &stale_commit);
  EXPECT_CALLS(
      received.calls,
      std::vector<std::string>{"orklib_is_accumulating_bundle()", "ork_store_err(17)",
                               "trace(error,Start message fwe_ui_wayfind_" + name +
                                   "_bundle_start_message received while aready in bundle context)",
                               "free_fn(7,msg)"});
}

TEST_P(ReceiveCalls, abort_drops_the_list_and_then_the_dispatch) {
  const Received received = same(messages::abort, {0, true, true, true});
  EXPECT_EQ(received.err, 0u);
  EXPECT_EQ(received.active, 0u);
  expect_dispatch_forgotten(received);
  EXPECT_CALLS(steps(received),
               {"orklib_is_accumulating_bundle()", "bundle_receive_message_list_destroy(7,err)",
                "trace(debug,Bundle aborting for the row with LUT lut)", "free_fn(7,msg)"});
}

TEST_P(ReceiveCalls, abort_outside_a_bundle) {
  const Received received = same(messages::abort, {0, false, true});
  EXPECT_EQ(received.err, 74u);
  EXPECT_EQ(received.last_error, 74u);
  expect_dispatch_forgotten(received);
  EXPECT_CALLS(steps(received), {"orklib_is_accumulating_bundle()",
                                 "trace(error,Abort message received outside of bundle context)",
                                 "ork_store_err(74)", "bundle_receive_message_list_destroy(7,err)",
                                 "trace(debug,Bundle aborting for the row with LUT lut)"});
}

TEST_P(ReceiveCalls, commit_outside_a_bundle_says_abort_too) {
  const Received received =
      same(messages::commit, {0, false, true, false, {true, true, true, true}});
  EXPECT_EQ(received.err, 74u);
  expect_dispatch_forgotten(received);
  EXPECT_CALLS(received.calls, {"orklib_is_accumulating_bundle()",
                                "trace(error,Abort message received outside of bundle context)",
                                "ork_store_err(74)", "bundle_receive_message_list_destroy(7,err)"})
      << "no handler";
}

TEST_P(ReceiveCalls, pending_error_still_drops_the_list) {
  for (const bool accumulating : {false, true}) {
    const Received aborted = same(messages::abort, {5, accumulating, true});
    EXPECT_EQ(aborted.calls[0], "trace(error,Error set in aborting bundle: Input/output error)");
    EXPECT_EQ(aborted.calls[1], "bundle_receive_message_list_destroy(7,err)");
    EXPECT_EQ(aborted.active, 0u);
    EXPECT_EQ(aborted.err, 5u);
    expect_dispatch_forgotten(aborted);
    const Received committed =
        same(messages::commit, {5, accumulating, true, true, {true, true, true, true}});
    EXPECT_CALLS(committed.calls,
                 {"trace(error,Error set in committing bundle: Input/output error)",
                  "bundle_receive_message_list_destroy(7,err)", "free_fn(7,msg)"});
    EXPECT_EQ(committed.active, 0u);
    EXPECT_EQ(committed.err, 5u);
    expect_dispatch_forgotten(committed);
  }
}

TEST_P(ReceiveCalls, commit_without_a_dispatch_runs_no_handler) {
  const Received received =
      same(messages::commit, {0, true, false, false, {true, true, true, true}});
  EXPECT_EQ(received.err, 0u);
  expect_dispatch_forgotten(received);
  EXPECT_CALLS(received.calls,
               {"orklib_is_accumulating_bundle()", "orklib_in_dispatch_message_info(null)",
                "bundle_receive_message_list_destroy(7,err)"});
}

// The first of the chain that exists runs, alone, after its trace and before the list goes.
TEST_P(ReceiveCalls, chain_of_handlers) {
  struct Place {
    const char* words;
    char who;
    Chain chain;
  };
  const Place places[] = {
      {"Invoking LUT-registered handler for the row", 'i', {true, true, true, true}},
      {"Invoking ORK handle-registered handler for the row", 'h', {false, true, true, true}},
      {"Invoking LUT-registered handler for the row", 'm', {false, false, true, true}},
      {"Invoking registered bundle handler for the row", 'b', {false, false, false, true}},
  };
  for (const Place& place : places) {
    const Received received = same(messages::commit, {0, true, true, true, place.chain});
    EXPECT_CALLS(
        steps(received),
        std::vector<std::string>{"orklib_is_accumulating_bundle()",
                                 std::string("trace(debug,") + place.words + ")",
                                 std::string("handler ") + place.who + " 7 ctx err",
                                 "bundle_receive_message_list_destroy(7,err)", "free_fn(7,msg)"});
    EXPECT_EQ(received.err, 0u);
    expect_dispatch_forgotten(received);
  }
}

TEST_P(ReceiveCalls, commit_with_no_handler_anywhere_is_traced_and_no_error) {
  const Received received = same(messages::commit, {});
  EXPECT_EQ(received.err, 0u);
  EXPECT_EQ(received.last_error, 0u);
  EXPECT_CALLS(steps(received), {"orklib_is_accumulating_bundle()",
                                 "trace(error,Call to unimplemented handler for the row)",
                                 "bundle_receive_message_list_destroy(7,err)"});
}

// What the handle shows while the handler runs, and when the message is freed.
TEST_P(ReceiveCalls, last_steps_of_abort_and_commit_come_in_opposite_order) {
  for (const Kind kind : {messages::abort, messages::commit}) {
    const Handle handle;
    static const ork_handle* watched;
    static std::vector<bool> cleared_at_free;
    static ork_free_fn platform_free;
    watched = handle.get();
    cleared_at_free.clear();
    platform_free = handle->free_fn;
    handle->bundle_rx_active = 1;
    handle->bundle_rx_lut = &stale_lut;
    handle->free_fn = [](void* pool, uint32_t each, void* block) {
      cleared_at_free.push_back(watched->bundle_rx_lut == nullptr);
      platform_free(pool, each, block);
    };
    uint32_t err = 0;
    bundle.control(kind).handle_message(handle.get(), instance, nullptr,
                                        handle->alloc_fn(handle->mem_pool, instance, 0), &err);
    EXPECT_EQ(cleared_at_free, std::vector<bool>{kind == messages::abort});
    handle->free_fn = platform_free;
  }
}

TEST_P(ReceiveCalls, handler_sees_the_dispatch_of_the_commit) {
  const Handle handle;
  handle->bundle_rx_active = 1;
  const auto dispatching = spy::replace(orklib_in_dispatch_message_info, [&](ork_handle*, void**) {
    return static_cast<const ork_bundle_dispatch_info*>(&info);
  });
  static const ork_bundle_dispatch_info* seen;
  seen = nullptr;
  handle->bundle_handler = [](ork_handle* own, uint32_t, void*, uint32_t* err) {
    seen = own->bundle_commit_dispatch;
    *err = 5;
  };
  uint32_t err = 0;
  bundle.commit().handle_message(handle.get(), instance, nullptr, nullptr, &err);
  EXPECT_EQ(seen, &info);
  EXPECT_EQ(err, 5u) << "what the handler set stands";
  EXPECT_EQ(handle->bundle_commit_dispatch, nullptr);
  EXPECT_EQ(handle->bundle_rx_active, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, ReceiveCalls, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
