#include "tools/look/small_type.h"

#include <algorithm>

namespace look {
namespace {

std::vector<std::string_view> found_prefixes() {
  std::vector<std::string_view> prefixes;
  for (unsigned i = 0; i < wayfind_small_type_count; ++i)
    prefixes.push_back(
        common_prefix({wayfind_small_types[i].texts, wayfind_small_types[i].values}));
  return prefixes;
}

}  // namespace

std::string_view common_prefix(std::span<const char* const> names) {
  std::string_view common = names.front();
  for (const std::string_view other : names) {
    const auto end = std::mismatch(common.begin(), common.end(), other.begin(), other.end());
    common = common.substr(0, static_cast<size_t>(end.first - common.begin()));
  }
  return common.substr(0, common.rfind('_') + 1);
}

std::string_view common_prefix(const wayfind_small_type& type) {
  static const std::vector<std::string_view> prefixes = found_prefixes();
  return prefixes[static_cast<size_t>(&type - wayfind_small_types)];
}

std::optional<std::string_view> full_name(const wayfind_small_type& type, uint64_t number) {
  if (number >= type.values) return std::nullopt;
  return type.texts[number];
}

std::optional<std::string_view> short_name(const wayfind_small_type& type, uint64_t number) {
  std::optional<std::string_view> name = full_name(type, number);
  if (name) name->remove_prefix(common_prefix(type).size());
  return name;
}

std::optional<uint64_t> named(const wayfind_small_type& type, std::string_view name) {
  for (uint64_t number = 0; number < type.values; ++number) {
    if (name == *full_name(type, number) || name == *short_name(type, number)) return number;
  }
  return std::nullopt;
}

std::vector<std::string> names(const wayfind_small_type& type) {
  std::vector<std::string> all;
  for (uint64_t number = 0; number < type.values; ++number) {
    all.emplace_back(*full_name(type, number));
    all.emplace_back(*short_name(type, number));
  }
  return all;
}

}  // namespace look
