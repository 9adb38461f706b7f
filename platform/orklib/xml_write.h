// Elements in the text form of XML.
#pragma once

#include <cstdint>
#include <string_view>

#include "text.h"

namespace ork {

// <name> or, for a state other than 0, <name state="2">.
void put_start_tag(TextWriter& out, std::string_view name, uint8_t state);
void put_end_tag(TextWriter& out, std::string_view name);

// A whole element on a line of its own. value holds no markup.
uint32_t write_element(ork_handle* handle, char* buffer, std::string_view name,
                       std::string_view value, int32_t remaining, uint8_t state, uint32_t* err);

}  // namespace ork
