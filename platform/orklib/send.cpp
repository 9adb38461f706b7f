#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "ork/platform.h"
#include "runtime.h"
#include "support/export.h"

namespace {

// A pipe or file knows no send; its reader's end raises a signal that the process has to have
// ignored.
ssize_t write_some(int fd, const uint8_t* bytes, size_t length) {
  const ssize_t sent = send(fd, bytes, length, MSG_NOSIGNAL);
  return sent < 0 && errno == ENOTSOCK ? write(fd, bytes, length) : sent;
}

}  // namespace

extern "C" {

ORK_EXPORT void ork_send_frame(struct ork_handle* handle, const uint8_t* frame, uint32_t length,
                               ork_write_fn write, void* ctx, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  if (const uint32_t number = write(ctx, frame, length)) {
    ork::fail(handle, err, number);
    return;
  }
  handle->send_sequence += 1;
}

ORK_EXPORT uint32_t ork_write_to_fd(void* ctx, const uint8_t* bytes, uint32_t length) {
  const int fd = *static_cast<const int*>(ctx);
  while (length > 0) {
    const ssize_t written = write_some(fd, bytes, length);
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return static_cast<uint32_t>(written < 0 ? errno : EIO);
    }
    bytes += written;
    length -= static_cast<uint32_t>(written);
  }
  return 0;
}

}  // extern "C"
