// Messages as text and as XML: the records inside an envelope with the message's name.
#pragma once

#include "encoders/xml_read.h"
#include "messages/message.h"

namespace messages {

uint32_t print(const Call& call, char* buffer, const void* object, uint32_t length,
               const Message& message);
uint32_t print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                  const Message& message);
uint32_t to_xml(const Call& call, char* buffer, const void* object, uint32_t length,
                const Message& message);
uint32_t to_xml_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                   const Message& message);
void* from_xml(const Call& call, const encoders::Document& document, const Message& message);

}  // namespace messages
