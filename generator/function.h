// An exported function, described once: its prototype and documentation for the public header, its
// statements for the library, its name for the version script.
#pragma once

#include <string>
#include <vector>

namespace generator {

struct Parameter {
  std::string text;  // as a prototype writes it
  std::string name;
};

struct Result {
  std::string type;      // without the stars
  bool pointer = false;  // to it
  bool is_void() const { return type == "void" && !pointer; }
};

struct Function {
  std::string doc;
  Result result;
  std::string name;
  std::vector<Parameter> parameters;
  std::vector<std::string> statements;  // the last one's value is returned
  std::string jump;                     // or the function that this one is a jump to
};
using Functions = std::vector<Function>;

// What the library does not define as a function of a family: data, and functions of others.
struct Declaration {
  std::string doc;
  std::string text;  // with its semicolons
};

// All that a header says of one thing, in its order.
struct Interface {
  std::vector<Declaration> declarations;
  Functions functions;
};

// Reads "const char *name(int a, void (*b)(int))". Throws std::invalid_argument.
Function parse_prototype(const std::string& text);

// As the public header says it, and as the library defines it.
std::string prototype(const Function& function);
std::string definition(const Function& function);

}  // namespace generator
