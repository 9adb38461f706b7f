// The frame of messages and control messages.
#pragma once

#include "messages/message.h"

namespace messages {

// Clears the place of the header and writes the LUID after it; EMSGSIZE (90) for what there is no
// room for. True when there is room for the header.
bool begin_frame(const Call& call, Writer& out, const uint8_t* luid);
// Writes the header: last, so that a frame that could not be completed has no valid one.
void end_frame(const Call& call, uint8_t* buffer, ork_message_header& header, uint32_t length);

}  // namespace messages
