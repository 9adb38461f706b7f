// What two releases make of a show.
#pragma once

#include <string>

#include "ork/platform.h"
#include "tools/schema/wayfind_schema.h"

namespace wayfind {

// What the records and messages of a show lose on the way from one release to another, the sender's
// and the receiver's: "fwe_cl_wayfind_hop_chan_data from variant 1 to 0, ...". Empty when nothing
// is lost.
std::string lowered(const wayfind_bundle& bundle, const ork_type_list& sender,
                    const ork_type_list& receiver);

}  // namespace wayfind
