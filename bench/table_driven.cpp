#include "bench/table_driven.h"

#include <cstring>

#include "fwe_ui_wayfind/fwe_ui_wayfind.h"

namespace table_driven {
namespace {

using bare::Header;

template <class To>
To* at(void* object, size_t offset) {
  return reinterpret_cast<To*>(static_cast<uint8_t*>(object) + offset);
}
template <class To>
const To* at(const void* object, size_t offset) {
  return reinterpret_cast<const To*>(static_cast<const uint8_t*>(object) + offset);
}

constexpr size_t enum_value = 12;
constexpr size_t flag_bits = 11;

int8_t known_variant(const Wire& w, const void* object, int8_t variant) {
  const int8_t known = ork_domain_lookup_variant(w.handle, &w.handle->domain,
                                                 ork_get_manifested_type_info(object), w.err);
  if (variant <= known) return variant;
  ork_store_epoch_err(w.handle, EIDRM, w.err);
  return known;
}

uint32_t put_variant(const Wire& w, uint8_t* to, int8_t variant, int32_t room) {
  return _ork_instance_variant_marshal(w.handle, w.instance, to, &variant, room, w.err);
}

uint32_t marshal_small(const Wire& w, uint8_t* to, const void* object, int32_t room,
                       bool is_flag_set) {
  if (!bare::begins(w, room)) return 0;
  uint32_t n =
      put_variant(w, to, known_variant(w, object, ork_get_instance_variant(object, 0, 1)), room);
  const auto left = [&] { return room - static_cast<int32_t>(n); };
  if (!is_flag_set)
    return n + u_int32_marshal(w.handle, w.instance, to + n, at<uint32_t>(object, enum_value),
                               left(), w.err);
  uint32_t jump = 0;
  n += _ork_variant_jump_marshal(w.handle, w.instance, to + n, &jump, left(), w.err);
  if (left() > 0) to[n] = *at<uint8_t>(object, flag_bits);
  jump = n++;
  _ork_variant_jump_marshal(w.handle, w.instance, to + 1, &jump, 4, w.err);
  return n;
}

uint32_t marshal_field(const Wire& w, uint8_t* to, const void* field, int32_t room,
                       const wayfind_field& row) {
  switch (row.kind) {
    case WAYFIND_U_INT8:
      return u_int8_marshal(w.handle, w.instance, to, at<uint8_t>(field, 0), room, w.err);
    case WAYFIND_U_INT16:
      return u_int16_marshal(w.handle, w.instance, to, at<uint16_t>(field, 0), room, w.err);
    case WAYFIND_U_INT32:
      return u_int32_marshal(w.handle, w.instance, to, at<uint32_t>(field, 0), room, w.err);
    case WAYFIND_U_INT64:
      return u_int64_marshal(w.handle, w.instance, to, at<uint64_t>(field, 0), room, w.err);
    case WAYFIND_ORK_BOOLEAN:
      return ork_boolean_marshal(w.handle, w.instance, to, at<ork_boolean>(field, 0), room, w.err);
    case WAYFIND_LINK_TYPE:
      return link_type_marshal(w.handle, w.instance, to, at<ork_link_type>(field, 0), room, w.err);
    case WAYFIND_IP_ADDRESS:
      return ip_address_marshal(w.handle, w.instance, to, at<ork_ip_address>(field, 0), room,
                                w.err);
    case WAYFIND_CHAR: {
      uint32_t n = 0;
      for (size_t i = 0; i < row.width; ++i) {
        n += char_marshal(w.handle, w.instance, to + n, at<char>(field, i),
                          room - static_cast<int32_t>(n), w.err);
      }
      return n;
    }
    case WAYFIND_ENUM: return marshal_small(w, to, field, room, false);
    case WAYFIND_FLAG_SET: return marshal_small(w, to, field, room, true);
    case WAYFIND_RECORD: return marshal(w, to, field, room, *row.record);
  }
  return 0;
}

int8_t take_variant(const Wire& w, const uint8_t* from, const void* object, int32_t room,
                    uint32_t& n) {
  int8_t variant = 0;
  n += _ork_instance_variant_unmarshal(w.handle, w.instance, from + n, &variant,
                                       room - static_cast<int32_t>(n), w.err);
  const auto cap = static_cast<int8_t>(at<Header>(object, 0)->variant_cap);
  return variant > cap ? cap : variant;
}

void store_type(const Wire& w, void* object, const ork_type_info* type) {
  if (w.handle->shared_types != 0)
    type = ork_type_info_ptr_get(w.handle, w.instance, type, fwe_ui_wayfind_typeinfo_initialize);
  std::memcpy(ork_get_manifested_type_info_ptr_mem(object), &type, sizeof type);
}

uint32_t unmarshal_small(const Wire& w, const uint8_t* from, void* object, int32_t room,
                         const wayfind_small_type& type) {
  if (!bare::begins(w, room)) return 0;
  uint32_t n = 0;
  at<Header>(object, 0)->variant = take_variant(w, from, object, room, n);
  store_type(w, object, type.type);
  const int32_t left = room - static_cast<int32_t>(n);
  if (type.is_flag_set != 0) {
    uint32_t jump = 0;
    n += _ork_variant_jump_unmarshal(w.handle, w.instance, from + n, &jump, left, w.err);
    *at<uint8_t>(object, flag_bits) = from[n++];
    return jump + 1 > n ? jump + 1 : n;
  }
  auto* value = at<uint32_t>(object, enum_value);
  n += u_int32_unmarshal(w.handle, w.instance, from + n, value, left, 0, w.err);
  w.handle->write_notify_fn(w.handle, value, sizeof *value, w.instance, object);
  return n;
}

uint32_t unmarshal_field(const Wire& w, const uint8_t* from, void* field, int32_t room,
                         const wayfind_field& row) {
  switch (row.kind) {
    case WAYFIND_U_INT8:
      return u_int8_unmarshal(w.handle, w.instance, from, at<uint8_t>(field, 0), room, 0, w.err);
    case WAYFIND_U_INT16:
      return u_int16_unmarshal(w.handle, w.instance, from, at<uint16_t>(field, 0), room, 0, w.err);
    case WAYFIND_U_INT32:
      return u_int32_unmarshal(w.handle, w.instance, from, at<uint32_t>(field, 0), room, 0, w.err);
    case WAYFIND_U_INT64:
      return u_int64_unmarshal(w.handle, w.instance, from, at<uint64_t>(field, 0), room, 0, w.err);
    case WAYFIND_ORK_BOOLEAN:
      return ork_boolean_unmarshal(w.handle, w.instance, from, at<ork_boolean>(field, 0), room, 0,
                                   w.err);
    case WAYFIND_LINK_TYPE:
      return link_type_unmarshal(w.handle, w.instance, from, at<ork_link_type>(field, 0), room, 0,
                                 w.err);
    case WAYFIND_IP_ADDRESS:
      return ip_address_unmarshal(w.handle, w.instance, from, at<ork_ip_address>(field, 0), room, 0,
                                  w.err);
    case WAYFIND_CHAR: {
      uint32_t n = 0;
      for (size_t i = 0; i < row.width; ++i) {
        n += char_unmarshal(w.handle, w.instance, from + n, at<char>(field, i),
                            room - static_cast<int32_t>(n), 0, w.err);
      }
      return n;
    }
    case WAYFIND_ENUM:
    case WAYFIND_FLAG_SET: return unmarshal_small(w, from, field, room, *row.type);
    case WAYFIND_RECORD: return unmarshal(w, from, field, room, *row.record);
  }
  return 0;
}

uint32_t field_length(const Wire& w, const void* field, const wayfind_field& row) {
  switch (row.kind) {
    case WAYFIND_U_INT8: return u_int8_len(w.handle, w.instance, at<uint8_t>(field, 0));
    case WAYFIND_U_INT16: return u_int16_len(w.handle, w.instance, at<uint16_t>(field, 0));
    case WAYFIND_U_INT32: return u_int32_len(w.handle, w.instance, at<uint32_t>(field, 0));
    case WAYFIND_U_INT64: return u_int64_len(w.handle, w.instance, at<uint64_t>(field, 0));
    case WAYFIND_ORK_BOOLEAN:
      return ork_boolean_len(w.handle, w.instance, at<ork_boolean>(field, 0));
    case WAYFIND_LINK_TYPE: return link_type_len(w.handle, w.instance, at<ork_link_type>(field, 0));
    case WAYFIND_IP_ADDRESS:
      return ip_address_len(w.handle, w.instance, at<ork_ip_address>(field, 0));
    case WAYFIND_CHAR: return row.width * char_len(w.handle, w.instance, at<char>(field, 0));
    case WAYFIND_ENUM: return 5;
    case WAYFIND_FLAG_SET: return 6;
    case WAYFIND_RECORD: return length(w, field, *row.record);
  }
  return 0;
}

uint8_t fields_of(const wayfind_record& type, int variant) {
  if (variant < 0) return 0;
  return type.layouts[variant < type.variants ? variant : type.variants - 1].fields;
}

uint8_t travelling_flags(const ork_handle* handle) {
  return bare::tracks(handle) ? OBJ_WIRE_MASK : OBJ_RA_DATA;
}

}  // namespace

uint32_t marshal(const Wire& w, uint8_t* buffer, const void* object, int32_t length,
                 const wayfind_record& type) {
  if (!bare::begins(w, length)) return 0;
  const int8_t variant = known_variant(w, object, ork_get_instance_variant(object, 1, 0));
  uint32_t n = put_variant(w, buffer, variant, length);
  const auto left = [&] { return length - static_cast<int32_t>(n); };
  const auto flags =
      static_cast<uint8_t>(ork_get_instance_obj_flag(object, 1, 0) & travelling_flags(w.handle));
  n += _ork_instance_obj_flag_marshal(w.handle, w.instance, buffer + n, &flags, left(), w.err);
  const uint32_t base = n;
  uint32_t jump = 0;
  n += _ork_variant_jump_marshal(w.handle, w.instance, buffer + n, &jump, left(), w.err);
  for (const wayfind_field *row = type.fields, *end = row + fields_of(type, variant); row != end;
       ++row) {
    n += marshal_field(w, buffer + n, at<uint8_t>(object, row->offset), left(), *row);
  }
  jump = n - base;
  _ork_variant_jump_marshal(w.handle, w.instance, buffer + base, &jump, 4, w.err);
  return n;
}

uint32_t unmarshal(const Wire& w, const uint8_t* buffer, void* object, int32_t length,
                   const wayfind_record& type) {
  if (!bare::begins(w, length)) return 0;
  uint32_t n = 0;
  const auto left = [&] { return length - static_cast<int32_t>(n); };
  const int8_t variant = take_variant(w, buffer, object, length, n);
  uint8_t flags = 0;
  n += _ork_instance_obj_flag_unmarshal(w.handle, w.instance, buffer + n, &flags, left(), w.err);
  const uint32_t base = n;
  uint32_t jump = 0;
  n += _ork_variant_jump_unmarshal(w.handle, w.instance, buffer + n, &jump, left(), w.err);
  for (const wayfind_field *row = type.fields, *end = row + fields_of(type, variant); row != end;
       ++row) {
    n += unmarshal_field(w, buffer + n, at<uint8_t>(object, row->offset), left(), *row);
  }
  if (base + jump > n) n = base + jump;
  auto* header = at<Header>(object, 0);
  header->variant = variant;
  header->obj_flags =
      static_cast<uint8_t>(header->obj_flags | (flags & travelling_flags(w.handle)));
  store_type(w, object, type.type);
  return n;
}

uint32_t length(const Wire& w, const void* object, const wayfind_record& type) {
  uint32_t n = 6;
  const wayfind_field* end = type.fields + fields_of(type, ork_get_instance_variant(object, 1, 0));
  for (const wayfind_field* row = type.fields; row != end; ++row)
    n += field_length(w, at<uint8_t>(object, row->offset), *row);
  return n;
}

}  // namespace table_driven
