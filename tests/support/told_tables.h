// The schema as tests expect it, read from facts.txt, whose content was worked out apart from the
// library and which says what each line means.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace told {

enum class Class { value, object, text, counter, value_array, record_array };

struct Field {
  std::string name;
  Class cls;
  std::string
      type; /* "u_int32", "char", "ip_address", or the name of a record, an enum or the flag set */
  std::string counter; /* of an array, the field that holds its length */
  unsigned number;     /* as is_valid_cr counts */
  unsigned variant;    /* the oldest that has it */
  unsigned offset;     /* in the object */
  unsigned width;      /* of the value, of the whole text, or of an array's element */
  int state;           /* its byte in the state block, or an array's entry there; -1: a counter */
  int nested;          /* an embedded record's state block in its parent's; -1: none */
};

struct Layout {
  unsigned used, slop, body, state, fields, bound;
};

struct Record {
  std::string name, luid, definition;
  std::vector<Layout> layouts; /* by variant */
  std::vector<Field> fields;

  const Layout& newest() const { return layouts.back(); }
  unsigned newest_variant() const { return static_cast<unsigned>(layouts.size()) - 1; }
  const Field& field(const std::string& name) const;
};

// An enum or the flag set.
struct Small {
  std::string name, luid, definition;
  bool flags;
  unsigned size, used, slop;
  std::vector<std::string> values;
};

struct Carried {
  std::string record;
  uint32_t tag;
};

struct Message {
  std::string name, luid, definition;
  unsigned used, slop;
  std::vector<Carried> records; /* in wire order */
};

struct Member {
  std::string message;
  bool repeatable;
};

struct Bundle {
  std::string name, show, start, abort, commit; /* LUIDs of the control messages */
  std::vector<Member> members;
};

struct Traces {
  unsigned section;
  std::string id;
  unsigned entries;
};

struct Tables {
  std::vector<Record> records;
  std::vector<Small> smalls;
  std::vector<Message> messages;
  std::vector<Bundle> bundles;
  std::vector<Traces> traces;
};

const Tables& tables();

// The file that they are read from.
const char* path();

// The record or small type of that name, or null.
const Record* record(const std::string& name);
const Small* small(const std::string& name);

// Whether a field's type is a record, and so embedded or an element.
inline bool is_record(const Field& field) { return record(field.type) != nullptr; }

// Whether the record has a variable array of its own.
bool has_array(const Record& record);

}  // namespace told
