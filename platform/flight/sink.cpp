#include "sink.h"

#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <new>

namespace flight {

// Never destroyed: modules trace until the process is gone.
Sink& Sink::instance() {
  static Sink* const sink = new Sink;
  return *sink;
}

uint16_t Sink::add_module(const char* name, const void* where) {
  const std::lock_guard lock(mutex_);
  if (modules_.size() >= UINT16_MAX) {
    return 0;
  }
  modules_.push_back({name, loaded_file_at(where)});
  if (file_) {
    file_->write_newest_module();
  }
  return static_cast<uint16_t>(modules_.size());
}

void Sink::store(flight_trace& trace, const void* section) {
  const std::lock_guard lock(mutex_);
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  trace.time_ns =
      static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
  if (ring_.size() == ring_capacity) {
    ring_.pop_front();
  }
  ring_.push_back(trace);
  if (file_) {
    file_->write_trace(trace, section, static_cast<uint32_t>(gettid()));
  }
}

void Sink::clear() {
  const std::lock_guard lock(mutex_);
  ring_.clear();
}

uint32_t Sink::open(const char* path) {
  std::FILE* stream = std::fopen(path, "wbe");
  if (stream == nullptr) {
    return static_cast<uint32_t>(errno);
  }
  const std::lock_guard lock(mutex_);
  file_ = std::make_unique<TraceFile>(stream, modules_);
  return 0;
}

void Sink::close() {
  const std::lock_guard lock(mutex_);
  file_.reset();
}

}  // namespace flight
