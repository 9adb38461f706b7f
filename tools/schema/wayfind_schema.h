/*
 * The schema of fwe_ui_wayfind as data: what types, fields, messages and bundles there are, and
 * their exported functions by family name. Made from the same tables as the library; the library
 * itself exports nothing for it. For tools and tests.
 */
#ifndef WAYFIND_SCHEMA_H
#define WAYFIND_SCHEMA_H

#include <stdint.h>

#include "ork/orklib.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The access class of a field. */
enum wayfind_class {
  WAYFIND_VALUE,
  WAYFIND_OBJECT,
  WAYFIND_TEXT,
  WAYFIND_COUNTER,
  WAYFIND_VALUE_ARRAY,
  WAYFIND_RECORD_ARRAY
};

/* What a field or an array's element is made of. */
enum wayfind_kind {
  WAYFIND_U_INT8,
  WAYFIND_U_INT16,
  WAYFIND_U_INT32,
  WAYFIND_U_INT64,
  WAYFIND_ORK_BOOLEAN,
  WAYFIND_LINK_TYPE,
  WAYFIND_IP_ADDRESS,
  WAYFIND_CHAR,
  WAYFIND_ENUM,
  WAYFIND_FLAG_SET,
  WAYFIND_RECORD
};

/* What a field is there for; several may stand together. */
enum wayfind_role {
  WAYFIND_GROWS = 1,   /* counts events: how fast it grows tells something */
  WAYFIND_STAMP = 2,   /* when something happened */
  WAYFIND_COLUMN = 4,  /* stands in a table unless other columns are asked for */
  WAYFIND_ASKED = 8,   /* what a show asked for */
  WAYFIND_ENTRIES = 16 /* how many messages there are: of `counted`, or without one of all that
                          repeat in the show */
};

/* An exported function, by what stands behind the name of its type or field ("_create",
   "_get_value"). Cast the address to its prototype. */
struct wayfind_function {
  const char* suffix; /* null ends a table */
  void (*address)(void);
};

struct wayfind_record;
struct wayfind_small_type;
struct wayfind_message;

struct wayfind_field {
  const char* name;
  const char* meaning;
  enum wayfind_class cls;
  enum wayfind_kind kind;
  const char* type_name; /* of a record, enum or flag set, else null */
  uint8_t variant;       /* the oldest that holds the field */
  uint16_t offset;       /* in the object, bytes */
  uint16_t width;        /* of the value, of a text, or of an array's element, bytes */
  uint16_t state;        /* its byte, or an array's entry, in the state block */
  uint16_t nested;       /* the state block of an embedded record */
  const struct wayfind_record* record;   /* embedded or element, else null */
  const struct wayfind_small_type* type; /* enum or flag set, else null */
  uint8_t roles;                         /* of enum wayfind_role, one bit each */
  const struct wayfind_message* counted; /* what it counts, else null */
  const struct wayfind_function* functions;
};

/* One variant of a record; sizes in bytes. */
struct wayfind_layout {
  uint16_t used;
  uint16_t slop;
  uint16_t body;
  uint16_t state;
  uint8_t fields; /* fields of this variant and those before it */
  uint8_t bound;  /* end of their field numbers */
};

struct wayfind_record {
  const char* name;
  const char* meaning;
  const char* luid_text;
  const char* definition;
  const struct ork_type_info* type;
  uint8_t variants;
  struct wayfind_layout layouts[4];
  uint8_t field_count;
  const struct wayfind_field* fields;
  const struct wayfind_function* functions;
};

/* An enum or the flag set. */
struct wayfind_small_type {
  const char* name;
  const char* luid_text;
  const struct ork_type_info* type;
  uint8_t is_flag_set;
  uint8_t size;
  uint8_t values;
  const char* texts[8];
  const struct wayfind_function* functions;
};

struct wayfind_message {
  const char* name;
  const char* meaning;
  const uint8_t* luid;
  const char* luid_text;
  const char* bundle_name; /* "message " and the name */
  const struct ork_type_info* type;
  uint8_t record_count;
  const struct wayfind_record* records[2]; /* in wire order */
  uint32_t call_site_tag;                  /* of the first record; a second has the next */
  uint8_t key_count;
  const char* key[3]; /* paths to what tells one from the others of its type */
  const struct wayfind_function* functions;
};

struct wayfind_member {
  const struct wayfind_message* message;
  uint8_t repeatable;
};

struct wayfind_bundle {
  const char* name;
  const char* meaning;
  const uint8_t* luids[3]; /* start, abort, commit */
  struct wayfind_member members[6];
  uint8_t member_count; /* without the request message that ends every table */
  ork_bundle_handler* registered;
  const struct wayfind_function* functions; /* handlers and registration under their whole names */
};

extern const struct wayfind_record wayfind_records[];
extern const unsigned wayfind_record_count;
extern const struct wayfind_small_type wayfind_small_types[];
extern const unsigned wayfind_small_type_count;
extern const struct wayfind_message wayfind_messages[];
extern const unsigned wayfind_message_count;
extern const struct wayfind_bundle wayfind_bundles[];
extern const unsigned wayfind_bundle_count;

#ifdef __cplusplus
}
#endif

#endif
