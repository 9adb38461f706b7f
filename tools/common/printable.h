// Text that came from a file or a peer, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace wayfind {

// What is no printable UTF-8 becomes \xNN, byte for byte: line ends, controls, and characters that
// are not seen or that turn the direction of what is.
std::string printable(std::string_view text);

// The same, but line ends stay.
std::string printable_lines(std::string_view text);

// The same of the first 80 bytes, for a text that stands inside a sentence.
std::string quoted(std::string_view text);

}  // namespace wayfind
