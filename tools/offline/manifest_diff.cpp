#include "tools/offline/manifest_diff.h"

#include <map>

namespace wayfind {
namespace {

std::string described(const Definition& definition) {
  return (definition.kind == "mess" ? "message " : "type ") + definition.name;
}

std::string count_of(unsigned newest) {
  return std::to_string(newest + 1) + (newest == 0 ? " variant" : " variants");
}

// Both builds have it.
void compare(const Definition& older, const Definition& newer, std::vector<Change>& changes) {
  const std::string name = described(older);
  if (older.kind != newer.kind) {
    changes.push_back({name + ": another kind, " + newer.kind + " for " + older.kind, true, true});
  } else if (newer.newest < older.newest) {
    // A sender lowers what its peer knows less of, so only what is sent by the old build loses
    // fields.
    changes.push_back(
        {name + ": variants lost, " + count_of(newer.newest) + " of " + count_of(older.newest),
         false, true});
    if (newer.size > older.size)
      changes.push_back({name + ": more bytes in fewer variants", true, true});
  } else if (newer.newest > older.newest) {
    changes.push_back(
        {name + ": more variants, " + count_of(newer.newest) + " for " + count_of(older.newest)});
    if (newer.size < older.size)
      changes.push_back({name + ": fewer bytes in more variants", true, true});
  } else if (newer.hash != older.hash) {
    changes.push_back({name + ": another definition at the same variant", true, true});
  } else if (newer.size != older.size) {
    changes.push_back({name + ": another size at the same definition", true, true});
  }
}

}  // namespace

std::vector<Change> compare_manifests(const Manifest& older, const Manifest& newer) {
  std::vector<Change> changes;
  std::map<std::string, const Definition*> left;
  for (const Definition& definition : newer.definitions) left.emplace(definition.luid, &definition);
  for (const Definition& definition : older.definitions) {
    const auto found = left.find(definition.luid);
    if (found == left.end()) {
      changes.push_back({described(definition) + ": lost", false, true});
      continue;
    }
    compare(definition, *found->second, changes);
    left.erase(found);
  }
  for (const Definition& definition : newer.definitions) {
    if (left.contains(definition.luid)) changes.push_back({described(definition) + ": added"});
  }
  return changes;
}

}  // namespace wayfind
