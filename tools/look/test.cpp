#include "tools/look/test.h"

#include <charconv>
#include <cstring>
#include <optional>

#include "tools/look/address.h"
#include "tools/look/mistake.h"
#include "tools/look/nearest.h"
#include "tools/look/small_type.h"

namespace look {
namespace {

std::optional<uint64_t> parse_number(std::string_view text) {
  const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (is_hexadecimal) text.remove_prefix(2);
  uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number, is_hexadecimal ? 16 : 10);
  return !text.empty() && read.ec == std::errc() && read.ptr == end ? std::optional(number)
                                                                    : std::nullopt;
}

std::string what_it_is(const wayfind_field& field, const Comparison& comparison) {
  return comparison.path.text + " is " + type_words(field);
}

void expect_operation(const wayfind_field& field, const Comparison& comparison,
                      std::initializer_list<std::string_view> allowed) {
  std::string list;
  for (const std::string_view operation : allowed) {
    if (operation == comparison.operation) return;
    list += (list.empty() ? "" : " ") + std::string(operation);
  }
  throw Mistake(comparison.operation_position,
                what_it_is(field, comparison) + " and takes " + list);
}

[[noreturn]] void refuse_operand(const wayfind_field& field, const Comparison& comparison,
                                 const std::string& wanted) {
  throw Mistake(comparison.operand.position, what_it_is(field, comparison) + "; " + wanted);
}

bool ordered(int order, std::string_view operation) {
  if (operation == "==") return order == 0;
  if (operation == "!=") return order != 0;
  if (operation == "<") return order < 0;
  if (operation == "<=") return order <= 0;
  return operation == ">" ? order > 0 : order >= 0;
}

int order_of(uint64_t a, uint64_t b) { return a < b ? -1 : a > b ? 1 : 0; }

Test number_test(const wayfind_field& field, const Comparison& comparison) {
  expect_operation(field, comparison, {"==", "!=", "<", "<=", ">", ">="});
  const bool is_quoted = comparison.operand.kind == Token::Kind::quoted;
  const auto wanted = is_quoted ? std::nullopt : parse_number(comparison.operand.text);
  if (!wanted)
    refuse_operand(field, comparison,
                   "compare it with a number, decimal or behind 0x, without quotes");
  return [wanted = *wanted, operation = comparison.operation](const Value& value) {
    return ordered(order_of(number(value), wanted), operation);
  };
}

Test boolean_test(const wayfind_field& field, const Comparison& comparison) {
  if (comparison.operation.empty()) return [](const Value& value) { return number(value) != 0; };
  expect_operation(field, comparison, {"==", "!="});
  const Token& operand = comparison.operand;
  if (!operand.is("true") && !operand.is("false"))
    refuse_operand(field, comparison, "compare it with true or false");
  const bool wanted = operand.is("true") == (comparison.operation == "==");
  return [wanted](const Value& value) { return (number(value) != 0) == wanted; };
}

Test text_test(const wayfind_field& field, const Comparison& comparison) {
  expect_operation(field, comparison, {"==", "!=", "<", "<=", ">", ">="});
  if (comparison.operand.kind != Token::Kind::quoted)
    refuse_operand(field, comparison, "put what it is compared with in quotes");
  return [wanted = comparison.operand.text, operation = comparison.operation](const Value& value) {
    return ordered(text(value).compare(wanted), operation);
  };
}

// The number of a value or flag that is written by name, or as a number.
uint64_t small_operand(const wayfind_field& field, const Comparison& comparison) {
  const Token& operand = comparison.operand;
  if (const auto number = named(*field.type, operand.text)) return *number;
  if (operand.kind == Token::Kind::word) {
    if (const auto number = parse_number(operand.text)) return *number;
  }
  refuse_operand(field, comparison,
                 operand.text + " is no name of it" + nearest(operand.text, names(*field.type)));
}

Test enum_test(const wayfind_field& field, const Comparison& comparison) {
  expect_operation(field, comparison, {"==", "!="});
  const uint64_t wanted = small_operand(field, comparison);
  const bool is_equal = comparison.operation == "==";
  return [wanted, is_equal](const Value& value) { return (number(value) == wanted) == is_equal; };
}

Test flags_test(const wayfind_field& field, const Comparison& comparison) {
  expect_operation(field, comparison, {"has"});
  const uint64_t bit = small_operand(field, comparison);
  return [bit](const Value& value) { return bit < 64 && (number(value) >> bit & 1) != 0; };
}

Test address_test(const wayfind_field& field, const Comparison& comparison) {
  expect_operation(field, comparison, {"==", "!=", "in"});
  const auto wanted = parse_address(comparison.operand.text);
  if (!wanted)
    refuse_operand(field, comparison, "compare it with an address like 10.0.0.1/24, or none");
  if (comparison.operation == "in")
    return
        [prefix = wanted->address](const Value& value) { return lies_in(address(value), prefix); };
  const bool is_equal = comparison.operation == "==";
  return [wanted = *wanted, is_equal](const Value& value) {
    return equals(address(value), wanted) == is_equal;
  };
}

}  // namespace

std::string type_words(const wayfind_field& field) {
  switch (field.kind) {
    case WAYFIND_U_INT8:
    case WAYFIND_U_INT16:
    case WAYFIND_U_INT32:
    case WAYFIND_U_INT64:
    case WAYFIND_LINK_TYPE: return "a number";
    case WAYFIND_ORK_BOOLEAN: return "a boolean";
    case WAYFIND_IP_ADDRESS: return "an address";
    case WAYFIND_CHAR: return "a text";
    case WAYFIND_ENUM: return "an enum";
    case WAYFIND_FLAG_SET: return "flags";
    case WAYFIND_RECORD: return "a record";
  }
  return "";
}

Test make_test(const wayfind_field& field, const Comparison& comparison) {
  switch (field.kind) {
    case WAYFIND_ORK_BOOLEAN: return boolean_test(field, comparison);
    case WAYFIND_IP_ADDRESS: return address_test(field, comparison);
    case WAYFIND_CHAR: return text_test(field, comparison);
    case WAYFIND_ENUM: return enum_test(field, comparison);
    case WAYFIND_FLAG_SET: return flags_test(field, comparison);
    case WAYFIND_U_INT8:
    case WAYFIND_U_INT16:
    case WAYFIND_U_INT32:
    case WAYFIND_U_INT64:
    case WAYFIND_LINK_TYPE:
    case WAYFIND_RECORD: break;  // a path leads to no record
  }
  return number_test(field, comparison);
}

}  // namespace look
