// One client, two agents: each of two threads takes a show from a connection of its own, with a
// handle of its own. Made to be run under the thread sanitizer too.
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "behaviour/bundles/rows.h"

namespace {

using messages::Bundle;
using kit::Handle;
using messages::Made;
using messages::Message;
using messages::Rows;

constexpr uint32_t entries = 60;
constexpr uint32_t longest_frame = 1 << 16;

class Socket {
 public:
  explicit Socket(int number) : number_(number) {}
  Socket(Socket&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  Socket& operator=(Socket&&) = delete;
  ~Socket() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  int get() const { return number_; }

 private:
  int number_;
};

// An agent in the middle of its show: what it sends, and the connection that it goes to.
class Show {
 public:
  Show(const char* bundle, uint32_t seed, ork_tracking tracking, Socket socket)
      : bundle_(messages::bundle(bundle)), handle_(Handle(tracking)), socket_(std::move(socket)) {
    for (const wayfind_member& member :
         std::span(bundle_.schema().members, bundle_.schema().member_count)) {
      for (uint32_t i = 0; i < (member.repeatable != 0 ? entries : 1u); ++i) {
        messages_.push_back(
            std::make_unique<Made>(Message(*member.message), handle_.get(), seed + i));
        types_.emplace_back(*member.message);
      }
    }
  }

  size_t size() const { return types_.size(); }
  const Message& type(size_t i) const { return types_[i]; }
  const Made& message(size_t i) const { return *messages_[i]; }

  void start() { send(messages::control_frame(handle_.get(), bundle_.start())); }
  void send_message(size_t i) { send(messages_[i]->frame()); }
  void commit() { send(messages::control_frame(handle_.get(), bundle_.commit())); }

 private:
  void send(const std::vector<uint8_t>& frame) {
    uint32_t err = 0;
    int number = socket_.get();
    ork_send_frame(handle_.get(), frame.data(), static_cast<uint32_t>(frame.size()),
                   ork_write_to_fd, &number, &err);
    EXPECT_EQ(err, 0u);
  }

  Bundle bundle_;
  Handle handle_;
  Socket socket_;
  std::vector<Message> types_;
  std::vector<std::unique_ptr<Made>> messages_;
};

// What came out at the far end of a show.
struct Received {
  const Show* expected;
  size_t same = 0;
  size_t members = 0;
  int commits = 0;
};

bool are_same(const Message& type, const Made& sent, void* received) {
  for (size_t slot = 0; slot < type.record_count(); ++slot) {
    if (messages::Record(type.record(slot))
            .compare(type.slots(received)[slot], sent.record(slot)) != 0) {
      return false;
    }
  }
  return true;
}

void compare(ork_handle* handle, uint32_t, void* ctx, uint32_t*) {
  auto& received = *static_cast<Received*>(ctx);
  const Show& show = *received.expected;
  for (ork_bundle_member* member = ork_bundle_next(handle, nullptr); member != nullptr;
       member = ork_bundle_next(handle, member)) {
    const size_t i = received.members++;
    const bool of_type =
        i < show.size() &&
        std::string_view(ork_bundle_member_info(member)->name) == show.type(i).name();
    received.same +=
        of_type && are_same(show.type(i), show.message(i), ork_bundle_member_message(member)) ? 1
                                                                                              : 0;
  }
  received.commits += 1;
}

// Reads frames from the connection and dispatches them, until a show is committed.
void receive(const Rows& rows, const Handle& handle, const Socket& socket, Received& received) {
  std::vector<uint8_t> here;
  while (received.commits == 0) {
    uint32_t err = 0;
    const uint32_t length =
        ork_frame_length(here.data(), static_cast<uint32_t>(here.size()), longest_frame, &err);
    ASSERT_EQ(err, 0u);
    if (length == 0 || length > here.size()) {
      uint8_t more[1000];
      const ssize_t got = recv(socket.get(), more, sizeof more, 0);
      ASSERT_GT(got, 0);
      here.insert(here.end(), more, more + got);
      continue;
    }
    const auto end = here.begin() + static_cast<ptrdiff_t>(length);
    ASSERT_EQ(rows.dispatch(handle, &received, {here.begin(), end}), 0u);
    here.erase(here.begin(), end);
  }
  EXPECT_TRUE(here.empty());
}

class TwoConnections : public testing::TestWithParam<ork_tracking> {};

TEST_P(TwoConnections, each_thread_gets_the_show_of_its_own) {
  constexpr std::array bundles = {"fwe_cl_wayfind_show_hop_chan_response",
                                  "fwe_cl_wayfind_show_channel_response"};
  std::vector<Show> shows;
  std::vector<Received> received;
  std::vector<std::thread> clients;
  const Rows rows(compare);
  shows.reserve(bundles.size());
  received.reserve(bundles.size());
  for (const char* const bundle : bundles) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    shows.emplace_back(bundle, static_cast<uint32_t>(1000 * shows.size()), GetParam(),
                       Socket(ends[0]));
    received.push_back({&shows.back()});
    clients.emplace_back([&rows, &result = received.back(), socket = Socket(ends[1])] {
      const Handle handle(GetParam());
      receive(rows, handle, socket, result);
    });
  }
  // A frame of the one and a frame of the other, so that both bundles are open all the time.
  for (Show& show : shows) {
    show.start();
  }
  for (size_t i = 0; i <= entries; ++i) {
    for (Show& show : shows) {
      show.send_message(i);
    }
  }
  for (Show& show : shows) {
    show.commit();
  }
  for (std::thread& client : clients) {
    client.join();
  }
  for (const Received& each : received) {
    EXPECT_EQ(each.commits, 1);
    EXPECT_EQ(each.members, 1 + entries);
    EXPECT_EQ(each.same, 1 + entries);
  }
}

INSTANTIATE_TEST_SUITE_P(All, TwoConnections, testing::Values(ORK_TRACKING_OFF, ORK_TRACKING_ON),
                         [](const auto& each) {
                           return each.param == ORK_TRACKING_ON ? "tracked" : "untracked";
                         });

}  // namespace
