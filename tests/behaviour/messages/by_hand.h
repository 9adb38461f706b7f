// The operations of a message done by hand, step by step, with nothing but the platform and the
// families of its records. The library must show the same calls, results and bytes.
#pragma once

#include "behaviour/messages/family.h"
#include "support/spy.h"
#include "support/spy_recorder.h"

namespace by_hand {

using messages::Message;
using messages::Record;

// Enters a line as a trace does: "error", "text".
void trace(const std::string& level, const std::string& text);

void* create(const Message& message, ork_handle* handle, uint32_t instance);
void* create_shallow(const Message& message, ork_handle* handle, uint32_t instance);
void destroy(const Message& message, ork_handle* handle, uint32_t instance, void* msg);

uint32_t marshal(const Message& message, ork_handle* handle, uint32_t instance, uint8_t* buffer,
                 void* msg, int32_t length, uint32_t* err);
uint32_t unmarshal_only(const Message& message, ork_handle* handle, uint32_t instance, void** out,
                        const uint8_t* buffer, int32_t length, uint32_t* err);
uint32_t unmarshal(const Message& message, ork_handle* handle, uint32_t instance, void* ctx,
                   void** out, const uint8_t* buffer, int32_t length, ork_message_handler handler,
                   uint32_t* err);

uint32_t print(const Message& message, ork_handle* handle, uint32_t instance, char* buffer,
               const void* msg, uint32_t length, uint32_t* err);
uint32_t to_xml(const Message& message, ork_handle* handle, uint32_t instance, char* buffer,
                const void* msg, uint32_t length, uint32_t* err);
void* from_xml(const Message& message, ork_handle* handle, uint32_t instance, ork_xml* xml,
               uint32_t* err, char* err_text, uint32_t err_text_len);

}  // namespace by_hand
