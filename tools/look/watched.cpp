#include "tools/look/watched.h"

#include <algorithm>
#include <cstdio>

namespace look {
namespace {

constexpr const char* again = "#";  // behind a key that stood before, the how-manieth it is

// Nothing when it has not grown; a counter that begins anew or runs over has no rate to tell.
std::string rate_of(uint64_t before, uint64_t after, double seconds) {
  if (after <= before || seconds <= 0) return "";
  const double rate = static_cast<double>(after - before) / seconds;
  char text[32];
  std::snprintf(text, sizeof text, rate < 10 ? "+%.1f/s" : "+%.0f/s", rate);
  return text;
}

uint64_t number_at(const Path& path, const Message& message) {
  uint64_t found = 0;
  any_value(path, message, [&](const Value& value) {
    found = number(value);
    return true;
  });
  return found;
}

}  // namespace

Watched::Watched(const wayfind_bundle& bundle, const std::string& chosen, const Roles& roles) {
  const Sheets sheets(bundle, chosen, roles);
  for (const Sheet& sheet : sheets.all())
    tables_.push_back(table_for(sheet, chosen.empty(), roles));
}

Watched::Table Watched::table_for(const Sheet& sheet, bool with_counters,
                                  const Roles& roles) const {
  Table table{&sheet.type(), sheet.columns(), {}, {}, {}};
  table.is_shown.assign(table.columns.size(), true);
  if (with_counters) {
    for (Column& column : counter_columns(sheet.type(), roles)) table.columns.push_back(column);
  }
  table.is_shown.resize(table.columns.size(), false);
  for (const Column& column : table.columns)
    table.is_counter.push_back(column.is_number() &&
                               roles.of(column.path.leaf()).has(counter_role));
  for (const char* path : roles.key(sheet.type())) table.key.push_back(path_in(path, sheet.type()));
  return table;
}

Watched::Row Watched::row_of(ork_handle* handle, const Table& table, const Message& message) const {
  Row row;
  for (const Path& path : table.key) {
    if (!row.key.empty()) row.key += ',';
    put_cell(row.key, handle, {path}, message);
  }
  for (size_t i = 0; i < table.columns.size(); ++i) {
    Cell& cell = row.cells.emplace_back();
    put_cell(cell.text, handle, table.columns[i], message);
    if (table.is_counter[i]) cell.number = number_at(table.columns[i].path, message);
  }
  return row;
}

void Watched::take(ork_handle* handle, const std::vector<Message>& shown, double seconds) {
  changes_.clear();
  for (Table& table : tables_) {
    std::vector<Row> before;
    before.swap(table.rows);
    std::map<std::string, size_t> seen;
    for (const Message& message : shown) {
      if (message.type != table.type) continue;
      Row& row = table.rows.emplace_back(row_of(handle, table, message));
      if (const size_t times = ++seen[row.key]; times > 1) row.key += again + std::to_string(times);
    }
    if (has_begun_) compare(table, before, seconds);
  }
  has_begun_ = true;
}

void Watched::compare(Table& table, const std::vector<Row>& before, double seconds) {
  Places places;
  for (const Row& row : before) places.emplace(row.key, &row);
  for (Row& row : table.rows) {
    const auto found = places.find(row.key);
    if (found != places.end()) {
      compare(table, row, *found->second, seconds);
      places.erase(found);
      continue;
    }
    for (Cell& cell : row.cells) cell.is_changed = true;
    changes_.push_back({Change::Kind::come, table.type, row.key});
  }
  for (const Row& row : before) {
    if (places.contains(row.key)) changes_.push_back({Change::Kind::gone, table.type, row.key});
  }
}

void Watched::compare(Table& table, Row& row, const Row& before, double seconds) {
  for (size_t i = 0; i < row.cells.size(); ++i) {
    Cell& cell = row.cells[i];
    if (cell.text == before.cells[i].text) continue;
    cell.is_changed = true;
    if (table.is_counter[i]) cell.rate = rate_of(before.cells[i].number, cell.number, seconds);
    if (!cell.rate.empty()) table.is_shown[i] = true;
    changes_.push_back({Change::Kind::other, table.type, row.key, table.columns[i].path.text,
                        before.cells[i].text, cell.text, cell.rate});
  }
}

Sheets Watched::tables() const {
  Sheets sheets;
  for (const Table& table : tables_) {
    std::vector<Column> columns;
    for (size_t i = 0; i < table.columns.size(); ++i) {
      if (table.is_shown[i]) columns.push_back(table.columns[i]);
    }
    Sheet sheet(*table.type, std::move(columns));
    for (const Row& row : table.rows) {
      for (size_t i = 0; i < row.cells.size(); ++i) {
        const Cell& cell = row.cells[i];
        if (!table.is_shown[i]) continue;
        sheet.add_cell(cell.rate.empty() ? cell.text : cell.text + " " + cell.rate,
                       cell.is_changed);
      }
    }
    sheets.add(std::move(sheet));
  }
  return sheets;
}

}  // namespace look
