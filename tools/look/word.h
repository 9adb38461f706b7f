// A piece of what a user wrote, and where it stands.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace look {

struct Word {
  size_t position;
  std::string text;
};

// What stands between the commas.
std::vector<Word> split(std::string_view list);

}  // namespace look
