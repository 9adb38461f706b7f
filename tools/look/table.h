// Sheets as tables for people: a line for each message, in aligned columns.
#pragma once

#include <string>

#include "tools/look/sheet.h"

namespace look {

struct TableStyle {
  size_t width = 0;  // in characters, that lines are made to fit; 0: as wide as they are
  bool colour = false;
};

// What fits where the file descriptor leads: on a terminal its width, and colour unless NO_COLOR is
// set or TERM is dumb.
TableStyle style_for(int descriptor);

// With the message's name above each when there are several. Sheets without rows are left out.
void put_tables(std::string& out, const Sheets& sheets, const TableStyle& style);

}  // namespace look
