#include "tools/common/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tools/common/failure.h"
#include "tools/common/owned.h"
#include "tools/common/uninterrupted.h"

namespace wayfind {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw Failure(path + ": " + reason);
}

std::string size_text(size_t size) { return std::to_string(size >> 20) + " MiB"; }

void expect_regular(const std::string& path, const struct stat& status) {
  if (S_ISDIR(status.st_mode)) fail(path, words_for(EISDIR));
  if (!S_ISREG(status.st_mode)) fail(path, "no regular file; copy it into one first");
}

// Looked at before it is opened, since a device may act on that, and again behind it.
Descriptor opened(const std::string& path, size_t& size) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) fail(path, words_for(errno));
  expect_regular(path, status);
  Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file.get() < 0 || fstat(file.get(), &status) != 0) fail(path, words_for(errno));
  expect_regular(path, status);
  size = static_cast<size_t>(status.st_size);
  return file;
}

// size: how much to expect.
std::string content(int file, const std::string& path, size_t size, size_t largest) {
  constexpr size_t block = size_t{64} << 10;
  std::string text;
  if (size > largest) fail(path, "larger than " + size_text(largest));
  text.reserve(size + block);
  for (;;) {
    const size_t have = text.size();
    text.resize(have + block);
    const ssize_t got = uninterrupted([&] { return read(file, text.data() + have, block); });
    if (got < 0) fail(path, words_for(errno));
    text.resize(have + static_cast<size_t>(got));
    if (got == 0) return text;
    if (text.size() > largest) fail(path, "larger than " + size_text(largest));
  }
}

}  // namespace

std::string read_file(const std::string& path, size_t largest) {
  size_t size = 0;
  const Descriptor file = opened(path, size);
  return content(file.get(), path, size, largest);
}

std::string read_file_or_input(const std::string& path, size_t largest) {
  return path == "-" ? content(STDIN_FILENO, "standard input", 0, largest)
                     : read_file(path, largest);
}

}  // namespace wayfind
