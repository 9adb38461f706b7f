#include "tools/look/token.h"

#include <charconv>
#include <cstdint>

#include "tools/look/mistake.h"

namespace look {
namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view word_characters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.:/*[]";
constexpr std::string_view signs[] = {"==", "!=", "<=", ">=", "&&", "||", "<", ">", "!", "(", ")"};

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::vector<Token> run() {
    std::vector<Token> all;
    do {
      position_ = std::min(text_.find_first_not_of(blanks, position_), text_.size());
      all.push_back(next());
    } while (!all.back().is_end());
    return all;
  }

 private:
  Token next() {
    const size_t begin = position_;
    if (begin == text_.size()) return {Token::Kind::end, begin, ""};
    if (text_[begin] == '"' || text_[begin] == '\'') return quoted();
    position_ = std::min(text_.find_first_not_of(word_characters, begin), text_.size());
    if (position_ != begin)
      return {Token::Kind::word, begin, std::string(text_.substr(begin, position_ - begin))};
    for (const std::string_view sign : signs) {
      if (!text_.substr(begin).starts_with(sign)) continue;
      position_ += sign.size();
      return {Token::Kind::sign, begin, std::string(sign)};
    }
    throw Mistake(begin, text_[begin] == '=' ? "a single = means nothing; write =="
                                             : "this means nothing here; put texts in quotes");
  }

  Token quoted() {
    const size_t begin = position_;
    const char quote = text_[position_++];
    std::string content;
    while (position_ < text_.size() && text_[position_] != quote)
      content += text_[position_] == '\\' ? escape() : text_[position_++];
    if (position_ == text_.size()) throw Mistake(begin, "this text does not end; close its quotes");
    ++position_;
    return {Token::Kind::quoted, begin, content};
  }

  // As the command prints bytes that no terminal can show.
  char escape() {
    const std::string_view rest = text_.substr(position_);
    if (rest.size() >= 2 && std::string_view("\\\"'").find(rest[1]) != std::string_view::npos) {
      position_ += 2;
      return rest[1];
    }
    uint8_t byte = 0;
    const bool is_hexadecimal = rest.size() >= 4 && rest[1] == 'x';
    if (!is_hexadecimal ||
        std::from_chars(rest.data() + 2, rest.data() + 4, byte, 16).ptr != rest.data() + 4)
      throw Mistake(position_, "a backslash begins \\\\, \\\", \\' or \\xNN");
    position_ += 4;
    return static_cast<char>(byte);
  }

  std::string_view text_;
  size_t position_ = 0;
};

}  // namespace

std::vector<Token> tokens(std::string_view expression) { return Lexer(expression).run(); }

}  // namespace look
