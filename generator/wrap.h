// Lines of generated text: broken at blanks, so that they keep to 100 columns wherever a name
// leaves room.
#pragma once

#include <string>

namespace generator {

inline constexpr size_t line_width = 100;

// Breaks a text at blanks, but not inside quotes and not between an error's name and its number.
// `text` begins at column `column`; further lines begin with `prefix`.
std::string wrapped(const std::string& text, size_t column, const std::string& prefix);

// All lines of a text, each broken behind its own indentation.
std::string wrapped_lines(const std::string& text);

// A text as a C comment. An empty line begins a paragraph; a line that begins with a blank is an
// item of a list.
std::string comment(const std::string& text);

}  // namespace generator
