#include "encoders/small_wire.h"

#include "encoders/cursor.h"
#include "encoders/primitives.h"
#include "frame/typeinfo.h"

namespace encoders {
namespace {

bool start(const Call& call, int32_t length) {
  if (!call.start()) return false;
  if (length >= 1) return true;
  call.fail(EMSGSIZE);
  return false;
}

// The variant to send: 0, or a negative one when the peer does not know the type.
int8_t wire_variant(const Call& call, const void* object) {
  int8_t variant = frame::small_variant_of(object);
  const ork_type_info* type = ork_get_manifested_type_info(object);
  const auto known = static_cast<int8_t>(
      ork_domain_lookup_variant(call.handle, &call.handle->domain, type, call.err));
  if (variant > known) {
    call.lacks();
    variant = known;
  }
  return variant < 0 ? variant : int8_t{0};
}

int8_t read_variant(const Call& call, Reader& in, const void* object) {
  int8_t variant = 0;
  in.consume(_ork_instance_variant_unmarshal(call.handle, call.instance, in.here(), &variant,
                                             in.room(), call.err));
  const int8_t newest = frame::variant_cap_of(object);
  return variant > newest ? newest : variant;
}

// Unannounced, like all headers that are read from the wire.
void store_header(const Call& call, void* object, int8_t variant, const SmallRow& type) {
  *frame::byte_at(object, frame::at_variant) = static_cast<uint8_t>(variant);
  frame::store_type(call, object, frame::descriptor(type));
}

}  // namespace

uint32_t enum_marshal(const Call& call, uint8_t* buffer, const void* object, int32_t length) {
  if (!start(call, length)) return 0;
  Writer out(buffer, length);
  const int8_t variant = wire_variant(call, object);
  out.advance(_ork_instance_variant_marshal(call.handle, call.instance, out.here(), &variant,
                                            out.room(), call.err));
  out.advance(Coded<Kind::u_int32>::marshal(call, out.here(),
                                            frame::byte_at(object, frame::at_value), out.room()));
  return out.produced();
}

uint32_t enum_unmarshal(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                        uint32_t reuse, const SmallRow& type) {
  if (!start(call, length)) return 0;
  Reader in(buffer, length);
  store_header(call, object, read_variant(call, in, object), type);
  void* value = frame::byte_at(object, frame::at_value);
  in.consume(Coded<Kind::u_int32>::unmarshal(call, in.here(), value, in.room(), reuse));
  frame::store(call, value, frame::enum_value(object), object);
  return in.consumed();
}

uint32_t flag_set_marshal(const Call& call, uint8_t* buffer, const void* object, int32_t length) {
  if (!start(call, length)) return 0;
  Writer out(buffer, length);
  const int8_t variant = wire_variant(call, object);
  out.advance(_ork_instance_variant_marshal(call.handle, call.instance, out.here(), &variant,
                                            out.room(), call.err));
  const int32_t base = out.position();
  uint32_t jump = 0;
  out.advance(_ork_variant_jump_marshal(call.handle, call.instance, out.here(), &jump, out.room(),
                                        call.err));
  if (!call.failed()) {
    if (out.inside()) {
      const uint8_t bits = frame::flag_bits(object);
      out.copy(&bits, 1);
    } else {
      call.fail(EMSGSIZE);
    }
  }
  jump = static_cast<uint32_t>(out.position() - base);
  _ork_variant_jump_marshal(call.handle, call.instance, out.at(base), &jump, 4, call.err);
  return out.produced();
}

uint32_t flag_set_unmarshal(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                            uint32_t, const SmallRow& type) {
  if (!start(call, length)) return 0;
  Reader in(buffer, length);
  const int8_t variant = read_variant(call, in, object);
  const int64_t base = in.position();
  uint32_t jump = 0;
  in.consume(_ork_variant_jump_unmarshal(call.handle, call.instance, in.here(), &jump, in.room(),
                                         call.err));
  store_header(call, object, variant, type);
  *frame::byte_at(object, frame::at_flag_bits) = *in.here();
  in.jump(1);
  const int64_t target = base + static_cast<int32_t>(jump);
  if (target > in.position()) {
    trace::raise<Function::flag_set_unmarshal, Form::jump>(type, in.consumed(),
                                                           static_cast<uint32_t>(base), jump);
    in.jump(static_cast<uint64_t>(target - in.position()));
  }
  return in.consumed();
}

}  // namespace encoders
