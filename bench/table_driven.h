// Marshal, unmarshal and length as one loop over a run-time table each: what the library's
// straight-line code is measured against. Records without variable arrays and without state
// tracking.
#pragma once

#include "bench/bare.h"
#include "tools/schema/wayfind_schema.h"

namespace table_driven {

using bare::Wire;

uint32_t marshal(const Wire& wire, uint8_t* buffer, const void* object, int32_t length,
                 const wayfind_record& type);
uint32_t unmarshal(const Wire& wire, const uint8_t* buffer, void* object, int32_t length,
                   const wayfind_record& type);
uint32_t length(const Wire& wire, const void* object, const wayfind_record& type);

}  // namespace table_driven
