#include "tools/wayfind/link/inbox.h"

#include <sys/socket.h>

#include <algorithm>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

constexpr size_t read_size = size_t{64} << 10;

}  // namespace

ssize_t Inbox::fill(int socket) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(begin_));
  begin_ = 0;
  const size_t had = bytes_.size();
  bytes_.resize(had + read_size + 1);  // whoever reads a frame may look at one byte behind it
  const ssize_t got = recv(socket, bytes_.data() + had, read_size, 0);
  bytes_.resize(had + static_cast<size_t>(std::max<ssize_t>(got, 0)));
  return got;
}

std::optional<std::string> Inbox::take_line(size_t limit) {
  const auto here = bytes();
  const auto end = std::find(here.begin(), here.end(), '\n');
  if (static_cast<size_t>(end - here.begin()) > limit)
    throw Failure("a line of more than " + std::to_string(limit) + " bytes");
  if (end == here.end()) return std::nullopt;
  std::string line(here.begin(), end);
  drop(line.size() + 1);
  return line;
}

std::optional<std::string> Inbox::take_bytes(size_t count) {
  const auto here = bytes();
  if (here.size() < count) return std::nullopt;
  std::string taken(here.begin(), here.begin() + static_cast<std::ptrdiff_t>(count));
  drop(count);
  return taken;
}

}  // namespace wayfind
