// Bytes of a fixed string that text and XML cannot hold as they are.
//
// A fixed string may hold any byte. What is no printable UTF-8 is written as \xNN with two
// lower-case hexadecimal digits, and a backslash as two of them, so every string comes back byte
// for byte.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text.h"

namespace ork {

// The length of the printable UTF-8 character at the front of text, 0 if there is none.
size_t printable_length(std::string_view text);

void put_escaped(TextWriter& out, std::string_view text);

// The same, with the characters that are markup as entities.
void put_escaped_xml(TextWriter& out, std::string_view text);

// Nothing for a backslash that begins no escape.
std::optional<std::string> unescaped(std::string_view text);

}  // namespace ork
