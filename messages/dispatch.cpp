#include "messages/dispatch.h"

#include <cstdio>

#include "messages/message_text.h"
#include "messages/message_wire.h"

namespace messages {
namespace {

constexpr uint32_t recording_size = 0x10000;  // a message whose XML is longer is not recorded
constexpr char outer_element[] = "fwe_ui_wayfind";

// The handler that the caller gives wins over the one that the process defines. Without either the
// message is lost, with ENOSYS (38).
void deliver(ork_handle* handle, uint32_t instance, const Delivery& delivery, void* object,
             uint32_t* err, const Message& message) {
  if (delivery.handler != nullptr)
    return delivery.handler(handle, instance, delivery.ctx, object, err);
  if (delivery.linked_in != nullptr)
    return delivery.linked_in(handle, instance, delivery.ctx, object, err);
  Call{handle, instance, err}.fail(ENOSYS);
  trace::raise<Function::message_default_handler, Form::default_handler>(message.row);
}

// Writes the message inside the module's element. Returns the characters written, which are not all
// if *err is set.
uint32_t render(const Call& call, char* buffer, const void* object, const Message& message) {
  TextBuffer out{buffer, recording_size};
  out.position = start_tag_timestamp(call.handle, call.instance, out.here(), outer_element,
                                     out.room(), call.err);
  if (!call.failed()) out.position += to_xml(call, out.here(), object, out.room_bytes(), message);
  if (!call.failed())
    out.position +=
        end_tag(call.handle, call.instance, out.here(), outer_element, out.room(), call.err);
  return out.position;
}

}  // namespace

void record(ork_handle* handle, uint32_t instance, void* object, const Message& message) {
  const DetachedCall call(handle, instance);
  auto* buffer = static_cast<char*>(orklib_malloc(nullptr, instance, recording_size));
  if (buffer == nullptr) trace::fatal<Function::message_record, Form::recorder_memory>(message.row);
  const uint32_t length = render(call, buffer, object, message);
  if (call.failed()) {
    trace::raise<Function::message_record, Form::not_recorded>(message.row, call.error(), length);
  } else if (FILE* stream = orklib_msg_recorder_get_handle(); stream != nullptr) {
    (void)!fwrite(buffer, length, 1, stream);
  } else {
    trace::raise<Function::message_record, Form::recorder_stream>(message.row);
  }
  orklib_free(nullptr, instance, buffer);
  if (call.failed())
    trace::raise<Function::message_unmarshal, Form::recording_error>(message.row, call.error());
}

// A message that could not be read completely is not handed out, and stays allocated. Callers that
// want what there is of it call unmarshal_only().
uint32_t unmarshal(ork_handle* handle, uint32_t instance, const Delivery& delivery,
                   const uint8_t* buffer, int32_t length, uint32_t* err, const Message& message) {
  if (*err != 0) {
    trace::raise<Function::message_unmarshal, Form::unmarshal_error>(message.row, name_of(message),
                                                                     error_text(*err));
    return 0;
  }
  ork_clear_last_error(handle);
  if (delivery.out != nullptr) *delivery.out = nullptr;
  void* object = nullptr;
  const uint32_t consumed = unmarshal_only(handle, instance, &object, buffer, length, err, message);
  if (*err != 0) return consumed;
  if (delivery.out != nullptr) *delivery.out = object;
  if (orklib_msg_recorder_get_state() != 0) record(handle, instance, object, message);
  deliver(handle, instance, delivery, object, err, message);
  return consumed;
}

}  // namespace messages
