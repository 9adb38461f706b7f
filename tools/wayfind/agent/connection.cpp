#include "tools/wayfind/agent/connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "tools/common/failure.h"
#include "tools/common/printable.h"
#include "tools/common/release.h"
#include "tools/wayfind/link/lowering.h"
#include "tools/wayfind/link/protocol.h"
#include "tools/wayfind/link/session.h"

namespace wayfind {
namespace {

// Answers are made ahead of the client up to here, so that a client that does not read costs no
// more.
constexpr size_t outbox_enough = size_t{256} << 10;

bool would_wait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

Connection::Connection(Descriptor socket, Handle handle, DataFolder& data, Refresh refresh,
                       const Patience& patience, Log& log, const std::string& name)
    : socket_(std::move(socket)),
      handle_(std::move(handle)),
      data_(data),
      refresh_(refresh),
      patience_(patience),
      log_(log, name),
      own_(announcement(*handle_)),
      pace_(patience.deadline) {
  put(announcement_text(*own_));
}

short Connection::wanted_events() const {
  const bool reads = !closing_ && !input_ended_ && !answer_ && !is_full();
  return static_cast<short>((reads ? POLLIN : 0) | (has_output() ? POLLOUT : 0));
}

bool Connection::serve(short events) {
  if ((events & (POLLIN | POLLHUP | POLLERR)) != 0 && (wanted_events() & POLLIN) != 0 && !receive())
    return false;
  bool goes_on = false;
  do {
    const bool was_held_back = is_full();
    const bool took = take_input();
    watch_input(took);
    make_frames();
    if (!flush()) return false;
    goes_on = was_held_back || took || answer_;
  } while (!has_output() && goes_on);
  return has_output() || !(closing_ || input_ended_);
}

std::string Connection::overdue() const {
  const auto now = Clock::now();
  const auto seconds = [](std::chrono::seconds limit) {
    return std::to_string(limit.count()) + " s";
  };
  if (!showing_ && last_progress_ + patience_.silence < now)
    return "silent for " + seconds(patience_.silence);
  if (!began_ || *began_ + patience_.deadline > now) return "";
  const char* const what = closing_                       ? "does not take its last answer"
                           : expects_ == Expects::request ? "has begun a request"
                                                          : "has not announced its release";
  return what + (" for " + seconds(patience_.deadline));
}

bool Connection::is_full() const { return outbox_.size() >= outbox_enough; }

bool Connection::receive() {
  const ssize_t got = inbox_.fill(socket_.get());
  if (got < 0) return would_wait();
  input_ended_ = got == 0;
  if (got > 0) has_spoken_ = true;
  last_progress_ = Clock::now();
  pace_.moved(static_cast<size_t>(got));
  return true;
}

bool Connection::flush() {
  while (has_output()) {
    const ssize_t sent = send(socket_.get(), outbox_.data() + sent_, outbox_.size() - sent_,
                              MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) return would_wait();
    sent_ += static_cast<size_t>(sent);
    last_progress_ = Clock::now();
    pace_.moved(static_cast<size_t>(sent));
  }
  outbox_.clear();
  sent_ = 0;
  showing_ = showing_ && answer_;
  return true;
}

// Starts the clock with the first byte of a request. While the agent holds the client back, it is
// not the client that takes its time.
void Connection::watch_input(bool took) {
  if (closing_ || expects_ != Expects::request) return;
  if (answer_ || is_full() || inbox_.bytes().empty()) {
    began_.reset();
  } else if (took || !began_) {
    began_ = Clock::now();
  }
}

// Takes what has come, up to a request. False when there was nothing to take.
bool Connection::take_input() {
  bool took = false;
  try {
    while (!closing_ && !answer_ && !is_full() && take_item()) took = true;
  } catch (const Failure& failure) {
    refuse(failure.what());
    closing_ = true;
    began_ = Clock::now();
  }
  return took;
}

// False while what comes next is not here whole.
bool Connection::take_item() {
  switch (expects_) {
    case Expects::greeting: {
      const auto line = inbox_.take_line(longest_line);
      if (!line) return false;
      announced_ = announced_length(*line);
      expects_ = Expects::announcement;
      return true;
    }
    case Expects::announcement: {
      const auto text = inbox_.take_bytes(announced_);
      if (!text) return false;
      peer_ = parse_release(*text, "the announcement");
      uint32_t err = 0;
      ork_handle_set_peer(handle_.get(), log_.client().c_str(), peer_.get(), &err);
      expect_done(err, "the announcement");
      expects_ = Expects::request;
      return true;
    }
    case Expects::request: {
      const auto line = inbox_.take_line(longest_line);
      if (!line) return false;
      begin_answer(requested_subject(*line));
      return true;
    }
  }
  return false;
}

void Connection::begin_answer(const std::string& name) {
  const Subject* subject = find_subject(name);
  if (subject == nullptr) return refuse("there is no show " + quoted(name));
  try {
    refresh_(data_, *subject);
    answer_.emplace(*subject, data_, handle_.get());
    put(acceptance());
    showing_ = true;
    pace_.begin();
  } catch (const Failure& failure) {
    refuse(failure.what());
  }
}

void Connection::refuse(const std::string& reason) {
  log_.line(reason);
  put(refusal(reason));
}

void Connection::make_frames() {
  if (!answer_) return;
  try {
    while (!answer_->done() && !is_full()) answer_->append_next(outbox_);
    if (!answer_->done()) return;
    const std::string less = lowered(*answer_->subject().bundle, *own_, *peer_);
    log_.line("show " + answer_->subject().name + ", " + std::to_string(answer_->messages_sent()) +
              " messages" + (less.empty() ? "" : "; lowered: " + less));
  } catch (const Failure& failure) {
    log_.line(failure.what());
  }
  answer_.reset();
}

void Connection::put(const std::string& text) {
  outbox_.insert(outbox_.end(), text.begin(), text.end());
}

}  // namespace wayfind
