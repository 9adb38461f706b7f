// wayfind show: asks an agent and prints what it answers.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/common/failure.h"
#include "tools/common/report.h"
#include "tools/wayfind/client/agent_link.h"
#include "tools/wayfind/client/receiver.h"
#include "tools/wayfind/client/recorder.h"
#include "tools/wayfind/commands.h"
#include "tools/wayfind/data/subject.h"
#include "tools/wayfind/link/lowering.h"
#include "tools/wayfind/link/session.h"

namespace wayfind {
namespace {

struct ShowOptions {
  std::string subject;
  std::string path;
  std::string format = "text";
  std::string recording;
  unsigned patience = 30;
  Session session;
};

void note(const char* what, const std::string& list) {
  if (!list.empty()) report(what + list);
}

void run(ShowOptions& options) {
  options.session.begin();
  const Subject& subject = *find_subject(options.subject);
  const Handle handle = options.session.make_handle(nullptr);
  const TypeList own = announcement(*handle);
  AgentLink link(options.path, options.patience);
  const TypeList agents = link.exchange(*own);
  note("lowered for this release: ", lowered(*subject.bundle, *agents, *own));
  note("the agent's release is older: ", lowered(*subject.bundle, *own, *agents));
  link.ask(subject.name);
  Recorder recorder(options.recording);
  MessagePrinter printer(handle.get(), format_named(options.format));
  Receiver receiver(handle.get(), subject, printer, recorder);
  while (!receiver.committed()) receiver.take(link.next_frame());
  std::string wrong = receiver.objection();
  if (const std::string lost = recorder.finish(); !lost.empty())
    wrong += (wrong.empty() ? "" : "; ") + lost;
  if (!wrong.empty()) throw Failure(wrong);
}

std::string subject_lines() {
  std::string lines = "Subjects:\n";
  for (const Subject& subject : subjects()) {
    lines += "  " + subject.name + std::string(16 - subject.name.size(), ' ') +
             subject.bundle->meaning + "\n";
  }
  return lines;
}

std::string known_subject(const std::string& name) {
  return find_subject(name) != nullptr
             ? ""
             : "there is no show " + name + "; wayfind show --help lists them";
}

}  // namespace

void add_show(CLI::App& app) {
  CLI::App* command = app.add_subcommand("show", "Ask an agent and print what it answers");
  const auto options = std::make_shared<ShowOptions>();
  command->add_option("subject", options->subject, "What to show")
      ->required()
      ->check(CLI::Validator(known_subject, ""));
  command->add_option("--connect", options->path, "Socket that the agent listens at")
      ->required()
      ->type_name("SOCKET");
  command->add_option("--format", options->format, "How to print")
      ->check(CLI::IsMember({"text", "xml"}))
      ->capture_default_str();
  command
      ->add_option("--record", options->recording,
                   "Append each message to this file as it comes in")
      ->type_name("FILE");
  command
      ->add_option("--timeout", options->patience, "Give up when the agent is silent for so long")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  options->session.add_options(*command);
  command->footer(subject_lines());
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
