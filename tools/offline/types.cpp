// The subcommand types.
#include <CLI/CLI.hpp>

#include "tools/common/release.h"
#include "tools/common/standard_output.h"
#include "tools/offline/commands.h"

namespace wayfind {

void add_types(CLI::App& app) {
  CLI::App* types = app.add_subcommand("types",
                                       "Print the types of this release, name, LUID and number of "
                                       "variants, as --release reads them");
  types->callback([] { write_out(text_of(*newest_release())); });
}

}  // namespace wayfind
