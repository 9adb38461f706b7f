// wayfind: shows of the path model between two processes, and what belongs to them.
#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/common/printable.h"
#include "tools/common/report.h"
#include "tools/common/standard_output.h"
#include "tools/offline/commands.h"
#include "tools/wayfind/commands.h"

namespace {

// Why the arguments were refused. Where a subcommand is missing, what stands in its place says
// more.
std::string reason(const CLI::App& app, const CLI::Error& error) {
  const CLI::App* innermost = &app;
  while (!innermost->get_subcommands().empty()) innermost = innermost->get_subcommands().front();
  const std::vector<std::string> left_over = innermost->remaining();
  if (innermost->get_require_subcommand_min() == 0 || left_over.empty()) return error.what();
  return CLI::ExtrasError({left_over.front()}).what();
}

std::string failure_line(const CLI::App* app, const CLI::Error& error) {
  return "wayfind: " + wayfind::printable(reason(*app, error)) + "; wayfind --help tells more\n";
}

// The status to end with.
int run(int argc, char** argv) {
  CLI::App app("Shows of the path model between two processes, and what belongs to them.",
               "wayfind");
  app.require_subcommand(1);
  app.failure_message(failure_line);
  wayfind::add_agent(app);
  wayfind::add_show(app);
  wayfind::add_wait(app);
  wayfind::add_recording(app);
  wayfind::add_trace(app);
  wayfind::add_manifest(app);
  wayfind::add_types(app);
  try {
    app.parse(argc, argv);
    return 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    wayfind::prepare_output();
    const int status = run(argc, argv);
    if (status == 0) wayfind::expect_written();
    return status;
  } catch (const std::exception& exception) {
    wayfind::report(wayfind::words_for(exception));
    return 1;
  }
}
