// The control messages of bundles done by hand, step by step, with nothing but the platform.
#pragma once

#include "behaviour/bundles/family.h"
#include "behaviour/messages/by_hand.h"

namespace by_hand {

using messages::Bundle;
using messages::Control;
using messages::Kind;

uint32_t marshal(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                 uint8_t* buffer, int32_t length, uint32_t* err);

// The handler of the library's own.
void handle_message(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                    void* ctx, void* msg, uint32_t* err);

uint32_t unmarshal(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                   void* ctx, void** out, ork_message_handler handler, uint32_t* err);

uint32_t print(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance, char* buffer,
               uint32_t length, uint32_t* err);
uint32_t to_xml(const Bundle& bundle, Kind kind, ork_handle* handle, uint32_t instance,
                char* buffer, uint32_t length, uint32_t* err);

}  // namespace by_hand
