// The words and signs of an expression.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace look {

struct Token {
  enum class Kind { word, quoted, sign, end };
  Kind kind;
  size_t position;   // in the expression, from 0
  std::string text;  // of a quoted text what it stands for, else as written

  bool is(std::string_view other) const {
    return (kind == Kind::word || kind == Kind::sign) && text == other;
  }
  bool is_end() const { return kind == Kind::end; }
};

// Ends with an end token. Throws a Mistake.
std::vector<Token> tokens(std::string_view expression);

}  // namespace look
