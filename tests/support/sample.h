// Filled records of any type, made by way of the exported functions: for programs that need
// something to encode.
#pragma once

#include "ork/platform.h"
#include "tools/schema/wayfind_schema.h"

namespace sample {

void* create(ork_handle* handle, const wayfind_record& type);
void destroy(ork_handle* handle, const wayfind_record& type, void* object);

// Gives every field a value other than 0 and every array `elements` elements; equal calls make
// equal records. What the handle's release lacks stays 0.
void fill(ork_handle* handle, const wayfind_record& type, void* object, uint32_t elements);

}  // namespace sample
