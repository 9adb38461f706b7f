#include <cstring>

#include "bench/bare.h"
#include "bench/bare_fields.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"

namespace bare {
namespace {

struct In {
  const Wire& wire;
  const uint8_t* buffer;
  int32_t room;
  uint32_t at = 0;

  const uint8_t* here() const { return buffer + at; }
  int32_t left() const { return room - static_cast<int32_t>(at); }

  void value(uint8_t& value) {
    at += u_int8_unmarshal(wire.handle, wire.instance, here(), &value, left(), 0, wire.err);
  }
  void value(uint16_t& value) {
    at += u_int16_unmarshal(wire.handle, wire.instance, here(), &value, left(), 0, wire.err);
  }
  void value(uint32_t& value) {
    at += u_int32_unmarshal(wire.handle, wire.instance, here(), &value, left(), 0, wire.err);
  }
  void value(uint64_t& value) {
    at += u_int64_unmarshal(wire.handle, wire.instance, here(), &value, left(), 0, wire.err);
  }
  template <size_t N>
  void text(char (&text)[N]) {
    for (char& c : text)
      at += char_unmarshal(wire.handle, wire.instance, here(), &c, left(), 0, wire.err);
  }
  // Lowered to what the object was laid out for.
  int8_t take_variant(const Header& header) {
    int8_t variant = 0;
    at += _ork_instance_variant_unmarshal(wire.handle, wire.instance, here(), &variant, left(),
                                          wire.err);
    const auto cap = static_cast<int8_t>(header.variant_cap);
    return variant > cap ? cap : variant;
  }
  uint32_t take_jump() {
    uint32_t jump = 0;
    at += _ork_variant_jump_unmarshal(wire.handle, wire.instance, here(), &jump, left(), wire.err);
    return jump;
  }
  void enumeration(Enum& object);
  void flag_set(Flags& object);
  template <class Record>
  void record(Record& object);
  // Steps over what a newer writer added.
  void jump_to(uint32_t base, uint32_t jump) {
    if (base + jump > at) at = base + jump;
  }
};

void store_type(const Wire& wire, void* object, const ork_type_info* type) {
  if (wire.handle->shared_types != 0) {
    type =
        ork_type_info_ptr_get(wire.handle, wire.instance, type, fwe_ui_wayfind_typeinfo_initialize);
  }
  std::memcpy(ork_get_manifested_type_info_ptr_mem(object), &type, sizeof type);
}

void In::enumeration(Enum& object) {
  if (!begins(wire, left())) return;
  object.header.variant = take_variant(object.header);
  store_type(wire, &object, &_fwe_cl_wayfind_hop_chan_state_e_type_info_internal);
  value(object.value);
  wire.handle->write_notify_fn(wire.handle, &object.value, sizeof object.value, wire.instance,
                               &object);
}

void In::flag_set(Flags& object) {
  if (!begins(wire, left())) return;
  const int8_t variant = take_variant(object.header);
  const uint32_t base = at;
  const uint32_t jump = take_jump();
  object.header.variant = variant;
  store_type(wire, &object, &_fwe_cl_wayfind_hop_chan_flags_type_info_internal);
  object.bits = *here();
  ++at;
  jump_to(base, jump);
}

const ork_type_info& type_of(const HopChan&) {
  return _fwe_cl_wayfind_hop_chan_st_type_info_internal;
}
const ork_type_info& type_of(const Stats&) {
  return _fwe_cl_wayfind_hop_chan_stats_st_type_info_internal;
}
const ork_type_info& type_of(const Mem&) { return _fwe_cl_wayfind_mem_st_type_info_internal; }
const ork_type_info& type_of(const Probe&) {
  return _fwe_cl_wayfind_hop_chan_probe_st_type_info_internal;
}
const ork_type_info& type_of(const Serv&) {
  return _fwe_cl_wayfind_hop_chan_serv_st_type_info_internal;
}
const ork_type_info& type_of(const HopChanData&) {
  return _fwe_cl_wayfind_hop_chan_data_type_info_internal;
}

template <class Record>
void In::record(Record& object) {
  if (!begins(wire, left())) return;
  const int8_t variant = take_variant(object.header);
  uint8_t flags = 0;
  at += _ork_instance_obj_flag_unmarshal(wire.handle, wire.instance, here(), &flags, left(),
                                         wire.err);
  const uint32_t base = at;
  const uint32_t jump = take_jump();
  const uint8_t travels = tracks(wire.handle) ? OBJ_WIRE_MASK : OBJ_RA_DATA;
  if (variant >= 0) fields(*this, object, variant);
  jump_to(base, jump);
  object.header.variant = variant;
  object.header.obj_flags = static_cast<uint8_t>(object.header.obj_flags | (flags & travels));
  store_type(wire, &object, &type_of(object));
}

}  // namespace

uint32_t unmarshal(const Wire& wire, const uint8_t* buffer, Mem* mem, int32_t length) {
  In in{wire, buffer, length};
  in.record(*mem);
  return in.at;
}

uint32_t unmarshal(const Wire& wire, const uint8_t* buffer, HopChanData* data, int32_t length) {
  In in{wire, buffer, length};
  in.record(*data);
  return in.at;
}

}  // namespace bare
