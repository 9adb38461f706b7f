// wayfind: shows of the path model between two processes, and what belongs to them.
#include <CLI/CLI.hpp>
#include <string>

#include "commands.h"
#include "log.h"
#include "standard_output.h"

namespace {

// The status to end with.
int run(int argc, char** argv) {
  CLI::App app("Shows of the path model between two processes, and what belongs to them.", "wayfind");
  app.require_subcommand(1);
  app.failure_message(
      [](const CLI::App*, const CLI::Error& error) { return std::string("wayfind: ") + error.what() + "; wayfind --help tells more\n"; });
  wayfind::add_agent(app);
  wayfind::add_show(app);
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
    wayfind::report(exception.what());
    return 1;
  }
}
