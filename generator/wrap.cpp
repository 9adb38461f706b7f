#include "generator/wrap.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <vector>

namespace generator {
namespace {

bool begins_number(const std::string& text, size_t at) {
  return text[at] == '(' && at + 1 < text.size() && isdigit(text[at + 1]) != 0;
}

// The pieces between which a line may be broken.
std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> out(1);
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"' && (i == 0 || text[i - 1] != '\\')) quoted = !quoted;
    const bool blank = text[i] == ' ' && !quoted;
    const bool glued = i + 1 < text.size() && begins_number(text, i + 1);
    if (blank && !glued) {
      if (!out.back().empty()) out.emplace_back();
    } else {
      out.back() += text[i];
    }
  }
  if (out.back().empty()) out.pop_back();
  return out;
}

}  // namespace

std::string wrapped(const std::string& text, size_t column, const std::string& prefix) {
  std::string out;
  bool first = true;
  for (const std::string& word : words(text)) {
    const bool fits = column + 1 + word.size() <= line_width;
    if (first) {
      column += word.size();
    } else if (fits) {
      out += ' ';
      column += 1 + word.size();
    } else {
      out += "\n" + prefix;
      column = prefix.size() + word.size();
    }
    out += word;
    first = false;
  }
  return out;
}

std::string wrapped_lines(const std::string& text) {
  std::string out;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::string blanks(std::min(line.find_first_not_of(' '), line.size()), ' ');
    out += blanks + wrapped(line, blanks.size(), blanks + "    ") + "\n";
  }
  return out;
}

std::string comment(const std::string& text) {
  const std::string line = "/* " + text + " */";
  if (line.size() <= line_width && text.find('\n') == std::string::npos) return line + "\n";
  std::string out = "/*";
  std::string paragraph;
  const auto close = [&] {
    if (paragraph.empty()) return;
    const bool item = paragraph[0] == ' ';
    const std::string indent = item ? " *   " : " * ";
    out += "\n" + indent + wrapped(paragraph, indent.size(), item ? " *       " : indent);
    paragraph.clear();
  };
  std::istringstream lines(text);
  for (std::string next; std::getline(lines, next);) {
    if (next.empty() || next[0] == ' ') close();
    if (next.empty()) out += "\n *";
    if (!next.empty()) paragraph += (paragraph.empty() ? "" : " ") + next;
  }
  close();
  return out + "\n */\n";
}

}  // namespace generator
