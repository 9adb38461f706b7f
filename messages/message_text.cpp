#include "messages/message_text.h"

#include <cstdio>

#include "encoders/xml_write.h"

namespace messages {
namespace {

constexpr uint32_t record_indent = 2;

void put_space(const Call& call, TextBuffer& out) {
  out.position += ork_print_space(call.handle, call.instance, out.start, 0, out.room(), call.err);
}

}  // namespace

// Any failure before a record is reported as EMSGSIZE (90), a text that is too long.
uint32_t print(const Call& call, char* buffer, const void* object, uint32_t length,
               const Message& message) {
  if (call.failed()) {
    trace::raise<Function::message_print, Form::print_error>(message.row, call.error_text());
    return 0;
  }
  ork_clear_last_error(call.handle);
  TextBuffer out{buffer, length};
  put_space(call, out);
  out.position += ork_snprintf(call.handle, call.instance, out.here(), out.room(), call.err,
                               "message@%s: {\n", name_of(message));
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const CarriedRow& place = carried(message, slot);
    if (call.failed()) {
      call.fail(EMSGSIZE);
      break;
    }
    out.position += encoders::print(call, out.here(), record_indent, name_of(place),
                                    record_in(object, place), out.room_bytes(), record_of(place));
  }
  put_space(call, out);
  out.position += ork_snprintf(call.handle, call.instance, out.here(), out.room(), call.err, "}\n");
  return out.position;
}

uint32_t print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                  const Message& message) {
  return encoders::cr_result(handle, print({handle, handle->cr_instance, &handle->cr_error}, buffer,
                                           object, length, message));
}

uint32_t to_xml(const Call& call, char* buffer, const void* object, uint32_t length,
                const Message& message) {
  if (call.failed()) {
    trace::raise<Function::message_to_xml, Form::to_xml_error>(message.row, call.error_text());
    return 0;
  }
  ork_clear_last_error(call.handle);
  TextBuffer out{buffer, length};
  out.position =
      start_tag(call.handle, call.instance, out.here(), name_of(message), out.room(), 0, call.err);
  for (size_t slot = 0; slot < message.row.records && !call.failed(); ++slot) {
    const CarriedRow& place = carried(message, slot);
    out.position += encoders::to_xml(call, name_of(place), out.here(), record_in(object, place),
                                     out.room_bytes(), 0, record_of(place));
  }
  out.position +=
      end_tag(call.handle, call.instance, out.here(), name_of(message), out.room(), call.err);
  return out.position;
}

uint32_t to_xml_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                   const Message& message) {
  return encoders::cr_result(handle, to_xml({handle, handle->cr_instance, &handle->cr_error},
                                            buffer, object, length, message));
}

// A record that the document lacks keeps its defaults. *err is examined only after the last record,
// so a missing first record also keeps the second from being read. After any other error the
// message is not returned, and stays allocated.
void* from_xml(const Call& call, const encoders::Document& document, const Message& message) {
  if (call.failed()) {
    trace::raise<Function::message_from_xml, Form::from_xml_error>(message.row, call.error_text());
    return nullptr;
  }
  ork_clear_last_error(call.handle);
  void* object = create(call.handle, call.instance, message);
  if (object == nullptr) {
    call.fail(ENOMEM);
    return nullptr;
  }
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const CarriedRow& place = carried(message, slot);
    char path[2 + sizeof ork_type_info::name];
    snprintf(path, sizeof path, "//%s", name_of(place));
    if (!call.failed() || call.error() == ENOENT)
      encoders::from_xml(call, path, document, record_in(object, place), record_of(place));
  }
  call.forgive(ENOENT);
  return call.failed() ? nullptr : object;
}

}  // namespace messages
