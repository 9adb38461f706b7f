#include "tools/look/csv.h"

namespace look {
namespace {

constexpr std::string_view line_end = "\r\n";

void put_cell(std::string& out, std::string_view cell) {
  if (cell.find_first_of(",\"\r\n") == std::string_view::npos) {
    out += cell;
    return;
  }
  out += '"';
  for (const char c : cell) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

template <class CellAt>
void put_line(std::string& out, size_t columns, const CellAt& cell_at) {
  for (size_t column = 0; column < columns; ++column) {
    if (column > 0) out += ',';
    put_cell(out, cell_at(column));
  }
  out += line_end;
}

void put_sheet(std::string& out, const Sheet& sheet) {
  const std::vector<Column>& columns = sheet.columns();
  put_line(out, columns.size(),
           [&](size_t column) { return std::string_view(columns[column].path.text); });
  for (size_t row = 0; row < sheet.rows(); ++row)
    put_line(out, columns.size(), [&](size_t column) { return sheet.cell(row, column); });
}

}  // namespace

void put_csv(std::string& out, const Sheets& sheets) {
  bool is_first = true;
  for (const Sheet& sheet : sheets.all()) {
    if (!is_first) out += line_end;
    is_first = false;
    put_sheet(out, sheet);
  }
}

}  // namespace look
