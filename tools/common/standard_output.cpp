#include "tools/common/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

[[noreturn]] void fail(int number) {
  throw Failure("cannot write standard output: " + words_for(number));
}

}  // namespace

void prepare_output() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  int place = -1;
  do
    place =
        open("/dev/null",
             O_RDONLY | O_CLOEXEC);  // a write to it is refused as one to a closed descriptor is
  while (place >= 0 && place <= STDERR_FILENO);
  close(place);
}

void write_out(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) fail(errno);
}

void expect_written() {
  if (std::fflush(stdout) != 0) fail(errno);
  if (std::ferror(stdout) != 0) fail(EIO);  // the number of an earlier failure is lost
}

}  // namespace wayfind
