// The text form of an address with its prefix length.
#pragma once

#include <string_view>

#include "ork/primitives.h"

namespace ork {

// "10.0.0.1/24", "2001:db8::1/64", or "none" for no family. An image that holds more than that form
// tells is written out, "family 9/24 " and the 16 bytes of its address as 32 hexadecimal digits, so
// that every text reads back to the image that it was written from.
class IpText {
 public:
  explicit IpText(const ork_ip_address& address);
  std::string_view text() const { return text_; }

 private:
  char text_[64];
};

// Writes family, prefix length and address of target; an address alone has its full prefix length,
// an empty text is "none".
// False: no address, target is as it was.
bool parse_ip(std::string_view text, ork_ip_address& target);

}  // namespace ork
