// How far a long task has come: a line on stderr that is renewed in place and goes with the task.
// There is none where stderr is no terminal, nor before the task has taken a second.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace wayfind {

class Progress {
 public:
  // what: what is counted, as "hop-chan: messages received".
  explicit Progress(const std::string& what);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // One more is done.
  void step();

  // Takes the line away, before something else is written.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  std::string what_;
  bool is_wanted_;
  bool is_shown_ = false;
  size_t done_ = 0;
  Clock::time_point next_;
};

}  // namespace wayfind
