// Conditions on the values of a message, as they were written: docs/expressions.md.
#pragma once

#include <string>
#include <vector>

#include "tools/look/token.h"

namespace look {

// "hop_chan.dst_site_id == 12"; the path alone has no operation and asks for a true boolean.
struct Comparison {
  Token path;
  std::string operation;  // == != < <= > >= in has
  size_t operation_position = 0;
  Token operand{Token::Kind::end, 0, ""};
};

struct Expression {
  enum class Kind { all, any, negation, comparison };
  Kind kind;
  std::vector<Expression> parts;  // of all but a comparison
  Comparison comparison{};
};

// Throws a Mistake.
Expression parse_expression(std::string_view text);

}  // namespace look
