// Accessors of variable arrays of records. An element keeps its index for life, but not its address:
// growth moves all of them, and with them what points into them: the runtime's distances to state
// bytes, the arrays of the elements themselves, the database hooks.
#pragma once

#include "frame/object.h"

namespace frame {

// Fills element `at` from `source`: by its own set, or by cloning.
using FillElement = void (*)(const Call& call, void* at, const void* source,
                             const RecordRow& element);

void array_set_record(const Call& call, void* object, uint32_t index, const void* from,
                      FillElement fill, const FieldRow& field);

}  // namespace frame
