// An exported function, described once: its prototype and documentation for the public header, its
// one line of code for the library, its name for the version script.
#pragma once

#include <string>
#include <vector>

#include "model/trace_plan.h"

namespace generator {

struct Function {
  std::string name;
  std::string result;
  std::string parameters;
  // what it hands on to; empty for a function that is a jump, a dash for one that an engine defines
  std::string call;
  std::string doc;
};
using Functions = std::vector<Function>;

// A member of a family: the same with $-places. The name is what stands behind the type's or
// field's name.
struct Family {
  const char* suffix;
  const char* result;
  const char* parameters;
  const char* call;
  const char* doc;
};

using Places = std::vector<std::pair<std::string, std::string>>;
std::string fill(std::string text, const Places& places);

template <size_t N>
void add(Functions& functions, const Family (&family)[N], const std::string& stem,
         const Places& places) {
  for (const Family& member : family) {
    functions.push_back({stem + member.suffix, fill(member.result, places),
                         fill(member.parameters, places), fill(member.call, places),
                         fill(member.doc, places)});
  }
}

// The one function that is a jump: its arguments are the runtime's affair, and go on untouched.
Function luid_function(const std::string& type);

// In the order of the header.
Functions record_functions(size_t record);
Functions field_functions(const model::FieldRow& field);
Functions small_functions(size_t type);
Functions message_functions(size_t message);
Functions bundle_functions(size_t bundle);
Functions module_functions();

// C types of a field's value as accessors carry it, and as it lies in the object.
std::string value_type(const model::FieldRow& field);
std::string storage_type(const model::FieldRow& field);

const char* type_name(
    const model::FieldRow& field);  // of an embedded or element record, enum or flag set
const char* small_name(size_t type);
// In generated code: the constants that are the tables of the model, "model::hop_chan_data".
std::string record_table(size_t record);
std::string small_table(size_t type);
std::string message_table(size_t message);
std::string bundle_table(size_t bundle);
std::string row_of_table(const std::string& table);  // "model::row<model::hop_chan_data>"
const char* const* small_texts(size_t type);         // of its values or flags, by number

}  // namespace generator
