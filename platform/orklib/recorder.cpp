// The recording of received messages: one stream and one switch for the whole process.
#include <atomic>
#include <cerrno>
#include <cstdio>

#include "ork/bundle.h"
#include "ork/platform.h"
#include "support/export.h"

namespace {

std::atomic<uint32_t> recording{0};
std::atomic<std::FILE*> stream{nullptr};

// The error that some of the old stream's bytes were lost to, or 0. Of one that came before the end
// only the fact is known.
uint32_t replace_stream(std::FILE* next) {
  std::FILE* const old = stream.exchange(next);
  if (old == nullptr) {
    return 0;
  }
  const bool failed = std::ferror(old) != 0;
  if (std::fclose(old) != 0) {
    return static_cast<uint32_t>(errno);
  }
  return failed ? EIO : 0;
}

}  // namespace

extern "C" {

ORK_EXPORT uint32_t orklib_msg_recorder_get_state() {
  return recording.load(std::memory_order_relaxed);
}

ORK_EXPORT FILE* orklib_msg_recorder_get_handle() { return stream.load(std::memory_order_acquire); }

ORK_EXPORT void ork_recorder_open(const char* path, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  std::FILE* file = std::fopen(path, "abe");
  if (file == nullptr) {
    *err = static_cast<uint32_t>(errno);
    return;
  }
  *err = replace_stream(file);
}

ORK_EXPORT void ork_recorder_close(uint32_t* err) {
  recording.store(0);
  const uint32_t lost = replace_stream(nullptr);
  if (*err == 0) {
    *err = lost;
  }
}

ORK_EXPORT void ork_recorder_switch(uint32_t on) { recording.store(on != 0 ? 1 : 0); }

}  // extern "C"
