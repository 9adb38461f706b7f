// wayfind show: asks an agent and prints what it answers.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/common/standard_output.h"
#include "tools/look/json_schema.h"
#include "tools/wayfind/client/exchange.h"
#include "tools/wayfind/client/show_printer.h"
#include "tools/wayfind/commands.h"

namespace wayfind {
namespace {

struct ShowOptions {
  std::string subject;
  std::string recording;
  AgentPlace place;
  LookOptions look;
  Session session;
};

void run(ShowOptions& options) {
  options.session.begin();
  options.look.expect_fitting(options.session.tracks());
  const Subject& subject = *find_subject(options.subject);
  Client client(options.place, options.session);
  ShowPrinter printer(client.handle(), *subject.bundle, options.look);
  client.ask(subject, printer, options.recording);
}

void print_json_schema() {
  write_out(look::json_schema());
  throw CLI::Success();
}

}  // namespace

void add_show(CLI::App& app) {
  CLI::App* command = app.add_subcommand("show", "Ask an agent and print what it answers");
  const auto options = std::make_shared<ShowOptions>();
  add_subject_to(*command, options->subject);
  options->place.add_to(*command);
  options->look.add_to(*command);
  command->add_flag_callback("--json-schema", print_json_schema,
                             "Print the JSON Schema of --format json, and nothing else");
  command
      ->add_option("--record", options->recording,
                   "Append each message to this file as it comes in")
      ->type_name("FILE");
  command
      ->add_option("--timeout", options->place.patience,
                   "Give up when the agent is silent for so long")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  options->session.add_options(*command);
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
