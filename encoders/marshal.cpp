#include "encoders/marshal.h"

namespace encoders {

int wire_variant(const Call& call, const void* object, bool check_domain, const RecordRow& record) {
  int variant = frame::variant_of(object);
  const ork_type_info* type = object != nullptr ? ork_get_manifested_type_info(object) : nullptr;
  const auto known = static_cast<int8_t>(
      ork_domain_lookup_variant(call.handle, &call.handle->domain, type, call.err));
  if (check_domain && variant > known) {
    call.lacks();
    variant = known;
  }
  return frame::cap(variant, record.newest());
}

void marshal_variant(const Call& call, Writer& out, int variant) {
  const auto byte = static_cast<int8_t>(variant);
  out.advance(_ork_instance_variant_marshal(call.handle, call.instance, out.here(), &byte,
                                            out.room(), call.err));
}

int32_t marshal_base(const Call& call, Writer& out, uint8_t flags, bool tracked) {
  flags = static_cast<uint8_t>(tracked ? flags | OBJ_STATE_TRACKED : flags & ~OBJ_STATE_TRACKED);
  flags &= wire_flags;
  out.advance(_ork_instance_obj_flag_marshal(call.handle, call.instance, out.here(), &flags,
                                             out.room(), call.err));
  if ((flags & OBJ_RA_DATA) != 0) {
    const uint64_t word = 0;
    const uint8_t byte = 0;
    out.advance(_ork_instance_ra_data_marshal(call.handle, call.instance, out.here(), &word, &byte,
                                              out.room(), call.err));
  }
  const int32_t base = out.position();
  const uint32_t reserved = 0;
  out.advance(_ork_variant_jump_marshal(call.handle, call.instance, out.here(), &reserved,
                                        out.room(), call.err));
  return base;
}

void marshal_jump(const Call& call, Writer& out, int32_t base) {
  const auto jump = static_cast<uint32_t>(out.position() - base);
  _ork_variant_jump_marshal(call.handle, call.instance, out.at(base), &jump, 4, call.err);
}

const uint8_t* states_to_send(const Call& call, const void* object, const RecordRow& record) {
  if (!frame::has_flag(object, OBJ_STATE_TRACKED)) return nullptr;
  return frame::state_block(call, const_cast<void*>(object), record);
}

void marshal_array_states(Writer& out, const uint8_t* states, uint32_t count,
                          const FieldRow& field) {
  const uint8_t* entry = states != nullptr ? states + field.state : nullptr;
  const uint8_t* elements = entry != nullptr ? frame::element_states(entry) : nullptr;
  out.put_state(elements != nullptr ? *entry : uint8_t{0});
  if (elements != nullptr) {
    out.copy(elements, count);
  } else {
    out.zeros(count);
  }
}

void marshal_byte_array(const Call& call, Writer& out, const void* block, uint32_t count) {
  if (out.within(count) < count) call.fail(EMSGSIZE);
  out.copy(block, count);
}

}  // namespace encoders
