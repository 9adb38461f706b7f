#include "tools/look/expression.h"

#include <algorithm>

#include "tools/look/mistake.h"

namespace look {
namespace {

constexpr int deepest = 100;

class Parser {
 public:
  explicit Parser(std::string_view text) : tokens_(tokens(text)) {}

  Expression run() {
    Expression whole = any();
    if (!token().is_end())
      throw Mistake(token().position, "here the expression should end, or go on with and or or");
    return whole;
  }

 private:
  const Token& token() const { return tokens_[next_]; }
  Token take() { return tokens_[next_++]; }
  bool took(std::string_view a, std::string_view b) {
    if (!token().is(a) && !token().is(b)) return false;
    ++next_;
    return true;
  }

  // Parts with an operator between them; one part alone stands for itself.
  template <class Part>
  Expression joined(Expression::Kind kind, std::string_view word, std::string_view sign,
                    Part part) {
    std::vector<Expression> parts{part()};
    while (took(word, sign)) parts.push_back(part());
    if (parts.size() == 1) return std::move(parts.front());
    return {kind, std::move(parts)};
  }

  Expression any() {
    return joined(Expression::Kind::any, "or", "||", [this] { return all(); });
  }
  Expression all() {
    return joined(Expression::Kind::all, "and", "&&", [this] { return one(); });
  }

  Expression one() {
    const size_t position = token().position;
    if (depth_ == deepest) throw Mistake(position, "too many parentheses inside each other");
    if (took("not", "!")) {
      ++depth_;
      std::vector<Expression> negated{one()};
      --depth_;
      return {Expression::Kind::negation, std::move(negated)};
    }
    if (!took("(", "(")) return {Expression::Kind::comparison, {}, comparison()};
    ++depth_;
    Expression inner = any();
    --depth_;
    if (!took(")", ")")) throw Mistake(token().position, "here a ) is missing");
    return inner;
  }

  Comparison comparison() {
    if (token().kind != Token::Kind::word)
      throw Mistake(token().position, "here a path should stand, like a.b");
    Comparison made{take(), "", token().position};
    if (!is_operation(token())) return made;
    made.operation = take().text;
    if (token().kind != Token::Kind::word && token().kind != Token::Kind::quoted)
      throw Mistake(token().position, "here a value should stand, behind " + made.operation);
    made.operand = take();
    return made;
  }

  static bool is_operation(const Token& token) {
    constexpr std::string_view operations[] = {"==", "!=", "<", "<=", ">", ">=", "in", "has"};
    return std::any_of(std::begin(operations), std::end(operations),
                       [&](std::string_view operation) { return token.is(operation); });
  }

  std::vector<Token> tokens_;
  size_t next_ = 0;
  int depth_ = 0;
};

}  // namespace

Expression parse_expression(std::string_view text) { return Parser(text).run(); }

}  // namespace look
