#include "tools/common/printable.h"

#include <cstdint>

namespace wayfind {
namespace {

// Of the printable character in front, in bytes; 0 when there is none.
size_t character_length(std::string_view text) {
  const auto first = static_cast<uint8_t>(text[0]);
  if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
  if (first < 0xc2 || first > 0xf4) return 0;
  const size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (text.size() < length) return 0;
  uint32_t code = first & (0x7fu >> length);
  for (const char c : text.substr(1, length - 1)) {
    const auto byte = static_cast<uint8_t>(c);
    if ((byte & 0xc0) != 0x80) return 0;
    code = code << 6 | (byte & 0x3fu);
  }
  constexpr uint32_t least[] = {
      0xa0, 0x800, 0x10000};  // of two bytes, three and four; below 0xa0 stand controls
  const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
  return code >= least[length - 2] && code <= 0x10ffff && !is_surrogate ? length : 0;
}

std::string escaped(std::string_view text, bool line_ends_stay) {
  constexpr char digits[] = "0123456789abcdef";
  std::string shown;
  while (!text.empty()) {
    const bool stays = line_ends_stay && text[0] == '\n';
    const size_t length = stays ? 1 : character_length(text);
    if (length != 0) {
      shown += text.substr(0, length);
    } else {
      const auto byte = static_cast<uint8_t>(text[0]);
      shown += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    }
    text.remove_prefix(length != 0 ? length : 1);
  }
  return shown;
}

}  // namespace

std::string printable(std::string_view text) { return escaped(text, false); }

std::string printable_lines(std::string_view text) { return escaped(text, true); }

}  // namespace wayfind
