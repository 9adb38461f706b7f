// The sites of bundles, in a process that defines no bundle handler.
#include <cerrno>

#include "bundle_stage.h"
#include "fwe_ui_wayfind/module.h"
#include "texts.h"

namespace trace_sites {
namespace {

void handler(ork_handle*, uint32_t, void*, uint32_t*) {}

TEST(BundleSites, start) {
  for (const Bundle& bundle : bundles()) {
    expect_trace({bundle.name("_start"),
                  text::start_inside,
                  "error",
                  {bundle.prefixed("_bundle_start_message")}},
                 [&] {
                   const auto open = spy::answer(orklib_is_accumulating_bundle, 1);
                   bundle.handle("start", TickingHandle(), 0);
                 });
    expect_trace(
        {bundle.name("_start"), text::starting, "debug", {"the bundle", digits_of(dispatch_table)}},
        [&] {
          const auto info = dispatching(&dispatch());
          bundle.handle("start", TickingHandle(), 0);
        });
    expect_trace({bundle.name("_start"),
                  text::starting_unnamed,
                  "debug",
                  {bundle.prefixed(""), digits_of(dispatch_table)}},
                 [&] {
                   const auto info = dispatching(nullptr);
                   bundle.handle("start", TickingHandle(), 0);
                 });
  }
}

TEST(BundleSites, abort) {
  for (const Bundle& bundle : bundles()) {
    const auto abort = [&](uint32_t error, bool open, const ork_bundle_dispatch_info* info) {
      const auto accumulating = spy::answer(orklib_is_accumulating_bundle, open ? 1 : 0);
      const auto dispatched = dispatching(info);
      const TickingHandle handle;
      handle->bundle_receive_list.next = handle->bundle_receive_list.prev =
          &handle->bundle_receive_list;
      bundle.handle("abort", handle, error);
    };
    expect_trace({bundle.name("_abort"), text::abort_error, "error", {words_of(EIO)}},
                 [&] { abort(EIO, true, nullptr); });
    expect_trace({bundle.name("_abort"), text::outside_bundle, "error", {}},
                 [&] { abort(0, false, nullptr); });
    expect_trace(
        {bundle.name("_abort"), text::aborting, "debug", {"the bundle", digits_of(dispatch_table)}},
        [&] { abort(0, true, &dispatch()); });
  }
}

TEST(BundleSites, commit) {
  for (const Bundle& bundle : bundles()) {
    const auto commit = [&](uint32_t error, bool open, ork_bundle_handler dispatched,
                            ork_bundle_handler of_handle) {
      const auto accumulating = spy::answer(orklib_is_accumulating_bundle, open ? 1 : 0);
      const auto info = dispatching(&dispatch(dispatched));
      const TickingHandle handle;
      handle->bundle_receive_list.next = handle->bundle_receive_list.prev =
          &handle->bundle_receive_list;
      handle->bundle_handler = of_handle;
      bundle.handle("commit", handle, error);
    };
    const std::string name = bundle.name("_commit");
    const std::vector<std::string> arguments = {"the bundle"};
    expect_trace({name, text::commit_error, "error", {words_of(EIO)}},
                 [&] { commit(EIO, true, nullptr, nullptr); });
    expect_trace({name, text::outside_bundle, "error", {}},
                 [&] { commit(0, false, nullptr, nullptr); });
    expect_trace({name, text::calling_dispatch_handler, "debug", arguments},
                 [&] { commit(0, true, handler, nullptr); });
    expect_trace({name, text::calling_handle_handler, "debug", arguments},
                 [&] { commit(0, true, nullptr, handler); });
    expect_trace({name, text::calling_dispatch_handler, "debug", arguments, 1}, [&] {
      fwe_ui_wayfind_bundle_registered_handler = handler;
      commit(0, true, nullptr, nullptr);
    });
    expect_trace({name, text::calling_registered_handler, "debug", arguments}, [&] {
      *bundle.schema.registered = handler;
      commit(0, true, nullptr, nullptr);
    });
    expect_trace({name, text::no_handler, "error", arguments},
                 [&] { commit(0, true, nullptr, nullptr); });
  }
}

}  // namespace
}  // namespace trace_sites
