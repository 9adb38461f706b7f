// Text in a caller's buffer.
#pragma once

#include <cstdint>
#include <string_view>

#include "ork/handle.h"

namespace ork {

// Appends to a buffer, all or nothing: what finish gives is 0 if anything did not fit together with
// the closing NUL.
class TextWriter {
 public:
  TextWriter(char* buffer, int32_t remaining)
      : buffer_(buffer), room_(remaining > 0 ? static_cast<size_t>(remaining) : 0) {}

  void put(std::string_view text) {
    if (!full_ && text.size() < room_ - used_) {
      text.copy(buffer_ + used_, text.size());
      used_ += text.size();
    } else {
      full_ = true;  // from here on nothing is taken, not even a shorter piece
    }
  }

  uint32_t finish(ork_handle* handle, uint32_t* err);

 private:
  char* buffer_;
  size_t room_;
  size_t used_ = 0;
  bool full_ = room_ == 0;
};

}  // namespace ork
