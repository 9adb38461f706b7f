#include "generator/function.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "generator/wrap.h"

namespace generator {
namespace {

bool in_name(char c) { return isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// The name that ends at `end`.
std::string name_before(const std::string& text, size_t end) {
  size_t begin = end;
  while (begin > 0 && in_name(text[begin - 1])) --begin;
  return text.substr(begin, end - begin);
}

// A pointer to a function has its name in the middle.
std::string parameter_name(const std::string& text) {
  const size_t function = text.find("(*");
  return function == std::string::npos ? name_before(text, text.size())
                                       : name_before(text, text.find(')', function));
}

std::vector<Parameter> parse_parameters(const std::string& list) {
  std::vector<Parameter> out;
  if (list == "void" || list.empty()) return out;
  std::string text;
  int depth = 0;
  const auto close = [&] {
    out.push_back({text, parameter_name(text)});
    text.clear();
  };
  for (const char c : list) {
    if (c == '(') ++depth;
    if (c == ')') --depth;
    if (c == ',' && depth == 0) {
      close();
    } else if (c != ' ' || !text.empty()) {
      text += c;
    }
  }
  close();
  return out;
}

bool mentions(const Function& function, const std::string& name) {
  return std::any_of(
      function.statements.begin(), function.statements.end(), [&](const std::string& text) {
        for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
          const bool begins = at == 0 || !in_name(text[at - 1]);
          const bool ends = at + name.size() == text.size() || !in_name(text[at + name.size()]);
          if (begins && ends) return true;
        }
        return false;
      });
}

// The type and name of a function and its parameters, broken between parameters where too long.
std::string declarator(const Function& function, const std::vector<std::string>& parameters) {
  std::string head = function.result.type + (function.result.pointer ? " *" : " ");
  const size_t end = sizeof ") {" - 1;
  size_t column = head.size() + function.name.size() + 1;
  if (column + (parameters.empty() ? end : 0) > line_width) {
    head = function.result.type + (function.result.pointer ? " *\n" : "\n");
    column = function.name.size() + 1;
  }
  std::string out = head + function.name + "(";
  for (size_t i = 0; i < parameters.size(); ++i) {
    const std::string parameter = parameters[i] + (i + 1 == parameters.size() ? "" : ",");
    const size_t blank = i == 0 ? 0 : 1;
    const size_t after = i + 1 == parameters.size() ? end : 0;
    if (column + blank + parameter.size() + after > line_width) {
      out += "\n    " + parameter;
      column = 4 + parameter.size();
    } else {
      out += (i == 0 ? "" : " ") + parameter;
      column += blank + parameter.size();
    }
  }
  return out + ")";
}

std::string statement(const std::string& text) { return "  " + wrapped(text, 2, "      ") + "\n"; }

// Objects are plain memory inside the library and typed outside.
std::string typed(const Result& result, const std::string& value) {
  if (!result.pointer || result.type == "void") return value;
  const size_t tag = result.type.find("struct ");
  std::string type = result.type;
  if (tag != std::string::npos) type.erase(tag, sizeof "struct " - 1);
  return "static_cast<" + type + "*>(" + value + ")";
}

}  // namespace

Function parse_prototype(const std::string& text) {
  const size_t open = text.find('(');
  const size_t close = text.rfind(')');
  if (open == std::string::npos || close != text.size() - 1)
    throw std::invalid_argument("neither a prototype nor declarations that end with a semicolon");
  Function function;
  function.name = name_before(text, open);
  std::string type = text.substr(0, open - function.name.size());
  while (!type.empty() && (type.back() == ' ' || type.back() == '*')) {
    function.result.pointer = function.result.pointer || type.back() == '*';
    type.pop_back();
  }
  function.result.type = type;
  if (function.name.empty() || type.empty())
    throw std::invalid_argument("a prototype without a name or a result");
  function.parameters = parse_parameters(text.substr(open + 1, close - open - 1));
  return function;
}

std::string prototype(const Function& function) {
  std::vector<std::string> parameters;
  for (const Parameter& parameter : function.parameters) parameters.push_back(parameter.text);
  if (parameters.empty()) parameters.emplace_back("void");
  return declarator(function, parameters) + ";\n";
}

std::string definition(const Function& function) {
  std::vector<std::string> parameters;
  for (const Parameter& parameter : function.parameters) {
    std::string text = parameter.text;
    if (!mentions(function, parameter.name)) {
      text.resize(text.size() - parameter.name.size());
      while (text.back() == ' ') text.pop_back();
    }
    parameters.push_back(text);
  }
  if (!function.jump.empty()) {
    return "[[gnu::naked]]\n" + declarator(function, parameters) + " {\n  asm(\"jmp " +
           function.jump + "@PLT\");\n}\n";
  }
  std::string body;
  for (size_t i = 0; i + 1 < function.statements.size(); ++i)
    body += statement(function.statements[i] + ";");
  const std::string value = typed(function.result, function.statements.back());
  body += statement((function.result.is_void() ? "" : "return ") + value + ";");
  return declarator(function, parameters) + " {\n" + body + "}\n";
}

}  // namespace generator
