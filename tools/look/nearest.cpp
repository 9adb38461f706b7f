#include "tools/look/nearest.h"

#include <algorithm>

namespace look {
namespace {

constexpr size_t most_names = 3;

// A part of a name is as near as a name can be.
size_t distance(std::string_view word, std::string_view name) {
  return name.find(word) != std::string_view::npos ? 0 : edit_distance(word, name);
}

size_t farthest(std::string_view word) { return 1 + word.size() / 3; }

}  // namespace

size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    before.swap(above);
    above.swap(row);
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = above[j - 1] + (a[i - 1] != b[j - 1] ? 1 : 0);
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

std::string nearest(std::string_view word, std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  std::erase_if(names, [&](const std::string& name) {
    return word.empty() || distance(word, name) > farthest(word);
  });
  std::stable_sort(names.begin(), names.end(), [&](const auto& a, const auto& b) {
    return distance(word, a) < distance(word, b);
  });
  std::string told;
  for (size_t i = 0; i < std::min(names.size(), most_names); ++i)
    told += (i == 0 ? "; nearest: " : ", ") + names[i];
  return told;
}

}  // namespace look
