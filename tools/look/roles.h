// What fields and messages are there for, as far as a tool has to know it.
#pragma once

#include <cstdint>
#include <span>

#include "tools/schema/wayfind_schema.h"

namespace look {

// Of a field; it may have several.
enum Role : uint8_t {
  counter_role = 1,  // counts events and only grows: its rate tells something
  stamp_role = 2,    // when something happened
  column_role = 4,   // stands in a table unless other columns are asked for
  request_role = 8,  // what was asked for
  count_role = 16  // how many messages there are: of `counted`, or of those that repeat in the show
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

}  // namespace look
