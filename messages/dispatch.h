// What happens to a received buffer: a message object is made of it, recorded if that is on, and
// given to a handler.
#pragma once

#include "messages/message.h"

namespace messages {

struct Delivery {
  void* ctx;                      // passed on to the handler
  void** out;                     // may be null
  ork_message_handler handler;    // may be null
  ork_message_handler linked_in;  // the handler that the process defines by name, or null
};

uint32_t unmarshal(ork_handle* handle, uint32_t instance, const Delivery& delivery,
                   const uint8_t* buffer, int32_t length, uint32_t* err, const Message& message);
// Appends the message to the recorder's stream, as XML.
void record(ork_handle* handle, uint32_t instance, void* object, const Message& message);

}  // namespace messages
