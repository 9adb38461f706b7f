// The words behind a trace, read from the file of the library that raised it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <variant>

namespace spy {

using TraceArgument = std::variant<const char*, uint32_t, const void*>;

// section_id lies in a loaded index section; the text has its arguments filled in and no blank in
// front.
std::string trace_text(const void* section_id, uint32_t index,
                       std::initializer_list<TraceArgument> arguments);

}  // namespace spy
