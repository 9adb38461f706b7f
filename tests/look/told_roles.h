// Roles for tests: what a table of keys and fields says.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/look/roles.h"

namespace look {

class ToldRoles : public Roles {
 public:
  // By message name and by "record.field", both without the client layer's prefix.
  std::map<std::string, std::vector<const char*>> keys;
  std::map<std::string, uint8_t> roles;

  FieldRoles of(const wayfind_field& field) const override {
    for (unsigned i = 0; i < wayfind_record_count; ++i) {
      const wayfind_record& record = wayfind_records[i];
      if (&field < record.fields || &field >= record.fields + record.field_count) continue;
      const auto found = roles.find(bare(record.name) + "." + field.name);
      if (found != roles.end()) return {found->second, nullptr};
    }
    return {};
  }

  std::span<const char* const> key(const wayfind_message& message) const override {
    const auto found = keys.find(bare(message.name));
    return found != keys.end() ? std::span<const char* const>(found->second)
                               : std::span<const char* const>();
  }

 private:
  static std::string bare(std::string name) {
    const std::string front = "fwe_cl_wayfind_";
    return name.starts_with(front) ? name.substr(front.size()) : name;
  }
};

}  // namespace look
