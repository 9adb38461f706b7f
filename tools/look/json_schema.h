// A JSON Schema for what json.h writes, made from the tables.
#pragma once

#include <string>

namespace look {

// The version of the form. It rises when a reader of the older form could go wrong: not with new
// messages, fields, names of values or foreign families.
inline constexpr int json_form = 1;

// For the array of messages; a line of the other form is one of its elements.
std::string json_schema();

}  // namespace look
