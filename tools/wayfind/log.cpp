#include "log.h"

#include <cstdio>

namespace wayfind {

void log(const std::string& line) { std::fprintf(stderr, "wayfind agent: %s\n", line.c_str()); }

}  // namespace wayfind
