#include "tools/wayfind/client/agent_link.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>

#include "tools/common/failure.h"
#include "tools/common/release.h"
#include "tools/wayfind/link/protocol.h"
#include "tools/wayfind/link/unix_socket.h"

namespace wayfind {
namespace {

// Longer than any frame of an agent's: what claims more is no frame.
constexpr uint32_t longest_frame = uint32_t{64} << 20;

}  // namespace

AgentLink::AgentLink(const std::string& path, unsigned patience)
    : path_(path),
      patience_(patience),
      socket_(connect_to_agent(path, patience)),
      pace_(std::chrono::seconds(patience)),
      until_(pace_.due()) {}

TypeList AgentLink::exchange(const ork_type_list& own) {
  say(announcement_text(own));
  const size_t length = announced_length(line("its greeting"));
  for (;;) {
    if (const auto text = inbox_.take_bytes(length))
      return parse_release(*text, "the agent's announcement");
    wait_for_more("its announcement");
  }
}

void AgentLink::ask(const std::string& subject) {
  pace_.begin();
  until_ = pace_.due();
  say(request(subject));
  expect_acceptance(line("its answer"));
  pace_.begin();
}

std::span<const uint8_t> AgentLink::next_frame() {
  inbox_.drop(frame_);
  frame_ = 0;
  for (;;) {
    const auto here = inbox_.bytes();
    const auto have = static_cast<uint32_t>(here.size());
    uint32_t err = 0;
    const uint32_t length = ork_frame_length(here.data(), have, longest_frame, &err);
    if (err != 0)
      throw Failure("behind frame " + std::to_string(frames_) +
                    " comes what is no frame; see what runs at " + path_);
    if (length != 0 && length <= have) {
      ++frames_;
      frame_ = length;
      return here.first(length);
    }
    std::string meanwhile = "frame " + std::to_string(frames_ + 1) + " of its show";
    if (length != 0)
      meanwhile +=
          " (" + std::to_string(have) + " of " + std::to_string(length) + " bytes have come)";
    until_ = pace_.due();
    wait_for_more(meanwhile);
  }
}

void AgentLink::say(const std::string& text) {
  int socket = socket_.get();
  const uint32_t err = ork_write_to_fd(&socket, reinterpret_cast<const uint8_t*>(text.data()),
                                       static_cast<uint32_t>(text.size()));
  // An agent that has gone may have said why.
  if (err != EPIPE && err != ECONNRESET) expect_done(err, "cannot write to " + path_);
}

void AgentLink::wait_for_more(const std::string& meanwhile) {
  using std::chrono::milliseconds;
  pollfd place{socket_.get(), POLLIN, 0};
  int ready = 0;
  do {
    const auto left = std::chrono::ceil<milliseconds>(until_ - Pace::Clock::now());
    ready = poll(&place, 1, static_cast<int>(std::max(left, milliseconds(0)).count()));
    if (ready == 0 && left <= milliseconds(0)) fail_late(meanwhile);
  } while (ready <= 0 && (ready == 0 || errno == EINTR));
  const ssize_t got = inbox_.fill(socket_.get());
  if (got > 0) {
    pace_.moved(static_cast<size_t>(got));
    last_byte_ = Pace::Clock::now();
  }
  if (got > 0 || (got < 0 && errno == EINTR)) return;
  const std::string how = got < 0 ? " (" + words_for(errno) + ")" : "";
  throw Failure("the agent hung up before " + meanwhile + how +
                "; see what it reported, then ask again");
}

void AgentLink::fail_late(const std::string& meanwhile) const {
  const std::chrono::seconds patience(patience_);
  const bool is_silent = Pace::Clock::now() - last_byte_ >= patience;
  throw Failure("the agent is " + std::string(is_silent ? "silent" : "too slow") + " for " +
                std::to_string(patience_) + " s before " + meanwhile +
                "; see what it does, or ask with a longer --timeout");
}

std::string AgentLink::line(const std::string& what) {
  for (;;) {
    if (const auto line = inbox_.take_line(longest_line)) return *line;
    wait_for_more(what);
  }
}

}  // namespace wayfind
