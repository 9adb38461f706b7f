#include "escape.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace ork {
namespace {

constexpr char hex_digits[] = "0123456789abcdef";

void put_byte(TextWriter& out, char byte) {
  const auto value = static_cast<uint8_t>(byte);
  const char escape[] = {'\\', 'x', hex_digits[value >> 4], hex_digits[value & 15]};
  out.put({escape, sizeof escape});
}

std::string_view markup(char character) {
  switch (character) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    default: return {};
  }
}

// Hands out pieces in order: runs that need nothing are passed on whole.
template <typename Special>
void put_pieces(TextWriter& out, std::string_view text, Special special) {
  size_t plain = 0;
  while (plain < text.size()) {
    const size_t length = printable_length(text.substr(plain));
    const std::string_view entity = length == 1 ? special(text[plain]) : std::string_view{};
    if (length != 0 && entity.empty() && text[plain] != '\\') {
      plain += length;
      continue;
    }
    out.put(text.substr(0, plain));
    if (length == 0) {
      put_byte(out, text[plain]);
    } else {
      out.put(entity.empty() ? std::string_view("\\\\") : entity);
    }
    text.remove_prefix(plain + 1);
    plain = 0;
  }
  out.put(text);
}

}  // namespace

size_t printable_length(std::string_view text) {
  const auto byte = [&](size_t i) {
    return i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0};
  };
  const uint8_t first = byte(0);
  if (first < 0x80) {
    return first >= 0x20 && first != 0x7f ? 1 : 0;
  }
  const size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4) {
    return 0;
  }
  uint32_t code = first & (0x7fU >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) {
      return 0;
    }
    code = code << 6 | (byte(i) & 0x3fU);
  }
  constexpr uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
  const bool is_control = code < 0xa0;
  const bool is_noncharacter = (code & 0xfffe) == 0xfffe;
  const bool valid =
      code >= least[length] && code <= 0x10ffff && !is_surrogate && !is_control && !is_noncharacter;
  return valid ? length : 0;
}

void put_escaped(TextWriter& out, std::string_view text) {
  put_pieces(out, text, [](char) { return std::string_view{}; });
}

void put_escaped_xml(TextWriter& out, std::string_view text) { put_pieces(out, text, markup); }

std::optional<std::string> unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const size_t plain = std::min(text.find('\\'), text.size());
    bytes.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.starts_with("\\\\")) {
      bytes.push_back('\\');
      text.remove_prefix(2);
    } else if (text.starts_with("\\x") && text.size() >= 4) {
      uint8_t value = 0;
      const auto result = std::from_chars(text.data() + 2, text.data() + 4, value, 16);
      if (result.ec != std::errc() || result.ptr != text.data() + 4) {
        return std::nullopt;
      }
      bytes.push_back(static_cast<char>(value));
      text.remove_prefix(4);
    } else if (!text.empty()) {
      return std::nullopt;
    }
  }
  return bytes;
}

}  // namespace ork
