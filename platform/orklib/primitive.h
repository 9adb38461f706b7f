// What the families of primitives have in common.
#pragma once

#include <cerrno>
#include <cstdint>
#include <string_view>

#include "ork/orklib.h"
#include "room.h"
#include "runtime.h"
#include "text.h"
#include "xml_read.h"
#include "xml_write.h"

namespace ork {

// Lends a value, or null after an error.
template <typename Value>
Value* lend(const Value* address, const uint32_t* err) {
  return *err == 0 ? const_cast<Value*>(address) : nullptr;
}

// True if all the pointers of a call are there; otherwise *err is set, by now or here.
template <typename... Pointers>
bool all_given(ork_handle* handle, uint32_t* err, const Pointers*... pointers) {
  if (*err == 0 && ((pointers == nullptr) || ...)) {
    fail(handle, err, EINVAL);
  }
  return *err == 0;
}

// The same for a call that writes text: without room nothing is formatted, since a record walks on
// through all its fields with the room used up.
template <typename... Pointers>
bool can_write(ork_handle* handle, uint32_t* err, int32_t remaining, const Pointers*... pointers) {
  return all_given(handle, err, pointers...) && has_room(handle, remaining, 1, err);
}

// Announces and stores.
template <typename Value>
void store(ork_handle* handle, uint32_t instance, Value* address, const Value& value) {
  handle->write_notify_fn(handle, address, sizeof value, instance, nullptr);
  *address = value;
}

// The line "name: value" at indent; what does not fit is cut.
uint32_t print_line(ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                    const char* name, std::string_view value, int32_t remaining, uint32_t* err);

// A number in decimal.
class Decimal {
 public:
  explicit Decimal(uint64_t value);
  std::string_view text() const { return {digits_, length_}; }

 private:
  char digits_[20];
  size_t length_;
};

}  // namespace ork
