#include "messages/bundle_control.h"

#include <cstdio>

#include "messages/wire_frame.h"

namespace messages {
namespace {

constexpr const char* words[] = {"start", "abort", "commit"};

uint8_t sentinels[model::bundle_count][3];

void* sentinel(Control kind, const Bundle& bundle) {
  return &sentinels[bundle.row.index][static_cast<size_t>(kind)];
}
const char* word(Control kind) { return words[static_cast<size_t>(kind)]; }
const uint8_t* luid(Control kind, const Bundle& bundle) {
  return bundle.luids[static_cast<size_t>(kind)];
}

// Opens the bundle on the handle.
uint32_t marshal_start(const Call& call, uint8_t* buffer, int32_t length, const Bundle& bundle) {
  ork_handle* handle = call.handle;
  ork_message_header header = fresh_header();
  if (!call.start()) return 0;
  if (handle->bundle_ctx != 0) {
    call.fail(EEXIST);
    return 0;
  }
  Writer out(buffer, length);
  begin_frame(call, out, luid(Control::start, bundle));
  if (call.failed()) return out.produced();
  // From here on messages check themselves against the table (messages/message_wire.cpp).
  handle->bundle_ctx = 1;
  handle->bundle_table = bundle.table;
  handle->bundle_send_list.next = &handle->bundle_send_list;
  handle->bundle_send_list.prev = &handle->bundle_send_list;
  end_frame(call, buffer, header, frame_length);
  return out.produced();
}

// Closes the bundle on the handle, even when the buffer has no room for the frame.
uint32_t marshal_end(const Call& call, uint8_t* buffer, int32_t length, Control kind,
                     const Bundle& bundle) {
  ork_message_header header = fresh_header();
  if (!call.start()) return 0;
  if (call.handle->bundle_ctx == 0) {
    call.fail(ENOENT);
    return 0;
  }
  Writer out(buffer, length);
  const bool has_header = begin_frame(call, out, luid(kind, bundle));
  if (has_header && !call.failed()) end_frame(call, buffer, header, frame_length);
  bundle_send_message_list_destroy(call.handle, call.instance, call.err);
  return out.produced();
}

}  // namespace

// Control messages have no contents: an allocation of 0 bytes, so that there is something to
// destroy.
void* control_create(ork_handle* handle, uint32_t instance) {
  return handle->alloc_fn(handle->mem_pool, instance, 0);
}

void* control_create_cr(ork_handle* handle, Control kind, const Bundle& bundle) {
  void* message = handle->cr_error == 0 ? control_create(handle, handle->cr_instance) : nullptr;
  if (message != nullptr) return message;
  if (handle->cr_error == 0) Call{handle, handle->cr_instance, &handle->cr_error}.fail(ENOMEM);
  return sentinel(kind, bundle);
}

void control_destroy(ork_handle* handle, uint32_t instance, void* message) {
  if (message != nullptr) handle->free_fn(handle->mem_pool, instance, message);
}

void control_destroy_cr(ork_handle* handle, void* message, Control kind, const Bundle& bundle) {
  if (message != sentinel(kind, bundle)) control_destroy(handle, handle->cr_instance, message);
}

uint32_t control_marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, int32_t length,
                         uint32_t* err, Control kind, const Bundle& bundle) {
  const Call call{handle, instance, err};
  return kind == Control::start ? marshal_start(call, buffer, length, bundle)
                                : marshal_end(call, buffer, length, kind, bundle);
}

uint32_t control_marshal_cr(ork_handle* handle, uint8_t* buffer, int32_t length, Control kind,
                            const Bundle& bundle) {
  const uint32_t written =
      control_marshal(handle, handle->cr_instance, buffer, length, &handle->cr_error, kind, bundle);
  return encoders::cr_result(handle, written);
}

// Reads neither header nor LUID: the dispatcher has, to find this function.
uint32_t control_unmarshal(ork_handle* handle, uint32_t instance, const Delivery& delivery,
                           uint32_t* err) {
  if (*err != 0) return frame_length;
  if (delivery.out != nullptr) *delivery.out = nullptr;
  const ork_message_handler handler =
      delivery.handler != nullptr ? delivery.handler : delivery.linked_in;
  handler(handle, instance, delivery.ctx, nullptr, err);
  return frame_length;
}

uint32_t control_print(const Call& call, char* buffer, uint32_t length, Control kind,
                       const Bundle& bundle) {
  if (call.failed()) return 0;
  TextBuffer out{buffer, length};
  out.position = ork_print_space(call.handle, call.instance, out.start, 0, out.room(), call.err);
  out.position += ork_snprintf(call.handle, call.instance, out.here(), out.room(), call.err,
                               "bundle %s@%s: <<<<<<<<\n", word(kind), bundle.name);
  return out.position;
}

uint32_t control_print_cr(ork_handle* handle, char* buffer, uint32_t length, Control kind,
                          const Bundle& bundle) {
  return encoders::cr_result(handle, control_print({handle, handle->cr_instance, &handle->cr_error},
                                                   buffer, length, kind, bundle));
}

uint32_t control_to_xml(const Call& call, char* buffer, uint32_t length, Control kind,
                        const Bundle& bundle) {
  if (call.failed()) return 0;
  char tag[16];
  snprintf(tag, sizeof tag, "bundle_%s", word(kind));
  char opening[128];
  snprintf(opening, sizeof opening, "%s name=\"%s\"", tag, bundle.name);
  TextBuffer out{buffer, length};
  out.position =
      start_tag(call.handle, call.instance, out.here(), opening, out.room(), 0, call.err);
  out.position += end_tag(call.handle, call.instance, out.here(), tag, out.room(), call.err);
  return out.position;
}

uint32_t control_to_xml_cr(ork_handle* handle, char* buffer, uint32_t length, Control kind,
                           const Bundle& bundle) {
  return encoders::cr_result(
      handle, control_to_xml({handle, handle->cr_instance, &handle->cr_error}, buffer, length, kind,
                             bundle));
}

void* control_from_xml(ork_handle* handle, uint32_t instance, const uint32_t* err) {
  return *err != 0 ? nullptr : control_create(handle, instance);
}

}  // namespace messages
