// What delivers the control messages of all bundles: to the handler of the call, or to the
// library's own.
#include "behaviour/bundles/by_hand.h"
#include "behaviour/messages/spied.h"

namespace {

using messages::Bundle;
using messages::Control;
using kit::Handle;
using messages::Kind;

constexpr uint32_t instance = 7;
constexpr Kind kinds[] = {messages::start, messages::abort, messages::commit};

class UnmarshalCalls : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();
  const ork_bundle_dispatch_info info{nullptr, "the row", nullptr, nullptr, nullptr};
};

void handle_bundle(ork_handle*, uint32_t each, void* ctx, uint32_t* err) {
  spy::Recorder::call("bundle handler " + std::to_string(each) + " " + spy::symbol(ctx) + " " +
                      spy::symbol(err));
}

struct Taken {
  int runs = 0;
  void* msg = nullptr;
  uint32_t* err = nullptr;
};

void take(ork_handle*, uint32_t, void* ctx, void* msg, uint32_t* err) {
  *static_cast<Taken*>(ctx) = {static_cast<Taken*>(ctx)->runs + 1, msg, err};
}

void tell(ork_handle* handle, uint32_t each, void* ctx, void* msg, uint32_t* err) {
  spy::Recorder::call("given handler " + spy::symbol(handle) + " " + std::to_string(each) + " " +
                      spy::symbol(ctx) + " " + spy::symbol(msg) + " " + spy::symbol(err));
}

TEST_P(UnmarshalCalls, hands_handle_instance_and_context_to_the_handler_and_does_nothing_else) {
  const auto dispatching =
      spy::replace(orklib_in_dispatch_message_info, [&](ork_handle*, void** lut) {
        if (lut != nullptr) {
          *lut = nullptr;
        }
        return static_cast<const ork_bundle_dispatch_info*>(&info);
      });
  for (const Kind kind : kinds) {
    for (const ork_message_handler given :
         {ork_message_handler{tell}, ork_message_handler{nullptr}}) {
      std::vector<std::vector<std::string>> calls;
      for (const bool library : {false, true}) {
        const Handle handle;
        handle->bundle_rx_active = kind == messages::start ? 0 : 1;
        handle->bundle_handler = handle_bundle;
        uint32_t err = 0;
        int ctx;
        void* out = &ctx;
        spy::forget_names();
        spy::name_at(handle.get(), "handle");
        spy::name_at(&ctx, "ctx");
        spy::name_at(&err, "err");
        const spy::Log log;
        EXPECT_EQ(library ? bundle.control(kind).unmarshal(handle.get(), instance, &ctx, &out,
                                                           nullptr, 0, given, &err)
                          : by_hand::unmarshal(bundle, kind, handle.get(), instance, &ctx, &out,
                                               given, &err),
                  43u);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(handle->bundle_rx_active != 0,
                  given == nullptr ? kind == messages::start : kind != messages::start);
        calls.push_back(log.calls());
      }
      EXPECT_CALLS(calls[1], calls[0]) << bundle.control(kind).name();
      if (given != nullptr) {
        EXPECT_CALLS(calls[1], {"given handler handle 7 ctx null err"});
      } else if (kind == messages::commit) {
        EXPECT_NE(std::find(calls[1].begin(), calls[1].end(), "bundle handler 7 ctx err"),
                  calls[1].end());
      }
    }
  }
}

TEST_P(UnmarshalCalls, gives_forty_three_without_a_look_at_the_buffer) {
  for (const Kind kind : kinds) {
    const Control control = bundle.control(kind);
    const Handle handle;
    Taken taken;
    uint32_t err = 0;
    void* out = &taken;
    EXPECT_EQ(control.unmarshal(handle.get(), instance, &taken, &out, nullptr, -5, take, &err),
              43u);
    EXPECT_EQ(taken.runs, 1);
    EXPECT_EQ(taken.msg, nullptr);
    EXPECT_EQ(taken.err, &err);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(handle->bundle_rx_active, 0u) << "a handler that is given keeps the books itself";
    EXPECT_EQ(control.unmarshal(handle.get(), instance, &taken, nullptr, nullptr, 0, take, &err),
              43u);
    EXPECT_EQ(taken.runs, 2);
  }
}

TEST_P(UnmarshalCalls, out_msg_is_null_before_any_handler_runs) {
  for (const Kind kind : kinds) {
    const Handle handle;
    uint32_t err = 0;
    void* out = &err;
    // The first that the library's own handlers do.
    unsigned asked = 0;
    const auto look = spy::replace(orklib_is_accumulating_bundle, [&](ork_handle*) {
      asked += 1;
      EXPECT_EQ(out, nullptr);
      return 0u;
    });
    bundle.control(kind).unmarshal(handle.get(), instance, nullptr, &out, nullptr, 0, nullptr,
                                   &err);
    EXPECT_EQ(asked, 1u);
    out = &err;
    err = 0;
    const ork_message_handler given = [](ork_handle*, uint32_t, void* ctx, void*, uint32_t* slot) {
      EXPECT_EQ(*static_cast<void**>(ctx), nullptr);
      *slot = 5;
    };
    bundle.control(kind).unmarshal(handle.get(), instance, &out, &out, nullptr, 0, given, &err);
    EXPECT_EQ(err, 5u) << "it ran, and its word stands";
  }
}

TEST_P(UnmarshalCalls, with_a_pending_error_calls_no_handler) {
  for (const Kind kind : kinds) {
    const Handle handle;
    Taken taken;
    uint32_t err = 5;
    void* out = &taken;
    const spy::Log log;
    EXPECT_EQ(bundle.control(kind).unmarshal(handle.get(), instance, &taken, &out, nullptr, 0, take,
                                             &err),
              43u);
    EXPECT_EQ(bundle.control(kind).unmarshal(handle.get(), instance, &taken, &out, nullptr, 0,
                                             nullptr, &err),
              43u);
    EXPECT_EQ(taken.runs, 0);
    EXPECT_EQ(out, &taken);
    EXPECT_CALLS(log, std::initializer_list<const char*>{});
  }
}

TEST_P(UnmarshalCalls, without_a_handler_runs_the_librarys_own) {
  const Handle handle;
  uint32_t err = 0;
  EXPECT_EQ(
      bundle.start().unmarshal(handle.get(), instance, nullptr, nullptr, nullptr, 0, nullptr, &err),
      43u);
  EXPECT_EQ(handle->bundle_rx_active, 1u);
  EXPECT_EQ(
      bundle.abort().unmarshal(handle.get(), instance, nullptr, nullptr, nullptr, 0, nullptr, &err),
      43u);
  EXPECT_EQ(handle->bundle_rx_active, 0u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(bundle.commit().unmarshal(handle.get(), instance, nullptr, nullptr, nullptr, 0, nullptr,
                                      &err),
            43u);
  EXPECT_EQ(err, 74u);
}

TEST_P(UnmarshalCalls, no_control_message_is_recorded) {
  const auto on = spy::answer(orklib_msg_recorder_get_state, 1);
  for (const Kind kind : kinds) {
    const Handle handle;
    uint32_t err = 0;
    const spy::Log log;
    bundle.control(kind).unmarshal(handle.get(), instance, nullptr, nullptr, nullptr, 0, nullptr,
                                   &err);
    EXPECT_EQ(log.count("orklib_msg_recorder_get_state"), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(All, UnmarshalCalls, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
