/*
 * orklib, the record runtime: errors, the object header, variants and domains, state bytes,
 * statistics, references, memory and the database hooks.
 *
 * Errors are errno numbers. Where a function takes err, *err is sticky: unless told otherwise a
 * function that finds it nonzero does nothing and gives back 0 or null. No function keeps a pointer
 * that it was given unless it says so.
 */
#ifndef ORK_ORKLIB_H
#define ORK_ORKLIB_H

#include "bundle.h"
#include "handle.h"
#include "primitives.h"
#include "wire.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Modules ------------------------------------------------------------- */

/* The modules linked into this process. Each one links itself at load and unlinks itself at unload.
   */
extern struct ork_module_root ork_module_tot_root;

/* ---- Errors -------------------------------------------------------------- */

/* Makes number the handle's last error. While cr_active is set it also goes to cr_error, unless
   that holds one. */
void ork_store_err(struct ork_handle* handle, uint32_t number);

/*
 * Reports that the peer's release stands against something: number 43 for a field, value or variant
 * that is not there, 52 for a message that the peer does not take. The number becomes the handle's
 * last error; whether *err is written is the handle's policy. err may be null.
 */
void ork_store_epoch_err(struct ork_handle* handle, uint32_t number, uint32_t* err);

/* Forgets the handle's last error. cr_error stays: that slot is the client's to clear. */
void ork_clear_last_error(struct ork_handle* handle);

/* ---- The object header --------------------------------------------------- */

/*
 * The variant of obj. The pair (exact, in_enum) says who asks: (1, 0) for a record, (1, 1) for a
 * record whose enum field is at hand, (0, 1) for an enum or flag set itself. A null obj has variant
 * 0.
 */
int8_t ork_get_instance_variant(const void* obj, uint32_t exact, uint32_t in_enum);

/* The obj_flags of obj; asked as (1, 0). A null obj has none set. */
uint8_t ork_get_instance_obj_flag(const void* obj, uint32_t exact, uint32_t in_enum);

/* The descriptor that obj points at; null for a null obj and for one whose slot is 0. */
const struct ork_type_info* ork_get_manifested_type_info(const void* obj);

/* The address of the word of obj that holds its descriptor. obj must not be null. */
const struct ork_type_info** ork_get_manifested_type_info_ptr_mem(void* obj);

/*
 * The descriptor that an object in shared storage has to point at: the shared copy of tinfo. A
 * table that lacks the type is filled by init_fn. When that fails too, the handle's last error is
 * set and the result is tinfo itself.
 */
const struct ork_type_info* ork_type_info_ptr_get(struct ork_handle* handle, uint32_t instance,
                                                  const struct ork_type_info* tinfo,
                                                  ork_type_info_init_fn init_fn);

/*
 * The ORK_LUID_SIZE bytes that identify the type of obj, living as long as its descriptor. A null
 * obj or one without a descriptor: null, *err 22.
 */
const uint8_t* ork_get_luid(struct ork_handle* handle, uint32_t instance, const void* obj,
                            uint32_t* err);

/* ---- Variants and domains ------------------------------------------------ */

/*
 * The newest variant of tinfo that the domain takes. It may lie above what this release knows;
 * negative: the domain does not carry the type. A null tinfo gives 0. Answers with *err set as
 * well.
 */
int8_t ork_domain_lookup_variant(struct ork_handle* handle, const struct ork_domain* domain,
                                 const struct ork_type_info* tinfo, uint32_t* err);

/* 1 if the domain takes messages of this type, else 0. */
uint32_t ork_domain_lookup_message_ok(struct ork_handle* handle, const struct ork_domain* domain,
                                      const struct ork_type_info* tinfo, uint32_t* err);

/*
 * Raises the variant of obj in place as far as the domain, max_variant and the room in its storage
 * let it; the change is announced. max_variant is the newest variant of this release. Gives 1 if
 * the variant rose, else 0. A null obj or tinfo gives 0.
 */
uint32_t orklib_adjust_variant(struct ork_handle* handle, uint32_t instance, void* obj,
                               const struct ork_type_info* tinfo, int32_t max_variant,
                               uint32_t* err);

/*
 * Brings the variant block of a shared copy into line with a module's static descriptor; is_new is
 * 1 for a copy made just now. Statistics of variants that stay are kept. Gives 0, or 12 when the
 * shared pool is exhausted.
 */
uint32_t ork_update_variant_info(struct ork_handle* handle, uint32_t instance,
                                 struct ork_type_info* entry, const struct ork_type_info* tinfo,
                                 uint32_t is_new);

/* ---- State bytes --------------------------------------------------------- */

/* The distance in bytes from obj to its state block, for an object with OBJ_STTR_OFFSET. */
int32_t orklib_get_sttr_offset(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Keeps the distance in the handle's map and sets OBJ_STTR_OFFSET on obj. A distance told before is
   replaced. */
void orklib_update_sttr_offset(struct ork_handle* handle, uint32_t instance, void* obj,
                               int32_t distance);

/* Drops what the handle's map holds of obj. Nothing there is no error. Result 0. */
uint32_t ork_hd_mapping_destroy(struct ork_handle* handle, uint32_t instance, void* obj,
                                uint32_t* err);

/* ---- Statistics ---------------------------------------------------------- */

/* Counts an object of tinfo; statistics is the address of create_count of its variant entry. Result
   0. */
uint32_t orklib_type_stats_create_object(struct ork_handle* handle, uint32_t instance,
                                         const struct ork_type_info* tinfo, void* statistics,
                                         uint32_t* err);

/* Counts an object of tinfo as destroyed; statistics as at create. Result 0. */
uint32_t orklib_type_stats_destroy_object(struct ork_handle* handle, uint32_t instance,
                                          const struct ork_type_info* tinfo, void* statistics,
                                          uint32_t* err);

/* ---- Object references --------------------------------------------------- */

/*
 * Asks for the OID of obj to be taken away. 1: it is gone, the caller destroys the object now. 0:
 * references remain, the runtime destroys the object when the last one goes.
 */
uint32_t ork_request_oid_mapping_destroy(struct ork_handle* handle, uint32_t instance, void* obj,
                                         uint32_t* err);

/* Lowers the reference count of oid by one; raise is 0. An unknown oid: *err 2. */
void orklib_lookup_and_update_oid_ref_count(struct ork_handle* handle, uint32_t instance, void* oid,
                                            uint32_t raise, uint32_t* err);

/* ---- Workspace and memory ------------------------------------------------ */

/* The handle's scratch buffer and its length in bytes; null and 0 when there is none. The runtime
   owns it. */
void orklib_get_handle_ws(struct ork_handle* handle, uint8_t** ws, int32_t* ws_len);

/* size bytes from the process, outside any handle's budget, or null. pool is 0. */
void* orklib_malloc(void* pool, uint32_t instance, size_t size);

/* Takes back what orklib_malloc gave; null is ignored. */
void orklib_free(void* pool, uint32_t instance, void* ptr);

/* ---- Database hooks ------------------------------------------------------ */

/* Tells that child lies in parent; a null parent: child is the entry point. Either may be null.
   relation is 1. */
void orkdb_record_containment2(struct ork_handle* handle, uint32_t instance, const void* child,
                               const void* parent, uint32_t relation);

/* Tells that obj was created in the storage that the database watches; obj may be null. */
void orkdb_plat_set_dirty(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Tells that obj is about to go. */
void orkdb_plat_set_destroy(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Tells that obj was moved away from this address; how is 0. */
void orkdb_plat_set_detach(struct ork_handle* handle, uint32_t instance, const void* obj,
                           uint32_t how);

#ifdef __cplusplus
}
#endif

#endif
