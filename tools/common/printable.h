// Text that came from a file or a peer, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace wayfind {

// What is no printable UTF-8 becomes \xNN, a line end too.
std::string printable(std::string_view text);

// The same, but line ends stay.
std::string printable_lines(std::string_view text);

}  // namespace wayfind
