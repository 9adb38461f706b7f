// The values of elements.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ork/wire.h"

namespace ork {

// The text of the first element at path. Nothing: *err is set, to 2 if there is none, and err_text
// says which path.
std::optional<std::string> element_text(ork_handle* handle, const char* path, ork_xml* xml,
                                        uint32_t* err, char* err_text, uint32_t err_text_len);

// Reports that the text at path is no value of its type.
void refuse_element(ork_handle* handle, const char* path, uint32_t number, uint32_t* err,
                    char* err_text, uint32_t err_text_len);

// The same with blanks taken off both ends, as numbers and addresses are read.
std::string_view trimmed(std::string_view text);

// A number in decimal, or in hexadecimal behind "0x", up to max.
std::optional<uint64_t> parse_number(std::string_view text, uint64_t max);

}  // namespace ork
