// What the command tells whoever runs it, line by line on stderr. Whatever stands in a line, it
// stays one and drives no terminal.
#pragma once

#include <string>

namespace wayfind {

void report(const std::string& line);

// Of an agent.
void log(const std::string& line);

}  // namespace wayfind
