/*
 * Set-up of the reference platform, for programs that run modules on it. Modules themselves never
 * include this file.
 *
 * Errors are errno numbers in *err, which is sticky: a call that finds it nonzero does nothing.
 * Objects made here are used by one thread at a time unless a comment says otherwise.
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
 * The text form has one line for each, "name luid variants", the LUID as 32 hexadecimal digits;
 * empty lines and lines that begin with # are passed over. A text has at most 4,096 lines.
 */
struct ork_type_list;

/* The list of all modules linked into this process now. No module may be loaded or unloaded
   meanwhile. */
struct ork_type_list* ork_type_list_from_modules(uint32_t* err);

/*
 * Reads the text form. A line that is none gives null, *err 22 and the reason, its line number in
 * front, in err_text (may be null). A LUID listed twice counts as wrong.
 */
struct ork_type_list* ork_type_list_parse(const char* text, size_t length, uint32_t* err,
                                          char* err_text, uint32_t err_text_len);

/* The same from a file. */
struct ork_type_list* ork_type_list_read(const char* path, uint32_t* err, char* err_text,
                                         uint32_t err_text_len);

/* What both lists have, each type at the lower number of variants. */
struct ork_type_list* ork_type_list_common(const struct ork_type_list* a,
                                           const struct ork_type_list* b, uint32_t* err);

/* Number of entries. */
uint32_t ork_type_list_size(const struct ork_type_list* list);

/* Number of variants of the type with this LUID; 0: not in the list. */
uint32_t ork_type_list_variants(const struct ork_type_list* list, const uint8_t* luid);

/* Calls visit for each entry in the order of the list. */
void ork_type_list_each(const struct ork_type_list* list,
                        void (*visit)(void* ctx, const char* name, const uint8_t* luid,
                                      uint32_t variants),
                        void* ctx);

/*
 * Writes the text form, NUL-terminated, and gives its length without the NUL. Nothing is written
 * unless it fits into size bytes with the NUL; buffer may be null to ask for the length.
 */
size_t ork_type_list_text(const struct ork_type_list* list, char* buffer, size_t size);

/* Null is ignored. */
void ork_type_list_free(struct ork_type_list* list);

/* ---- Observers ----------------------------------------------------------- */

/* What a handle tells its owner. Each may be null; ctx comes back unread. No observer may use the
   handle. */
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
 * Storage that several handles of one thread share: object memory, the type table and the map of
 * state distances. A handle without one has private storage of its own.
 */
struct ork_storage;

/* Storage inside this process. budget: as in struct ork_options. Null and *err 12 without memory.
   */
struct ork_storage* ork_storage_create(size_t budget, uint32_t* err);

/*
 * Storage that processes share under a name: makes it if there is none, else attaches to it. Every
 * process has it at the same address, so the address of an object means the same to all of them. A
 * process opens a name once.
 *
 * name has no slash. size is in bytes, at least 1 MiB, for all that will ever be in it; the size of
 * storage that is there already stands, and 0 makes none. address is where new storage goes, a
 * multiple of the page size; null leaves that to the name, for sizes up to 4 GiB. Attaching goes by
 * the storage itself, and address is null or the same.
 *
 * An object belongs to one process at a time: who has it hands it over by means of his own, such as
 * a pipe that carries its address, and leaves it alone from then on. Objects outlive their process.
 *
 * *err: 98 when something else lies at the address in this process, 2 when there is no such storage
 * and size is 0, 22 for a wrong name, size or address and for a name that holds something else, 12
 * or 28 without memory, else what the system gives.
 */
struct ork_storage* ork_storage_open(const char* name, size_t size, void* address, uint32_t* err);

/* Takes a name away; the memory lives on until the last process has left it. *err: 2 when there is
   none. */
void ork_storage_remove(const char* name, uint32_t* err);

/*
 * After the last handle on it is gone. Shared storage is left, with all that is in it; storage of
 * this process goes. Null is ignored.
 */
void ork_storage_destroy(struct ork_storage* storage);

/* ---- Handles ------------------------------------------------------------- */

enum ork_tracking {
  ORK_TRACKING_ABSENT, /* no sttr_info at all */
  ORK_TRACKING_OFF,
  ORK_TRACKING_ON
};

/* How a handle is made. ork_options_init gives every member the value told here; change some, then
   create. */
struct ork_options {
  const char* domain_name;     /* for traces; copied. "newest" */
  enum ork_tracking tracking;  /* ORK_TRACKING_ABSENT */
  struct ork_storage* storage; /* null: private */
  const struct ork_type_list*
      release;           /* what this process pretends to be; copied. null: all that it is */
  uint32_t cr_instance;  /* ORK_NO_INSTANCE */
  size_t memory_budget;  /* bytes of live blocks that private storage may hold; 0: no limit. 0 */
  size_t workspace_size; /* bytes, at most INT32_MAX. 1 MiB */
  uint32_t strict_epoch; /* nonzero: error 43 is written to the caller's slot as well. 0 */
  uint32_t db_recording; /* nonzero: the database hooks are told. 0 */
  uint32_t suppress_messages;     /* nonzero: failed marshals are reported at level debug. 0 */
  struct ork_observers observers; /* all null */
};

void ork_options_init(struct ork_options* options);

/* A handle with no error, no peer and no bundle. Null and *err 12 or 22 when it cannot be made. */
struct ork_handle* ork_handle_create(const struct ork_options* options, uint32_t* err);

/* What the storage of a handle holds. */
struct ork_memory_report {
  uint64_t live_blocks;
  uint64_t live_bytes;
  uint64_t peak_bytes;
  uint64_t allocations;    /* made so far */
  uint64_t refusals;       /* allocations that failed */
  uint64_t live_distances; /* objects in the map of state distances */
};

void ork_handle_memory(const struct ork_handle* handle, struct ork_memory_report* report);

/*
 * Destroys the members of an open received bundle, and then the handle. report, if not null, tells
 * what its private storage still held: anything left is a leak of the caller's, and is given back.
 * Null is ignored.
 */
void ork_handle_destroy(struct ork_handle* handle, struct ork_memory_report* report);

/* The nth allocation from now on fails, once, counted from 1; 0 takes that back. */
void ork_handle_fail_allocation(struct ork_handle* handle, uint64_t nth);

/* The handle's last error, 0 for none. */
uint32_t ork_handle_last_error(const struct ork_handle* handle);

/* Objects that exist keep the tracking that they were made with. */
void ork_handle_set_tracking(struct ork_handle* handle, enum ork_tracking tracking);

/*
 * Tells the handle what its peer knows; the list is copied. name, for traces, is copied too. A null
 * list forgets the peer. From then on a type has the newest variant that the peer and the handle's
 * own release both know, and -1 if one of them does not list it; a message is taken if both list
 * it.
 */
void ork_handle_set_peer(struct ork_handle* handle, const char* name,
                         const struct ork_type_list* peer, uint32_t* err);

/* What this process has to announce to a peer: its modules' types, cut down to the handle's
   release. */
struct ork_type_list* ork_handle_announcement(const struct ork_handle* handle, uint32_t* err);

/* ---- Object references --------------------------------------------------- */

/* Destroys an object whose last reference went after its destroy was asked for. */
typedef void (*ork_deferred_destroy_fn)(struct ork_handle* handle, uint32_t instance, void* obj);

/* Gives obj an OID, with no reference yet, and sets OBJ_OID_MAPPED. A mapped obj: null and *err 17.
   */
void* ork_oid_map(struct ork_handle* handle, uint32_t instance, void* obj,
                  ork_deferred_destroy_fn destroy, uint32_t* err);

/* Adds a reference; orklib_lookup_and_update_oid_ref_count takes one away. */
void ork_oid_hold(struct ork_handle* handle, void* oid, uint32_t* err);

/* The object behind oid, or null. */
void* ork_oid_object(const struct ork_handle* handle, const void* oid);

/* ---- Sending ------------------------------------------------------------- */

/* Writes all of length bytes somewhere and gives 0, or an error number. */
typedef uint32_t (*ork_write_fn)(void* ctx, const uint8_t* bytes, uint32_t length);

/* Writes one frame and advances send_sequence, for the next one. A write that fails gives its
   number in *err. */
void ork_send_frame(struct ork_handle* handle, const uint8_t* frame, uint32_t length,
                    ork_write_fn write, void* ctx, uint32_t* err);

/* An ork_write_fn for a socket or pipe; ctx points at an int, the descriptor. A closed peer gives
   32, no signal. */
uint32_t ork_write_to_fd(void* ctx, const uint8_t* bytes, uint32_t length);

/* ---- Dispatch ------------------------------------------------------------ */

/* Destroys a message object. */
typedef void (*ork_message_destroy_fn)(struct ork_handle* handle, uint32_t instance, void* msg);

/* What a dispatcher is told of a message or of a bundle's control message. Its texts and LUID must
   outlive it. */
struct ork_dispatch_entry {
  struct ork_bundle_dispatch_info info;
  ork_message_destroy_fn destroy; /* null marks a control message */
};

/* A look-up table from LUID to what reads the frame. Once filled it may serve any number of handles
   and threads. */
struct ork_dispatcher;

struct ork_dispatcher* ork_dispatcher_create(uint32_t* err);
void ork_dispatcher_free(struct ork_dispatcher* dispatcher);

/* Enters a row. A LUID that is there already: *err 17. */
void ork_dispatcher_add(struct ork_dispatcher* dispatcher, const struct ork_dispatch_entry* entry,
                        uint32_t* err);

/*
 * Looks at the first bytes of a stream. Gives the length of the frame that begins there, or 0 when
 * fewer than 43 bytes are at hand. A beginning that is no frame, or one of more than max bytes: 0
 * and *err 74.
 */
uint32_t ork_frame_length(const uint8_t* bytes, uint32_t have, uint32_t max, uint32_t* err);

/*
 * Reads one frame and delivers what is in it: inside a received bundle a message is kept until the
 * bundle's commit, outside it goes to the row's handler, or where the message itself sends it.
 * Gives the frame's length, or 0.
 *
 * *err: 90 when length is short of a frame or of what its header says, 74 when it is no frame, 2
 * for a LUID that the table lacks, else what the message's own reader or handler set. What a frame
 * that failed had allocated is given back, and so is a message that nobody took: 38, which a
 * handler that takes its message must not report. ctx goes to the handlers. One byte behind the
 * frame must be readable: a flag set that ends a short frame is read there.
 */
uint32_t ork_dispatch(const struct ork_dispatcher* dispatcher, struct ork_handle* handle,
                      uint32_t instance, void* ctx, const uint8_t* frame, uint32_t length,
                      uint32_t* err);

/* ---- Members of a received bundle ---------------------------------------- */

/* One kept message. It lives until the bundle handler returns, unless it is taken. */
struct ork_bundle_member;

/* The member behind previous, the first one for null; null at the end. Members come in the order of
   their arrival. */
struct ork_bundle_member* ork_bundle_next(struct ork_handle* handle,
                                          const struct ork_bundle_member* previous);

/* The row that the member's LUID led to. */
const struct ork_bundle_dispatch_info* ork_bundle_member_info(
    const struct ork_bundle_member* member);

/* The message, still the bundle's; null once taken. */
void* ork_bundle_member_message(const struct ork_bundle_member* member);

/* Gives the message away: the caller destroys it. */
void* ork_bundle_member_take(struct ork_bundle_member* member);

/* ---- XML documents ------------------------------------------------------- */

/*
 * Parses a document from memory: no network, no entity is expanded, and one with a document type is
 * refused. The element of an enum value out of range, whose name holds blanks, is taken as an empty
 * element. Null, *err 22 and "line N: reason" in err_text (may be null) for a text that is no
 * document, 12 without memory.
 */
struct ork_xml* ork_xml_parse(const char* text, size_t length, uint32_t* err, char* err_text,
                              uint32_t err_text_len);
void ork_xml_free(struct ork_xml* xml);

/*
 * Writes the path of the nth element called name anywhere in the document, counted from 1, in the
 * form that the reader finds without a search. Gives 0, or 90 when it does not fit.
 */
uint32_t ork_xml_nth_path(char* path, uint32_t size, const char* name, uint32_t n);

/* The line of the first node at path, or of the element around one that is none; 0 when there is no
   node. */
uint32_t ork_xml_line(struct ork_xml* xml, const char* path);

/* An element of a document. The texts are the document's and live as long. */
struct ork_xml_element {
  uint32_t depth;     /* 0 at the root */
  uint32_t line;      /* where its start tag begins, from 1 */
  const char* name;   /* without the prefix of its namespace */
  const char* parent; /* name of the element around it, null at the root */
  const char* space;  /* its namespace, null: none; the reader finds only elements without one */
  const char* text;   /* the first text right in it that is not blank, whole, null: none */
  /* The name of its first attribute but "state" and "time", which are what the library and a
       recording write; null: none. */
  const char* attribute;
};

/* Calls visit for each element in document order. Stops at nonzero and gives that back, else 0. */
uint32_t ork_xml_each(struct ork_xml* xml,
                      uint32_t (*visit)(void* ctx, const struct ork_xml_element* element),
                      void* ctx);

/*
 * The length of the first document in text, for a recording, where documents follow one another; 0
 * when there is no whole one.
 */
size_t ork_xml_document_length(const char* text, size_t length);

/* ---- Recording of messages ----------------------------------------------- */

/*
 * Appends recordings to a file from now on. The switch stays as it is. No thread may be receiving
 * meanwhile. With *err nonzero on entry nothing happens; an error of fopen leaves everything as it
 * was. A file that was open is closed, and what could not be written to it is told as by
 * ork_recorder_close, the new one being open all the same.
 */
void ork_recorder_open(const char* path, uint32_t* err);

/*
 * Closes the file and turns recording off, whatever *err is. When it was 0 it becomes the number of
 * the error that kept recorded messages from the file, 5 when one was met before the end. No thread
 * may be receiving meanwhile.
 */
void ork_recorder_close(uint32_t* err);

/* Nonzero turns recording on. Any thread. */
void ork_recorder_switch(uint32_t on);

/* ---- Statistics ---------------------------------------------------------- */

/* Calls visit for each variant of each type of the linked modules, and of storage's shared copies
   if it is not null. */
void ork_statistics_each(const struct ork_storage* storage,
                         void (*visit)(void* ctx, const char* name, uint32_t variant,
                                       uint64_t created, uint64_t destroyed),
                         void* ctx);

/* Prints a line for each variant of each type of which an object was ever made. */
void ork_statistics_print(const struct ork_storage* storage, FILE* stream);

/* ---- tawny --------------------------------------------------------------- */

/* The tag that the calling thread set for its next allocation, or 0; taking it clears it. */
uint32_t tawny_take_callsite_tag(void);

/* Adds bytes, negative ones for a block given back, to a tag's account. Any thread. */
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

/* Calls visit for each trace in the in-memory ring, oldest first. Any thread; visit may not trace.
   */
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
