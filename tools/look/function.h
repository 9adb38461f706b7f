// The library's functions as the schema tells them.
#pragma once

#include <cstdlib>
#include <string_view>

#include "tools/schema/wayfind_schema.h"

namespace look {

// The function of a family, as a Function; ends the process when the schema has none of that name.
template <class Function>
Function* function(const wayfind_function* table, std::string_view suffix) {
  for (; table->suffix != nullptr; ++table) {
    if (table->suffix == suffix) return reinterpret_cast<Function*>(table->address);
  }
  std::abort();
}

}  // namespace look
