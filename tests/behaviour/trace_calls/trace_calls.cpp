// A program that stands in front of the trace library: what number a trace call passes for the
// module, and what may happen meanwhile.
#include <dlfcn.h>

#include <cstdlib>

#include "behaviour/bundles/family.h"
#include "fwe_ui_wayfind/module.h"
#include "ork/flight.h"
#include "support/spy.h"

namespace {

std::vector<uint32_t> modules;  // that traces passed
std::function<void()> on_trace;

void hear(uint32_t module) {
  modules.push_back(module);
  if (on_trace) {
    on_trace();
  }
}

}  // namespace

#define HEAR(pattern, parameters, ...)                                                     \
  extern "C" void __FLf_##pattern parameters {                                             \
    static auto* const next =                                                              \
        reinterpret_cast<decltype(&__FLf_##pattern)>(dlsym(RTLD_NEXT, "__FLf_" #pattern)); \
    hear(module);                                                                          \
    next(section, index, module, level __VA_OPT__(, ) __VA_ARGS__);                        \
  }
#define CALL_SITE const void *section, uint32_t index, uint32_t module, uint32_t level

HEAR(0, (CALL_SITE), )
HEAR(1, (CALL_SITE, const char* a), a)
HEAR(11, (CALL_SITE, const char* a, const char* b), a, b)
HEAR(15, (CALL_SITE, const char* a, const void* b), a, b)

namespace {

using messages::Bundle;
using kit::Handle;
using messages::Kind;
using messages::Message;

constexpr Kind kinds[] = {Kind::start, Kind::abort, Kind::commit};

// All that a message does without its record's create, its traces among it.
void use(const Message& message, ork_handle* handle) {
  uint32_t err = 22;
  void* msg = message.create_shallow(handle, 0);
  for (size_t i = 0; i < message.record_count(); ++i) {
    message.get(handle, 0, msg, &err, i);
    message.get_detach(handle, 0, msg, &err, i);
    message.set(handle, 0, msg, nullptr, &err, i);
    message.free_and_set(handle, 0, msg, nullptr, &err, i);
  }
  uint8_t frame[messages::frame_size] = {};
  char text[64];
  void* out = nullptr;
  message.marshal(handle, 0, frame, msg, sizeof frame, &err);
  message.print(handle, 0, text, msg, sizeof text, &err);
  message.to_xml(handle, 0, text, msg, sizeof text, &err);
  message.from_xml(handle, 0, nullptr, &err);
  message.unmarshal(handle, 0, nullptr, &out, frame, sizeof frame, nullptr, &err);
  message.unmarshal_only(handle, 0, &out, frame, sizeof frame, &err);
  message.destroy(handle, 0, msg);
  err = 0;
  message.unmarshal_only(handle, 0, &out, frame, sizeof frame,
                         &err);  // makes records, but not as a user does
  message.destroy(handle, 0, out);
}

void use(const Bundle& bundle, ork_handle* handle) {
  for (const uint32_t pending : {0u, 22u}) {
    for (const Kind kind : kinds) {
      uint32_t err = pending;
      bundle.control(kind).handle_message(handle, 0, nullptr,
                                          bundle.control(kind).create(handle, 0), &err);
    }
  }
}

size_t traces_of_all_others(uint32_t expected_module) {
  modules.clear();
  const Handle handle;
  for (const Message& message : messages::all()) {
    use(message, handle.get());
  }
  for (const Bundle& bundle : messages::bundles()) {
    use(bundle, handle.get());
  }
  return static_cast<size_t>(std::count(modules.begin(), modules.end(), expected_module));
}

// In a process in which no record was created yet. Ends it, with 0 when all is as it should be.
[[noreturn]] void begin() {
  const auto demand = [](bool held, const char* what) {
    if (!held) {
      std::fprintf(stderr, "not so: %s\n", what);
      std::_Exit(1);
    }
  };
  uint16_t& id = g_ork_fwe_ui_wayfind_trace_module_id;
  demand(id == 0, "no number at first");
  const size_t before = traces_of_all_others(0);
  demand(before == modules.size() && before > 28 * 10, "traces pass 0");
  demand(id == 0, "neither messages nor bundles ask for a number");
  {
    const Handle handle;
    const Message message = messages::all()[0];
    message.destroy(handle.get(), 0, message.create(handle.get(), 0));
  }
  demand(id != 0, "the first record asks");
  demand(traces_of_all_others(id) == before && modules.size() == before,
         "then traces pass the number");
  std::_Exit(0);
}

TEST(TraceModuleDeathTest, number_is_zero_until_a_record_is_created_and_traces_pass_it) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a fresh process
  EXPECT_EXIT(begin(), testing::ExitedWithCode(0), "");
}

TEST(TraceModule, stub_number_is_never_written) {
  EXPECT_EQ(g_ork_fwe_ui_wayfind_stub_trace_module_id, 0);
  g_ork_fwe_ui_wayfind_stub_trace_module_id = 0xA55A;
  ork_fwe_ui_wayfind_trace_init();
  {
    const Handle handle;
    for (const Message& message : messages::all()) {
      message.destroy(handle.get(), 0, message.create(handle.get(), 0));
    }
  }
  EXPECT_GT(traces_of_all_others(g_ork_fwe_ui_wayfind_trace_module_id), 0u);
  EXPECT_EQ(g_ork_fwe_ui_wayfind_stub_trace_module_id, 0xA55A);
  g_ork_fwe_ui_wayfind_stub_trace_module_id = 0;
}

// ---- A handler that is taken away while the choice is traced ----------------

int runs;

void run(ork_handle*, uint32_t, void*, uint32_t*) { ++runs; }

class TracedCommit : public testing::TestWithParam<Bundle> {
 protected:
  const Bundle bundle = GetParam();
  const Handle handle;
  ork_bundle_dispatch_info info{nullptr, "the row", nullptr, nullptr, nullptr};

  void TearDown() override {
    on_trace = nullptr;
    take_away();
  }
  void take_away() {
    info.bundle_handler = nullptr;
    handle->bundle_handler = nullptr;
    fwe_ui_wayfind_bundle_handler_unregister();
    bundle.unregister();
  }
};

TEST_P(TracedCommit, handler_that_was_found_still_runs_when_it_is_taken_away_meanwhile) {
  const auto dispatching = spy::replace(orklib_in_dispatch_message_info, [&](ork_handle*, void**) {
    return static_cast<const ork_bundle_dispatch_info*>(&info);
  });
  on_trace = [&] { take_away(); };
  const std::function<void()> places[] = {
      [&] { info.bundle_handler = run; },
      [&] { handle->bundle_handler = run; },
      [&] { fwe_ui_wayfind_bundle_handler_register(run); },
      [&] { bundle.do_register(run); },
  };
  for (const auto& put : places) {
    put();
    runs = 0;
    modules.clear();
    handle->bundle_rx_active = 1;
    uint32_t err = 0;
    bundle.commit().handle_message(handle.get(), 0, nullptr, nullptr, &err);
    EXPECT_EQ(modules.size(), 1u) << "one trace, before the handler";
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(err, 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(All, TracedCommit, testing::ValuesIn(messages::bundles()),
                         messages::ByName());

}  // namespace
