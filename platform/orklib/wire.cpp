#include "ork/wire.h"

#include "frame.h"
#include "room.h"
#include "support/export.h"

namespace {

constexpr int32_t ra_data_size = 9;

}  // namespace

extern "C" {

ORK_EXPORT uint32_t _ork_instance_variant_marshal(struct ork_handle* handle, uint32_t,
                                                  uint8_t* buffer, const int8_t* source,
                                                  int32_t remaining, uint32_t* err) {
  return ork::marshal(handle, buffer, static_cast<uint8_t>(*source), remaining, err);
}

ORK_EXPORT uint32_t _ork_instance_variant_unmarshal(struct ork_handle* handle, uint32_t,
                                                    const uint8_t* buffer, int8_t* target,
                                                    int32_t remaining, uint32_t* err) {
  return ork::unmarshal(handle, buffer, reinterpret_cast<uint8_t*>(target), remaining, err);
}

ORK_EXPORT uint32_t _ork_instance_obj_flag_marshal(struct ork_handle* handle, uint32_t,
                                                   uint8_t* buffer, const uint8_t* source,
                                                   int32_t remaining, uint32_t* err) {
  return ork::marshal(handle, buffer, *source, remaining, err);
}

ORK_EXPORT uint32_t _ork_instance_obj_flag_unmarshal(struct ork_handle* handle, uint32_t,
                                                     const uint8_t* buffer, uint8_t* target,
                                                     int32_t remaining, uint32_t* err) {
  return ork::unmarshal(handle, buffer, target, remaining, err);
}

ORK_EXPORT uint32_t _ork_instance_ra_data_marshal(struct ork_handle* handle, uint32_t,
                                                  uint8_t* buffer, const uint64_t* word,
                                                  const uint8_t* byte, int32_t remaining,
                                                  uint32_t* err) {
  if (!ork::has_room(handle, remaining, ra_data_size, err)) {
    return 0;
  }
  ork::put(buffer, *word);
  ork::put(buffer + sizeof *word, *byte);
  return ra_data_size;
}

ORK_EXPORT uint32_t _ork_instance_ra_data_unmarshal(struct ork_handle* handle, uint32_t,
                                                    const uint8_t* buffer, uint64_t* word,
                                                    uint8_t* byte, int32_t remaining,
                                                    uint32_t* err) {
  if (!ork::has_room(handle, remaining, ra_data_size, err)) {
    return 0;
  }
  *word = ork::take<uint64_t>(buffer);
  *byte = ork::take<uint8_t>(buffer + sizeof *word);
  return ra_data_size;
}

ORK_EXPORT uint32_t _ork_variant_jump_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,
                                              const uint32_t* source, int32_t remaining,
                                              uint32_t* err) {
  return ork::marshal(handle, buffer, *source, remaining, err);
}

ORK_EXPORT uint32_t _ork_variant_jump_unmarshal(struct ork_handle* handle, uint32_t,
                                                const uint8_t* buffer, uint32_t* target,
                                                int32_t remaining, uint32_t* err) {
  return ork::unmarshal(handle, buffer, target, remaining, err);
}

ORK_EXPORT uint32_t _ork_message_header_marshal(struct ork_handle* handle, uint32_t,
                                                uint8_t* buffer,
                                                const struct ork_message_header* header,
                                                int32_t length, uint32_t* err) {
  if (!ork::has_room(handle, length, ORK_MESSAGE_HEADER_WIRE_SIZE, err)) {
    return 0;
  }
  ork::put_header(buffer, *header);
  return ORK_MESSAGE_HEADER_WIRE_SIZE;
}

ORK_EXPORT uint32_t _ork_message_header_unmarshal(struct ork_handle* handle, uint32_t,
                                                  const uint8_t* buffer,
                                                  struct ork_message_header* header, int32_t length,
                                                  uint32_t* err) {
  if (!ork::has_room(handle, length, ORK_MESSAGE_HEADER_WIRE_SIZE, err)) {
    return 0;
  }
  *header = ork::take_header(buffer);
  return ORK_MESSAGE_HEADER_WIRE_SIZE;
}

}  // extern "C"
