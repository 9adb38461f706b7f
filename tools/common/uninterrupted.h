// Calls of the system that a signal may interrupt.
#pragma once

#include <cerrno>

namespace wayfind {

// Makes the call until it has an answer of its own.
template <class Call>
auto uninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace wayfind
