#include "tools/wayfind/data/subject.h"

#include <algorithm>
#include <string_view>

namespace wayfind {
namespace {

// The parts of a bundle's name: fwe_<layer>_wayfind_show_<topic>_response, or _resp at the end.
struct Parts {
  std::string layer;
  std::string topic;
};

Parts parts_of(std::string_view bundle) {
  constexpr std::string_view front = "fwe_";
  constexpr std::string_view middle = "_wayfind_show_";
  const size_t at = bundle.find(middle);
  const size_t topic = at + middle.size();
  Parts parts{std::string(bundle.substr(front.size(), at - front.size())),
              std::string(bundle.substr(topic, bundle.rfind('_') - topic))};
  std::replace(parts.topic.begin(), parts.topic.end(), '_', '-');
  return parts;
}

std::vector<Subject> named_bundles() {
  std::vector<Parts> parts;
  for (unsigned i = 0; i < wayfind_bundle_count; ++i)
    parts.push_back(parts_of(wayfind_bundles[i].name));
  std::vector<Subject> named;
  for (unsigned i = 0; i < wayfind_bundle_count; ++i) {
    const bool unique = std::count_if(parts.begin(), parts.end(), [&](const Parts& other) {
                          return other.topic == parts[i].topic;
                        }) == 1;
    named.push_back(
        {unique ? parts[i].topic : parts[i].layer + "-" + parts[i].topic, &wayfind_bundles[i]});
  }
  return named;
}

}  // namespace

const std::vector<Subject>& subjects() {
  static const std::vector<Subject> all = named_bundles();
  return all;
}

const Subject* find_subject(const std::string& name) {
  for (const Subject& subject : subjects()) {
    if (subject.name == name) return &subject;
  }
  return nullptr;
}

}  // namespace wayfind
