// A received buffer: message object, recording, handler.
#pragma once

#include "messages/message.h"

namespace messages {

struct Delivery {
  void* ctx;                      // the caller's, handed on unread
  void** out;                     // may be null
  ork_message_handler handler;    // may be null
  ork_message_handler linked_in;  // the function that a process may define, or null
};

uint32_t unmarshal(ork_handle* handle, uint32_t instance, const Delivery& delivery,
                   const uint8_t* buffer, int32_t length, uint32_t* err, const Message& message);
void record(ork_handle* handle, uint32_t instance, void* object, const Message& message);

}  // namespace messages
