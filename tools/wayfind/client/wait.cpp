// wayfind wait: asks an agent again and again until something is so.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "tools/common/failure.h"
#include "tools/look/mistake.h"
#include "tools/wayfind/client/exchange.h"
#include "tools/wayfind/client/look_options.h"
#include "tools/wayfind/commands.h"

namespace wayfind {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds pause(1);  // between two questions

struct WaitOptions {
  std::string subject;
  AgentPlace place;
  LookOptions look;
  Session session;
  unsigned timeout = 60;
};

// Whether a show held something of what is wished.
class Finder : public ShowOutput {
 public:
  Finder(const wayfind_bundle& bundle, const look::Wishes& wishes)
      : selection_(bundle, wishes, look::roles_of_tables()) {}

  void put(const std::string&, const std::vector<look::Message>& shown) override {
    found_ = selection_.count(selection_.of(shown)) > 0;
  }
  bool found() const { return found_; }

 private:
  look::Selection selection_;
  bool found_ = false;
};

// Status 1 is for what does not come to hold; a mistake ends with that of other wrong arguments.
Finder finder_for(const Subject& subject, const look::Wishes& wishes) {
  try {
    return {*subject.bundle, wishes};
  } catch (const look::Mistake& mistake) {
    throw CLI::ValidationError(mistake.what());
  }
}

// Why a question was not answered; empty when it was.
std::string unanswered(Client& client, const Subject& subject, Finder& finder) {
  try {
    client.ask(subject, finder);
    return "";
  } catch (const Failure& failure) {
    return failure.what();
  }
}

void run(WaitOptions& options) {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(options.timeout);
  options.session.begin();
  const Subject& subject = *find_subject(options.subject);
  Client client(options.place, options.session);
  Finder finder = finder_for(subject, options.look.wishes);
  for (;;) {
    options.place.patience = static_cast<unsigned>(
        std::max<int64_t>(1, std::chrono::ceil<std::chrono::seconds>(end - Clock::now()).count()));
    const std::string reason = unanswered(client, subject, finder);
    if (finder.found()) return;
    const Clock::duration left = end - Clock::now();
    if (left <= Clock::duration(0)) {
      throw Failure("no " + subject.name + " fits --where within " +
                    std::to_string(options.timeout) + " s" +
                    (reason.empty() ? "" : "; the last time, " + reason));
    }
    std::this_thread::sleep_for(std::min<Clock::duration>(pause, left));
  }
}

}  // namespace

void add_wait(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "wait", "Ask an agent every second until --where holds for something it shows");
  const auto options = std::make_shared<WaitOptions>();
  add_subject_to(*command, options->subject);
  options->place.add_to(*command);
  options->look.add_where_to(*command)->required();
  command
      ->add_option("--timeout", options->timeout,
                   "End with status 1 when it does not hold after so long")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  options->session.add_options(*command);
  command->callback([options] { run(*options); });
}

}  // namespace wayfind
