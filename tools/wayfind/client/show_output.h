// What becomes of a show that has come in whole.
#pragma once

#include <string>
#include <vector>

#include "tools/look/message.h"

namespace wayfind {

class ShowOutput {
 public:
  virtual ~ShowOutput() = default;
  // The messages of the bundle, in wire order; they last until it returns.
  virtual void put(const std::string& bundle, const std::vector<look::Message>& shown) = 0;
};

}  // namespace wayfind
