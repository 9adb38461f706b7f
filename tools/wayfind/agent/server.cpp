#include "tools/wayfind/agent/server.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>

#include "tools/common/failure.h"
#include "tools/common/log.h"

namespace wayfind {
namespace {

constexpr size_t most_clients = 64;
constexpr int tick_ms = 500;

// SIGINT and SIGTERM as something to read, so that the loop ends between two clients and the
// socket's file goes.
Descriptor end_signals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  sigprocmask(SIG_BLOCK, &set, nullptr);
  Descriptor made(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (made.get() < 0) throw Failure("no signals: " + words_for(errno));
  return made;
}

// Whatever happens to one client, the others are served on.
bool serve_client(Connection& client, short events) {
  try {
    return client.serve(events);
  } catch (const std::exception& exception) {
    log(client.name() + ": let go: " + exception.what());
    return false;
  }
}

}  // namespace

Server::Server(const ServerOptions& options, const Session& session, ork_storage* storage,
               DataFolder& data)
    : options_(options),
      session_(session),
      storage_(storage),
      data_(data),
      listener_(options.path) {}

void Server::run() {
  const Descriptor signals = end_signals();
  log("listening at " + options_.path);
  for (;;) {
    // At the limit new clients wait in the socket's queue.
    std::vector<pollfd> places{{signals.get(), POLLIN, 0},
                               {clients_.size() < most_clients ? listener_.get() : -1, POLLIN, 0}};
    for (const Connection& client : clients_)
      places.push_back({client.socket(), client.wanted_events(), 0});
    if (poll(places.data(), places.size(), tick_ms) < 0 && errno != EINTR)
      throw Failure("cannot wait: " + words_for(errno));
    if (places[0].revents != 0) break;
    std::vector<short> events;
    for (size_t i = 2; i < places.size(); ++i) events.push_back(places[i].revents);
    serve_clients(events);
    let_idle_clients_go();
    if (served_ && options_.once) break;
    if (places[1].revents != 0) accept_client();
  }
  log("ended");
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
  const std::string name = "client " + std::to_string(accepted_ + 1);
  Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (socket.get() < 0) {
    // Without descriptors the client stays in the queue; a pause keeps the loop from spinning on
    // it.
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
      poll(nullptr, 0, tick_ms);
    return;
  }
  ++accepted_;
  try {
    clients_.emplace_back(std::move(socket), session_.make_handle(storage_), data_,
                          options_.refresh, name);
  } catch (const std::exception& exception) {
    log(name + ": turned away: " + exception.what());
  }
}

void Server::let_idle_clients_go() {
  const auto limit = Connection::Clock::now() - std::chrono::seconds(options_.idle_limit);
  remove_clients([&](const Connection& client) {
    const bool idle = client.last_progress() < limit;
    if (idle)
      log(client.name() + ": let go, silent for " + std::to_string(options_.idle_limit) + " s");
    return idle;
  });
}

}  // namespace wayfind
