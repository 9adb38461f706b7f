// The three control messages of a bundle. They consist of a frame alone.
#pragma once

#include "messages/bundle.h"
#include "messages/dispatch.h"

namespace messages {

void* control_create(ork_handle* handle, uint32_t instance);
void* control_create_cr(ork_handle* handle, Control kind, const Bundle& bundle);
void control_destroy(ork_handle* handle, uint32_t instance, void* message);
void control_destroy_cr(ork_handle* handle, void* message, Control kind, const Bundle& bundle);
inline uint32_t control_length() { return frame_length; }
inline uint32_t control_length_cr(const ork_handle* handle) {
  return handle->cr_error != 0 ? 0 : frame_length;
}
uint32_t control_marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, int32_t length,
                         uint32_t* err, Control kind, const Bundle& bundle);
uint32_t control_marshal_cr(ork_handle* handle, uint8_t* buffer, int32_t length, Control kind,
                            const Bundle& bundle);
uint32_t control_unmarshal(ork_handle* handle, uint32_t instance, const Delivery& delivery,
                           uint32_t* err);
uint32_t control_print(const Call& call, char* buffer, uint32_t length, Control kind,
                       const Bundle& bundle);
uint32_t control_print_cr(ork_handle* handle, char* buffer, uint32_t length, Control kind,
                          const Bundle& bundle);
uint32_t control_to_xml(const Call& call, char* buffer, uint32_t length, Control kind,
                        const Bundle& bundle);
uint32_t control_to_xml_cr(ork_handle* handle, char* buffer, uint32_t length, Control kind,
                           const Bundle& bundle);
void* control_from_xml(ork_handle* handle, uint32_t instance, const uint32_t* err);

}  // namespace messages
