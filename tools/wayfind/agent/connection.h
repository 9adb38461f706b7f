// One client of an agent: what it has sent, what it is told, and the show that it is being given.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/owned.h"
#include "tools/wayfind/agent/answer.h"
#include "tools/wayfind/agent/log.h"
#include "tools/wayfind/data/data_folder.h"
#include "tools/wayfind/link/inbox.h"
#include "tools/wayfind/link/pace.h"

namespace wayfind {

// How long a client may take.
struct Patience {
  std::chrono::seconds silence;   // between requests
  std::chrono::seconds deadline;  // for its greeting, for a request, and to fall behind the rate
};

class Connection {
 public:
  using Clock = Pace::Clock;
  // Called before a show is answered from the data.
  using Refresh = void (*)(DataFolder&, const Subject&);

  // The handle is the connection's; data and log outlive it.
  Connection(Descriptor socket, Handle handle, DataFolder& data, Refresh refresh,
             const Patience& patience, Log& log, const std::string& name);

  int socket() const { return socket_.get(); }

  // The events of poll that would let it go on.
  short wanted_events() const;

  // Goes on as far as it can without waiting. False when the connection is over.
  bool serve(short events);

  // Whether it has said anything: who only looks whether somebody listens has not.
  bool has_spoken() const { return has_spoken_; }

  // Why it has had its time; empty while it may go on. A show has no end of its time.
  std::string overdue() const;

  // Until when it keeps to the least rate. One that does not gives its place to those who wait.
  Clock::time_point due() const { return pace_.due(); }

  ClientLog& log() { return log_; }

 private:
  enum class Expects { greeting, announcement, request };

  bool receive();
  bool flush();
  void watch_input(bool took);
  bool take_input();
  bool take_item();
  void begin_answer(const std::string& subject);
  void refuse(const std::string& reason);
  void make_frames();
  void put(const std::string& text);
  bool has_output() const { return sent_ < outbox_.size(); }
  // Whether the client has to read before it is answered further.
  bool is_full() const;

  Descriptor socket_;
  Handle handle_;
  DataFolder& data_;
  Refresh refresh_;
  const Patience& patience_;
  ClientLog log_;
  Inbox inbox_;
  Expects expects_ = Expects::greeting;
  size_t announced_ = 0;
  TypeList own_;
  TypeList peer_;
  std::optional<Answer> answer_;
  std::vector<uint8_t> outbox_;
  size_t sent_ = 0;
  bool has_spoken_ = false;
  bool input_ended_ = false;
  bool closing_ = false;  // nothing more is read; over when the outbox is empty
  bool showing_ = false;  // the client has not taken all of a show
  Pace pace_;
  Clock::time_point last_progress_ = Clock::now();  // when a byte last came or went
  // Since when the client is at its greeting or a request, or has to take what ends its connection.
  std::optional<Clock::time_point> began_ = Clock::now();
};

}  // namespace wayfind
