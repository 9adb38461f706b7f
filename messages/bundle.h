// Bundles: a start message, members, then a commit or an abort. The three control messages carry
// nothing but their frame.
#pragma once

#include "messages/wire_frame.h"

namespace messages {

enum class Control : uint8_t { start, abort, commit };

// What the engines need to know of one bundle.
struct Bundle {
  const model::BundleRow& row;
  const char* name;
  const char* full_name;                // with the module's name in front
  const char* start_name;               // of the start message, in full
  const uint8_t* luids[3];              // of start, abort, commit
  const ork_bundle_message_row* table;  // messages allowed inside, ended by a row of zeros
  ork_bundle_handler* registered;       // the bundle's own handler slot
};

// Control messages.
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

// What the library itself does when a control message arrives.
void handle_start(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle);
void handle_abort(ork_handle* handle, uint32_t instance, void* message, uint32_t* err,
                  const Bundle& bundle);
void handle_commit(ork_handle* handle, uint32_t instance, void* ctx, void* message, uint32_t* err,
                   ork_bundle_handler linked_in, const Bundle& bundle);

// Registration.
ork_bundle_handler exchange(ork_bundle_handler& slot, ork_bundle_handler handler);
ork_bundle_handler register_for_module(ork_bundle_handler handler);
ork_bundle_handler unregister_for_module();

}  // namespace messages
