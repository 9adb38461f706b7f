// What fields and messages are there for, as far as a tool has to know it.
#pragma once

#include <cstdint>
#include <span>

#include "tools/schema/wayfind_schema.h"

namespace look {

// Of a field; it may have several.
enum Role : uint8_t {
  counter_role = WAYFIND_GROWS,
  stamp_role = WAYFIND_STAMP,
  column_role = WAYFIND_COLUMN,
  request_role = WAYFIND_ASKED,
  count_role = WAYFIND_ENTRIES
};

struct FieldRoles {
  uint8_t roles = 0;
  const wayfind_message* counted = nullptr;
  bool has(Role role) const { return (roles & role) != 0; }
};

class Roles {
 public:
  virtual ~Roles() = default;
  virtual FieldRoles of(const wayfind_field& field) const = 0;
  // The paths that tell one message from the others of its type; empty when nothing does.
  virtual std::span<const char* const> key(const wayfind_message& message) const = 0;
};

// Those that the tables tell.
const Roles& roles_of_tables();

}  // namespace look
