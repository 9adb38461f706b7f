// Objects to XML: a record is an element, its fields are child elements of their names. With
// tracking on, the tag of a field shows its state byte. Enums and flags are empty elements with the
// enumerator's name.
#pragma once

#include "encoders/text.h"

namespace encoders {

uint32_t to_xml(const Call& call, const char* tag, char* buffer, void* object, uint32_t length,
                uint8_t state, const RecordRow& record);
uint32_t to_xml_cr(ork_handle* handle, void* object, char* buffer, uint32_t length,
                   const RecordRow& record);
uint32_t small_to_xml(const Call& call, const char* tag, char* buffer, const void* object,
                      uint32_t length, const SmallRow& type);
uint32_t small_to_xml_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                         const SmallRow& type);

}  // namespace encoders
