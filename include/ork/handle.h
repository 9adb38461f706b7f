/*
 * The context that every call carries, and the images that the record runtime and its modules
 * share.
 *
 * All of it is a binary contract on x86-64: modules read and write these members directly, so
 * members neither move nor change width. Plain C, natural alignment, nothing before the first
 * member.
 */
#ifndef ORK_HANDLE_H
#define ORK_HANDLE_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct ork_handle;
struct ork_type_info;

/* ---- The object header --------------------------------------------------- */

/*
 * The 11 bytes that every record, enum, flag set and message begins with. The first eight are a
 * word, the address of the type descriptor; it is declared as bytes so that the header is 11 bytes
 * long and fields follow without a gap.
 */
struct ork_object {
  uint8_t type_info_slot[8]; /* descriptor address, native byte order; 0 in a sentinel and after
                                destroy */
  int8_t variant;            /* what the object is now; negative: it has no field at all */
  uint8_t variant_cap;       /* newest variant that the storage was laid out for */
  uint8_t obj_flags;         /* OBJ_... bits */
};

enum {
  ORK_OFFSET_TYPE_INFO_SLOT = 0,
  ORK_OFFSET_VARIANT = 8,
  ORK_OFFSET_VARIANT_CAP = 9,
  ORK_OFFSET_OBJ_FLAGS = 10,
  ORK_OBJECT_HEADER_SIZE = 11
};

/* Bits of obj_flags. */
enum {
  OBJ_OID_MAPPED = 0x01,    /* the runtime has an OID for the object: destroy asks it first */
  OBJ_EMBEDDED = 0x02,      /* inside another object's storage */
  OBJ_NESTED = 0x04,        /* state bytes inside the parent's state block */
  OBJ_STATE_TRACKED = 0x08, /* the object has state bytes */
  OBJ_RA_DATA = 0x20,       /* the instance carries ra data on the wire */
  OBJ_STTR_OFFSET = 0x40, /* the state bytes are where the runtime's map says, not after the body */
  OBJ_OWNS_SLOT_BLOCK = 0x80, /* type_info_slot holds a block of its own, freed with the object */
  OBJ_WIRE_MASK = 0x28        /* the bits that travel */
};

/* ---- Type descriptors ---------------------------------------------------- */

/* A descriptor's copy in the shared type table: its 272 bytes, then two words of the runtime's,
   initially 0. */
enum { ORK_SHARED_TYPE_INFO_SIZE = 288 };

/* First word of every descriptor. */
#define ORK_TYPE_INFO_MAGIC 0xbeeff00du

/* One variant of a type. The three words from create_count on are its statistics block. */
struct ork_variant_entry {
  uint32_t variant;       /* the entry's own index */
  uint32_t used_length;   /* end of this variant's last field, in bytes from the object's start */
  uint32_t alloc_slop;    /* newest body size minus used_length */
  uint32_t reserved;      /* 0 */
  uint64_t create_count;  /* objects created in this variant */
  uint64_t destroy_count; /* objects destroyed in this variant */
  uint64_t runtime_word;  /* 0 in the image, the runtime's to use */
};

/* The variants of a type, oldest first. */
struct ork_variant_info {
  int8_t n_variants;
  uint8_t reserved[7];
  struct ork_variant_entry* entries;
};

/* What a type is: constant, except for the statistics that varinfo points to. */
struct ork_type_info {
  uint32_t magic;        /* ORK_TYPE_INFO_MAGIC */
  uint8_t luid[16];      /* the type's identifier */
  char luid_text[33];    /* the same as 32 lower-case hexadecimal digits and a NUL */
  char name[64];         /* NUL-padded */
  char module[64];       /* NUL-padded */
  char kind[64];         /* "type", "enum", "flag" or "message", NUL-padded */
  uint8_t reserved_0[3]; /* 0 */
  int32_t unassigned_id; /* -1 */
  uint32_t reserved_1;   /* 0 */
  struct ork_variant_info* varinfo;
  uint32_t shared;     /* 0 in a static image, the handle's shared_types in a shared copy */
  uint32_t reserved_2; /* 0 */
};

/* ---- Messages, lists, modules -------------------------------------------- */

enum { ORK_MESSAGE_MARKER = 0xBC, ORK_MESSAGE_HEADER_WIRE_SIZE = 27, ORK_LUID_SIZE = 16 };

/* The header of a message in memory; on the wire it takes ORK_MESSAGE_HEADER_WIRE_SIZE bytes. */
struct ork_message_header {
  uint8_t marker;      /* ORK_MESSAGE_MARKER */
  uint8_t filler[6];   /* 0xFF each */
  uint8_t sttr_marker; /* 1: the message was made while state tracking was on */
  uint32_t sequence;   /* the sender's send_sequence */
  uint32_t length;     /* whole frame in bytes, this header and the LUID included */
};

/* A circular list: both pointers of an empty list point to the head itself. */
struct ork_list_head {
  struct ork_list_head* next;
  struct ork_list_head* prev;
};

/* A linked module. The descriptor list ends with a null pointer. */
struct ork_module {
  const char* name;
  const struct ork_type_info* const* descriptors;
  struct ork_module* next;       /* null in the last module */
  struct ork_module** prev_link; /* the link that points to this module; null while not linked */
};

/* The head of the module list. tail is the address of the last forward link, initially that of
   head. */
struct ork_module_root {
  uint32_t count;
  uint32_t reserved;
  struct ork_module* head; /* the runtime's; modules never use it */
  struct ork_module** tail;
};

/* ---- Bundles ------------------------------------------------------------- */

/* A row of a bundle's table of allowed messages; a row of zeros ends the table. */
struct ork_bundle_message_row {
  const uint8_t* luid; /* ORK_LUID_SIZE bytes */
  const char* name;    /* "message ..." */
  uint64_t repeatable; /* 0: at most once in a bundle, 1: any number of times */
};

/*
 * Receives a message. ctx is the caller's word, passed through unread. The handler owns msg from
 * now on. A handler that fails sets *err; any result is ignored.
 */
typedef void (*ork_message_handler)(struct ork_handle* handle, uint32_t instance, void* ctx,
                                    void* msg, uint32_t* err);

/* Receives a committed bundle. Its members are in the handle's receive list until the handler
   returns. */
typedef void (*ork_bundle_handler)(struct ork_handle* handle, uint32_t instance, void* ctx,
                                   uint32_t* err);

/*
 * Reads one frame from its first byte. out_msg may be null. A null handler leaves the choice to the
 * message. Returns the number of bytes consumed.
 */
typedef uint32_t (*ork_message_unmarshal_fn)(struct ork_handle* handle, uint32_t instance,
                                             void* ctx, void** out_msg, const uint8_t* buffer,
                                             int32_t length, ork_message_handler handler,
                                             uint32_t* err);

/* What the dispatcher knows of a message or of a bundle's control message: a row of its look-up
   table. */
struct ork_bundle_dispatch_info {
  const uint8_t* luid; /* ORK_LUID_SIZE bytes */
  const char* name;    /* the message's, or for a control message the bundle's name */
  ork_message_unmarshal_fn unmarshal; /* reads its frames */
  ork_message_handler handler;        /* receives its messages outside a bundle; may be null */
  ork_bundle_handler bundle_handler;  /* first choice at commit; null: none */
};

/* ---- The handle ---------------------------------------------------------- */

/* The record of the peer. Only the runtime reads it. */
struct ork_domain {
  void* runtime;
  uint64_t reserved[3];
};

/* What a handle's sttr_info points to; the runtime may add to it. */
struct ork_sttr_info {
  uint32_t sttr_mode; /* ORK_STTR_ON or ORK_STTR_OFF; anything else is a corrupted handle */
};

enum { ORK_STTR_ON = 0xEEEE, ORK_STTR_OFF = 0xDDDD };

/* The instance argument that means none. */
#define ORK_NO_INSTANCE 0xFFFFFFFFu

/* Returns size bytes, not cleared, or null. Size 0 returns a block of its own too. */
typedef void* (*ork_alloc_fn)(void* pool, uint32_t instance, size_t size);

/* Frees a block; null is ignored. */
typedef void (*ork_free_fn)(void* pool, uint32_t instance, void* ptr);

/* Called before length bytes of a live object change; owner is the object, at some sites null. */
typedef void (*ork_write_notify_fn)(struct ork_handle* handle, const void* address, size_t length,
                                    uint32_t instance, const void* owner);

/* Called before a statistics counter is incremented. */
typedef void (*ork_counter_notify_fn)(void* mem_pool, void* counter, uint32_t one,
                                      uint32_t instance);

/* Returns the shared copy of the type with this LUID text, or null. */
typedef struct ork_type_info* (*ork_type_table_find_fn)(void* type_table, uint32_t instance,
                                                        const char* luid_text);

/* Adds a shared copy under its LUID text; both live as long as the table. Returns 0 or an error
   number. */
typedef uint32_t (*ork_type_table_add_fn)(void* type_table, uint32_t instance,
                                          const char* luid_text, struct ork_type_info* copy);

/* Adds a module's descriptors to the shared type table. */
typedef void (*ork_type_info_init_fn)(struct ork_handle* handle, uint32_t instance, uint32_t* err);

/*
 * The runtime's context, first argument of nearly every call. One thread at a time uses a handle
 * and the objects reached through it. A runtime may keep members of its own after the last one.
 */
struct ork_handle {
  ork_alloc_fn shared_alloc_fn;              /* from shared_pool; never freed */
  ork_alloc_fn alloc_fn;                     /* objects and arrays, from mem_pool */
  ork_free_fn free_fn;                       /* to mem_pool */
  ork_write_notify_fn write_notify_fn;       /* never null */
  ork_counter_notify_fn counter_notify_fn;   /* never null */
  ork_type_table_add_fn type_table_add_fn;   /* set when shared_types is */
  ork_type_table_find_fn type_table_find_fn; /* set when shared_types is */
  uint32_t shared_types;     /* 0: private objects; 1: shared storage that the hooks watch */
  void* mem_pool;            /* pool argument of alloc_fn, free_fn, counter_notify_fn */
  void* type_table;          /* argument of the type table functions */
  void* shared_pool;         /* pool argument of shared_alloc_fn */
  uint32_t bundle_ctx;       /* sending: 1 while a bundle is open */
  uint32_t bundle_rx_active; /* receiving: 1 while a bundle is open */
  const struct ork_bundle_message_row* bundle_table; /* sending: the open bundle's table */
  struct ork_list_head bundle_send_list;             /* sending: messages of the open bundle */
  struct ork_list_head bundle_receive_list;          /* receiving: members, kept until commit */
  const struct ork_bundle_dispatch_info* bundle_rx_dispatch; /* receiving: found at start */
  void* bundle_rx_lut; /* receiving: the look-up table found at start */
  const struct ork_bundle_dispatch_info* bundle_commit_dispatch; /* receiving: found at commit */
  ork_bundle_handler bundle_handler; /* for all bundles of this handle; may be null */
  const char* domain_name;           /* for traces; never null */
  uint32_t send_sequence;            /* written to each frame; the sender increments it */
  struct ork_domain domain;          /* the peer */
  uint32_t cr_error;                 /* error slot of the calls that take none */
  uint32_t cr_instance;              /* instance of the calls that take none */
  uint32_t cr_active;                /* 1 only while a create in cr mode runs */
  struct ork_sttr_info* sttr_info;   /* null: no state tracking */
  void* hd_mapping;                  /* null: no map from objects to their state bytes is kept */
  uint32_t db_recording; /* nonzero: the database hooks are called for each object touched */
};

static_assert(sizeof(struct ork_object) == ORK_OBJECT_HEADER_SIZE, "object header");
static_assert(sizeof(struct ork_variant_entry) == 40, "variant entry");
static_assert(sizeof(struct ork_variant_info) == 16, "variant block");
static_assert(sizeof(struct ork_type_info) == 272, "type descriptor");
static_assert(offsetof(struct ork_type_info, luid) == 4, "luid");
static_assert(offsetof(struct ork_type_info, luid_text) == 20, "luid_text");
static_assert(offsetof(struct ork_type_info, name) == 53, "name");
static_assert(offsetof(struct ork_type_info, module) == 117, "module");
static_assert(offsetof(struct ork_type_info, kind) == 181, "kind");
static_assert(offsetof(struct ork_type_info, unassigned_id) == 248, "unassigned_id");
static_assert(offsetof(struct ork_type_info, varinfo) == 256, "varinfo");
static_assert(offsetof(struct ork_type_info, shared) == 264, "shared");
static_assert(sizeof(struct ork_message_header) == 16, "message header");
static_assert(sizeof(struct ork_module) == 32, "module record");
static_assert(sizeof(struct ork_module_root) == 24, "module list");
static_assert(sizeof(struct ork_bundle_message_row) == 24, "bundle table row");
static_assert(sizeof(struct ork_bundle_dispatch_info) == 40, "dispatch row");
static_assert(sizeof(struct ork_domain) == 32, "domain");
static_assert(offsetof(struct ork_handle, shared_types) == 56, "shared_types");
static_assert(offsetof(struct ork_handle, mem_pool) == 64, "mem_pool");
static_assert(offsetof(struct ork_handle, bundle_ctx) == 88, "bundle_ctx");
static_assert(offsetof(struct ork_handle, bundle_table) == 96, "bundle_table");
static_assert(offsetof(struct ork_handle, bundle_receive_list) == 120, "bundle_receive_list");
static_assert(offsetof(struct ork_handle, bundle_handler) == 160, "bundle_handler");
static_assert(offsetof(struct ork_handle, send_sequence) == 176, "send_sequence");
static_assert(offsetof(struct ork_handle, domain) == 184, "domain");
static_assert(offsetof(struct ork_handle, cr_error) == 216, "cr_error");
static_assert(offsetof(struct ork_handle, sttr_info) == 232, "sttr_info");
static_assert(offsetof(struct ork_handle, hd_mapping) == 240, "hd_mapping");
static_assert(offsetof(struct ork_handle, db_recording) == 248, "db_recording");

#ifdef __cplusplus
}
#endif

#endif
