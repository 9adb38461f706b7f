// The file of a library that defines one type and traces two texts, with all that the offline tools
// read of one.
#pragma once

#include <string>

namespace fuzz {

std::string small_library();

}  // namespace fuzz
