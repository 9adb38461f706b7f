// What the library exports, computed once from the tables and the families.
#pragma once

#include <vector>

#include "generator/function.h"

namespace generator {

struct Interfaces {
  std::vector<Interface> records;
  std::vector<Interface> fields;  // of all records
  std::vector<Interface> small_types;
  std::vector<Interface> messages;
  std::vector<Interface> bundles;
  Interface module;
};

// Reads the families in a folder. Throws std::runtime_error.
Interfaces make_interfaces(const std::string& folder);

}  // namespace generator
