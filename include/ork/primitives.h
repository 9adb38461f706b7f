/*
 * The primitive families of the runtime, the types of fields that are no record, enum or flag set.
 *
 * All families have one contract, operation by operation; exceptions are documented at the
 * function.
 *
 * - _get returns address, or null if *err is set.
 * - _get_value returns the value. If address is null it returns 0 and sets *err to EINVAL (22).
 * - _set copies *src to address, _set_value stores value there. Both announce the bytes first, with
 * a null owner. If address or src is null they set *err to EINVAL (22). With *err set they do
 * nothing.
 * - _sizeof returns the size of one element of an array, in bytes.
 * - _create returns a zeroed scratch value from the handle's allocator, or null. _destroy frees it;
 *   null is ignored.
 * - _len returns the width on the wire in bytes; source may be null.
 * - _marshal writes the value, _unmarshal reads it; both return the number of bytes. remaining is
 * the number of bytes available at buffer and may be 0 or negative; if it is too small they set
 * *err to EMSGSIZE (90), store that on the handle, touch nothing and return 0. With *err set they
 * do nothing and return 0. They announce nothing. reuse_storage is not used.
 * - _compare returns 0 for equal values, else -1 or 1. _hash continues from seed. No pointer is
 * null.
 * - _print writes one line, "name: value", indented by indent blanks and NUL-terminated, and
 * returns its length without the NUL. If it does not fit, it is truncated and *err set to EMSGSIZE
 * (90). If value is null it sets *err to EINVAL (22).
 * - _to_xml writes one element called name, with state as an attribute unless it is 0, and returns
 * its length. If it does not fit with its NUL, nothing is written, *err is set to EMSGSIZE (90),
 * and the result is 0.
 * - _from_xml stores the value of the first element at path. If there is none it sets *err to
 *   ENOENT (2). If the text is no value of the type it sets *err to EINVAL (22) and writes
 *   "Failed xpath: %s" with the path to err_text, at most err_text_len bytes, unless err_text is
 * null. The target does not change on an error. Nothing is announced.
 * - _initialize makes the object in its parent's zeroed storage, with the arguments of a record's
 *   _initialize.
 * - _set_instance_embedded marks the object as embedded in another.
 *
 * remaining is signed in all of them, so that a room that was exceeded is visible as such.
 */
#ifndef ORK_PRIMITIVES_H
#define ORK_PRIMITIVES_H

#include "handle.h"
#include "wire.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- u_int8: an unsigned integer of 1 byte ------------------------------- */

/* Returns address. */
uint8_t* u_int8_get(struct ork_handle* handle, uint32_t instance, const uint8_t* address,
                    uint32_t* err);

/* Returns the value at address. */
uint8_t u_int8_get_value(struct ork_handle* handle, uint32_t instance, const uint8_t* address,
                         uint32_t* err);

/* Stores *src at address, announced. */
void u_int8_set(struct ork_handle* handle, uint32_t instance, uint8_t* address, const uint8_t* src,
                uint32_t* err);

/* Stores value at address, announced. */
void u_int8_set_value(struct ork_handle* handle, uint32_t instance, uint8_t* address, uint8_t value,
                      uint32_t* err);

/* Returns 1. */
uint32_t u_int8_sizeof(struct ork_handle* handle);

/* Returns a zeroed scratch value. */
uint8_t* u_int8_create(struct ork_handle* handle, uint32_t instance);

/* Frees a scratch value. */
void u_int8_destroy(struct ork_handle* handle, uint32_t instance, uint8_t* value);

/* Returns 1. */
uint32_t u_int8_len(struct ork_handle* handle, uint32_t instance, const uint8_t* source);

/* Writes 1 byte. */
uint32_t u_int8_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                        const uint8_t* source, int32_t remaining, uint32_t* err);

/* Reads 1 byte. */
uint32_t u_int8_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                          uint8_t* target, int32_t remaining, uint32_t reuse_storage,
                          uint32_t* err);

/* Returns the hash of the value, continued from seed. */
uint32_t u_int8_hash(const uint8_t* value, uint32_t seed);

/* Writes the line of a field: the value in decimal. */
uint32_t u_int8_print(struct ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                      const char* name, const uint8_t* value, int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t u_int8_to_xml(struct ork_handle* handle, uint32_t instance, const char* name, char* buffer,
                       const uint8_t* value, int32_t remaining, uint8_t state, uint32_t* err);

/* Reads the element of a field. */
void u_int8_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                     struct ork_xml* xml, uint8_t* target, uint32_t* err, char* err_text,
                     uint32_t err_text_len);

/* ---- u_int16: an unsigned integer of 2 bytes ----------------------------- */

/* Returns address. */
uint16_t* u_int16_get(struct ork_handle* handle, uint32_t instance, const uint16_t* address,
                      uint32_t* err);

/* Returns the value at address. */
uint16_t u_int16_get_value(struct ork_handle* handle, uint32_t instance, const uint16_t* address,
                           uint32_t* err);

/* Stores *src at address, announced. */
void u_int16_set(struct ork_handle* handle, uint32_t instance, uint16_t* address,
                 const uint16_t* src, uint32_t* err);

/* Stores value at address, announced. */
void u_int16_set_value(struct ork_handle* handle, uint32_t instance, uint16_t* address,
                       uint16_t value, uint32_t* err);

/* Returns 2. */
uint32_t u_int16_sizeof(struct ork_handle* handle);

/* Returns a zeroed scratch value. */
uint16_t* u_int16_create(struct ork_handle* handle, uint32_t instance);

/* Frees a scratch value. */
void u_int16_destroy(struct ork_handle* handle, uint32_t instance, uint16_t* value);

/* Returns 2. */
uint32_t u_int16_len(struct ork_handle* handle, uint32_t instance, const uint16_t* source);

/* Writes 2 bytes. */
uint32_t u_int16_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                         const uint16_t* source, int32_t remaining, uint32_t* err);

/* Reads 2 bytes. */
uint32_t u_int16_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                           uint16_t* target, int32_t remaining, uint32_t reuse_storage,
                           uint32_t* err);

/* Returns the hash of the value, continued from seed. */
uint32_t u_int16_hash(const uint16_t* value, uint32_t seed);

/* Writes the line of a field: the value in decimal. */
uint32_t u_int16_print(struct ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                       const char* name, const uint16_t* value, int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t u_int16_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                        char* buffer, const uint16_t* value, int32_t remaining, uint8_t state,
                        uint32_t* err);

/* Reads the element of a field. */
void u_int16_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                      struct ork_xml* xml, uint16_t* target, uint32_t* err, char* err_text,
                      uint32_t err_text_len);

/* ---- u_int32: an unsigned integer of 4 bytes ----------------------------- */

/* Returns address. */
uint32_t* u_int32_get(struct ork_handle* handle, uint32_t instance, const uint32_t* address,
                      uint32_t* err);

/* Returns the value at address. */
uint32_t u_int32_get_value(struct ork_handle* handle, uint32_t instance, const uint32_t* address,
                           uint32_t* err);

/* Stores *src at address, announced. */
void u_int32_set(struct ork_handle* handle, uint32_t instance, uint32_t* address,
                 const uint32_t* src, uint32_t* err);

/* Stores value at address, announced. */
void u_int32_set_value(struct ork_handle* handle, uint32_t instance, uint32_t* address,
                       uint32_t value, uint32_t* err);

/* Returns 4. */
uint32_t u_int32_sizeof(struct ork_handle* handle);

/* Returns a zeroed scratch value. */
uint32_t* u_int32_create(struct ork_handle* handle, uint32_t instance);

/* Frees a scratch value. */
void u_int32_destroy(struct ork_handle* handle, uint32_t instance, uint32_t* value);

/* Returns 4. */
uint32_t u_int32_len(struct ork_handle* handle, uint32_t instance, const uint32_t* source);

/* Writes 4 bytes. */
uint32_t u_int32_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                         const uint32_t* source, int32_t remaining, uint32_t* err);

/* Reads 4 bytes. */
uint32_t u_int32_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                           uint32_t* target, int32_t remaining, uint32_t reuse_storage,
                           uint32_t* err);

/* Returns the hash of the value, continued from seed. */
uint32_t u_int32_hash(const uint32_t* value, uint32_t seed);

/* Writes the line of a field: the value in decimal. */
uint32_t u_int32_print(struct ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                       const char* name, const uint32_t* value, int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t u_int32_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                        char* buffer, const uint32_t* value, int32_t remaining, uint8_t state,
                        uint32_t* err);

/* Reads the element of a field. */
void u_int32_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                      struct ork_xml* xml, uint32_t* target, uint32_t* err, char* err_text,
                      uint32_t err_text_len);

/* ---- u_int64: an unsigned integer of 8 bytes ----------------------------- */

/* Returns address. */
uint64_t* u_int64_get(struct ork_handle* handle, uint32_t instance, const uint64_t* address,
                      uint32_t* err);

/* Returns the value at address. */
uint64_t u_int64_get_value(struct ork_handle* handle, uint32_t instance, const uint64_t* address,
                           uint32_t* err);

/* Stores *src at address, announced. */
void u_int64_set(struct ork_handle* handle, uint32_t instance, uint64_t* address,
                 const uint64_t* src, uint32_t* err);

/* Stores value at address, announced. */
void u_int64_set_value(struct ork_handle* handle, uint32_t instance, uint64_t* address,
                       uint64_t value, uint32_t* err);

/* Returns 8. */
uint32_t u_int64_len(struct ork_handle* handle, uint32_t instance, const uint64_t* source);

/* Writes 8 bytes. */
uint32_t u_int64_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                         const uint64_t* source, int32_t remaining, uint32_t* err);

/* Reads 8 bytes. */
uint32_t u_int64_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                           uint64_t* target, int32_t remaining, uint32_t reuse_storage,
                           uint32_t* err);

/* Returns the hash of the value, continued from seed. */
uint32_t u_int64_hash(const uint64_t* value, uint32_t seed);

/* Writes the line of a field: the value in decimal. */
uint32_t u_int64_print(struct ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                       const char* name, const uint64_t* value, int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t u_int64_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                        char* buffer, const uint64_t* value, int32_t remaining, uint8_t state,
                        uint32_t* err);

/* Reads the element of a field. */
void u_int64_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                      struct ork_xml* xml, uint64_t* target, uint32_t* err, char* err_text,
                      uint32_t err_text_len);

/* ---- ork_boolean: 0 or 1 in four bytes, without an object header --------- */

/* 0 or 1. */
typedef uint32_t ork_boolean;

/* The descriptor that a record passes to ork_boolean_initialize(). */
extern const struct ork_type_info _ork_boolean_type_info_internal;

/* Returns address. */
ork_boolean* ork_boolean_get(struct ork_handle* handle, uint32_t instance,
                             const ork_boolean* address, uint32_t* err);

/* Returns the value at address. */
ork_boolean ork_boolean_get_value(struct ork_handle* handle, uint32_t instance,
                                  const ork_boolean* address, uint32_t* err);

/* Stores *src at address, announced. */
void ork_boolean_set(struct ork_handle* handle, uint32_t instance, ork_boolean* address,
                     const ork_boolean* src, uint32_t* err);

/* Stores value at address, announced. */
void ork_boolean_set_value(struct ork_handle* handle, uint32_t instance, ork_boolean* address,
                           ork_boolean value, uint32_t* err);

/* Stores 0, announced if notify is set. A bare word has no type, flags or state. */
void ork_boolean_initialize(struct ork_handle* handle, uint32_t instance, ork_boolean* obj,
                            const struct ork_type_info* tinfo, uint32_t notify, uint32_t no_stats,
                            uint32_t flags, void* sttr_base, uint32_t* err);

/* Does nothing: a bare word has no flags. */
void ork_boolean_set_instance_embedded(struct ork_handle* handle, uint32_t instance,
                                       ork_boolean* obj);

/* Returns 1. */
uint32_t ork_boolean_len(struct ork_handle* handle, uint32_t instance, const ork_boolean* source);

/* Writes 1 byte. */
uint32_t ork_boolean_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                             const ork_boolean* source, int32_t remaining, uint32_t* err);

/* Reads 1 byte. */
uint32_t ork_boolean_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                               ork_boolean* target, int32_t remaining, uint32_t reuse_storage,
                               uint32_t* err);

/* 0 sorts before 1. */
int32_t ork_boolean_compare(const ork_boolean* a, const ork_boolean* b);

/* Returns the hash of the value, continued from seed. */
uint32_t ork_boolean_hash(const ork_boolean* value, uint32_t seed);

/* Writes the line of a field: "true" or "false". */
uint32_t ork_boolean_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                           uint32_t indent, const char* name, const ork_boolean* value,
                           int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t ork_boolean_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                            char* buffer, const ork_boolean* value, int32_t remaining,
                            uint8_t state, uint32_t* err);

/* Reads the element of a field. */
void ork_boolean_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                          struct ork_xml* xml, ork_boolean* target, uint32_t* err, char* err_text,
                          uint32_t err_text_len);

/* ---- ip_address: an IPv4 or IPv6 address with a prefix length ------------ */

/* An object of 48 bytes, aligned to 8 in a record. */
struct ork_ip_address {
  uint8_t type_info_slot[8];
  int8_t variant;
  uint8_t variant_cap;
  uint8_t obj_flags;
  uint8_t family;        /* 0 none, 4 or 6 */
  uint8_t prefix_length; /* 0 to 32, 0 to 128 */
  uint8_t reserved_0[3]; /* 0 */
  uint8_t address[16]; /* network byte order; an IPv4 address takes the first four, the rest is 0 */
  uint8_t reserved_1[16];
};

static_assert(sizeof(struct ork_ip_address) == 48, "ip_address");
static_assert(offsetof(struct ork_ip_address, family) == 11, "family");
static_assert(offsetof(struct ork_ip_address, address) == 16, "address");

/* The descriptor that a record passes to ip_address_initialize(). */
extern const struct ork_type_info _ip_address_type_info_internal;

/* Writes the header of an address without a family. No statistics are kept. */
void ip_address_initialize(struct ork_handle* handle, uint32_t instance, struct ork_ip_address* obj,
                           const struct ork_type_info* tinfo, uint32_t notify, uint32_t no_stats,
                           uint32_t flags, void* sttr_base, uint32_t* err);

/* Undoes _initialize. The storage is freed only if free_storage is set. Null is ignored. */
void ip_address_destroy_internal(struct ork_handle* handle, uint32_t instance,
                                 struct ork_ip_address* obj, uint32_t free_storage);

/* Sets OBJ_EMBEDDED, announced. */
void ip_address_set_instance_embedded(struct ork_handle* handle, uint32_t instance,
                                      struct ork_ip_address* obj);

/* Returns 0: an address holds no references. */
uint32_t ip_address_get_oid_count(struct ork_handle* handle, uint32_t instance,
                                  const struct ork_ip_address* obj, uint32_t* err);

/* Does nothing: there are no references to list. */
void ip_address_get_object_references(struct ork_handle* handle, uint32_t instance,
                                      const struct ork_ip_address* obj, void** refs, uint32_t count,
                                      uint32_t* err);

/* Returns address. */
struct ork_ip_address* ip_address_get(struct ork_handle* handle, uint32_t instance,
                                      const struct ork_ip_address* address, uint32_t* err);

/* Copies family, prefix length and address, announced; the header of address does not change. */
void ip_address_set(struct ork_handle* handle, uint32_t instance, struct ork_ip_address* address,
                    const struct ork_ip_address* src, uint32_t* err);

/* Returns 18. */
uint32_t ip_address_len(struct ork_handle* handle, uint32_t instance,
                        const struct ork_ip_address* source);

/* Writes 18 bytes. */
uint32_t ip_address_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                            const struct ork_ip_address* source, int32_t remaining, uint32_t* err);

/* Reads 18 bytes. */
uint32_t ip_address_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                              struct ork_ip_address* target, int32_t remaining,
                              uint32_t reuse_storage, uint32_t* err);

/* By family, then address, then prefix length. */
int32_t ip_address_compare(const struct ork_ip_address* a, const struct ork_ip_address* b);

/* Returns the hash of the 18 bytes of the wire form, continued from seed. */
uint32_t ip_address_hash(const struct ork_ip_address* value, uint32_t seed);

/* Writes the line of a field: "10.0.0.1/24", "2001:db8::1/64" or "none"; what these do not tell in
   full, such as another family, as "family 9/24 " and the 16 bytes in hexadecimal. */
uint32_t ip_address_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                          uint32_t indent, const char* name, const struct ork_ip_address* value,
                          int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t ip_address_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                           char* buffer, const struct ork_ip_address* value, int32_t remaining,
                           uint8_t state, uint32_t* err);

/* Reads the element of a field. */
void ip_address_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                         struct ork_xml* xml, struct ork_ip_address* target, uint32_t* err,
                         char* err_text, uint32_t err_text_len);

/* ---- link_type: a number in an object ------------------------------------ */

/* An object of 16 bytes, aligned to 8 in a record. */
struct ork_link_type {
  uint8_t type_info_slot[8];
  int8_t variant;
  uint8_t variant_cap;
  uint8_t obj_flags;
  uint8_t reserved;
  uint32_t value;
};

static_assert(sizeof(struct ork_link_type) == 16, "link_type");
static_assert(offsetof(struct ork_link_type, value) == 12, "value");

/* The descriptor that a record passes to link_type_initialize(). */
extern const struct ork_type_info _link_type_type_info_internal;

/* Writes the header of a link type of value 0. No statistics are kept. */
void link_type_initialize(struct ork_handle* handle, uint32_t instance, struct ork_link_type* obj,
                          const struct ork_type_info* tinfo, uint32_t notify, uint32_t no_stats,
                          uint32_t flags, void* sttr_base, uint32_t* err);

/* Sets OBJ_EMBEDDED, announced. */
void link_type_set_instance_embedded(struct ork_handle* handle, uint32_t instance,
                                     struct ork_link_type* obj);

/* Returns address. */
struct ork_link_type* link_type_get(struct ork_handle* handle, uint32_t instance,
                                    const struct ork_link_type* address, uint32_t* err);

/* Returns the value. */
uint32_t link_type_get_value(struct ork_handle* handle, uint32_t instance,
                             const struct ork_link_type* address, uint32_t* err);

/* Copies the value, announced; the header of address does not change. */
void link_type_set(struct ork_handle* handle, uint32_t instance, struct ork_link_type* address,
                   const struct ork_link_type* src, uint32_t* err);

/* Stores value, announced. */
void link_type_set_value(struct ork_handle* handle, uint32_t instance,
                         struct ork_link_type* address, uint32_t value, uint32_t* err);

/* Returns 5. */
uint32_t link_type_len(struct ork_handle* handle, uint32_t instance,
                       const struct ork_link_type* source);

/* Writes 5 bytes. */
uint32_t link_type_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                           const struct ork_link_type* source, int32_t remaining, uint32_t* err);

/* Reads 5 bytes. */
uint32_t link_type_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                             struct ork_link_type* target, int32_t remaining,
                             uint32_t reuse_storage, uint32_t* err);

/* Compares by value. */
int32_t link_type_compare(const struct ork_link_type* a, const struct ork_link_type* b);

/* Returns the hash of the value, continued from seed. */
uint32_t link_type_hash(const struct ork_link_type* value, uint32_t seed);

/* Writes the line of a field: the value in decimal. */
uint32_t link_type_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                         uint32_t indent, const char* name, const struct ork_link_type* value,
                         int32_t remaining, uint32_t* err);

/* Writes the element of a field. */
uint32_t link_type_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                          char* buffer, const struct ork_link_type* value, int32_t remaining,
                          uint8_t state, uint32_t* err);

/* Reads the element of a field. */
void link_type_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                        struct ork_xml* xml, struct ork_link_type* target, uint32_t* err,
                        char* err_text, uint32_t err_text_len);

/* ---- Text: fixed arrays of bytes ----------------------------------------- */

/* Returns 1. */
uint32_t char_len(struct ork_handle* handle, uint32_t instance, const char* source);

/* Writes 1 byte. */
uint32_t char_marshal(struct ork_handle* handle, uint32_t instance, uint8_t* buffer,
                      const char* source, int32_t remaining, uint32_t* err);

/* Reads 1 byte. */
uint32_t char_unmarshal(struct ork_handle* handle, uint32_t instance, const uint8_t* buffer,
                        char* target, int32_t remaining, uint32_t reuse_storage, uint32_t* err);

/* Writes the line of a text of size bytes, up to its NUL if it has one. Bytes that are not
   printable UTF-8 are written as \xNN, a backslash as two. */
uint32_t null_string_print(struct ork_handle* handle, uint32_t instance, char* buffer,
                           uint32_t indent, const char* name, const char* chars, int32_t remaining,
                           uint32_t size, uint32_t* err);

/*
 * Writes the element of a text of size bytes, up to its NUL if it has one. Bytes that are not
 * printable UTF-8 are written as \xNN, a backslash as two.
 */
uint32_t null_string_to_xml(struct ork_handle* handle, uint32_t instance, const char* name,
                            char* buffer, const char* chars, int32_t remaining, uint32_t size,
                            uint8_t state, uint32_t* err);

/* Reads a text into size bytes; the rest of them become 0. Errors: ENOSPC (28) if it is longer
   (chars does not change). */
void null_string_from_xml(struct ork_handle* handle, uint32_t instance, const char* path,
                          struct ork_xml* xml, char* chars, uint32_t size, uint32_t* err,
                          char* err_text, uint32_t err_text_len);

#ifdef __cplusplus
}
#endif

#endif
