#include "messages/message.h"

#include "frame/create.h"
#include "frame/destroy.h"
#include "ork/tawny.h"

namespace messages {
namespace {

constexpr size_t largest = at_records + 2 * sizeof(void*);
alignas(8) uint8_t sentinels[model::message_count][largest];

void* sentinel(const Message& message) { return sentinels[message.row.index]; }

const ork_type_info* type_of(const void* object) {
  return frame::load<const ork_type_info*>(object);
}

// Stores into message objects are not announced.
template <Function F>
void fill_header(const Call& call, void* object, const Message& message) {
  const ork_type_info* type = frame::shared_copy_of(call, descriptor(message.row));
  frame::put(object, type);
  frame::check_variants<F>(type, 0, message.row);
  frame::increment(call, type, type->varinfo->entries[0].create_count);
  *frame::byte_at(object, frame::at_variant) = 0;
  *header_of(object) = fresh_header();
  if (frame::checked_mode<F>(call.handle, message.row) == frame::Tracking::on) {
    *frame::byte_at(object, frame::at_flags) |= OBJ_STATE_TRACKED;
    header_of(object)->sttr_marker = 1;
  }
}

// False when a record could not be made. Those before it are destroyed again, and later ones are
// not tried.
bool create_records(const Call& call, void* object, const Message& message) {
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const CarriedRow& place = carried(message, slot);
    tawny_set_callsite_tag(place.tag);
    void* made = frame::create(call.handle, call.instance, record_of(place));
    put_record(object, place, made);
    if (made != nullptr) continue;
    while (slot-- > 0) {
      const CarriedRow& before = carried(message, slot);
      frame::destroy(call.handle, call.instance, record_in(object, before), record_of(before));
    }
    return false;
  }
  return true;
}

}  // namespace

const ork_type_info* descriptor(const model::MessageRow& row) {
  return frame::descriptors[model::record_count + model::small_type_count + row.index];
}

ork_message_header fresh_header() {
  return {ORK_MESSAGE_MARKER, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 0, 0, 0};
}

void* create(ork_handle* handle, uint32_t instance, const Message& message) {
  const DetachedCall call(handle, instance);
  const size_t size = object_size(message.row);
  void* object = nullptr;
  if (handle->cr_active == 0 || handle->cr_error == 0) object = frame::allocate(call, size);
  if (object != nullptr) {
    memset(object, 0, size);
  } else {
    if (handle->cr_active == 0) return nullptr;
    object = sentinel(message);
    if (handle->cr_error == 0) ork_store_err(handle, ENOMEM);
  }
  if (!create_records(call, object, message)) {
    frame::release(call, object);
    return nullptr;
  }
  // The sentinel has no header, but gets records like an object.
  if (object != sentinel(message)) fill_header<Function::message_create>(call, object, message);
  return object;
}

void* create_cr(ork_handle* handle, const Message& message) {
  handle->cr_active = 1;
  void* object = create(handle, handle->cr_instance, message);
  handle->cr_active = 0;
  return object;
}

void* create_shallow(ork_handle* handle, uint32_t instance, const Message& message) {
  const DetachedCall call(handle, instance);
  void* object = frame::allocate(call, object_size(message.row));
  if (object == nullptr) return nullptr;
  memset(object, 0, object_size(message.row));
  fill_header<Function::message_create_shallow>(call, object, message);
  return object;
}

// Destroys the records before it checks the descriptor: those of a corrupted message are freed
// before the process ends.
void destroy(ork_handle* handle, uint32_t instance, void* object, const Message& message) {
  if (object == nullptr || object == sentinel(message)) return;
  const DetachedCall call(handle, instance);
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    const CarriedRow& place = carried(message, slot);
    void* owned = record_in(object, place);
    if (owned == nullptr) continue;
    frame::destroy(handle, instance, owned, record_of(place));
    put_record(object, place, nullptr);
  }
  const ork_type_info* type = type_of(object);
  frame::checked_type<Function::message_destroy>(type, 0, message.row);
  frame::increment(call, type, type->varinfo->entries[0].destroy_count);
  frame::put(object, uint64_t{0});
  frame::release(call, object);
}

uint32_t length(ork_handle* handle, uint32_t instance, const void* object, const Message& message) {
  uint32_t sum = frame_length;
  for (size_t slot = 0; slot < message.row.records; ++slot) {
    sum += message.wire[slot].length(handle, instance, record_in(object, carried(message, slot)));
  }
  return sum;
}

uint32_t length_cr(ork_handle* handle, const void* object, const Message& message) {
  return handle->cr_error != 0 ? 0 : length(handle, handle->cr_instance, object, message);
}

uint32_t is_valid_cr(ork_handle* handle, const Message& message) {
  return ork_domain_lookup_message_ok(handle, &handle->domain, descriptor(message.row),
                                      &handle->cr_error);
}

// A null message, or an error that is set, is only traced. --------------------

void* get(const void* object, const uint32_t* err, const CarriedRow& place) {
  if (object != nullptr && *err == 0) return record_in(object, place);
  trace::raise<Function::carried_get, Form::get_error>(place, error_text(*err));
  return nullptr;
}

void* get_detach(void* object, const uint32_t* err, const CarriedRow& place) {
  if (object == nullptr || *err != 0) {
    trace::raise<Function::carried_detach, Form::detach_error>(place, error_text(*err));
    return nullptr;
  }
  void* owned = record_in(object, place);
  put_record(object, place, nullptr);
  return owned;
}

void set(void* object, void* record, const uint32_t* err, const CarriedRow& place) {
  if (object != nullptr && *err == 0) return put_record(object, place, record);
  trace::raise<Function::carried_set, Form::set_error>(place, error_text(*err));
}

void free_and_set(ork_handle* handle, uint32_t instance, void* object, void* record,
                  const uint32_t* err, const CarriedRow& place) {
  if (object == nullptr || *err != 0)
    return trace::raise<Function::carried_replace, Form::replace_error>(place, error_text(*err));
  if (void* owned = record_in(object, place); owned != nullptr)
    frame::destroy(handle, instance, owned, record_of(place));
  put_record(object, place, record);
}

}  // namespace messages
