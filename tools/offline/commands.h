// The subcommands that look at files. Each one enters itself, its options and what it runs into the
// application.
#pragma once

namespace CLI {
class App;
}

namespace wayfind {

void add_trace(CLI::App& app);
void add_manifest(CLI::App& app);
void add_types(CLI::App& app);

}  // namespace wayfind
