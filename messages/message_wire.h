// Messages as frames: 27 bytes of header, which are written last, 16 of LUID, then the records.
// marshal() first asks the peer's domain and, in a bundle, the bundle's table whether the message
// may be sent.
#pragma once

#include "messages/message.h"

namespace messages {

uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, void* object,
                 int32_t length, uint32_t* err, const Message& message);
uint32_t marshal_cr(ork_handle* handle, void* object, uint8_t* buffer, int32_t length,
                    const Message& message);
uint32_t unmarshal_only(ork_handle* handle, uint32_t instance, void** out, const uint8_t* buffer,
                        int32_t length, uint32_t* err, const Message& message);

}  // namespace messages
