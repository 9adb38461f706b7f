// This host's own network interfaces as records.
#pragma once

#include "tools/wayfind/data/data_folder.h"
#include "tools/wayfind/data/subject.h"

namespace wayfind {

// When the show is one of interfaces, replaces the data's by what the kernel tells now.
void read_live_interfaces(DataFolder& data, const Subject& subject);

}  // namespace wayfind
