#include "primitive.h"

#include <algorithm>
#include <charconv>
#include <climits>

namespace ork {

uint32_t print_line(ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                    const char* name, std::string_view value, int32_t remaining, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  // A line indented past the room is cut all the same, and one past INT_MAX could not be
  // formatted.
  const auto width = static_cast<int>(std::min<uint32_t>(indent, INT_MAX / 2));
  return ork_snprintf(handle, instance, buffer, remaining, err, "%*s%s: %.*s\n", width, "", name,
                      static_cast<int>(value.size()), value.data());
}

Decimal::Decimal(uint64_t value)
    : length_(static_cast<size_t>(std::to_chars(digits_, digits_ + sizeof digits_, value).ptr -
                                  digits_)) {}

}  // namespace ork
