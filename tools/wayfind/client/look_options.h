// What a user wants to see of a show, and how.
#pragma once

#include <string>

#include "tools/look/selection.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace wayfind {

struct LookOptions {
  look::Wishes wishes;
  std::string format;  // empty: what suits best
  std::string columns;
  bool lines = false;
  bool states = false;
  bool count = false;

  // --format and those that belong to one of them, --where, --sort, --id, --limit, --count.
  void add_to(CLI::App& command);
  // Only --where.
  CLI::Option* add_where_to(CLI::App& command);

  // Throws a Failure when an option stands with a format that it means nothing to.
  void expect_fitting(bool tracks) const;
};

}  // namespace wayfind
