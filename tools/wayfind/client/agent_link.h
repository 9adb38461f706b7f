// A client's side of the connection to an agent.
#pragma once

#include <span>
#include <string>

#include "tools/common/owned.h"
#include "tools/wayfind/link/inbox.h"
#include "tools/wayfind/link/pace.h"

namespace wayfind {

class AgentLink {
 public:
  // patience: seconds to wait for a connection, for the agent's greeting, for its answer, and for a
  // show to fall behind the least rate.
  AgentLink(const std::string& path, unsigned patience);

  // Exchanges type lists: gives the agent's.
  TypeList exchange(const ork_type_list& own);

  // Asks for a show and waits until the agent accepts.
  void ask(const std::string& subject);

  // The next frame, valid until the next call.
  std::span<const uint8_t> next_frame();

 private:
  void say(const std::string& text);
  void wait_for_more(const std::string& meanwhile);
  std::string line(const std::string& what);

  [[noreturn]] void fail_late(const std::string& meanwhile) const;

  std::string path_;
  unsigned patience_;
  Descriptor socket_;
  Inbox inbox_;
  size_t frame_ = 0;  // length of the frame last given
  size_t frames_ = 0;
  Pace pace_;
  Pace::Clock::time_point last_byte_ = Pace::Clock::now();
  Pace::Clock::time_point until_;  // what is waited for has to have come
};

}  // namespace wayfind
