// A handle for the time of a test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "ork/platform.h"

namespace kit {

// The instance that tests pass, unless they are about it.
inline constexpr uint32_t instance = 7;

class Handle {
 public:
  // `change` sets the options that the test is about:
  //
  //   const Handle strict([](ork_options& options) { options.strict_epoch = 1; });
  explicit Handle(const std::function<void(ork_options&)>& change = [](ork_options&) {}) {
    ork_options options;
    ork_options_init(&options);
    change(options);
    uint32_t problem = 0;
    handle_ = ork_handle_create(&options, &problem);
    if (handle_ == nullptr) {
      throw std::runtime_error("no handle: error " + std::to_string(problem));
    }
    EXPECT_EQ(problem, 0u);
    ork_handle_memory(handle_, &at_first_);
  }
  explicit Handle(ork_tracking tracking)
      : Handle([tracking](ork_options& options) { options.tracking = tracking; }) {}
  Handle(Handle&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)),
        at_first_(other.at_first_),
        leaks_expected_(other.leaks_expected_) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  Handle& operator=(Handle&&) = delete;

  // What is still live when the handle has gone fails the test, unless leaks were expected.
  ~Handle() { destroy(); }
  void expect_leaks() { leaks_expected_ = true; }
  bool leaks_expected() const { return leaks_expected_; }

  void destroy() {
    if (handle_ == nullptr) {
      return;
    }
    ork_memory_report left;
    ork_handle_destroy(release(), &left);
    if (!leaks_expected_) {
      EXPECT_EQ(left.live_blocks, at_first_.live_blocks)
          << "a leak of " << left.live_bytes - at_first_.live_bytes << " bytes";
      EXPECT_EQ(left.live_distances, at_first_.live_distances) << "distances left in the map";
    }
  }

  operator ork_handle*() const { return handle_; }
  ork_handle* operator->() const { return handle_; }
  ork_handle* get() const { return handle_; }

  // The handle is the caller's now.
  ork_handle* release() { return std::exchange(handle_, nullptr); }

  uint32_t last_error() const { return ork_handle_last_error(handle_); }

  // What was allocated since the handle was made.
  ork_memory_report memory() const {
    ork_memory_report now;
    ork_handle_memory(handle_, &now);
    now.live_blocks -= at_first_.live_blocks;
    now.live_bytes -= at_first_.live_bytes;
    return now;
  }

  void set_peer(const ork_type_list* list) const {
    uint32_t problem = 0;
    ork_handle_set_peer(handle_, "peer", list, &problem);
    EXPECT_EQ(problem, 0u);
  }

 private:
  ork_handle* handle_ = nullptr;
  ork_memory_report at_first_{};
  bool leaks_expected_ = false;
};

}  // namespace kit
