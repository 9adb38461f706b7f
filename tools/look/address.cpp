#include "tools/look/address.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstring>
#include <string>

namespace look {
namespace {

constexpr uint8_t longest(uint8_t family) { return family == 4 ? 32 : 128; }

uint8_t family_of(const std::string& digits, uint8_t* bytes) {
  if (inet_pton(AF_INET, digits.c_str(), bytes) == 1) return 4;
  return inet_pton(AF_INET6, digits.c_str(), bytes) == 1 ? 6 : 0;
}

}  // namespace

std::optional<AddressLiteral> parse_address(std::string_view text) {
  AddressLiteral literal;
  ork_ip_address& address = literal.address;
  if (text == "none") return literal;
  const size_t slash = text.find('/');
  literal.has_length = slash != std::string_view::npos;
  address.family = family_of(std::string(text.substr(0, slash)), address.address);
  if (address.family == 0) return std::nullopt;
  address.prefix_length = longest(address.family);
  if (!literal.has_length) return literal;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + slash + 1, end, address.prefix_length);
  const bool is_length =
      read.ec == std::errc() && read.ptr == end && address.prefix_length <= longest(address.family);
  return is_length ? std::optional(literal) : std::nullopt;
}

bool equals(const ork_ip_address& value, const AddressLiteral& literal) {
  const ork_ip_address& other = literal.address;
  if (value.family != other.family) return false;
  if (value.family == 0) return true;
  const size_t bytes = longest(value.family) / 8;
  return std::memcmp(value.address, other.address, bytes) == 0 &&
         (!literal.has_length || value.prefix_length == other.prefix_length);
}

bool lies_in(const ork_ip_address& value, const ork_ip_address& prefix) {
  if (value.family != prefix.family || value.family == 0) return false;
  if (value.prefix_length < prefix.prefix_length) return false;
  const size_t bytes = prefix.prefix_length / 8;
  if (std::memcmp(value.address, prefix.address, bytes) != 0) return false;
  const int rest = prefix.prefix_length % 8;
  return rest == 0 || ((value.address[bytes] ^ prefix.address[bytes]) >> (8 - rest)) == 0;
}

}  // namespace look
