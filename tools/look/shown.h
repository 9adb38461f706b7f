// Values as the library prints them.
#pragma once

#include <string>

#include "tools/look/object.h"

namespace look {

// Appends a decimal number.
void put_number(std::string& out, uint64_t number);

// Appends a text or an address as it stands in a printed record: what no terminal can show, or
// nobody would see, is \xNN, a backslash is doubled.
void put_shown(std::string& out, ork_handle* handle, const Value& value);

}  // namespace look
