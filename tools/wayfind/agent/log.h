// What an agent tells whoever runs it, line by line on stderr. Nobody holds the agent up by not
// reading it, and nobody fills it: what cannot be written is lost, counted, and the count is told.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "tools/common/owned.h"

namespace wayfind {

// So many at once, and one more in each interval.
class Allowance {
 public:
  using Clock = std::chrono::steady_clock;

  Allowance(unsigned most, Clock::duration interval);
  bool take();

 private:
  unsigned most_;
  unsigned left_;
  Clock::duration interval_;
  Clock::time_point refilled_;
};

class Log {
 public:
  Log();

  // Whatever stands in it, it stays one line and drives no terminal; its end is cut.
  void line(const std::string& text);

  // Tells what was lost, once that can be written.
  void catch_up();

 private:
  bool write(const std::string& line);

  Descriptor reopened_;
  int stderr_;
  bool is_socket_ = false;
  Allowance allowance_;
  uint64_t lost_ = 0;
};

// One client's lines in the log.
class ClientLog {
 public:
  ClientLog(Log& log, const std::string& client);
  ~ClientLog();
  ClientLog(const ClientLog&) = delete;
  ClientLog& operator=(const ClientLog&) = delete;

  const std::string& client() const { return client_; }
  void line(const std::string& text);

 private:
  void tell_left_out();

  Log& log_;
  std::string client_;
  Allowance allowance_;
  uint64_t left_out_ = 0;
};

}  // namespace wayfind
