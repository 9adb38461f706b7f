// The block that stands for an object which could not be made: create_cr hands it out, destroy passes
// it by. Its address is all that protects it.
#pragma once

#include "frame/object.h"

namespace frame {

void* sentinel(const RecordRow& record);
void* sentinel(const SmallRow& type);

}  // namespace frame
