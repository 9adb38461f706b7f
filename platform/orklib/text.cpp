#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "ork/wire.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

uint32_t TextWriter::finish(ork_handle* handle, uint32_t* err) {
  if (full_) {
    if (room_ > 0) {
      buffer_[0] = '\0';
    }
    fail_first(handle, err, EMSGSIZE);
    return 0;
  }
  buffer_[used_] = '\0';
  return static_cast<uint32_t>(used_);
}

}  // namespace ork

extern "C" {

ORK_EXPORT uint32_t ork_print_space(struct ork_handle* handle, uint32_t, char* buffer,
                                    uint32_t indent, int32_t remaining, uint32_t* err) {
  if (indent == 0) {
    return 0;
  }
  if (remaining <= 0 || indent >= static_cast<uint32_t>(remaining)) {
    ork::fail_first(handle, err, EMSGSIZE);
    return 0;
  }
  char* end = buffer + std::strlen(buffer);
  std::memset(end, ' ', indent);
  end[indent] = '\0';
  return indent;
}

ORK_EXPORT uint32_t ork_snprintf(struct ork_handle* handle, uint32_t, char* buffer,
                                 int32_t remaining, uint32_t* err, const char* format, ...) {
  if (remaining <= 0) {
    ork::fail_first(handle, err, EMSGSIZE);
    return 0;
  }
  std::va_list arguments;
  va_start(arguments, format);
  const int wanted = std::vsnprintf(buffer, static_cast<size_t>(remaining), format, arguments);
  va_end(arguments);
  if (wanted >= 0 && wanted < remaining) {
    return static_cast<uint32_t>(wanted);
  }
  ork::fail_first(handle, err, EMSGSIZE);
  return wanted >= 0 ? static_cast<uint32_t>(remaining - 1) : 0;
}

}  // extern "C"
