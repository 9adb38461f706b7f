// Text for people: a header line "name@type: {", a line per field, a closing line. Elements of
// arrays are fields with the name "field[index]".
#pragma once

#include "encoders/walk.h"

namespace encoders {

// A caller's text buffer. here() is clamped to its end, so after a failed write only the position
// is too large.
struct TextBuffer {
  char* start;
  uint32_t length;
  uint32_t position = 0;

  char* here() const { return start + (position < length ? position : length); }
  uint32_t room_bytes() const { return position < length ? length - position : 0; }
  int32_t room() const {
    return room_bytes() < INT32_MAX ? static_cast<int32_t>(room_bytes()) : INT32_MAX;
  }
};

uint32_t print(const Call& call, char* buffer, uint32_t indent, const char* name,
               const void* object, uint32_t length, const RecordRow& record);
uint32_t print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                  const RecordRow& record);

uint32_t small_print(const Call& call, char* buffer, uint32_t indent, const char* name,
                     const void* object, uint32_t length, const SmallRow& type);
uint32_t small_print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                        const SmallRow& type);

// All ones while the handle's cr_error is set.
inline uint32_t cr_result(const ork_handle* handle, uint32_t result) {
  return handle->cr_error != 0 ? UINT32_MAX : result;
}

}  // namespace encoders
