#include "tools/common/progress.h"

#include <unistd.h>

#include <cstdio>

#include "tools/common/printable.h"

namespace wayfind {
namespace {

constexpr std::chrono::milliseconds first_after(1000);
constexpr std::chrono::milliseconds then_after(200);

}  // namespace

Progress::Progress(const std::string& what)
    : what_(printable(what)),
      is_wanted_(isatty(STDERR_FILENO) != 0),
      next_(Clock::now() + first_after) {}

void Progress::step() {
  ++done_;
  if (!is_wanted_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + then_after;
  is_shown_ = true;
  std::fprintf(stderr, "\r%s: %zu\x1b[K", what_.c_str(), done_);
}

void Progress::clear() {
  if (is_shown_) std::fputs("\r\x1b[K", stderr);
  is_shown_ = false;
}

}  // namespace wayfind
