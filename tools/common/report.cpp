#include "tools/common/report.h"

#include <cstdio>
#include <new>

#include "tools/common/printable.h"

namespace wayfind {

void report(const std::string& line) {
  std::fprintf(stderr, "wayfind: %s\n", printable(line).c_str());
}

std::string words_for(const std::exception& exception) {
  if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr)
    return "out of memory; give it less to do, or more memory";
  return exception.what();
}

}  // namespace wayfind
