// What create_cr returns instead of an object when there is no memory. destroy ignores it, by its
// address. Nothing else tells it from an object.
#pragma once

#include "frame/object.h"

namespace frame {

void* sentinel(const RecordRow& record);
void* sentinel(const SmallRow& type);

}  // namespace frame
