#include "tools/wayfind/link/session.h"

#include <CLI/CLI.hpp>

#include "tools/common/failure.h"
#include "tools/common/release.h"
#include "tools/schema/frame_bound.h"

namespace wayfind {
namespace {

// Live bytes that a handle may hold: a hostile count then costs an error and not the machine.
constexpr size_t memory_budget = size_t{1} << 30;

}  // namespace

void Session::add_options(CLI::App& command) {
  command.add_option("--release", release_path_,
                     "Be the release that this file lists, not the newest");
  command.add_option("--tracking", tracking_, "Whether fields carry their states")
      ->check(CLI::IsMember({"on", "off"}))
      ->capture_default_str();
}

void Session::begin() {
  if (!release_path_.empty()) release_ = read_release(release_path_);
}

Handle Session::make_handle(ork_storage* storage) const {
  ork_options options;
  ork_options_init(&options);
  options.tracking = tracking_ == "on" ? ORK_TRACKING_ON : ORK_TRACKING_OFF;
  options.release = release_.get();
  options.storage = storage;
  options.memory_budget = memory_budget;
  const FrameBound bound = frame_bound(options.tracking);
  options.frame_base = bound.base;
  options.frame_factor = bound.factor;
  options.workspace_size = 0;
  uint32_t err = 0;
  Handle handle(ork_handle_create(&options, &err));
  expect_done(err, "no handle");
  return handle;
}

TypeList announcement(const ork_handle& handle) {
  uint32_t err = 0;
  TypeList list(ork_handle_announcement(&handle, &err));
  expect_done(err, "types of this release");
  return list;
}

}  // namespace wayfind
