// The subcommand types.
#include <CLI/CLI.hpp>

#include "commands.h"
#include "release.h"
#include "standard_output.h"

namespace wayfind {

void add_types(CLI::App& app) {
  CLI::App* types = app.add_subcommand("types",
                                       "Print the types of this release, name, LUID and number of "
                                       "variants, as --release reads them");
  types->callback([] { write_out(text_of(*newest_release())); });
}

}  // namespace wayfind
