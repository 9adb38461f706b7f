#include "encoders/unmarshal.h"

#include "encoders/marshal.h"
#include "frame/initialize.h"
#include "frame/size.h"

namespace encoders {
namespace {

// Reader and writer may differ in whether they track.
void settle_states(const Call& call, Image& image, void* object, const RecordRow& record) {
  const bool sent = (image.flags & OBJ_STATE_TRACKED) != 0;
  if (frame::mode_of(call.handle) == Tracking::on && !frame::has_flag(object, OBJ_STATE_TRACKED)) {
    trace::fatal<Function::unmarshal, Form::tracking_mismatch>(record);
  }
  image.tracked = frame::tracking<Function::unmarshal>(call.handle, record) == Tracking::on;
  if (image.tracked) {
    image.states = sent ? States::copy : States::none;
    image.flags |= OBJ_STATE_TRACKED;
    if (sent) image.block = frame::state_block(call, object, record);
  } else {
    image.states = sent ? States::skip : States::none;
    image.flags = static_cast<uint8_t>(image.flags & ~OBJ_STATE_TRACKED);
  }
}

void clear_array(const Call& call, void* object, uint32_t old_count, const FieldRow& field) {
  if (void* old = frame::block_of(object, field); old != nullptr) {
    frame::destroy_elements(call, object, old_count, field);
    frame::release(call, old);
    frame::store<void*>(call, frame::field_of(object, field), nullptr, object);
  }
}

size_t stride(const Call& call, const FieldRow& field) {
  return field.kind == Kind::record ? frame::size_of(call.handle, frame::child_record(field))
                                    : size_t{field.width};
}

// An array of records without its storage has no elements at all; and no array keeps fewer element
// bytes than its count.
bool out_of_memory(const Call& call, void* object, const FieldRow& field) {
  frame::drop_element_states(call, object, field);
  if (field.kind == Kind::record) frame::store_count(call, object, field, 0);
  call.fail(ENOMEM);
  return false;
}

// A block of records that was made while tracking was off has none behind its elements.
bool has_room_for_states(const Image& image, const void* block, const FieldRow& field) {
  return field.kind != Kind::record || !image.tracked || frame::has_flag(block, OBJ_STATE_TRACKED);
}

bool prepare_block(const Call& call, const Image& image, void* object, uint32_t old_count,
                   uint32_t count, const FieldRow& field) {
  void* block = frame::block_of(object, field);
  void* at = frame::field_of(object, field);
  const size_t size = count * stride(call, field);
  const bool keeps = image.reuse != 0 && block != nullptr && old_count == count &&
                     has_room_for_states(image, block, field);
  if (image.reuse != 0 && block != nullptr) frame::destroy_elements(call, object, old_count, field);
  if (keeps) {
    frame::announce(call, block, size, object);
  } else {
    if (block != nullptr) frame::release(call, block);
    frame::announce(call, at, sizeof block, object);
    const bool in_reach =
        field.kind != Kind::record || frame::states_in_reach(image.tracked, count, field);
    block = in_reach ? frame::allocate(call, size) : nullptr;
    frame::put(at, block);
    if (block == nullptr) return out_of_memory(call, object, field);
  }
  memset(block, 0, size);
  return true;
}

// One byte per element. Without state bytes in the image the old ones are kept, as far as the new
// count reaches.
bool prepare_element_states(const Call& call, const Image& image, void* object, uint32_t old_count,
                            uint32_t count, const FieldRow& field) {
  const bool sent = image.states == States::copy;
  if (!sent && old_count == count) return true;
  uint8_t* entry = sent ? image.block + field.state : frame::state_entry(call, object, field);
  uint8_t* elements = frame::element_states(entry);
  if (sent && image.reuse != 0 && old_count == count && elements != nullptr) {
    frame::announce(call, elements, count, nullptr);
    memset(elements, 0, count);
    return true;
  }
  const bool made = sent ? frame::renew_element_states(call, entry, count)
                         : frame::replace_element_states(call, entry, count, old_count);
  return made || out_of_memory(call, object, field);
}

}  // namespace

void unmarshal_base(const Call& call, Reader& in, Image& image, void* object,
                    const RecordRow& record) {
  in.advance(_ork_instance_variant_unmarshal(call.handle, call.instance, in.here(), &image.variant,
                                             in.room(), call.err));
  in.advance(_ork_instance_obj_flag_unmarshal(call.handle, call.instance, in.here(), &image.flags,
                                              in.room(), call.err));
  if ((image.flags & OBJ_RA_DATA) != 0) {
    uint64_t word = 0;
    uint8_t byte = 0;
    in.advance(_ork_instance_ra_data_unmarshal(call.handle, call.instance, in.here(), &word, &byte,
                                               in.room(), call.err));
  }
  const int8_t newest = frame::variant_cap_of(object);
  if (image.variant > newest) image.variant = newest;
  image.jump_base = in.position();
  in.advance(_ork_variant_jump_unmarshal(call.handle, call.instance, in.here(), &image.jump,
                                         in.room(), call.err));
  settle_states(call, image, object, record);
}

void unmarshal_end(const Call& call, Reader& in, const Image& image, void* object,
                   const RecordRow& record) {
  const int64_t target = image.jump_base + static_cast<int32_t>(image.jump);
  if (target > in.position()) {
    trace::raise<Function::unmarshal, Form::jump>(
        record, in.consumed(), static_cast<uint32_t>(image.jump_base), image.jump);
    in.follow(static_cast<uint64_t>(target - in.position()));
  }
  *frame::byte_at(object, frame::at_variant) = static_cast<uint8_t>(image.variant);
  // Other bits would free or redirect memory.
  *frame::byte_at(object, frame::at_flags) |= static_cast<uint8_t>(image.flags & wire_flags);
  frame::store_type(call, object, frame::descriptor(record));
}

void take_state(Reader& in, const Image& image, const FieldRow& field) {
  if (image.states == States::skip) return in.skip_state_byte();
  in.take_state_byte(image.block[field.state]);
}

void unmarshal_array_states(Reader& in, const Image& image, uint32_t count, const FieldRow& field) {
  switch (image.states) {
    case States::copy: {
      uint8_t* entry = image.block + field.state;
      in.take_state_byte(*entry);
      in.copy(frame::element_states(entry), count);
      break;
    }
    case States::skip:
      in.skip_state_byte();
      in.skip(count);
      break;
    case States::none: break;
  }
}

bool prepare_array(const Call& call, const Image& image, void* object, uint32_t old_count,
                   const FieldRow& field) {
  const uint32_t count = frame::count_of(object, field);
  if (count == 0) {
    clear_array(call, object, old_count, field);
    return true;
  }
  if (!prepare_block(call, image, object, old_count, count, field)) return false;
  if (image.tracked) return prepare_element_states(call, image, object, old_count, count, field);
  if (count != old_count) frame::drop_element_states(call, object, field);
  return true;
}

void begin_element(const Call& call, const Image& image, void* object, uint64_t index,
                   uint64_t count, const FieldRow& field) {
  const frame::RecordBlock block =
      frame::record_block(frame::block_of(object, field), count, field);
  const RecordRow& record = frame::child_record(field);
  if ((image.flags & OBJ_STATE_TRACKED) != 0) {
    orklib_update_sttr_offset(call.handle, call.instance, block.element(index),
                              block.distance(index));
  }
  frame::initialize(call, block.element(index), frame::descriptor(record),
                    {1, 0, OBJ_NESTED, block.element_state(index)}, record);
}

}  // namespace encoders
