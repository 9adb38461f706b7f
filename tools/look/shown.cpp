#include "tools/look/shown.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "tools/common/printable.h"

namespace look {
namespace {

bool is_plain(char c) { return c >= 0x20 && c < 0x7f && c != '\\'; }

// The value in a printed line of a field without a name: ": value" and a line end.
std::string_view value_in(std::string_view line) {
  constexpr size_t front = 2;
  return line.size() <= front ? std::string_view() : line.substr(front, line.size() - front - 1);
}

}  // namespace

void put_number(std::string& out, uint64_t number) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), number);
  out.append(digits.data(), end.ptr);
}

void put_shown(std::string& out, ork_handle* handle, const Value& value) {
  uint32_t err = 0;
  if (value.field->kind == WAYFIND_IP_ADDRESS) {
    char line[96];
    const uint32_t length =
        ip_address_print(handle, ORK_NO_INSTANCE, line, 0, "", &address(value), sizeof line, &err);
    out += value_in({line, length});
    return;
  }
  const std::string_view chars = text(value);
  if (std::all_of(chars.begin(), chars.end(), is_plain)) {
    out += chars;
    return;
  }
  constexpr size_t longest_escape = 4;
  std::vector<char> line(longest_escape * chars.size() + 8);
  const uint32_t length = null_string_print(handle, ORK_NO_INSTANCE, line.data(), 0, "",
                                            chars.data(), static_cast<int32_t>(line.size()),
                                            static_cast<uint32_t>(chars.size()), &err);
  out += wayfind::printable(value_in({line.data(), length}));
}

}  // namespace look
