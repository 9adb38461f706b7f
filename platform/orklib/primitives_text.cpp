// char and null_string: fixed arrays of bytes.
#include <cstring>

#include "escape.h"
#include "guard.h"
#include "primitive.h"
#include "support/export.h"

namespace {

std::string_view text_in(const char* chars, uint32_t size) { return {chars, strnlen(chars, size)}; }

}  // namespace

extern "C" {

ORK_EXPORT uint32_t char_len(struct ork_handle*, uint32_t, const char*) { return 1; }

ORK_EXPORT uint32_t char_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,
                                 const char* source, int32_t remaining, uint32_t* err) {
  if (!ork::all_given(handle, err, source)) {
    return 0;
  }
  return ork::marshal(handle, buffer, static_cast<uint8_t>(*source), remaining, err);
}

ORK_EXPORT uint32_t char_unmarshal(struct ork_handle* handle, uint32_t, const uint8_t* buffer,
                                   char* target, int32_t remaining, uint32_t, uint32_t* err) {
  return ork::unmarshal(handle, buffer, reinterpret_cast<uint8_t*>(target), remaining, err);
}

ORK_EXPORT uint32_t null_string_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                                      uint32_t indent, const char* name, const char* chars,
                                      int32_t remaining, uint32_t size, uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, chars)) {
    return 0;
  }
  // The name goes out cut like any other line; the value behind it whole or not at all.
  uint32_t length = ork::print_line(handle, instance, buffer, indent, name, "", remaining, err);
  if (*err != 0) {
    return length;
  }
  length -= 1;
  ork::TextWriter out(buffer + length, remaining - static_cast<int32_t>(length));
  ork::put_escaped(out, text_in(chars, size));
  out.put("\n");
  return length + out.finish(handle, err);
}

ORK_EXPORT uint32_t null_string_to_xml(struct ork_handle* handle, uint32_t, const char* name,
                                       char* buffer, const char* chars, int32_t remaining,
                                       uint32_t size, uint8_t state, uint32_t* err) {
  if (!ork::can_write(handle, err, remaining, chars)) {
    return 0;
  }
  ork::TextWriter out(buffer, remaining);
  ork::put_start_tag(out, name, state);
  ork::put_escaped_xml(out, text_in(chars, size));
  ork::put_end_tag(out, name);
  return out.finish(handle, err);
}

ORK_EXPORT void null_string_from_xml(struct ork_handle* handle, uint32_t, const char* path,
                                     struct ork_xml* xml, char* chars, uint32_t size, uint32_t* err,
                                     char* err_text, uint32_t err_text_len) {
  ork::guarded(err, [&] {
    const auto text = ork::element_text(handle, path, xml, err, err_text, err_text_len);
    if (!text) {
      return;
    }
    const auto bytes = ork::unescaped(*text);
    if (!bytes || bytes->size() > size) {
      ork::refuse_element(handle, path, bytes ? ENOSPC : EINVAL, err, err_text, err_text_len);
      return;
    }
    std::memset(chars, 0, size);
    bytes->copy(chars, bytes->size());
  });
}

}  // extern "C"
