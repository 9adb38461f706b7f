// The frame that messages and control messages have in common.
#pragma once

#include "messages/message.h"

namespace messages {

// Clears the place of the header and writes the LUID behind it, as far as there is room; 90
// otherwise. True when the header has a place.
bool begin_frame(const Call& call, Writer& out, const uint8_t* luid);
// The header goes in last, so that a frame that cannot be finished never carries a valid one.
void end_frame(const Call& call, uint8_t* buffer, ork_message_header& header, uint32_t length);

}  // namespace messages
