// Bytes that have come from a peer and are not yet taken, in the order of the stream.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wayfind {

class Inbox {
 public:
  // Reads once from a socket. Gives the bytes read, 0 at the peer's end of the stream, -1 with
  // errno set.
  ssize_t fill(int socket);

  // The next line without its end, once it is here whole. A line longer than limit is a Failure.
  std::optional<std::string> take_line(size_t limit);

  // The next count bytes, once they are here.
  std::optional<std::string> take_bytes(size_t count);

  // All that is here, and how much of it is done with.
  std::span<const uint8_t> bytes() const {
    return {bytes_.data() + begin_, bytes_.size() - begin_};
  }
  void drop(size_t count) { begin_ += count; }

 private:
  std::vector<uint8_t> bytes_;
  size_t begin_ = 0;
};

}  // namespace wayfind
