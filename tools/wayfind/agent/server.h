// The agent's loop: takes clients and serves all of them at once until a signal ends it.
#pragma once

#include <list>

#include "tools/wayfind/agent/connection.h"
#include "tools/wayfind/link/session.h"
#include "tools/wayfind/link/unix_socket.h"

namespace wayfind {

struct ServerOptions {
  std::string path;
  Connection::Refresh refresh;
  unsigned idle_limit;  // seconds without a byte after which a client is let go
  bool once;            // end with the first client that has said something
};

class Server {
 public:
  // The storage holds the data and the handles of all clients.
  Server(const ServerOptions& options, const Session& session, ork_storage* storage,
         DataFolder& data);

  // Returns after SIGINT or SIGTERM, or with once after the first client that has said something.
  void run();

 private:
  void accept_client();
  void serve_clients(const std::vector<short>& events);
  void let_idle_clients_go();
  template <class Ends>
  void remove_clients(Ends ends);

  const ServerOptions& options_;
  const Session& session_;
  ork_storage* storage_;
  DataFolder& data_;
  Listener listener_;
  std::list<Connection> clients_;
  unsigned accepted_ = 0;
  bool served_ = false;  // a client that has said something has gone
};

}  // namespace wayfind
