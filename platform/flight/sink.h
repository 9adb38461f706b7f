// Where traces go: a ring in memory, always, and a file while one is open.
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ork/platform.h"
#include "trace_file.h"

namespace flight {

class Sink {
 public:
  static Sink& instance();

  // Gives the module's number, from 1 up; 0 when none is left. where is any address inside the
  // module.
  uint16_t add_module(const char* name, const void* where);

  void store(flight_trace& trace, const void* section);

  template <typename Visit>
  void each(Visit visit) const {
    const std::lock_guard lock(mutex_);
    for (const flight_trace& trace : ring_) {
      visit(trace);
    }
  }

  void clear();
  uint32_t open(const char* path);
  void close();

 private:
  static constexpr size_t ring_capacity = 4096;

  mutable std::mutex mutex_;
  std::deque<flight_trace> ring_;
  std::vector<Module> modules_;
  std::unique_ptr<TraceFile> file_;
};

}  // namespace flight
