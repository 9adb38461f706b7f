// wayfind: shows of the path model between two processes, and what belongs to them.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "commands.h"

int main(int argc, char** argv) {
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
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "wayfind: %s\n", exception.what());
    return 1;
  }
}
