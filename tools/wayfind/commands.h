// The subcommands of the two ends. Each one enters itself, its options and what it runs into the
// application.
#pragma once

namespace CLI {
class App;
}

namespace wayfind {

void add_agent(CLI::App& app);
void add_show(CLI::App& app);
void add_wait(CLI::App& app);
void add_recording(CLI::App& app);

}  // namespace wayfind
