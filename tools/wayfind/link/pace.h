// Whether a transfer keeps to a least average rate.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace wayfind {

// Bytes in a second. A peer that is slower for long does not mean to be done.
inline constexpr unsigned least_rate = 4096;

class Pace {
 public:
  using Clock = std::chrono::steady_clock;

  // grace: how long nothing has to come, and how much of what came early counts later.
  explicit Pace(Clock::duration grace) : grace_(grace) { begin(); }

  void begin() { due_ = Clock::now() + grace_; }

  void moved(size_t bytes) {
    const auto now = Clock::now();
    const auto worth = std::chrono::milliseconds(bytes * 1000 / least_rate);
    // What was missed is forgiven in the end, or a pause of an hour could never be made up for.
    due_ = std::min(now + grace_, std::max(due_, now - grace_) + worth);
  }

  // The rate is kept until then if nothing comes any more.
  Clock::time_point due() const { return due_; }

 private:
  Clock::duration grace_;
  Clock::time_point due_;
};

}  // namespace wayfind
