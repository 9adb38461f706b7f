/*
 * Helpers of the runtime for the wire image, text and XML of a record.
 *
 * remaining is the room from buffer on, in bytes. It may be 0 or negative, and then nothing is
 * touched. A helper that lacks room sets *err to 90, stores it on the handle and gives 0; one that
 * finds *err set does nothing and gives 0, except where it says that it works after an error as
 * well: it then leaves *err as it is. Multi-byte values travel in network byte order.
 */
#ifndef ORK_WIRE_H
#define ORK_WIRE_H

#include "handle.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The base of a record image ------------------------------------------ */

/* Writes the signed variant byte. Gives 1. */
uint32_t _ork_instance_variant_marshal(struct ork_handle* handle, uint32_t instance,
                                       uint8_t* buffer, const int8_t* source, int32_t remaining,
                                       uint32_t* err);

/* Reads the signed variant byte. Gives 1. */
uint32_t _ork_instance_variant_unmarshal(struct ork_handle* handle, uint32_t instance,
                                         const uint8_t* buffer, int8_t* target, int32_t remaining,
                                         uint32_t* err);

/* Writes the flags byte as it is given. Gives 1. */
uint32_t _ork_instance_obj_flag_marshal(struct ork_handle* handle, uint32_t instance,
                                        uint8_t* buffer, const uint8_t* source, int32_t remaining,
                                        uint32_t* err);

/* Reads the flags byte. Gives 1. */
uint32_t _ork_instance_obj_flag_unmarshal(struct ork_handle* handle, uint32_t instance,
                                          const uint8_t* buffer, uint8_t* target, int32_t remaining,
                                          uint32_t* err);

/* Writes the ra data, the word and then the byte. Gives 9. */
uint32_t _ork_instance_ra_data_marshal(struct ork_handle* handle, uint32_t instance,
                                       uint8_t* buffer, const uint64_t* word, const uint8_t* byte,
                                       int32_t remaining, uint32_t* err);

/* Reads the ra data. Gives 9. */
uint32_t _ork_instance_ra_data_unmarshal(struct ork_handle* handle, uint32_t instance,
                                         const uint8_t* buffer, uint64_t* word, uint8_t* byte,
                                         int32_t remaining, uint32_t* err);

/* Writes the jump, the distance from its own first byte to the end of the image. Gives 4. */
uint32_t _ork_variant_jump_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                                   const uint32_t* source, int32_t remaining, uint32_t* err);

/* Reads the jump. Gives 4. */
uint32_t _ork_variant_jump_unmarshal(struct ork_handle* handle, uint32_t instance,
                                     const uint8_t* buffer, uint32_t* target, int32_t remaining,
                                     uint32_t* err);

/* ---- The frame of a message ---------------------------------------------- */

/* Writes the ORK_MESSAGE_HEADER_WIRE_SIZE bytes of header. length is the room. Gives 27. */
uint32_t _ork_message_header_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                                     const struct ork_message_header* header, int32_t length,
                                     uint32_t* err);

/* Reads a header; its values are taken as they come. length is what there is to read. Gives 27. */
uint32_t _ork_message_header_unmarshal(struct ork_handle* handle, uint32_t instance,
                                       const uint8_t* buffer, struct ork_message_header* header,
                                       int32_t length, uint32_t* err);

/* ---- Text ---------------------------------------------------------------- */

/*
 * Appends indent blanks to the NUL-terminated text at buffer and gives their count. remaining is
 * the room behind that text, its NUL included. A caller that begins a text puts a NUL at buffer
 * first, or asks for 0 blanks. Works after an error as well.
 */
uint32_t ork_print_space(struct ork_handle* handle, uint32_t instance, char* buffer,
                         uint32_t indent, int32_t remaining, uint32_t* err);

/*
 * Prints into buffer, NUL-terminated, and gives the characters written, the NUL not counted. A text
 * that does not fit is cut, counts what is there and sets *err to 90. Works after an error as well,
 * so that a text is closed.
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

/* Writes an opening tag. A state other than 0 is carried as an attribute. Gives the characters
   written. */
uint32_t start_tag(struct ork_handle* handle, uint32_t instance, char* buffer, const char* tag,
                   int32_t remaining, uint8_t state, uint32_t* err);

/* Writes an opening tag that carries the time in UTC. Gives the characters written. */
uint32_t start_tag_timestamp(struct ork_handle* handle, uint32_t instance, char* buffer,
                             const char* tag, int32_t remaining, uint32_t* err);

/* Writes a closing tag, after an error as well, so that the element is closed. Gives the characters
   written. */
uint32_t end_tag(struct ork_handle* handle, uint32_t instance, char* buffer, const char* tag,
                 int32_t remaining, uint32_t* err);

/* Copies length characters of text, and a NUL behind them. Gives length. */
uint32_t xml_enum_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                        const char* text, int32_t remaining, uint32_t length, uint32_t* err);

/* Writes the number of nodes that xpath selects to *count. Gives 0, or 22 for a path that is none.
   */
uint32_t xml_get_element_nodecount(struct ork_xml* xml, const char* xpath, uint32_t* count);

/*
 * Copies the text of the first element that xpath selects, cut to value_len - 1 bytes and
 * NUL-terminated. Gives 0, 2 when there is no such element, or 22 for a path that is none. how is
 * 0.
 */
uint32_t xml_get_element_value(struct ork_xml* xml, const char* xpath, char* value,
                               uint32_t value_len, uint32_t how);

#ifdef __cplusplus
}
#endif

#endif
