// wayfind show: asks an agent and prints what it answers.
#include <CLI/CLI.hpp>
#include <charconv>
#include <memory>
#include <optional>
#include <vector>

#include "tools/common/failure.h"
#include "tools/common/standard_output.h"
#include "tools/look/json_schema.h"
#include "tools/wayfind/client/exchange.h"
#include "tools/wayfind/client/show_printer.h"
#include "tools/wayfind/client/watch.h"
#include "tools/wayfind/commands.h"

namespace wayfind {
namespace {

struct ShowOptions {
  std::string subject;
  std::string recording;
  AgentPlace place;
  LookOptions look;
  Session session;
  std::optional<double> interval;  // between two rounds of --watch
};

// Seconds between two rounds of --watch.
constexpr double suited_interval = 2;
constexpr double least_interval = 0.1;
constexpr double most_interval = 86400;

double interval_in(const std::string& text) {
  if (text.empty()) return suited_interval;
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, seconds);
  const bool is_number = read.ec == std::errc() && read.ptr == end;
  if (!is_number || !(seconds >= least_interval && seconds <= most_interval))
    throw CLI::ValidationError("--watch", "write 0.1 to 86400 seconds, not " + text);
  return seconds;
}

void add_watch(CLI::App& command, std::optional<double>& interval) {
  const auto take = [&interval](const std::vector<std::string>& given) {
    interval = interval_in(given.front());
    return true;
  };
  command.add_option("--watch", take, "Renew a table every so many seconds, 2 if nothing is said")
      ->expected(0, 1)
      ->type_name("[SECONDS]");
}

void expect_watchable(const ShowOptions& options) {
  const std::string& format = options.look.format;
  if (!format.empty() && format != "table")
    throw Failure("--watch renews a table; leave out --format " + format);
  if (options.look.count || options.look.lines || options.look.states || !options.recording.empty())
    throw Failure("--watch renews a table; leave out --count, --lines, --states and --record");
}

void run(ShowOptions& options) {
  options.session.begin();
  const Subject& subject = *find_subject(options.subject);
  Client client(options.place, options.session);
  if (options.interval) {
    expect_watchable(options);
    watch(client, subject, options.look, *options.interval);
  }
  options.look.expect_fitting(options.session.tracks());
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
  add_watch(*command, options->interval);
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
