// What can be shown: each bundle under a short name of its own.
#pragma once

#include <string>
#include <vector>

#include "tools/schema/wayfind_schema.h"

namespace wayfind {

struct Subject {
  // "hop-chan"; with the layer in front, "dp-debug", where several layers have one of that name
  std::string name;
  const wayfind_bundle* bundle;
};

// In the order of the bundles.
const std::vector<Subject>& subjects();

// Null when there is none of that name.
const Subject* find_subject(const std::string& name);

}  // namespace wayfind
