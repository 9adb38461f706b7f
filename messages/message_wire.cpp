#include "messages/message_wire.h"

#include "frame/create.h"
#include "messages/wire_frame.h"

namespace messages {
namespace {

// EBADE (52) when the peer does not know the message. The runtime decides whether *err is written,
// but nothing is sent either way.
bool domain_allows(const Call& call, const void* object, const Message& message) {
  ork_handle* handle = call.handle;
  const auto* type = frame::load<const ork_type_info*>(object);
  if (ork_domain_lookup_message_ok(handle, &handle->domain, type, call.err) != 0) return true;
  trace::raise<Function::message_marshal, Form::domain_refuses>(
      message.row, name_of(message), static_cast<const char*>(descriptor(message.row)->luid_text),
      handle->domain_name);
  ork_store_epoch_err(handle, EBADE, call.err);
  return false;
}

// Inside a bundle: whether its table has the message, and whether it may be sent once more.
// Outside, only whether nothing has failed.
bool bundle_allows(const Call& call, const Message& message) {
  if (call.handle->bundle_ctx == 0) return !call.failed();
  bundle_message_validate_add(call.handle, call.instance, message.luid, message.bundle_name,
                              call.err);
  if (!call.failed()) return true;
  trace::raise<Function::message_marshal, Form::bundle_refuses>(message.row, name_of(message),
                                                                call.error_text());
  return false;
}

// Counts the message in the open bundle. A message that could not be counted gets no header.
bool counted(const Call& call, const Message& message) {
  if (call.handle->bundle_ctx == 0) return true;
  bundle_message_increment_count(call.handle, message.luid, call.err);
  if (!call.failed()) return true;
  trace::raise<Function::message_marshal, Form::bundle_uncounted>(message.row, name_of(message),
                                                                  call.error_text());
  return false;
}

// At level debug while the runtime suppresses messages, else at level error.
void report_failure(const Call& call, const Message& message) {
  constexpr const model::FormText& form =
      model::form_texts[static_cast<size_t>(Form::marshal_failed)];
  const bool quiet = orklib_suppress_messages_enabled(call.handle) != 0;
  const model::Level level = quiet ? model::Level::debug : model::Level::error;
  constexpr uint16_t quiet_at = model::position(Function::message_marshal, Form::marshal_failed, 0);
  constexpr uint16_t loud_at = model::position(Function::message_marshal, Form::marshal_failed, 1);
  const uint16_t at = quiet ? quiet_at : loud_at;
  trace::emit<form.pattern>(model::site(message.row, Function::message_marshal, at),
                            trace::level_word(level), name_of(message), call.error_text());
}

}  // namespace

uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, void* object,
                 int32_t length, uint32_t* err, const Message& message) {
  const Call call{handle, instance, err};
  if (call.failed()) {
    trace::raise<Function::message_marshal, Form::marshal_error>(message.row, error_text(*err));
    return 0;
  }
  ork_clear_last_error(handle);
  if (!domain_allows(call, object, message) || !bundle_allows(call, message)) return 0;

  Writer out(buffer, length);
  const bool has_header = begin_frame(call, out, message.luid);
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const void* record = record_in(object, carried(message, slot));
    out.advance(message.wire[slot].marshal(handle, instance, out.here(), record, out.room(), err));
  }
  if (call.failed()) {
    report_failure(call, message);
    return out.produced();
  }
  if (!counted(call, message)) return out.produced();
  if (has_header) end_frame(call, buffer, *header_of(object), out.produced());
  return out.produced();
}

uint32_t marshal_cr(ork_handle* handle, void* object, uint8_t* buffer, int32_t length,
                    const Message& message) {
  const uint32_t written =
      marshal(handle, handle->cr_instance, buffer, object, length, &handle->cr_error, message);
  return encoders::cr_result(handle, written);
}

uint32_t unmarshal_only(ork_handle* handle, uint32_t instance, void** out, const uint8_t* buffer,
                        int32_t length, uint32_t* err, const Message& message) {
  const Call call{handle, instance, err};
  if (call.failed()) {
    trace::raise<Function::message_unmarshal_only, Form::unmarshal_only_error>(
        message.row, name_of(message), error_text(*err));
    return 0;
  }
  ork_clear_last_error(handle);
  void* object = create_shallow(handle, instance, message);
  if (object == nullptr) {
    call.fail(ENOMEM);
    return 0;
  }
  encoders::Reader in(buffer, length);
  if (!call.failed())
    in.consume(
        _ork_message_header_unmarshal(handle, instance, buffer, header_of(object), length, err));
  in.jump(ORK_LUID_SIZE);  // the dispatcher has read it, to find this function
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const CarriedRow& place = carried(message, slot);
    void* record = frame::create_internal(handle, instance, record_of(place));
    put_record(object, place, record);
    if (record == nullptr) call.fail(ENOMEM);
    if (!call.failed())
      in.jump(message.wire[slot].unmarshal(handle, instance, in.here(), record, in.room(), 0, err));
  }
  *out = object;
  return in.consumed();
}

}  // namespace messages
