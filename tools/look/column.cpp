#include "tools/look/column.h"

#include <algorithm>

#include "tools/look/shown.h"
#include "tools/look/small_type.h"

namespace look {
namespace {

// Paths of the record's values; of an array of plain values all of them together.
template <class Wanted>
void collect(const wayfind_record& record, const std::string& before, const Wanted& wanted,
             std::vector<std::string>& paths) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    const std::string here = before + field.name;
    if (field.cls == WAYFIND_RECORD_ARRAY) continue;
    if (field.record != nullptr) {
      collect(*field.record, here + ".", wanted, paths);
    } else if (wanted(field)) {
      paths.push_back(here + (is_array(field) ? "[*]" : ""));
    }
  }
}

template <class Wanted>
std::vector<std::string> paths_of(const wayfind_message& message, const Wanted& wanted) {
  std::vector<std::string> paths;
  for (unsigned slot = 0; slot < message.record_count; ++slot)
    collect(*message.records[slot], "", wanted, paths);
  return paths;
}

auto with_role(Role role, const Roles& roles) {
  return [role, &roles](const wayfind_field& field) { return roles.of(field).has(role); };
}

void put_name(std::string& out, const wayfind_small_type& type, uint64_t number) {
  if (const auto name = short_name(type, number)) {
    out += *name;
  } else {
    put_number(out, number);
  }
}

void put_flags(std::string& out, const wayfind_small_type& type, uint64_t bits) {
  bool is_first = true;
  for (uint64_t bit = 0; bits >> bit != 0; ++bit) {
    if ((bits >> bit & 1) == 0) continue;
    if (!is_first) out += ',';
    is_first = false;
    put_name(out, type, bit);
  }
}

void put_value(std::string& out, ork_handle* handle, const Value& value) {
  switch (value.field->kind) {
    case WAYFIND_U_INT8:
    case WAYFIND_U_INT16:
    case WAYFIND_U_INT32:
    case WAYFIND_U_INT64:
    case WAYFIND_LINK_TYPE: return put_number(out, number(value));
    case WAYFIND_ORK_BOOLEAN: out += number(value) != 0 ? "true" : "false"; return;
    case WAYFIND_ENUM: return put_name(out, *value.field->type, number(value));
    case WAYFIND_FLAG_SET: return put_flags(out, *value.field->type, number(value));
    case WAYFIND_CHAR:
    case WAYFIND_IP_ADDRESS: return put_shown(out, handle, value);
    case WAYFIND_RECORD: break;  // a path leads to no record
  }
}

}  // namespace

bool Column::is_number() const {
  const wayfind_kind kind = path.leaf().kind;
  return !path.is_many() && (kind == WAYFIND_U_INT8 || kind == WAYFIND_U_INT16 ||
                             kind == WAYFIND_U_INT32 || kind == WAYFIND_U_INT64);
}

std::vector<Column> columns_by_role(const wayfind_message& message, const Roles& roles) {
  std::vector<Column> columns;
  for (const char* path : roles.key(message)) columns.push_back({path_in(path, message), true});
  for (const std::string& path : paths_of(message, with_role(column_role, roles))) {
    const bool is_key = std::any_of(columns.begin(), columns.end(), [&](const Column& column) {
      return column.is_key && column.path.text == path;
    });
    if (!is_key) columns.push_back({path_in(path, message)});
  }
  return columns;
}

std::vector<Column> counter_columns(const wayfind_message& message, const Roles& roles) {
  std::vector<Column> columns;
  for (const std::string& path : paths_of(message, with_role(counter_role, roles)))
    columns.push_back({path_in(path, message)});
  return columns;
}

std::vector<Column> all_columns(const wayfind_message& message) {
  std::vector<Column> columns;
  for (const std::string& path : paths_of(message, [](const wayfind_field&) { return true; }))
    columns.push_back({path_in(path, message)});
  return columns;
}

std::vector<Column> chosen_columns(const std::vector<Word>& paths, const wayfind_message& message) {
  std::vector<Column> columns;
  columns.reserve(paths.size());
  for (const Word& path : paths) columns.push_back({path_in(path.text, message)});
  return columns;
}

void put_cell(std::string& out, ork_handle* handle, const Column& column, const Message& message) {
  bool is_first = true;
  any_value(column.path, message, [&](const Value& value) {
    if (!is_first) out += ',';
    is_first = false;
    put_value(out, handle, value);
    return false;
  });
}

}  // namespace look
