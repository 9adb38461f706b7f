// Where sites are raised: a child process of its own for each, which stores its traces in a file,
// and the decoder that reads them back by the library's file. What was raised is counted.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "ork/platform.h"
#include "support/spied.h"
#include "trace_order.h"

namespace trace_sites {

using namespace kit;

// A trace that is awaited.
struct Expected {
  std::string function;
  std::string text;
  std::string level;
  std::vector<std::string> arguments;  // as they read in the words
  size_t nth = 0;                      // of the function's entries with this text
};

using Action = std::function<void()>;

// Runs the action and expects these traces, in this order, and no other; the process dies of the
// last if that is fatal.
void expect_traces(const std::vector<Expected>& expected, const Action& action);
inline void expect_trace(const Expected& expected, const Action& action) {
  expect_traces({expected}, action);
}

// The same for a site that is reached only when something changes under way: the action runs again
// and again, and at the first, second, third call to the handle or the runtime the change is made,
// until the trace is the first to be raised. The action says from where on calls count.
void expect_trace_after_change(const Expected& expected, const Action& action,
                               const Action& change);
void count_calls_from_now();

std::set<Place>& raised();

// A handle whose functions tick. Nothing is given back: it lives in a process that ends.
class TickingHandle {
 public:
  explicit TickingHandle(ork_tracking tracking = ORK_TRACKING_ABSENT);

  operator ork_handle*() const { return handle_; }
  ork_handle* operator->() const { return handle_; }

  // The mode word is neither of the legal ones from now on.
  void corrupt() const;

  mutable uint32_t err = 0;

 private:
  ork_handle* handle_;
};

// The descriptor with something wrong about it; lives as long as the process.
ork_type_info* without_variants(const ork_type_info& type);
ork_type_info* with_fewer_variants(const ork_type_info& type);  // their number is -1
inline const std::string minus_one = "4294967295";              // as %u shows it

std::string words_of(int error);
std::string digits_of(const void* pointer);

}  // namespace trace_sites
