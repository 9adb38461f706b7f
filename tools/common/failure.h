// What ends a command: one line for stderr that says what is wrong and what to do.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace wayfind {

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The C library's words for an error number.
std::string words_for(uint32_t number);
std::string words_for(int number);

// Ends the command when a call of the platform or the library has left an error number.
void expect_done(uint32_t number, const std::string& what);

}  // namespace wayfind
