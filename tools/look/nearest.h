// Names that somebody may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace look {

// Insertions, removals, replacements and swaps of neighbours that make one word of the other.
size_t edit_distance(std::string_view a, std::string_view b);

// "; nearest: dst_site_id, dst_intf_id": at most three of the names, the nearest first; nothing
// when none is near.
std::string nearest(std::string_view word, std::vector<std::string> names);

}  // namespace look
