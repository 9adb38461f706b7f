#include "tools/wayfind/link/unix_socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <filesystem>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

constexpr int waiting_clients = 64;

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    throw Failure("the socket's path, \"" + path + "\", has " + std::to_string(path.size()) +
                  " bytes, and may have 1 to " + std::to_string(sizeof address.sun_path - 1) +
                  "; choose another one");
  }
  path.copy(address.sun_path, path.size());
  return address;
}

Descriptor new_socket(int flags) {
  Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  if (made.get() < 0) throw Failure("no socket: " + words_for(errno));
  return made;
}

template <int (*Call)(int, const sockaddr*, socklen_t)>
int with_address(const Descriptor& descriptor, const std::string& path) {
  const sockaddr_un address = address_of(path);
  return Call(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
             ? 0
             : errno;
}

// While it lives no other agent takes a path in the same folder: between asking who listens there
// and listening, nobody else may do the same.
Descriptor lock_folder_of(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  Descriptor made(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A folder that cannot be opened is told when the path is bound. One that somebody else keeps
  // locked is not waited for without end.
  for (int tries = 0;
       tries < 100 && flock(made.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK; ++tries)
    poll(nullptr, 0, 10);
  return made;
}

// Makes room for a listener at path.
void remove_stale_socket(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return;
  if (!S_ISSOCK(status.st_mode))
    throw Failure(path + " is there and is no socket; choose another path");
  const int number = with_address<connect>(new_socket(SOCK_NONBLOCK), path);
  if (number == 0 || number == EAGAIN)
    throw Failure("an agent is listening at " + path + " already; stop it or choose another path");
  if (number == ECONNREFUSED) unlink(path.c_str());
}

}  // namespace

Descriptor connect_to_agent(const std::string& path, unsigned patience) {
  Descriptor made = new_socket(0);
  const timeval limit{static_cast<time_t>(patience), 0};
  setsockopt(made.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  const int number = with_address<connect>(made, path);
  const std::string start = "; start one with: wayfind agent --listen " + path + " --data DIR";
  if (number == ENOENT) throw Failure("no agent: there is no socket at " + path + start);
  if (number == ECONNREFUSED) throw Failure("no agent: nobody listens at " + path + start);
  if (number == EAGAIN) {
    throw Failure("the agent at " + path + " has let no client in for " + std::to_string(patience) +
                  " s; see what it does, or ask with a longer --timeout");
  }
  if (number != 0) throw Failure("cannot connect to " + path + ": " + words_for(number));
  return made;
}

Listener::Listener(const std::string& path, mode_t mode)
    : path_(path), socket_(new_socket(SOCK_NONBLOCK)) {
  const Descriptor lock = lock_folder_of(path);
  remove_stale_socket(path);
  const mode_t mask = umask(~mode & 0777);
  const int number = with_address<bind>(socket_, path);
  umask(mask);
  if (number != 0) throw Failure("cannot listen at " + path + ": " + words_for(number));
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0) {
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  if (listen(socket_.get(), waiting_clients) != 0)
    throw Failure("cannot listen at " + path + ": " + words_for(errno));
}

Listener::~Listener() {
  struct stat status {};
  if (lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_)
    unlink(path_.c_str());
}

}  // namespace wayfind
