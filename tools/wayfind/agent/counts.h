// Fields that tell how many entries there are.
#pragma once

#include "tools/wayfind/data/data_folder.h"

namespace wayfind {

// Whether a record of the message holds such a field: the message then goes out even if the data
// has none.
bool tells_counts(const wayfind_message& message);

// Fills such fields of msg for one show. What the client's release does not take is left out of the
// show and does not count as its entry.
void fill_counts(const wayfind_bundle& bundle, const DataFolder& data, ork_handle* client,
                 const wayfind_message& message, void* msg);

}  // namespace wayfind
