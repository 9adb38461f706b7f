// A show that is looked at again and again: what has changed since the last time, and how fast its
// counters grow.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/look/sheet.h"

namespace look {

// A message that has come or gone, or a cell of one that has become another.
struct Change {
  enum class Kind { come, gone, other };
  Kind kind;
  const wayfind_message* type;
  std::string key;  // as --id takes it
  std::string path = {};
  std::string before = {};
  std::string after = {};
  std::string rate = {};  // "+12/s" of a counter that has grown
};

class Watched {
 public:
  // The chosen columns, or those of the tables and the counters. Throws a Mistake as Sheets do.
  Watched(const wayfind_bundle& bundle, const std::string& chosen, const Roles& roles);

  // What is there now, so many seconds after the last time. The first time nothing has changed.
  void take(ork_handle* handle, const std::vector<Message>& shown, double seconds);

  const std::vector<Change>& changes() const { return changes_; }

  // Tables of what is there now. Behind each counter that has grown stands its rate. Counters that
  // were not chosen stand there from when they first grew.
  Sheets tables() const;

 private:
  struct Cell {
    std::string text;
    uint64_t number = 0;  // of a counter
    std::string rate = {};
    bool is_changed = false;
  };
  struct Row {
    std::string key;
    std::vector<Cell> cells;
  };
  struct Table {
    const wayfind_message* type;
    std::vector<Column> columns;
    std::vector<bool> is_counter;
    std::vector<bool> is_shown;
    std::vector<Path> key;
    std::vector<Row> rows = {};
  };
  using Places = std::map<std::string, const Row*>;

  Table table_for(const Sheet& sheet, bool with_counters, const Roles& roles) const;
  Row row_of(ork_handle* handle, const Table& table, const Message& message) const;
  void compare(Table& table, const std::vector<Row>& before, double seconds);
  void compare(Table& table, Row& row, const Row& before, double seconds);

  std::vector<Table> tables_;
  std::vector<Change> changes_;
  bool has_begun_ = false;
};

}  // namespace look
