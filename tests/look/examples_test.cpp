// The examples of docs/expressions.md, so that they stay true.
#include <gtest/gtest.h>

#include <fstream>

#include "tools/look/filter.h"
#include "tools/look/mistake.h"

namespace look {
namespace {

Messages all_messages() {
  Messages all;
  for (unsigned i = 0; i < wayfind_message_count; ++i) all.push_back(&wayfind_messages[i]);
  return all;
}

// What stands between the backticks at the beginning of a row of a table, and lines that are
// indented.
std::vector<std::string> paths_and_expressions() {
  std::ifstream file(WAYFIND_DOCS "/expressions.md");
  std::vector<std::string> found;
  bool is_paths = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("#")) is_paths = line == "## Paths";
    if (line.starts_with("    ") && !line.starts_with("    --")) found.push_back(line.substr(4));
    if (is_paths && line.starts_with("| `")) found.push_back(line.substr(3, line.find('`', 3) - 3));
  }
  return found;
}

TEST(Examples, mean_something_in_a_message) {
  const std::vector<std::string> all = paths_and_expressions();
  EXPECT_EQ(all.size(), 6u + 12u);
  for (const std::string& example : all) {
    SCOPED_TRACE(example);
    if (example.find(' ') == std::string::npos) {
      EXPECT_NO_THROW(with_paths({{0, example}}, all_messages()));
      continue;
    }
    const Expression expression = parse_expression(example);
    for (const wayfind_message* message : with_paths(paths_of(expression), all_messages()))
      EXPECT_NO_THROW(Filter(expression, *message));
  }
}

}  // namespace
}  // namespace look
