// What a user wrote that cannot be meant so: one line, with the place in the text.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace look {

class Mistake : public std::runtime_error {
 public:
  // The position counts from 0, the line that is told from 1.
  Mistake(size_t position, const std::string& problem)
      : std::runtime_error("character " + std::to_string(position + 1) + ": " + problem) {}

  // The same mistake in the text of an option.
  Mistake(const std::string& option, const Mistake& mistake)
      : std::runtime_error(option + ", " + mistake.what()) {}
};

}  // namespace look
