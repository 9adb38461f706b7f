#include "ip_text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "xml_read.h"

namespace ork {

IpText::IpText(const ork_ip_address& address) {
  if (address.family == 0) {
    std::strcpy(text_, "none");
    return;
  }
  if (address.family != 4 && address.family != 6) {
    std::snprintf(text_, sizeof text_, "unknown family %u", address.family);
    return;
  }
  char digits[INET6_ADDRSTRLEN];
  inet_ntop(address.family == 4 ? AF_INET : AF_INET6, address.address, digits, sizeof digits);
  std::snprintf(text_, sizeof text_, "%s/%u", digits, address.prefix_length);
}

bool parse_ip(std::string_view text, ork_ip_address& target) {
  text = trimmed(text);
  ork_ip_address parsed{};
  if (!text.empty() && text != "none") {
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
    const uint8_t longest = parsed.family == 4 ? 32 : 128;
    const auto length = slash == text.size() ? std::optional<uint64_t>(longest)
                                             : parse_number(text.substr(slash + 1), longest);
    if (!length) {
      return false;
    }
    parsed.prefix_length = static_cast<uint8_t>(*length);
  }
  target.family = parsed.family;
  target.prefix_length = parsed.prefix_length;
  std::memcpy(target.address, parsed.address, sizeof target.address);
  return true;
}

}  // namespace ork
