/*
 * Helpers of the runtime for the wire image, text and XML of a record.
 *
 * remaining is the number of bytes available at buffer. It may be 0 or negative; nothing is touched
 * then. A helper that lacks room sets *err to EMSGSIZE (90), stores it on the handle and returns 0.
 * A helper that finds *err set does nothing and returns 0, unless it says that it works after an
 * error too: *err then stays as it is. Multi-byte values are in network byte order.
 */
#ifndef ORK_WIRE_H
#define ORK_WIRE_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The base of a record image ------------------------------------------ */

/* Writes the signed variant byte. Returns 1. */
uint32_t _ork_instance_variant_marshal(struct ork_handle* handle, uint32_t instance,
                                       uint8_t* buffer, const int8_t* source, int32_t remaining,
                                       uint32_t* err);

/* Reads the signed variant byte. Returns 1. */
uint32_t _ork_instance_variant_unmarshal(struct ork_handle* handle, uint32_t instance,
                                         const uint8_t* buffer, int8_t* target, int32_t remaining,
                                         uint32_t* err);

/* Writes the flags byte as it is. Returns 1. */
uint32_t _ork_instance_obj_flag_marshal(struct ork_handle* handle, uint32_t instance,
                                        uint8_t* buffer, const uint8_t* source, int32_t remaining,
                                        uint32_t* err);

/* Reads the flags byte. Returns 1. */
uint32_t _ork_instance_obj_flag_unmarshal(struct ork_handle* handle, uint32_t instance,
                                          const uint8_t* buffer, uint8_t* target, int32_t remaining,
                                          uint32_t* err);

/* Writes the ra data, the word and then the byte. Returns 9. */
uint32_t _ork_instance_ra_data_marshal(struct ork_handle* handle, uint32_t instance,
                                       uint8_t* buffer, const uint64_t* word, const uint8_t* byte,
                                       int32_t remaining, uint32_t* err);

/* Reads the ra data. Returns 9. */
uint32_t _ork_instance_ra_data_unmarshal(struct ork_handle* handle, uint32_t instance,
                                         const uint8_t* buffer, uint64_t* word, uint8_t* byte,
                                         int32_t remaining, uint32_t* err);

/* Writes the jump, the distance from its own first byte to the end of the image. Returns 4. */
uint32_t _ork_variant_jump_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                                   const uint32_t* source, int32_t remaining, uint32_t* err);

/* Reads the jump. Returns 4. */
uint32_t _ork_variant_jump_unmarshal(struct ork_handle* handle, uint32_t instance,
                                     const uint8_t* buffer, uint32_t* target, int32_t remaining,
                                     uint32_t* err);

/* ---- The frame of a message ---------------------------------------------- */

/* Writes the ORK_MESSAGE_HEADER_WIRE_SIZE bytes of a header into length bytes. Returns 27. */
uint32_t _ork_message_header_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                                     const struct ork_message_header* header, int32_t length,
                                     uint32_t* err);

/* Reads a header from length bytes; its values are not checked. Returns 27. */
uint32_t _ork_message_header_unmarshal(struct ork_handle* handle, uint32_t instance,
                                       const uint8_t* buffer, struct ork_message_header* header,
                                       int32_t length, uint32_t* err);

/* ---- Text ---------------------------------------------------------------- */

/*
 * Appends indent blanks to the NUL-terminated text at buffer and returns their number. remaining is
 * the room from that text's NUL on. A caller that begins a text stores a NUL at buffer first, or
 * asks for 0 blanks. Works after an error too.
 */
uint32_t ork_print_space(struct ork_handle* handle, uint32_t instance, char* buffer,
                         uint32_t indent, int32_t remaining, uint32_t* err);

/*
 * Prints into buffer, NUL-terminated, and returns the number of characters written without the NUL.
 * A text that does not fit is truncated and sets *err to EMSGSIZE (90). Works after an error too,
 * so that a text can be closed.
 */
uint32_t ork_snprintf(struct ork_handle* handle, uint32_t instance, char* buffer, int32_t remaining,
                      uint32_t* err, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 6, 7)))
#endif
    ;

/* ---- XML ----------------------------------------------------------------- */

/* A parsed document. */
struct ork_xml;

/* Writes an opening tag, with state as an attribute unless it is 0. Returns the number of
   characters written. */
uint32_t start_tag(struct ork_handle* handle, uint32_t instance, char* buffer, const char* tag,
                   int32_t remaining, uint8_t state, uint32_t* err);

/* Writes an opening tag with the time in UTC. Returns the number of characters written. */
uint32_t start_tag_timestamp(struct ork_handle* handle, uint32_t instance, char* buffer,
                             const char* tag, int32_t remaining, uint32_t* err);

/* Writes a closing tag. Works after an error too, so that the element is closed. Returns the number
   of characters written. */
uint32_t end_tag(struct ork_handle* handle, uint32_t instance, char* buffer, const char* tag,
                 int32_t remaining, uint32_t* err);

/* Copies length characters of text and adds a NUL. Returns length. */
uint32_t xml_enum_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                        const char* text, int32_t remaining, uint32_t length, uint32_t* err);

/* Stores the number of nodes that xpath selects in *count. Returns 0, or EINVAL (22) if xpath is no
   path. */
uint32_t xml_get_element_nodecount(struct ork_xml* xml, const char* xpath, uint32_t* count);

/*
 * Copies the text of the first element that xpath selects, truncated to value_len - 1 bytes and
 * NUL-terminated. Returns 0, ENOENT (2) if there is no such element, or EINVAL (22) if xpath is no
 * path. how is 0.
 */
uint32_t xml_get_element_value(struct ork_xml* xml, const char* xpath, char* value,
                               uint32_t value_len, uint32_t how);

#ifdef __cplusplus
}
#endif

#endif
