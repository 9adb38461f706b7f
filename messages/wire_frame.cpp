#include "messages/wire_frame.h"

namespace messages {

bool begin_frame(const Call& call, Writer& out, const uint8_t* luid) {
  const bool has_header = out.room() >= static_cast<int32_t>(header_length);
  if (has_header) {
    out.zeros(header_length);
  } else {
    call.fail(EMSGSIZE);
  }
  if (call.failed()) return has_header;
  if (out.room() < ORK_LUID_SIZE) {
    call.fail(EMSGSIZE);
  } else {
    out.copy(luid, ORK_LUID_SIZE);
  }
  return has_header;
}

void end_frame(const Call& call, uint8_t* buffer, ork_message_header& header, uint32_t length) {
  header.length = length;
  header.sequence = call.handle->send_sequence;
  _ork_message_header_marshal(call.handle, call.instance, buffer, &header,
                              static_cast<int32_t>(header_length), call.err);
}

}  // namespace messages
