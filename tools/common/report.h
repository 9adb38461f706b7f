// What the command tells whoever runs it, line by line on stderr. Whatever stands in a line, it
// stays one and drives no terminal.
#pragma once

#include <exception>
#include <string>

namespace wayfind {

void report(const std::string& line);

// What an exception says; exhausted memory is told as such.
std::string words_for(const std::exception& exception);

}  // namespace wayfind
