#include "tools/wayfind/agent/log.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/common/printable.h"
#include "tools/common/uninterrupted.h"

namespace wayfind {
namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

// A line of so many bytes, each escaped, fits with what stands around it into a page: a pipe takes
// that much whole or not at all.
constexpr size_t longest_text = 900;

constexpr unsigned lines_at_once = 1000;
constexpr auto line_interval = 10ms;
constexpr unsigned client_lines_at_once = 10;
constexpr auto client_line_interval = 1s;

}  // namespace

Allowance::Allowance(unsigned most, Clock::duration interval)
    : most_(most), left_(most), interval_(interval), refilled_(Clock::now()) {}

bool Allowance::take() {
  const auto more = (Clock::now() - refilled_) / interval_;
  if (more >= most_ - left_) {
    left_ = most_;
    refilled_ = Clock::now();
  } else {
    left_ += static_cast<unsigned>(more);
    refilled_ += more * interval_;
  }
  if (left_ == 0) return false;
  --left_;
  return true;
}

// A pipe or a terminal is opened once more: then the agent alone does not wait for it, and whoever
// shares the descriptor goes on as before.
Log::Log() : stderr_(STDERR_FILENO), allowance_(lines_at_once, line_interval) {
  struct stat status {};
  if (fstat(STDERR_FILENO, &status) != 0) return;
  is_socket_ = S_ISSOCK(status.st_mode);
  if (!S_ISFIFO(status.st_mode) && !S_ISCHR(status.st_mode)) return;
  reopened_ = Descriptor(open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (reopened_.get() >= 0) stderr_ = reopened_.get();
}

void Log::line(const std::string& text) {
  catch_up();
  const bool is_cut = text.size() > longest_text;
  const std::string shown = printable(is_cut ? text.substr(0, longest_text) : text);
  if (lost_ != 0 || !allowance_.take() || !write(shown + (is_cut ? "...\n" : "\n"))) ++lost_;
}

void Log::catch_up() {
  if (lost_ != 0 && allowance_.take() &&
      write(std::to_string(lost_) + " lines lost here: too many, or nobody read them\n"))
    lost_ = 0;
}

bool Log::write(const std::string& line) {
  const std::string whole = "wayfind agent: " + line;
  if (is_socket_) return send(stderr_, whole.data(), whole.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0;
  pollfd place{stderr_, POLLOUT, 0};
  const int ready = uninterrupted([&] { return poll(&place, 1, 0); });
  if (ready != 1 || (place.revents & POLLOUT) == 0) return false;
  return uninterrupted([&] { return ::write(stderr_, whole.data(), whole.size()); }) > 0;
}

ClientLog::ClientLog(Log& log, const std::string& client)
    : log_(log), client_(client), allowance_(client_lines_at_once, client_line_interval) {}

ClientLog::~ClientLog() { tell_left_out(); }

void ClientLog::line(const std::string& text) {
  if (!allowance_.take()) {
    ++left_out_;
    return;
  }
  tell_left_out();
  log_.line(client_ + ": " + text);
}

void ClientLog::tell_left_out() {
  if (left_out_ != 0) log_.line(client_ + ": " + std::to_string(left_out_) + " lines left out");
  left_out_ = 0;
}

}  // namespace wayfind
