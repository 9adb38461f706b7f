#include "tools/common/failure.h"

#include <cstring>

namespace wayfind {

std::string words_for(int number) { return std::strerror(number); }
std::string words_for(uint32_t number) { return words_for(static_cast<int>(number)); }

void expect_done(uint32_t number, const std::string& what) {
  if (number != 0) throw Failure(what + ": " + words_for(number));
}

}  // namespace wayfind
