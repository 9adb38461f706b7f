/*
 * orklib, the record runtime: errors, the object header, variants and domains, state bytes,
 * statistics, references, memory and the database hooks.
 *
 * Errors are errno numbers. Where a function takes err, *err is sticky: unless its text says
 * otherwise, a function that finds it nonzero does nothing and returns 0 or null. No function keeps
 * a pointer that was passed to it unless its text says so.
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

/* The modules of this process. Each one links itself at load and unlinks itself at unload. */
extern struct ork_module_root ork_module_tot_root;

/* ---- Errors -------------------------------------------------------------- */

/* Makes number the handle's last error. While cr_active is set, it is also stored in cr_error if
   that is 0. */
void ork_store_err(struct ork_handle* handle, uint32_t number);

/*
 * Reports what the peer's release does not allow: EIDRM (43) for a field, value or variant that
 * does not exist, EBADE (52) for a message that the peer does not accept. The number becomes the
 * handle's last error; whether *err is set too is the handle's policy. err may be null.
 */
void ork_store_epoch_err(struct ork_handle* handle, uint32_t number, uint32_t* err);

/* Clears the handle's last error. cr_error stays: the client clears it. */
void ork_clear_last_error(struct ork_handle* handle);

/* ---- The object header --------------------------------------------------- */

/*
 * Returns the variant of obj; 0 if obj is null. The pair (exact, in_enum) says what is asked for:
 * (1, 0) a record, (1, 1) a record whose enum field is accessed, (0, 1) an enum or flag set.
 */
int8_t ork_get_instance_variant(const void* obj, uint32_t exact, uint32_t in_enum);

/* Returns the obj_flags of obj; 0 if obj is null. exact is 1 and in_enum is 0. */
uint8_t ork_get_instance_obj_flag(const void* obj, uint32_t exact, uint32_t in_enum);

/* Returns the descriptor that obj points to; null if obj is null or its slot is 0. */
const struct ork_type_info* ork_get_manifested_type_info(const void* obj);

/* Returns the address of the word of obj that holds its descriptor. obj must not be null. */
const struct ork_type_info** ork_get_manifested_type_info_ptr_mem(void* obj);

/*
 * Returns the descriptor that an object in shared storage must point to: the shared copy of tinfo.
 * If the table lacks the type, it is filled by init_fn. If that fails, the handle's last error is
 * set and tinfo itself is returned.
 */
const struct ork_type_info* ork_type_info_ptr_get(struct ork_handle* handle, uint32_t instance,
                                                  const struct ork_type_info* tinfo,
                                                  ork_type_info_init_fn init_fn);

/*
 * Returns the ORK_LUID_SIZE bytes that identify the type of obj, valid as long as its descriptor;
 * null on an error. Errors: EINVAL (22) if obj is null or has no descriptor.
 */
const uint8_t* ork_get_luid(struct ork_handle* handle, uint32_t instance, const void* obj,
                            uint32_t* err);

/* ---- Variants and domains ------------------------------------------------ */

/*
 * Returns the newest variant of tinfo that the domain accepts, which may be newer than this release
 * knows; negative if the domain does not have the type; 0 if tinfo is null. Works with *err set
 * too.
 */
int8_t ork_domain_lookup_variant(struct ork_handle* handle, const struct ork_domain* domain,
                                 const struct ork_type_info* tinfo, uint32_t* err);

/* Returns 1 if the domain accepts messages of this type, else 0. */
uint32_t ork_domain_lookup_message_ok(struct ork_handle* handle, const struct ork_domain* domain,
                                      const struct ork_type_info* tinfo, uint32_t* err);

/*
 * Upgrades obj in place to the newest variant that the domain, max_variant and the room in its
 * storage allow; the change is announced. max_variant is the newest variant of this release.
 * Returns 1 if the variant has changed, else 0; 0 if obj or tinfo is null.
 */
uint32_t orklib_adjust_variant(struct ork_handle* handle, uint32_t instance, void* obj,
                               const struct ork_type_info* tinfo, int32_t max_variant,
                               uint32_t* err);

/*
 * Updates the variant block of a shared copy from a module's static descriptor; is_new is 1 if the
 * copy was made just now. Statistics of variants that stay are kept. Returns 0, or ENOMEM (12) if
 * the shared pool is exhausted.
 */
uint32_t ork_update_variant_info(struct ork_handle* handle, uint32_t instance,
                                 struct ork_type_info* entry, const struct ork_type_info* tinfo,
                                 uint32_t is_new);

/* ---- State bytes --------------------------------------------------------- */

/* Returns the distance in bytes from obj to its state block, for an object with OBJ_STTR_OFFSET. */
int32_t orklib_get_sttr_offset(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Stores the distance in the handle's map, replacing an older one, and sets OBJ_STTR_OFFSET on
   obj. */
void orklib_update_sttr_offset(struct ork_handle* handle, uint32_t instance, void* obj,
                               int32_t distance);

/* Removes obj from the handle's map; it is no error if it is not there. Returns 0. */
uint32_t ork_hd_mapping_destroy(struct ork_handle* handle, uint32_t instance, void* obj,
                                uint32_t* err);

/* ---- Statistics ---------------------------------------------------------- */

/* Counts an object of tinfo; statistics is the address of create_count in its variant entry.
   Returns 0. */
uint32_t orklib_type_stats_create_object(struct ork_handle* handle, uint32_t instance,
                                         const struct ork_type_info* tinfo, void* statistics,
                                         uint32_t* err);

/* Counts an object of tinfo as destroyed; statistics is as at its creation. Returns 0. */
uint32_t orklib_type_stats_destroy_object(struct ork_handle* handle, uint32_t instance,
                                          const struct ork_type_info* tinfo, void* statistics,
                                          uint32_t* err);

/* ---- Object references --------------------------------------------------- */

/*
 * Asks for the OID of obj to be removed. Returns 1 if it is removed: the caller destroys the object
 * now. Returns 0 if references remain: the runtime destroys the object when the last one is
 * released.
 */
uint32_t ork_request_oid_mapping_destroy(struct ork_handle* handle, uint32_t instance, void* obj,
                                         uint32_t* err);

/* Decrements the reference count of oid; raise is 0. Errors: ENOENT (2) if oid is unknown. */
void orklib_lookup_and_update_oid_ref_count(struct ork_handle* handle, uint32_t instance, void* oid,
                                            uint32_t raise, uint32_t* err);

/* ---- Workspace and memory ------------------------------------------------ */

/* Stores the handle's scratch buffer and its length in bytes; null and 0 if there is none. The
   runtime owns it. */
void orklib_get_handle_ws(struct ork_handle* handle, uint8_t** ws, int32_t* ws_len);

/* Returns size bytes of the process, outside any handle's budget, or null. pool is null. */
void* orklib_malloc(void* pool, uint32_t instance, size_t size);

/* Frees what orklib_malloc() returned; null is ignored. */
void orklib_free(void* pool, uint32_t instance, void* ptr);

/* ---- Database hooks ------------------------------------------------------ */

/* Reports that child is inside parent; with a null parent, that child is the entry point. Either
   may be null. relation is 1. */
void orkdb_record_containment2(struct ork_handle* handle, uint32_t instance, const void* child,
                               const void* parent, uint32_t relation);

/* Reports that obj was created in the storage that the database watches; obj may be null. */
void orkdb_plat_set_dirty(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Reports that obj is about to be destroyed. */
void orkdb_plat_set_destroy(struct ork_handle* handle, uint32_t instance, const void* obj);

/* Reports that obj was moved away from this address; how is 0. */
void orkdb_plat_set_detach(struct ork_handle* handle, uint32_t instance, const void* obj,
                           uint32_t how);

#ifdef __cplusplus
}
#endif

#endif
