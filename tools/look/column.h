// What stands in a table: values by path.
#pragma once

#include <string>
#include <vector>

#include "tools/look/path.h"
#include "tools/look/roles.h"

namespace look {

struct Column {
  Path path;
  bool is_key = false;

  // Numbers stand at the right.
  bool is_number() const;
};

// The key of the message, then what has the role of a column in its records, outside of arrays of
// records. Empty when the message has neither.
std::vector<Column> columns_by_role(const wayfind_message& message, const Roles& roles);

// What counts events in the records of the message, outside of arrays of records.
std::vector<Column> counter_columns(const wayfind_message& message, const Roles& roles);

// All values of the message that a single path leads to.
std::vector<Column> all_columns(const wayfind_message& message);

// The message has the paths.
std::vector<Column> chosen_columns(const std::vector<Word>& paths, const wayfind_message& message);

// Appends the values that the column has in the message, with commas between them; names of values
// and flags are the short ones. Nothing when it has none.
void put_cell(std::string& out, ork_handle* handle, const Column& column, const Message& message);

}  // namespace look
