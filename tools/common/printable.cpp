#include "tools/common/printable.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace wayfind {
namespace {

// Characters that no one sees, or that reorder what one does see: they could make a line read as
// another one.
struct Range {
  uint32_t first;
  uint32_t last;
};
constexpr Range invisible[] = {{0xad, 0xad},     {0x61c, 0x61c},   {0x180e, 0x180e},
                               {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x206f},
                               {0xfeff, 0xfeff}, {0xfff9, 0xfffb}, {0xe0000, 0xe007f}};

bool is_visible(uint32_t code) {
  return std::none_of(std::begin(invisible), std::end(invisible), [&](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

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
  const bool valid = code >= least[length - 2] && code <= 0x10ffff && !is_surrogate;
  return valid && is_visible(code) ? length : 0;
}

// All bytes of a character that is not shown are escaped, so that none is left to be taken for one
// of its own.
std::string escaped(std::string_view text, bool line_ends_stay) {
  constexpr char digits[] = "0123456789abcdef";
  std::string shown;
  size_t plain = 0;  // characters in front that stay
  while (plain < text.size()) {
    const bool stays = line_ends_stay && text[plain] == '\n';
    if (const size_t length = stays ? 1 : character_length(text.substr(plain)); length != 0) {
      plain += length;
      continue;
    }
    const auto byte = static_cast<uint8_t>(text[plain]);
    shown += text.substr(0, plain);
    shown += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    text.remove_prefix(plain + 1);
    plain = 0;
  }
  return shown += text;
}

}  // namespace

std::string printable(std::string_view text) { return escaped(text, false); }

std::string quoted(std::string_view text) {
  constexpr size_t longest = 80;
  if (text.size() <= longest) return printable(text);
  return printable(text.substr(0, longest)) + "...";
}

std::string printable_lines(std::string_view text) { return escaped(text, true); }

}  // namespace wayfind
