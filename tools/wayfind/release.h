// Releases as lists of types: what a process is told to be, what it announces, and what two of them
// make of a show.
#pragma once

#include <string>

#include "owned.h"
#include "tools/schema/wayfind_schema.h"

namespace wayfind {

// All that the modules of this process know.
TypeList newest_release();

TypeList read_release(const std::string& path);

TypeList parse_release(const std::string& text, const std::string& origin);

std::string text_of(const ork_type_list& list);

// What the records and messages of a show lose on the way from one release to another, the sender's
// and the receiver's: "fwe_cl_wayfind_hop_chan_data from variant 1 to 0, ...". Empty when nothing
// is lost.
std::string lowered(const wayfind_bundle& bundle, const ork_type_list& sender,
                    const ork_type_list& receiver);

}  // namespace wayfind
