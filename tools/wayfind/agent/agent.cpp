// wayfind agent: answers shows from a data folder.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>

#include "tools/common/failure.h"
#include "tools/wayfind/agent/live_interfaces.h"
#include "tools/wayfind/agent/server.h"
#include "tools/wayfind/commands.h"

namespace wayfind {
namespace {

mode_t parsed_mode(const std::string& text) {
  return static_cast<mode_t>(std::strtoul(text.c_str(), nullptr, 8));
}

struct AgentOptions {
  Session session;
  ServerOptions server;
  std::string data;
  bool live_interfaces = false;
  unsigned idle_limit = 30;
  unsigned deadline = 10;
};

std::string mode_reason(const std::string& text) {
  const bool is_mode = !text.empty() && text.size() <= 4 &&
                       text.find_first_not_of("01234567") == std::string::npos &&
                       parsed_mode(text) <= 0777;
  return is_mode ? "" : text + " is no mode; give one like 0660";
}

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
  options.server.patience = {std::chrono::seconds(options.idle_limit),
                             std::chrono::seconds(options.deadline)};
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
  command
      ->add_option_function<std::string>(
          "--mode",
          [options](const std::string& text) { options->server.mode = parsed_mode(text); },
          "Who may connect: mode of the socket's file")
      ->type_name("OCTAL")
      ->default_str("0600")
      ->check(CLI::Validator(mode_reason, ""));
  command
      ->add_option("--idle-limit", options->idle_limit,
                   "Let a client go that is silent between requests for so long")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  command
      ->add_option("--deadline", options->deadline,
                   "Let a client go whose greeting or request takes longer; and for one who waits, "
                   "one that has been slow for so long")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  options->session.add_options(*command);
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
