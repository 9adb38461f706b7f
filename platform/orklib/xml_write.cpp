#include "xml_write.h"

#include <charconv>
#include <cstdio>
#include <ctime>

#include "ork/wire.h"
#include "room.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

void put_start_tag(TextWriter& out, std::string_view name, uint8_t state) {
  out.put("<");
  out.put(name);
  if (state != 0) {
    char digits[4];
    const auto end = std::to_chars(digits, digits + sizeof digits, state).ptr;
    out.put(" state=\"");
    out.put({digits, static_cast<size_t>(end - digits)});
    out.put("\"");
  }
  out.put(">");
}

void put_end_tag(TextWriter& out, std::string_view name) {
  out.put("</");
  out.put(name);
  out.put(">\n");
}

uint32_t write_element(ork_handle* handle, char* buffer, std::string_view name,
                       std::string_view value, int32_t remaining, uint8_t state, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  TextWriter out(buffer, remaining);
  put_start_tag(out, name, state);
  out.put(value);
  put_end_tag(out, name);
  return out.finish(handle, err);
}

}  // namespace ork

extern "C" {

ORK_EXPORT uint32_t start_tag(struct ork_handle* handle, uint32_t, char* buffer, const char* tag,
                              int32_t remaining, uint8_t state, uint32_t* err) {
  if (!ork::has_room(handle, remaining, 1, err)) {
    return 0;
  }
  ork::TextWriter out(buffer, remaining);
  ork::put_start_tag(out, tag, state);
  out.put("\n");
  return out.finish(handle, err);
}

ORK_EXPORT uint32_t start_tag_timestamp(struct ork_handle* handle, uint32_t, char* buffer,
                                        const char* tag, int32_t remaining, uint32_t* err) {
  if (!ork::has_room(handle, remaining, 1, err)) {
    return 0;
  }
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  char time[64];
  const size_t length = std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(time + length, sizeof time - length, ".%06ldZ", now.tv_nsec / 1000);
  ork::TextWriter out(buffer, remaining);
  out.put("<");
  out.put(tag);
  out.put(" time=\"");
  out.put(time);
  out.put("\">\n");
  return out.finish(handle, err);
}

ORK_EXPORT uint32_t end_tag(struct ork_handle* handle, uint32_t, char* buffer, const char* tag,
                            int32_t remaining, uint32_t* err) {
  if (remaining <= 0) {
    ork::fail_first(handle, err, EMSGSIZE);
    return 0;
  }
  ork::TextWriter out(buffer, remaining);
  ork::put_end_tag(out, tag);
  return out.finish(handle, err);
}

ORK_EXPORT uint32_t xml_enum_print(struct ork_handle* handle, uint32_t, char* buffer,
                                   const char* text, int32_t remaining, uint32_t length,
                                   uint32_t* err) {
  if (!ork::has_room(handle, remaining, 1, err)) {
    return 0;
  }
  ork::TextWriter out(buffer, remaining);
  out.put({text, length});
  return out.finish(handle, err);
}

}  // extern "C"
