// What types, tables and rows are called in generated text.
#pragma once

#include <string>

#include "model/trace_plan.h"

namespace generator {

// C types of a field's value: as it lies in the object, and as accessors carry it.
std::string storage_type(const model::FieldRow& field);
std::string value_type(const model::FieldRow& field);

const char* small_name(size_t type);
const char* const* small_texts(size_t type);  // of its values or flags, by number
const model::Identity& small_identity(size_t type);
const char* small_meaning(size_t type);
// Of an embedded or element record, an enum or a flag set.
const char* type_name(const model::FieldRow& field);

// The constants that are the tables of the model: "model::hop_chan_data".
std::string record_table(size_t record);
std::string small_table(size_t type);
std::string message_table(size_t message);
std::string bundle_table(size_t bundle);
std::string row_of_table(const std::string& table);  // "model::row<model::hop_chan_data>"

}  // namespace generator
