#include "tools/look/filter.h"

#include <algorithm>

namespace look {
namespace {

void collect(const Expression& expression, std::vector<Word>& paths) {
  const Token& path = expression.comparison.path;
  if (expression.kind == Expression::Kind::comparison) paths.push_back({path.position, path.text});
  for (const Expression& part : expression.parts) collect(part, paths);
}

}  // namespace

Filter::Filter(const Expression& expression, const wayfind_message& message)
    : kind_(expression.kind) {
  for (const Expression& part : expression.parts) parts_.emplace_back(part, message);
  if (kind_ != Expression::Kind::comparison) return;
  path_ = path_in(expression.comparison.path.text, message);
  test_ = make_test(path_.leaf(), expression.comparison);
}

bool Filter::takes(const Message& message) const {
  const auto part_takes = [&](const Filter& part) { return part.takes(message); };
  switch (kind_) {
    case Expression::Kind::all: return std::all_of(parts_.begin(), parts_.end(), part_takes);
    case Expression::Kind::any: return std::any_of(parts_.begin(), parts_.end(), part_takes);
    case Expression::Kind::negation: return !parts_.front().takes(message);
    case Expression::Kind::comparison: return any_value(path_, message, test_);
  }
  return false;
}

std::vector<Word> paths_of(const Expression& expression) {
  std::vector<Word> paths;
  collect(expression, paths);
  return paths;
}

}  // namespace look
