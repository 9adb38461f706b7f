// A platform that listens: it stands in front of the platform's libraries at link time, writes down
// each call that the module makes, in order, and hands it on. A test may script the answers.
//
//   spy::Log log;
//   mem_st.set_value(...);
//   EXPECT_CALLS(log, {"ork_clear_last_error()",
//                      "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_mem_st),0,err)", ...});
//
// A call reads "name(arguments)" without the handle. Addresses print as what they were named, "obj"
// or "obj+12", null as "null", any other as "?". Descriptors print as "type(name)", their shared
// copies as "shared(name)", the peer domain as "domain". A trace reads "trace(error,The object is
// not state tracked)" with the words that its section and index stand for. An allocation gives its
// block a name: "alloc_fn(7,43)=new1".
#pragma once

#include <gtest/gtest.h>

#include <any>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ork/orklib.h"

namespace spy {

// ---- Names of addresses -----------------------------------------------------

// From now on [address, address + size) prints as text and text+offset. What was named last wins.
void name(const void* address, size_t size, const std::string& text);

// The same for one address alone, before any range that holds it.
void name_at(const void* address, const std::string& text);

void forget_names();

// How an address prints.
std::string symbol(const void* address);

// ---- What was called --------------------------------------------------------

// A range given to write_notify_fn.
struct Announcement {
  const uint8_t* address;
  size_t length;
  const void* owner;
};

// Writes down what its own thread calls, from its making to its end. One at a time on a thread.
class Log {
 public:
  Log();
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  // What the module called. What the platform did inside those calls is left out.
  std::vector<std::string> calls() const;

  // The same, those of the given functions only; "trace" stands for all traces.
  std::vector<std::string> calls_of(std::initializer_list<std::string> functions) const;

  // Everything; a call made inside the platform has two blanks in front for each level.
  std::vector<std::string> all() const;

  // How often the module called a function.
  size_t count(const std::string& function) const;

  // Every announcement in order, the platform's own as well.
  const std::vector<Announcement>& announcements() const { return announcements_; }

  // The format texts that the module handed to ork_snprintf, in order; calls() has what they came
  // out as.
  const std::vector<std::string>& formats() const { return formats_; }

  // Called at each announcement before it is entered, and before a block goes back: for tests
  // that look at memory at that time.
  std::function<void(const Announcement&)> on_announcement;
  std::function<void(const void*)> on_free;

  void clear();

 private:
  friend struct Recorder;
  struct Entry {
    int depth;
    std::string text;
  };
  std::vector<Entry> entries_;
  std::vector<Announcement> announcements_;
  unsigned blocks_ = 0;
  std::vector<std::string> formats_;
};

// Compares line by line; the message of a failure is a diff.
testing::AssertionResult same_calls(const std::vector<std::string>& got,
                                    const std::vector<std::string>& expected);
inline testing::AssertionResult same_calls(const Log& log,
                                           const std::vector<std::string>& expected) {
  return same_calls(log.calls(), expected);
}
inline testing::AssertionResult same_calls(const Log& log,
                                           std::initializer_list<const char*> expected) {
  return same_calls(log.calls(), std::vector<std::string>(expected.begin(), expected.end()));
}
inline testing::AssertionResult same_calls(const std::vector<std::string>& got,
                                           std::initializer_list<const char*> expected) {
  return same_calls(got, std::vector<std::string>(expected.begin(), expected.end()));
}

#define EXPECT_CALLS(log, ...) EXPECT_TRUE(spy::same_calls(log, __VA_ARGS__))
#define ASSERT_CALLS(log, ...) ASSERT_TRUE(spy::same_calls(log, __VA_ARGS__))

// ---- Scripted answers -------------------------------------------------------

// Holds a function of the platform replaced as long as it lives; then what stood there before
// returns.
class Replacement {
 public:
  Replacement(const void* function, std::any body);
  Replacement(Replacement&& other) noexcept;
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  Replacement& operator=(Replacement&&) = delete;
  ~Replacement();

 private:
  const void* function_;
  std::any before_;
};

// Calls of function run body instead: spy::replace(ork_domain_lookup_variant, [](auto...) { return
// int8_t{9}; }).
template <class R, class... A, class Body>
[[nodiscard]] Replacement replace(R (*function)(A...), Body body) {
  return Replacement(reinterpret_cast<const void*>(function),
                     std::function<R(A...)>(std::move(body)));
}

const void* next_of(const void* function);

// The platform's own, for a body that hands on.
template <class R, class... A>
auto next(R (*function)(A...)) -> R (*)(A...) {
  return reinterpret_cast<R (*)(A...)>(
      const_cast<void*>(next_of(reinterpret_cast<const void*>(function))));
}

template <class R, class... A>
[[nodiscard]] Replacement answer(R (*function)(A...), std::type_identity_t<R> result) {
  return replace(function, [result](A...) { return result; });
}

// The nth call from now on, counted from 1, writes number to the slot that is its last argument and
// gives 0; the others go through.
template <class R, class... A>
[[nodiscard]] Replacement fail(R (*function)(A...), uint32_t number, unsigned nth = 1) {
  return replace(function, [function, number, nth, seen = 0u](A... args) mutable -> R {
    if (++seen != nth) {
      return next(function)(args...);
    }
    const std::tuple<A...> all(args...);
    *std::get<sizeof...(A) - 1>(all) = number;
    return R();
  });
}

// ---- The handle's own functions ---------------------------------------------

// Puts the log in front of a handle's functions; forget puts them back, before the handle is
// destroyed.
void observe(ork_handle* handle);
void forget(ork_handle* handle);

// The nth call of alloc_fn or shared_alloc_fn of any observed handle from now on gives null, once;
// 0 takes that back.
void fail_alloc(unsigned nth);
void fail_shared_alloc(unsigned nth);

}  // namespace spy
