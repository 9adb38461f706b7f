// The agent's loop: takes clients and serves all of them at once until a signal ends it.
#pragma once

#include <sys/types.h>

#include <list>

#include "tools/wayfind/agent/connection.h"
#include "tools/wayfind/link/session.h"
#include "tools/wayfind/link/unix_socket.h"

namespace wayfind {

struct ServerOptions {
  std::string path;
  mode_t mode = 0600;  // of the socket
  Connection::Refresh refresh;
  Patience patience;
  bool once;  // end with the first client that has said something
};

class Server {
 public:
  // The storage holds the data and the handles of all clients.
  Server(const ServerOptions& options, const Session& session, ork_storage* storage,
         DataFolder& data);

  // Returns after SIGINT or SIGTERM, or with once after the first client that has said something.
  void run();

 private:
  bool is_full() const;
  bool somebody_waits() const;
  void accept_client();
  void serve_clients(const std::vector<short>& events);
  void let_overdue_clients_go();
  void make_place();
  template <class Ends>
  void remove_clients(Ends ends);

  const ServerOptions& options_;
  const Session& session_;
  ork_storage* storage_;
  DataFolder& data_;
  Listener listener_;
  Log log_;
  std::list<Connection> clients_;
  unsigned accepted_ = 0;
  bool served_ = false;  // a client that has said something has gone
};

}  // namespace wayfind
