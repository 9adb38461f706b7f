// What the agent tells whoever runs it, line by line on stderr.
#pragma once

#include <string>

namespace wayfind {

void log(const std::string& line);

}  // namespace wayfind
