// Releases as lists of types: what a process is told to be and what it announces.
#pragma once

#include <string>

#include "tools/common/owned.h"

namespace wayfind {

// All that the modules of this process know.
TypeList newest_release();

TypeList read_release(const std::string& path);

TypeList parse_release(const std::string& text, const std::string& origin);

std::string text_of(const ork_type_list& list);

}  // namespace wayfind
