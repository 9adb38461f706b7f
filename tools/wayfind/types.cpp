// The subcommand types.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "release.h"

namespace wayfind {

void add_types(CLI::App& app) {
  CLI::App* types =
      app.add_subcommand("types", "Print the types of this release, name, LUID and number of variants, as --release reads them");
  types->callback([] { std::fputs(text_of(*newest_release()).c_str(), stdout); });
}

}  // namespace wayfind
