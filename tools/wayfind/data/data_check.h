// Whether all that stands in a document means something here.
#pragma once

#include <string>

#include "ork/platform.h"

namespace wayfind {

// A document holds records that messages carry, at its root or inside elements of the module's, a
// bundle's or a message's name, and in each record its fields; text stands in fields alone, and
// what can be said once stands once. An array has no more elements than its counter can count, and
// the counter, where it is given, tells how many; an attribute is one that the library or a
// recording writes. The reader of records passes over all else, and a person's mistake would be
// lost that way: here it is a Failure that names origin and line, first_line being that of the
// document's first line.
void check_elements(ork_xml& xml, const std::string& origin, uint32_t first_line = 1);

}  // namespace wayfind
