// One comparison with a value, checked against the type of the field.
#pragma once

#include <functional>

#include "tools/look/expression.h"
#include "tools/look/object.h"

namespace look {

using Test = std::function<bool(const Value&)>;

// Throws a Mistake when the field's type knows no such operation or operand.
Test make_test(const wayfind_field& field, const Comparison& comparison);

// What a person calls the field's type: "a number", "flags".
std::string type_words(const wayfind_field& field);

}  // namespace look
