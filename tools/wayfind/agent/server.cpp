#include "tools/wayfind/agent/server.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "tools/common/failure.h"
#include "tools/common/report.h"
#include "tools/common/uninterrupted.h"

namespace wayfind {
namespace {

constexpr size_t most_clients = 64;
constexpr int tick_ms = 500;

// SIGINT and SIGTERM as something to read, so that the loop ends between two clients and the
// socket's file goes.
class EndSignals {
 public:
  EndSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, &before_);
    place_ = Descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (place_.get() < 0) throw Failure("no signals: " + words_for(errno));
  }
  // What is told behind the loop may have to be waited for, and another signal has to end that.
  ~EndSignals() {
    signalfd_siginfo taken{};
    while (read(place_.get(), &taken, sizeof taken) > 0) continue;
    sigprocmask(SIG_SETMASK, &before_, nullptr);
  }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  int get() const { return place_.get(); }

 private:
  sigset_t before_{};
  Descriptor place_;
};

// Whatever happens to one client, the others are served on.
bool serve_client(Connection& client, short events) {
  try {
    return client.serve(events);
  } catch (const std::exception& exception) {
    client.log().line("let go: " + words_for(exception));
    return false;
  }
}

// The process that connected, as the kernel tells it.
std::string name_of(unsigned number, int socket) {
  std::string name = "client " + std::to_string(number);
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return name;
  return name + " (uid " + std::to_string(peer.uid) + ", pid " + std::to_string(peer.pid) + ")";
}

}  // namespace

Server::Server(const ServerOptions& options, const Session& session, ork_storage* storage,
               DataFolder& data)
    : options_(options),
      session_(session),
      storage_(storage),
      data_(data),
      listener_(options.path, options.mode) {}

void Server::run() {
  const EndSignals signals;
  log_.line("listening at " + options_.path);
  for (;;) {
    // With all places taken new clients wait in the socket's queue, and are looked for at each tick.
    std::vector<pollfd> places{{signals.get(), POLLIN, 0},
                               {is_full() ? -1 : listener_.get(), POLLIN, 0}};
    for (const Connection& client : clients_)
      places.push_back({client.socket(), client.wanted_events(), 0});
    if (uninterrupted([&] { return poll(places.data(), places.size(), tick_ms); }) < 0)
      throw Failure("cannot wait: " + words_for(errno));
    if (places[0].revents != 0) break;
    std::vector<short> events;
    for (size_t i = 2; i < places.size(); ++i) events.push_back(places[i].revents);
    serve_clients(events);
    let_overdue_clients_go();
    if (is_full() && somebody_waits()) make_place();
    if (served_ && options_.once) break;
    if (!is_full() && somebody_waits()) accept_client();
    log_.catch_up();
  }
  clients_.clear();
  log_.line("ended");
}

bool Server::is_full() const { return clients_.size() >= most_clients; }

bool Server::somebody_waits() const {
  pollfd place{listener_.get(), POLLIN, 0};
  return uninterrupted([&] { return poll(&place, 1, 0); }) == 1;
}

template <class Ends>
void Server::remove_clients(Ends ends) {
  clients_.remove_if([&](Connection& client) {
    if (!ends(client)) return false;
    served_ = served_ || client.has_spoken();
    return true;
  });
}

void Server::serve_clients(const std::vector<short>& events) {
  auto event = events.begin();
  remove_clients([&](Connection& client) {
    const short happened = *event++;
    return happened != 0 && !serve_client(client, happened);
  });
}

void Server::accept_client() {
  Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (socket.get() < 0) {
    // Without descriptors the client stays in the queue; a pause keeps the loop from spinning on
    // it.
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
      poll(nullptr, 0, tick_ms);
    return;
  }
  const std::string name = name_of(++accepted_, socket.get());
  try {
    clients_.emplace_back(std::move(socket), session_.make_handle(storage_), data_,
                          options_.refresh, options_.patience, log_, name);
  } catch (const std::exception& exception) {
    log_.line(name + ": turned away: " + words_for(exception));
  }
}

void Server::let_overdue_clients_go() {
  remove_clients([](Connection& client) {
    const std::string reason = client.overdue();
    if (!reason.empty()) client.log().line("let go, " + reason);
    return !reason.empty();
  });
}

// Of those who do not keep to the least rate the one that is furthest behind goes.
void Server::make_place() {
  const auto last =
      std::min_element(clients_.begin(), clients_.end(),
                       [](const Connection& a, const Connection& b) { return a.due() < b.due(); });
  if (last->due() >= Connection::Clock::now()) return;
  last->log().line("let go for one who waits, slower than " + std::to_string(least_rate) +
                   " bytes a second");
  remove_clients([&](const Connection& client) { return &client == &*last; });
}

}  // namespace wayfind
