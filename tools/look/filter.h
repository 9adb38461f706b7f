// A condition on the messages of one type.
#pragma once

#include <memory>
#include <vector>

#include "tools/look/expression.h"
#include "tools/look/path.h"
#include "tools/look/test.h"

namespace look {

class Filter {
 public:
  // The message has all paths of the expression. Throws a Mistake when a comparison is none for the
  // type of its field.
  Filter(const Expression& expression, const wayfind_message& message);

  bool takes(const Message& message) const;

 private:
  Expression::Kind kind_;
  std::vector<Filter> parts_;
  Path path_;  // of a comparison
  Test test_;
};

// The paths of an expression, as they stand in it.
std::vector<Word> paths_of(const Expression& expression);

}  // namespace look
