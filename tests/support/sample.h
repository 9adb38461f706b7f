// Filled records of any type, made by way of the exported functions: for programs that need
// something to encode.
#pragma once

#include <string_view>

#include "ork/platform.h"
#include "tools/schema/wayfind_schema.h"

namespace sample {

// The type, or null.
const wayfind_record* record(std::string_view name);

// An exported function by what stands behind the name of its type or field. Ends the process when
// there is none.
void (*find(const wayfind_function* functions, std::string_view suffix))(void);

// Casts to the function's prototype: function<uint32_t (*)(...)>(type.functions, "_len").
template <class Prototype>
Prototype function(const wayfind_function* functions, std::string_view suffix) {
  return reinterpret_cast<Prototype>(find(functions, suffix));
}

void* create(ork_handle* handle, const wayfind_record& type);
void destroy(ork_handle* handle, const wayfind_record& type, void* object);

// Gives every field a value other than 0 and every array `elements` elements; equal calls make
// equal records. What the handle's release lacks stays 0.
void fill(ork_handle* handle, const wayfind_record& type, void* object, uint32_t elements);

}  // namespace sample
