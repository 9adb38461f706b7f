/*
 * Set-up of the reference platform, for programs that run modules on it. Modules themselves never
 * include this file.
 *
 * Errors are errno numbers in *err, which is sticky: a function that finds it nonzero does nothing.
 * Objects made here are used by one thread at a time, unless a comment says otherwise.
 */
#ifndef ORK_PLATFORM_H
#define ORK_PLATFORM_H

#include <stdint.h>
#include <stdio.h>

#include "handle.h"
#include "wire.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Type lists ---------------------------------------------------------- */

/*
 * What a release knows: for each type and message its LUID, its name and its number of variants.
 * The text form has one line for each, "name luid variants", with the LUID as 32 hexadecimal
 * digits; empty lines and lines that begin with # are ignored. A text has at most 4,096 lines.
 */
struct ork_type_list;

/* Returns the list of all modules that are linked into this process now. No module may be loaded or
   unloaded meanwhile. */
struct ork_type_list* ork_type_list_from_modules(uint32_t* err);

/*
 * Reads the text form. Returns null on an error. Errors: EINVAL (22) for a line of another form or
 * a LUID that was listed before; err_text then receives line number and reason, unless it is null.
 */
struct ork_type_list* ork_type_list_parse(const char* text, size_t length, uint32_t* err,
                                          char* err_text, uint32_t err_text_len);

/* Like ork_type_list_parse(), from a file. */
struct ork_type_list* ork_type_list_read(const char* path, uint32_t* err, char* err_text,
                                         uint32_t err_text_len);

/* Returns what both lists have, each type with the lower number of variants. */
struct ork_type_list* ork_type_list_common(const struct ork_type_list* a,
                                           const struct ork_type_list* b, uint32_t* err);

/* Returns the number of entries. */
uint32_t ork_type_list_size(const struct ork_type_list* list);

/* Returns the number of variants of the type with this LUID; 0 if it is not in the list. */
uint32_t ork_type_list_variants(const struct ork_type_list* list, const uint8_t* luid);

/* Calls visit for each entry in the order of the list. */
void ork_type_list_each(const struct ork_type_list* list,
                        void (*visit)(void* ctx, const char* name, const uint8_t* luid,
                                      uint32_t variants),
                        void* ctx);

/*
 * Writes the text form, NUL-terminated, and returns its length without the NUL. Nothing is written
 * unless it fits into size bytes with the NUL; buffer may be null to ask for the length.
 */
size_t ork_type_list_text(const struct ork_type_list* list, char* buffer, size_t size);

/* Frees the list. Null is ignored. */
void ork_type_list_free(struct ork_type_list* list);

/* ---- Observers ----------------------------------------------------------- */

/* What a handle reports to its owner. Each may be null; ctx is passed through unread. No observer
   may use the handle. */
struct ork_observers {
  void* ctx;
  void (*write_notify)(void* ctx, struct ork_handle* handle, const void* address, size_t length,
                       uint32_t instance, const void* owner);
  void (*counter_notify)(void* ctx, void* counter, uint32_t instance);
  void (*containment)(void* ctx, uint32_t instance, const void* child, const void* parent);
  void (*set_dirty)(void* ctx, uint32_t instance, const void* obj);
  void (*set_destroy)(void* ctx, uint32_t instance, const void* obj);
  void (*set_detach)(void* ctx, uint32_t instance, const void* obj);
};

/* ---- Storage ------------------------------------------------------------- */

/*
 * Storage that several handles of one thread share: object memory, the type table and the map from
 * objects to their state bytes. A handle without one has private storage.
 */
struct ork_storage;

/* Creates storage inside this process. budget is as memory_budget in struct ork_options. Returns
   null on an error. Errors: ENOMEM (12). */
struct ork_storage* ork_storage_create(size_t budget, uint32_t* err);

/*
 * Storage that processes share under a name: creates it if there is none, else attaches to it.
 * Every process has it at the same address, so the address of an object means the same to all of
 * them. A process opens a name once.
 *
 * name has no slash. size is in bytes, at least 1 MiB, for all that will ever be in it; storage
 * that exists keeps its size, and with size 0 none is created. address is where new storage goes, a
 * multiple of the page size; if it is null, the address follows from the name, for sizes up to 4
 * GiB. When attaching, address is null or that of the storage.
 *
 * An object belongs to one process at a time. Its owner passes it on by means of its own, such as a
 * pipe that carries its address, and does not touch it from then on. Objects outlive their process.
 *
 * A process that dies in the middle of a change, which takes moments, leaves the storage broken: in
 * every process each allocation is refused, as if there were no memory, and ork_handle_memory()
 * reports ENOTRECOVERABLE (131). Objects can still be read; what is freed stays. Remove the name and
 * create new storage.
 *
 * Errors: EADDRINUSE (98) if something else is at the address in this process; ENOENT (2) if there
 * is no such storage and size is 0; EINVAL (22) for a wrong name, size or address, or if something
 * else has the name; ENOMEM (12) or ENOSPC (28) without memory; and those of the system.
 */
struct ork_storage* ork_storage_open(const char* name, size_t size, void* address, uint32_t* err);

/* Removes a name; the memory lives until the last process has left it. Errors: ENOENT (2) if there
   is no such name. */
void ork_storage_remove(const char* name, uint32_t* err);

/*
 * To be called when no handle uses the storage any more. Detaches from shared storage, which keeps
 * all that is in it; frees storage of this process. Null is ignored.
 */
void ork_storage_destroy(struct ork_storage* storage);

/* ---- Handles ------------------------------------------------------------- */

enum ork_tracking {
  ORK_TRACKING_ABSENT, /* sttr_info is null */
  ORK_TRACKING_OFF,
  ORK_TRACKING_ON
};

/* How a handle is made. ork_options_init() sets every member to the default that ends its
   comment. */
struct ork_options {
  const char* domain_name;     /* for traces; copied. "newest" */
  enum ork_tracking tracking;  /* ORK_TRACKING_ABSENT */
  struct ork_storage* storage; /* null: private */
  const struct ork_type_list*
      release;           /* what this process pretends to be; copied. null: all that it is */
  uint32_t cr_instance;  /* ORK_NO_INSTANCE */
  size_t memory_budget;  /* what private storage may take from the process; 0: no limit. 0 */
  size_t workspace_size; /* bytes, at most INT32_MAX. 1 MiB */
  /* Reading one frame of n bytes may allocate at most frame_base + frame_factor * n, each block at
     what ork_block_cost gives; more is refused. It holds for messages that ork_dispatch reads, until
     their handler is called; what a module finds as linked-in handler runs within it. Both 0: no
     bound. 0 */
  size_t frame_base;
  size_t frame_factor;
  uint32_t strict_epoch;          /* nonzero: error 43 is written to the caller's slot as well. 0 */
  uint32_t db_recording;          /* nonzero: the database hooks are told. 0 */
  uint32_t suppress_messages;     /* nonzero: failed marshals are reported at level debug. 0 */
  struct ork_observers observers; /* all null */
};

void ork_options_init(struct ork_options* options);

/* Returns the most that a block of size bytes takes of a budget or of a frame's bound: with its head
   and, while states are tracked, the distances that objects in it may ask for. At most SIZE_MAX. */
size_t ork_block_cost(size_t size, enum ork_tracking tracking);

/* Creates a handle with no error, no peer and no bundle. Returns null on an error. Errors: ENOMEM
   (12), EINVAL (22) for wrong options. */
struct ork_handle* ork_handle_create(const struct ork_options* options, uint32_t* err);

/* What the storage of a handle holds. After ENOMEM (12), error tells storage that is broken from
   storage that is full. */
struct ork_memory_report {
  /* 0, or ENOTRECOVERABLE (131) for storage that is broken: a process died while it changed what
     processes share. Nothing else here is known then: all of it is 0, and stays so. */
  uint32_t error;
  uint64_t live_blocks;
  uint64_t live_bytes; /* as asked for */
  uint64_t peak_bytes;
  uint64_t allocations;     /* made so far */
  uint64_t refusals;        /* allocations that failed */
  uint64_t live_distances;  /* objects in the map of state distances */
  uint64_t held_bytes;      /* what all of it takes: this is what a budget counts */
  uint64_t peak_held_bytes; /* the most that it ever took */
};

void ork_handle_memory(const struct ork_handle* handle, struct ork_memory_report* report);

/*
 * Destroys the members of an open received bundle, and then the handle. report, if not null,
 * receives what its private storage still held: anything left is a leak of the caller's, and is
 * freed. Null is ignored.
 */
void ork_handle_destroy(struct ork_handle* handle, struct ork_memory_report* report);

/* Makes the nth allocation from now on, counted from 1, fail once; 0 cancels that. */
void ork_handle_fail_allocation(struct ork_handle* handle, uint64_t nth);

/* Returns the handle's last error, 0 for none. */
uint32_t ork_handle_last_error(const struct ork_handle* handle);

/* Sets the tracking mode. Objects that exist keep the mode that they were made with. */
void ork_handle_set_tracking(struct ork_handle* handle, enum ork_tracking tracking);

/*
 * Tells the handle what its peer knows; the list is copied. name, for traces, is copied too. A null
 * list removes the peer. From then on a type has the newest variant that the peer and the handle's
 * own release both know, and -1 if one of them does not list it; a message is accepted if both list
 * it.
 */
void ork_handle_set_peer(struct ork_handle* handle, const char* name,
                         const struct ork_type_list* peer, uint32_t* err);

/* Returns what this process announces to a peer: its modules' types, limited to the handle's
   release. */
struct ork_type_list* ork_handle_announcement(const struct ork_handle* handle, uint32_t* err);

/* ---- Object references --------------------------------------------------- */

/* Destroys an object whose last reference was released after its destroy was asked for. */
typedef void (*ork_deferred_destroy_fn)(struct ork_handle* handle, uint32_t instance, void* obj);

/* Gives obj an OID, with no reference yet, and sets OBJ_OID_MAPPED. Returns the OID; null on an
   error. Errors: EEXIST (17) if obj has one. */
void* ork_oid_map(struct ork_handle* handle, uint32_t instance, void* obj,
                  ork_deferred_destroy_fn destroy, uint32_t* err);

/* Adds a reference; orklib_lookup_and_update_oid_ref_count() releases one. */
void ork_oid_hold(struct ork_handle* handle, void* oid, uint32_t* err);

/* Returns the object that has oid, or null. */
void* ork_oid_object(const struct ork_handle* handle, const void* oid);

/* ---- Sending ------------------------------------------------------------- */

/* Writes all of length bytes somewhere. Returns 0 or an error number. */
typedef uint32_t (*ork_write_fn)(void* ctx, const uint8_t* bytes, uint32_t length);

/* Writes one frame and increments send_sequence for the next one. A write that fails sets *err to
   its number. */
void ork_send_frame(struct ork_handle* handle, const uint8_t* frame, uint32_t length,
                    ork_write_fn write, void* ctx, uint32_t* err);

/* An ork_write_fn for a socket or pipe; ctx points to an int, the descriptor. Returns EPIPE (32) if
   the peer has closed; there is no signal. */
uint32_t ork_write_to_fd(void* ctx, const uint8_t* bytes, uint32_t length);

/* ---- Dispatch ------------------------------------------------------------ */

/* Destroys a message object. */
typedef void (*ork_message_destroy_fn)(struct ork_handle* handle, uint32_t instance, void* msg);

/* A row for a message or a bundle's control message. Its texts and LUID must outlive the
   dispatcher. */
struct ork_dispatch_entry {
  struct ork_bundle_dispatch_info info;
  ork_message_destroy_fn destroy; /* null marks a control message */
};

/* A look-up table from LUID to what reads the frame. Once filled, it may serve any number of
   handles and threads. */
struct ork_dispatcher;

struct ork_dispatcher* ork_dispatcher_create(uint32_t* err);
void ork_dispatcher_free(struct ork_dispatcher* dispatcher);

/* Adds a row. Errors: EEXIST (17) if it has a row with this LUID. */
void ork_dispatcher_add(struct ork_dispatcher* dispatcher, const struct ork_dispatch_entry* entry,
                        uint32_t* err);

/*
 * Returns the length of the frame that begins at bytes; 0 if have is below 43, the length of the
 * shortest frame. Errors: EBADMSG (74) if it is no frame or has more than max bytes; the result is
 * 0.
 */
uint32_t ork_frame_length(const uint8_t* bytes, uint32_t have, uint32_t max, uint32_t* err);

/*
 * Reads one frame and delivers what is in it. Inside a received bundle a message is kept until the
 * bundle's commit; outside it goes to the row's handler, or to the one that the message itself
 * finds. ctx is passed to the handlers. Returns the length of the frame, or 0.
 *
 * Errors: EMSGSIZE (90) if length is below that of a frame or what its header says; EBADMSG (74) if
 * it is no frame; ENOENT (2) if the table lacks its LUID; and those of the message's reader and
 * handler. What a failed frame has allocated is freed, and so is a message without a handler:
 * ENOSYS (38), which a handler that keeps its message must not report. One byte past the end of the
 * frame must be readable: a flag set at the end of a short frame is read there.
 */
uint32_t ork_dispatch(const struct ork_dispatcher* dispatcher, struct ork_handle* handle,
                      uint32_t instance, void* ctx, const uint8_t* frame, uint32_t length,
                      uint32_t* err);

/* ---- Members of a received bundle ---------------------------------------- */

/* A message that is kept. It lives until the bundle handler returns, unless it is taken. */
struct ork_bundle_member;

/* Returns the member after previous, or the first one if that is null; null at the end. Members are
   in the order of their arrival. */
struct ork_bundle_member* ork_bundle_next(struct ork_handle* handle,
                                          const struct ork_bundle_member* previous);

/* Returns the row of the member's LUID. */
const struct ork_bundle_dispatch_info* ork_bundle_member_info(
    const struct ork_bundle_member* member);

/* Returns the message, which the bundle keeps; null if it was taken. */
void* ork_bundle_member_message(const struct ork_bundle_member* member);

/* Returns the message, which the caller now owns. */
void* ork_bundle_member_take(struct ork_bundle_member* member);

/* ---- XML documents ------------------------------------------------------- */

/*
 * Parses a document in UTF-8 from memory: there is no network access, no entity is expanded, and a
 * document type is refused, as is a document of more than 256 MiB, 2,000,000 parts or 64 levels,
 * with a start tag of more than 64 KiB or 64 attributes, or a text of more than 1 MiB. The element
 * of an enum value out of range, whose name has blanks, is read as an empty element. Returns null
 * on an error. Errors: ENOMEM (12); EINVAL (22) if text is no such document: err_text then receives
 * "line N: reason", unless it is null.
 */
struct ork_xml* ork_xml_parse(const char* text, size_t length, uint32_t* err, char* err_text,
                              uint32_t err_text_len);
void ork_xml_free(struct ork_xml* xml);

/*
 * Writes the path of the nth element called name anywhere in the document, counted from 1, in the
 * form that the reader finds without a search. Returns 0, or EMSGSIZE (90) if it does not fit.
 */
uint32_t ork_xml_nth_path(char* path, uint32_t size, const char* name, uint32_t n);

/* Returns the line of the first node at path, or of the element around it if it is not an element;
   0 if there is no node. */
uint32_t ork_xml_line(struct ork_xml* xml, const char* path);

/* An element of a document, which owns the texts. */
struct ork_xml_element {
  uint32_t depth;     /* 0 at the root */
  uint32_t line;      /* where its start tag begins, from 1 */
  const char* name;   /* without the prefix of its namespace */
  const char* parent; /* name of the element around it, null at the root */
  const char* space;  /* its namespace, null: none; the reader finds only elements without one */
  const char* text;   /* the first text directly in it that is not blank, whole; null: none */
  /* The name of its first attribute but "state" and "time", which are what the library and a
       recording write; null: none. */
  const char* attribute;
};

/* Calls visit for each element in document order. Stops at the first nonzero result and returns it,
   else 0. */
uint32_t ork_xml_each(struct ork_xml* xml,
                      uint32_t (*visit)(void* ctx, const struct ork_xml_element* element),
                      void* ctx);

/*
 * Returns the length of the first document in text, for a recording, where documents follow one
 * another; 0 if there is no whole one.
 */
size_t ork_xml_document_length(const char* text, size_t length);

/* ---- Recording of messages ----------------------------------------------- */

/*
 * Appends recordings to a file from now on. The switch does not change. No thread may be receiving
 * meanwhile. An error of fopen leaves everything as it was. A file that was open is closed; what
 * could not be written to it is reported as by ork_recorder_close(), and the new file is open all
 * the same.
 */
void ork_recorder_open(const char* path, uint32_t* err);

/*
 * Closes the file and turns recording off, with *err set too. If *err is 0, it becomes the number
 * of the error that kept recorded messages from the file; EIO (5) if that happened before the
 * close. No thread may be receiving meanwhile.
 */
void ork_recorder_close(uint32_t* err);

/* Turns recording on if on is nonzero, else off. Any thread. */
void ork_recorder_switch(uint32_t on);

/* ---- Statistics ---------------------------------------------------------- */

/* Calls visit for each variant of each type of the linked modules, and of storage's shared copies
   unless it is null. */
void ork_statistics_each(const struct ork_storage* storage,
                         void (*visit)(void* ctx, const char* name, uint32_t variant,
                                       uint64_t created, uint64_t destroyed),
                         void* ctx);

/* Prints a line for each variant of each type of which an object was ever created. */
void ork_statistics_print(const struct ork_storage* storage, FILE* stream);

/* ---- tawny --------------------------------------------------------------- */

/* Returns the tag that the calling thread set for its next allocation, or 0, and clears it. */
uint32_t tawny_take_callsite_tag(void);

/* Adds bytes and blocks, negative for what was freed, to a tag's account. Any thread. */
void tawny_account(uint32_t tag, int64_t bytes, int64_t blocks);

/* Calls visit for each tag ever used, in ascending order. Any thread. */
void tawny_each(void (*visit)(void* ctx, uint32_t tag, int64_t bytes, int64_t blocks), void* ctx);

/* Prints a line for each tag. */
void tawny_print(FILE* stream);

/* ---- flight -------------------------------------------------------------- */

/* A stored trace. Texts are NUL-terminated and cut at 255 bytes. */
struct flight_trace {
  uint64_t time_ns; /* since the epoch */
  uint8_t section_id[16];
  uint32_t index;
  uint32_t level_word;
  uint16_t module_id;
  uint8_t n_arguments;
  uint8_t kind[3]; /* 1 text, 4 number, 5 pointer */
  char text[3][256];
  uint64_t number[3]; /* numbers and pointers */
};

/* Calls visit for each trace in the in-memory ring, oldest first. Any thread. visit must not
   trace. */
void flight_ring_each(void (*visit)(void* ctx, const struct flight_trace* trace), void* ctx);

/* Empties the ring. */
void flight_ring_clear(void);

/* Writes every trace from now on to a file as well, which is truncated. Any thread. */
void flight_open(const char* path, uint32_t* err);

/* Closes the file. Any thread. */
void flight_close(void);

#ifdef __cplusplus
}
#endif

#endif
