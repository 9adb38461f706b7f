// Names of enum values and flags: in full, or without what those of a type have in common.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/schema/wayfind_schema.h"

namespace look {

// What all of the names begin with, up to an underscore.
std::string_view common_prefix(std::span<const char* const> names);

// That of the type's names: "WAYFIND_UI_CHAN_STATE_".
std::string_view common_prefix(const wayfind_small_type& type);

// Nothing for a number that the type does not name.
std::optional<std::string_view> full_name(const wayfind_small_type& type, uint64_t number);
std::optional<std::string_view> short_name(const wayfind_small_type& type, uint64_t number);

// The value or flag of a full or a short name, case as written.
std::optional<uint64_t> named(const wayfind_small_type& type, std::string_view name);

// All full and all short names.
std::vector<std::string> names(const wayfind_small_type& type);

}  // namespace look
