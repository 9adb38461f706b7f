#include "tools/wayfind/client/exchange.h"

#include <CLI/CLI.hpp>

#include "tools/common/failure.h"
#include "tools/common/progress.h"
#include "tools/common/report.h"
#include "tools/wayfind/client/agent_link.h"
#include "tools/wayfind/client/receiver.h"
#include "tools/wayfind/client/recorder.h"
#include "tools/wayfind/link/lowering.h"

namespace wayfind {
namespace {

void note(const char* what, const std::string& list) {
  if (!list.empty()) report(what + list);
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

// Gives a show on once the progress of its coming in is no more to be seen.
class Arrived : public ShowOutput {
 public:
  Arrived(Progress& progress, ShowOutput& output) : progress_(progress), output_(output) {}
  void put(const std::string& bundle, const std::vector<look::Message>& shown) override {
    progress_.clear();
    output_.put(bundle, shown);
  }

 private:
  Progress& progress_;
  ShowOutput& output_;
};

}  // namespace

void AgentPlace::add_to(CLI::App& command) {
  command.add_option("--connect", path, "Socket that the agent listens at")
      ->required()
      ->envname("WAYFIND_SOCKET")
      ->type_name("SOCKET");
}

Client::Client(const AgentPlace& place, const Session& session)
    : place_(place), handle_(session.make_handle(nullptr)), own_(announcement(*handle_)) {}

void Client::tell_lowering(const Subject& subject, const ork_type_list& agents) {
  if (has_told_) return;
  has_told_ = true;
  note("lowered for this release: ", lowered(*subject.bundle, agents, *own_));
  note("the agent's release is older: ", lowered(*subject.bundle, *own_, agents));
}

void Client::ask(const Subject& subject, ShowOutput& output, const std::string& recording) {
  AgentLink link(place_.path, place_.patience);
  const TypeList agents = link.exchange(*own_);
  tell_lowering(subject, *agents);
  link.ask(subject.name);
  Recorder recorder(recording);
  Progress progress(subject.name + ": messages received");
  Arrived arrived(progress, output);
  Receiver receiver(handle_.get(), subject, arrived, recorder);
  while (!receiver.committed()) {
    receiver.take(link.next_frame());
    progress.step();
  }
  std::string wrong = receiver.objection();
  if (const std::string lost = recorder.finish(); !lost.empty())
    wrong += (wrong.empty() ? "" : "; ") + lost;
  if (!wrong.empty()) throw Failure(wrong);
}

void add_subject_to(CLI::App& command, std::string& subject) {
  command.add_option("subject", subject, "What to show")
      ->required()
      ->check(CLI::Validator(known_subject, ""));
  command.footer(subject_lines());
}

}  // namespace wayfind
