// Writing to a reader that is slow, while signals come.
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include "support.h"

namespace platform_test {
namespace {

std::atomic<int> signals_seen{0};

// A handler that does not restart what it interrupts, for the test's time.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) { ++signals_seen; };
    sigaction(SIGUSR1, &action, &before_);
    signals_seen = 0;
  }
  ~Interruptions() { sigaction(SIGUSR1, &before_, nullptr); }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  // Until the thread has seen that many more, or has ended.
  void send(std::thread& to, int number, const std::atomic<bool>& ended) const {
    for (const int wanted = signals_seen + number; signals_seen < wanted && !ended;) {
      pthread_kill(to.native_handle(), SIGUSR1);
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }

 private:
  struct sigaction before_ {};
};

enum class Channel { socket, pipe };

class InterruptedSend : public testing::TestWithParam<Channel> {
 protected:
  InterruptedSend() {
    int ends[2];
    if (GetParam() == Channel::socket) {
      EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    } else {
      EXPECT_EQ(pipe(ends), 0);
      std::swap(ends[0], ends[1]);
    }
    to_ = ends[0];
    from_ = ends[1];
  }
  ~InterruptedSend() override { close(from_); }

  // Fills the channel, so that the next write waits before its first byte.
  size_t fill() const {
    const int flags = fcntl(to_, F_GETFL);
    fcntl(to_, F_SETFL, flags | O_NONBLOCK);
    const std::vector<uint8_t> bytes(1000);
    size_t total = 0;
    for (ssize_t written = 0; (written = write(to_, bytes.data(), bytes.size())) > 0;)
      total += static_cast<size_t>(written);
    fcntl(to_, F_SETFL, flags);
    return total;
  }

  int to_ = -1;
  int from_ = -1;
};

TEST_P(InterruptedSend, goes_on_where_it_was_and_loses_nothing) {
  const Interruptions interruptions;
  const size_t before = fill();
  std::vector<uint8_t> frame(3'000'000);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * 7 + i / 251);
  const Handle handle;
  uint32_t err = 0;
  std::atomic<bool> ended{false};
  std::thread writer([&] {
    ork_send_frame(handle.get(), frame.data(), static_cast<uint32_t>(frame.size()), ork_write_to_fd,
                   &to_, &err);
    close(to_);
    ended = true;
  });
  interruptions.send(writer, 20, ended);  // nothing can be written meanwhile
  std::vector<uint8_t> arrived;
  std::vector<uint8_t> part(30'000);
  for (ssize_t got = 0; (got = read(from_, part.data(), part.size())) > 0;) {
    arrived.insert(arrived.end(), part.begin(), part.begin() + got);
    if (arrived.size() < frame.size() / 2) interruptions.send(writer, 1, ended);
  }
  writer.join();
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(handle->send_sequence, 1u);
  ASSERT_EQ(arrived.size(), before + frame.size());
  EXPECT_TRUE(std::equal(frame.begin(), frame.end(),
                         arrived.begin() + static_cast<std::ptrdiff_t>(before)));
}

INSTANTIATE_TEST_SUITE_P(Channels, InterruptedSend, testing::Values(Channel::socket, Channel::pipe),
                         [](const auto& each) {
                           return each.param == Channel::socket ? "socket" : "pipe";
                         });

}  // namespace
}  // namespace platform_test
