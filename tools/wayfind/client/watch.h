// A show again and again: on a terminal a table that is renewed in place, elsewhere a line for each
// change.
#pragma once

#include <string>

#include "tools/wayfind/client/exchange.h"
#include "tools/wayfind/client/look_options.h"

namespace wayfind {

// Goes on until SIGINT or SIGTERM ends the process with status 0. Throws when an agent does not
// answer, or a look::Mistake before anything is asked.
[[noreturn]] void watch(Client& client, const Subject& subject, const LookOptions& options,
                        double seconds);

}  // namespace wayfind
