// wayfind agent: answers shows from a data folder.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/common/failure.h"
#include "tools/common/log.h"
#include "tools/wayfind/agent/live_interfaces.h"
#include "tools/wayfind/agent/server.h"
#include "tools/wayfind/commands.h"

namespace wayfind {
namespace {

struct AgentOptions {
  Session session;
  ServerOptions server;
  std::string data;
  bool live_interfaces = false;
};

void keep_data(DataFolder&, const Subject&) {}

void run(AgentOptions& options) {
  if (options.data.empty() && !options.live_interfaces)
    throw Failure("nothing to answer from; name a folder with --data DIR");
  options.session.begin();
  uint32_t err = 0;
  const Storage storage(ork_storage_create(0, &err));
  expect_done(err, "no storage");
  const Handle handle = options.session.make_handle(storage.get());
  DataFolder data(handle.get());
  if (!options.data.empty()) data.read(options.data);
  options.server.refresh = options.live_interfaces ? read_live_interfaces : keep_data;
  Server(options.server, options.session, storage.get(), data).run();
}

}  // namespace

void add_agent(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("agent", "Answer shows from the records in a folder of XML files");
  const auto options = std::make_shared<AgentOptions>();
  command->add_option("--listen", options->server.path, "Socket to listen at")
      ->required()
      ->type_name("SOCKET");
  command->add_option("--data", options->data, "Folder of XML files with records")
      ->type_name("DIR");
  command->add_flag("--live-interfaces", options->live_interfaces,
                    "Answer show intf with this host's own interfaces");
  command->add_flag("--once", options->server.once,
                    "End when the first client that has said something has gone");
  options->server.idle_limit = 30;
  command
      ->add_option("--idle-limit", options->server.idle_limit,
                   "Let a silent client go after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  options->session.add_options(*command);
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
