#include "tools/look/roles.h"

namespace look {
namespace {

class RolesOfTables : public Roles {
 public:
  FieldRoles of(const wayfind_field& field) const override { return {field.roles, field.counted}; }
  std::span<const char* const> key(const wayfind_message& message) const override {
    return {message.key, message.key_count};
  }
};

}  // namespace

const Roles& roles_of_tables() {
  static const RolesOfTables roles;
  return roles;
}

}  // namespace look
