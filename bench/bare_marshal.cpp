#include "bench/bare.h"
#include "bench/bare_fields.h"

namespace bare {
namespace {

// One name for the calls of a kind, so that a record's fields read as a list. Each is the one
// runtime call behind it.
struct Out {
  const Wire& wire;
  uint8_t* buffer;
  int32_t room;
  uint32_t at = 0;

  uint8_t* here() const { return buffer + at; }
  int32_t left() const { return room - static_cast<int32_t>(at); }

  void value(const uint8_t& value) {
    at += u_int8_marshal(wire.handle, wire.instance, here(), &value, left(), wire.err);
  }
  void value(const uint16_t& value) {
    at += u_int16_marshal(wire.handle, wire.instance, here(), &value, left(), wire.err);
  }
  void value(const uint32_t& value) {
    at += u_int32_marshal(wire.handle, wire.instance, here(), &value, left(), wire.err);
  }
  void value(const uint64_t& value) {
    at += u_int64_marshal(wire.handle, wire.instance, here(), &value, left(), wire.err);
  }
  template <size_t N>
  void text(const char (&text)[N]) {
    for (const char& c : text)
      at += char_marshal(wire.handle, wire.instance, here(), &c, left(), wire.err);
  }
  void add_variant(int8_t variant) {
    at += _ork_instance_variant_marshal(wire.handle, wire.instance, here(), &variant, left(),
                                        wire.err);
  }
  void add_jump(uint32_t jump) {
    at += _ork_variant_jump_marshal(wire.handle, wire.instance, here(), &jump, left(), wire.err);
  }
  void enumeration(const Enum& object);
  void flag_set(const Flags& object);
  template <class Record>
  void record(const Record& object);
  void rewrite_jump(uint32_t base) {
    const uint32_t jump = at - base;
    _ork_variant_jump_marshal(wire.handle, wire.instance, buffer + base, &jump, 4, wire.err);
  }
};

int8_t known_variant(const Wire& wire, const void* object, int8_t variant) {
  const ork_type_info* type = ork_get_manifested_type_info(object);
  const int8_t known = ork_domain_lookup_variant(wire.handle, &wire.handle->domain, type, wire.err);
  if (variant <= known) return variant;
  ork_store_epoch_err(wire.handle, EIDRM, wire.err);
  return known;
}

// The fixed bytes of a record; gives the place of its jump.
uint32_t add_base(Out& out, const void* object, int8_t variant) {
  out.add_variant(variant);
  const uint8_t travels = tracks(out.wire.handle) ? OBJ_WIRE_MASK : OBJ_RA_DATA;
  const uint8_t flags = static_cast<uint8_t>(ork_get_instance_obj_flag(object, 1, 0) & travels);
  out.at += _ork_instance_obj_flag_marshal(out.wire.handle, out.wire.instance, out.here(), &flags,
                                           out.left(), out.wire.err);
  const uint32_t base = out.at;
  out.add_jump(0);
  return base;
}

void Out::enumeration(const Enum& object) {
  if (!begins(wire, left())) return;
  add_variant(known_variant(wire, &object, ork_get_instance_variant(&object, 0, 1)));
  value(object.value);
}

void Out::flag_set(const Flags& object) {
  if (!begins(wire, left())) return;
  add_variant(known_variant(wire, &object, ork_get_instance_variant(&object, 0, 1)));
  const uint32_t base = at;
  add_jump(0);
  if (left() > 0) *here() = object.bits;
  ++at;
  rewrite_jump(base);
}

template <class Record>
void Out::record(const Record& object) {
  if (!begins(wire, left())) return;
  const int8_t variant = known_variant(wire, &object, ork_get_instance_variant(&object, 1, 0));
  const uint32_t base = add_base(*this, &object, variant);
  if (variant >= 0) fields(*this, object, variant);
  rewrite_jump(base);
}

}  // namespace

uint32_t marshal(const Wire& wire, uint8_t* buffer, const Mem* mem, int32_t length) {
  Out out{wire, buffer, length};
  out.record(*mem);
  return out.at;
}

uint32_t marshal(const Wire& wire, uint8_t* buffer, const HopChanData* data, int32_t length) {
  Out out{wire, buffer, length};
  out.record(*data);
  return out.at;
}

}  // namespace bare
