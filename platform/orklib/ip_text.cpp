#include "ip_text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>

#include "xml_read.h"

namespace ork {
namespace {

constexpr std::string_view whole_image = "family ";
constexpr size_t ipv4_size = 4;

std::optional<uint8_t> longest_prefix(uint8_t family) {
  switch (family) {
    case 4: return uint8_t{32};
    case 6: return uint8_t{128};
    default: return std::nullopt;
  }
}

// True if everything that the image holds stands in the form that people write.
bool is_ordinary(const ork_ip_address& address) {
  const size_t used = address.family == 0   ? 0
                      : address.family == 4 ? ipv4_size
                                            : sizeof address.address;
  const bool rest_is_zero = std::all_of(address.address + used, std::end(address.address),
                                        [](uint8_t byte) { return byte == 0; });
  return rest_is_zero &&
         (address.family == 0 ? address.prefix_length == 0
                              : address.prefix_length <= longest_prefix(address.family));
}

bool parse_byte(std::string_view text, uint8_t& byte, int base) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), byte, base);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// "F/P DIGITS", what stands behind the word of the whole image.
bool parse_image(std::string_view text, ork_ip_address& parsed) {
  const size_t slash = text.find('/');
  const size_t blank = text.find(' ');
  if (slash == std::string_view::npos || blank == std::string_view::npos || slash > blank ||
      !parse_byte(text.substr(0, slash), parsed.family, 10) ||
      !parse_byte(text.substr(slash + 1, blank - slash - 1), parsed.prefix_length, 10)) {
    return false;
  }
  const std::string_view digits = text.substr(blank + 1);
  if (digits.size() != 2 * sizeof parsed.address) {
    return false;
  }
  for (size_t i = 0; i < sizeof parsed.address; ++i) {
    if (!parse_byte(digits.substr(2 * i, 2), parsed.address[i], 16)) {
      return false;
    }
  }
  return true;
}

// "ADDRESS" or "ADDRESS/P".
bool parse_ordinary(std::string_view text, ork_ip_address& parsed) {
  const size_t slash = std::min(text.find('/'), text.size());
  char digits[INET6_ADDRSTRLEN] = {};
  if (slash >= sizeof digits) {
    return false;
  }
  text.copy(digits, slash);
  if (inet_pton(AF_INET, digits, parsed.address) == 1) {
    parsed.family = 4;
  } else if (inet_pton(AF_INET6, digits, parsed.address) == 1) {
    parsed.family = 6;
  } else {
    return false;
  }
  const uint8_t longest = *longest_prefix(parsed.family);
  const auto length = slash == text.size() ? std::optional<uint64_t>(longest)
                                           : parse_number(text.substr(slash + 1), longest);
  parsed.prefix_length = static_cast<uint8_t>(length.value_or(0));
  return length.has_value();
}

}  // namespace

IpText::IpText(const ork_ip_address& address) {
  if (!is_ordinary(address)) {
    char* at = text_ + std::snprintf(text_, sizeof text_, "%s%u/%u ", whole_image.data(),
                                     address.family, address.prefix_length);
    for (const uint8_t byte : address.address) {
      at += std::snprintf(at, 3, "%02x", byte);
    }
    return;
  }
  if (address.family == 0) {
    std::strcpy(text_, "none");
    return;
  }
  char digits[INET6_ADDRSTRLEN];
  inet_ntop(address.family == 4 ? AF_INET : AF_INET6, address.address, digits, sizeof digits);
  std::snprintf(text_, sizeof text_, "%s/%u", digits, address.prefix_length);
}

bool parse_ip(std::string_view text, ork_ip_address& target) {
  text = trimmed(text);
  ork_ip_address parsed{};
  if (text.starts_with(whole_image)) {
    if (!parse_image(text.substr(whole_image.size()), parsed)) {
      return false;
    }
  } else if (!text.empty() && text != "none" && !parse_ordinary(text, parsed)) {
    return false;
  }
  target.family = parsed.family;
  target.prefix_length = parsed.prefix_length;
  std::memcpy(target.address, parsed.address, sizeof target.address);
  return true;
}

}  // namespace ork
