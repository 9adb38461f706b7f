// What a step from one build to another means for peers of which one has made it and the other not.
#pragma once

#include <string>
#include <vector>

#include "tools/offline/manifest_digest.h"

namespace wayfind {

struct Change {
  std::string words;
  bool breaks_new_sender = false;  // what a new sender sends, an old reader cannot take
  bool breaks_old_sender = false;  // what an old sender sends, a new reader cannot take
};

// In the order of the old manifest; what only the new one has comes last.
std::vector<Change> compare_manifests(const Manifest& older, const Manifest& newer);

}  // namespace wayfind
