// The recording of received messages: one stream and one switch for the whole process.
#include <atomic>
#include <cerrno>
#include <cstdio>

#include "ork/bundle.h"
#include "ork/platform.h"
#include "support/export.h"

namespace {

std::atomic<uint32_t> recording{0};
std::atomic<std::FILE *> stream{nullptr};

void replace_stream(std::FILE *next) {
    if (std::FILE *old = stream.exchange(next)) {
        std::fclose(old);
    }
}

}  // namespace

extern "C" {

ORK_EXPORT uint32_t orklib_msg_recorder_get_state() {
    return recording.load(std::memory_order_relaxed);
}

ORK_EXPORT FILE *orklib_msg_recorder_get_handle() {
    return stream.load(std::memory_order_acquire);
}

ORK_EXPORT void ork_recorder_open(const char *path, uint32_t *err) {
    if (*err != 0) {
        return;
    }
    std::FILE *file = std::fopen(path, "abe");
    if (file == nullptr) {
        *err = static_cast<uint32_t>(errno);
        return;
    }
    replace_stream(file);
}

ORK_EXPORT void ork_recorder_close() {
    recording.store(0);
    replace_stream(nullptr);
}

ORK_EXPORT void ork_recorder_switch(uint32_t on) {
    recording.store(on != 0 ? 1 : 0);
}

}  // extern "C"
