// Fields that tell how many entries there are.
#pragma once

#include "data_folder.h"

namespace wayfind {

// Whether a record of the message holds such a field: the message then goes out even if the data has none.
bool tells_counts(const wayfind_message& message);

// Fills such fields of msg for one show.
void fill_counts(const wayfind_bundle& bundle, const DataFolder& data, const wayfind_message& message, void* msg);

}  // namespace wayfind
