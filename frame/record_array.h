// Accessors of variable arrays of records. An element keeps its index, but not its address: growth
// moves all elements, and what refers to them: registered state offsets, their own arrays, the
// database hooks.
#pragma once

#include "frame/object.h"

namespace frame {

// Fills element `at` from `source`: moves it by record_set(), or clones it.
using FillElement = void (*)(const Call& call, void* at, const void* source,
                             const RecordRow& element);

void array_set_record(const Call& call, void* object, uint32_t index, const void* from,
                      FillElement fill, const FieldRow& field);

}  // namespace frame
