// Preloaded into a process it makes every wait, read and write on a socket one that a signal
// interrupts: every other call ends with EINTR, and the calls between move a few hundred bytes at
// most.
#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace {

constexpr size_t at_most = 300;

// True for every other call of one kind.
bool interrupted(bool& last) {
  last = !last;
  if (last) errno = EINTR;
  return last;
}

template <class F>
F* next(const char* name) {
  return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t send(int socket, const void* bytes, size_t length, int flags) {
  static bool last = false;
  if (interrupted(last)) return -1;
  static auto* const real = next<ssize_t(int, const void*, size_t, int)>("send");
  return real(socket, bytes, std::min(length, at_most), flags);
}

ssize_t recv(int socket, void* bytes, size_t length, int flags) {
  static bool last = false;
  if (interrupted(last)) return -1;
  static auto* const real = next<ssize_t(int, void*, size_t, int)>("recv");
  return real(socket, bytes, std::min(length, at_most), flags);
}

int poll(pollfd* places, nfds_t count, int timeout) {
  static bool last = false;
  if (interrupted(last)) return -1;
  static auto* const real = next<int(pollfd*, nfds_t, int)>("poll");
  return real(places, count, timeout);
}

}  // extern "C"
