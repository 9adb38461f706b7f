// Sheets as comma-separated values, quoted by RFC 4180: a head line with the paths, then the rows.
#pragma once

#include <string>

#include "tools/look/sheet.h"

namespace look {

// An empty line stands between two sheets.
void put_csv(std::string& out, const Sheets& sheets);

}  // namespace look
