// One client of an agent: what it has sent, what it is told, and the show that it is being given.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/owned.h"
#include "tools/wayfind/agent/answer.h"
#include "tools/wayfind/data/data_folder.h"
#include "tools/wayfind/link/inbox.h"

namespace wayfind {

class Connection {
 public:
  using Clock = std::chrono::steady_clock;
  // Called before a show is answered from the data.
  using Refresh = void (*)(DataFolder&, const Subject&);

  // The handle is the connection's; the data outlives it.
  Connection(Descriptor socket, Handle handle, DataFolder& data, Refresh refresh,
             const std::string& name);

  int socket() const { return socket_.get(); }

  // The events of poll that would let it go on.
  short wanted_events() const;

  // Goes on as far as it can without waiting. False when the connection is over.
  bool serve(short events);

  // Whether it has said anything: who only looks whether somebody listens has not.
  bool has_spoken() const { return has_spoken_; }

  // When a byte last came or went.
  Clock::time_point last_progress() const { return last_progress_; }

  const std::string& name() const { return name_; }

 private:
  enum class Expects { greeting, announcement, request };

  bool receive();
  bool flush();
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
  std::string name_;
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
  Clock::time_point last_progress_ = Clock::now();
};

}  // namespace wayfind
