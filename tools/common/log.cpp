#include "tools/common/log.h"

#include <cstdio>

#include "tools/common/printable.h"

namespace wayfind {

void report(const std::string& line) {
  std::fprintf(stderr, "wayfind: %s\n", printable(line).c_str());
}

void log(const std::string& line) {
  std::fprintf(stderr, "wayfind agent: %s\n", printable(line).c_str());
}

}  // namespace wayfind
