// Addresses and prefixes as people write them: "10.0.0.1", "10.0.0.0/8", "2001:db8::/32", "none".
#pragma once

#include <optional>
#include <string_view>

#include "ork/primitives.h"

namespace look {

struct AddressLiteral {
  ork_ip_address address{};
  bool has_length = false;
};

// Nothing for what is no address. Without a length it is that of the family.
std::optional<AddressLiteral> parse_address(std::string_view text);

// Whether the value is the literal: its length counts where the literal has one.
bool equals(const ork_ip_address& value, const AddressLiteral& literal);

// Whether all of the value lies in the prefix. "none" lies in nothing, and nothing in it.
bool lies_in(const ork_ip_address& value, const ork_ip_address& prefix);

}  // namespace look
