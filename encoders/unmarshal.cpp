#include "encoders/unmarshal.h"

#include "encoders/marshal.h"

namespace encoders {
namespace {

// Decides what to do with state bytes: reader and writer may differ in whether they track.
void decide_states(const Call& call, Image& image, void* object, const RecordRow& record) {
  const bool sent = (image.flags & OBJ_STATE_TRACKED) != 0;
  if (frame::mode_of(call.handle) == Tracking::on && !frame::has_flag(object, OBJ_STATE_TRACKED)) {
    trace::fatal<Function::unmarshal, Form::tracking_mismatch>(record);
  }
  image.tracked = frame::checked_mode<Function::unmarshal>(call.handle, record) == Tracking::on;
  if (image.tracked) {
    image.states = sent ? States::copy : States::none;
    image.flags |= OBJ_STATE_TRACKED;
    if (sent) image.block = frame::state_block(call, object, record);
  } else {
    image.states = sent ? States::skip : States::none;
    image.flags = static_cast<uint8_t>(image.flags & ~OBJ_STATE_TRACKED);
  }
}

}  // namespace

void unmarshal_base(const Call& call, Reader& in, Image& image, void* object,
                    const RecordRow& record) {
  in.consume(_ork_instance_variant_unmarshal(call.handle, call.instance, in.here(), &image.variant,
                                             in.room(), call.err));
  in.consume(_ork_instance_obj_flag_unmarshal(call.handle, call.instance, in.here(), &image.flags,
                                              in.room(), call.err));
  if ((image.flags & OBJ_RA_DATA) != 0) {
    uint64_t word = 0;  // read and dropped
    uint8_t byte = 0;
    in.consume(_ork_instance_ra_data_unmarshal(call.handle, call.instance, in.here(), &word, &byte,
                                               in.room(), call.err));
  }
  const int8_t newest = frame::variant_cap_of(object);
  if (image.variant > newest) image.variant = newest;
  image.jump_base = in.position();
  in.consume(_ork_variant_jump_unmarshal(call.handle, call.instance, in.here(), &image.jump,
                                         in.room(), call.err));
  decide_states(call, image, object, record);
}

void unmarshal_end(const Call& call, Reader& in, const Image& image, void* object,
                   const RecordRow& record) {
  const int64_t target = image.jump_base + static_cast<int32_t>(image.jump);
  if (target > in.position()) {
    trace::raise<Function::unmarshal, Form::jump>(
        record, in.consumed(), static_cast<uint32_t>(image.jump_base), image.jump);
    in.jump(static_cast<uint64_t>(target - in.position()));
  }
  *frame::byte_at(object, frame::at_variant) = static_cast<uint8_t>(image.variant);
  // Other bits of an image would make destroy free memory, or find state bytes, elsewhere.
  *frame::byte_at(object, frame::at_flags) |= static_cast<uint8_t>(image.flags & wire_flags);
  frame::store_type(call, object, frame::descriptor(record));
}

void read_state(Reader& in, const Image& image, const FieldRow& field) {
  if (image.states == States::skip) return in.skip_state();
  in.get_state(image.block[field.state]);
}

void unmarshal_array_states(Reader& in, const Image& image, uint32_t count, const FieldRow& field) {
  switch (image.states) {
    case States::copy: {
      uint8_t* entry = image.block + field.state;
      in.get_state(*entry);
      in.copy(frame::element_states(entry), count);
      break;
    }
    case States::skip:
      in.skip_state();
      in.skip(count);
      break;
    case States::none: break;
  }
}

void begin_element(const Call& call, const Image& image, void* object, uint64_t index,
                   uint64_t count, const FieldRow& field) {
  const frame::RecordBlock block =
      frame::record_block(frame::block_of(object, field), count, field);
  if ((image.flags & OBJ_STATE_TRACKED) != 0) frame::register_states(call, block, index);
  frame::initialize_element(call, block, index, frame::child_record(field));
}

}  // namespace encoders
