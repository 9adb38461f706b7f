// The messages of one type as rows of cells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/look/column.h"

namespace look {

class Sheet {
 public:
  Sheet(const wayfind_message& type, std::vector<Column> columns)
      : type_(type), columns_(std::move(columns)) {}

  void add(ork_handle* handle, const Message& message);
  // The next cell of the row.
  void add_cell(std::string_view text, bool is_marked);

  const wayfind_message& type() const { return type_; }
  const std::vector<Column>& columns() const { return columns_; }
  size_t rows() const { return ends_.size() / columns_.size(); }
  std::string_view cell(size_t row, size_t column) const;
  bool is_marked(size_t row, size_t column) const;

 private:
  const wayfind_message& type_;
  std::vector<Column> columns_;
  std::string cells_;         // one behind the other
  std::vector<size_t> ends_;  // of each cell in cells_
  std::vector<bool> marks_;   // of each cell, once one was added with a mark
};

// A sheet for each message type of a show that has something to be told in columns.
class Sheets {
 public:
  Sheets() = default;

  // Columns by role, or the chosen ones, paths with commas between them. Throws a Mistake when no
  // message has all of those.
  Sheets(const wayfind_bundle& bundle, const std::string& chosen, const Roles& roles);

  void add(Sheet sheet) { sheets_.push_back(std::move(sheet)); }

  // Messages without a sheet are passed over.
  void add(ork_handle* handle, const Message& message);

  const std::vector<Sheet>& all() const { return sheets_; }

 private:
  std::vector<Sheet> sheets_;
};

}  // namespace look
