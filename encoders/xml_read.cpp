#include "encoders/xml_read.h"

#include <cstdio>

#include "encoders/primitives.h"
#include "frame/create.h"
#include "frame/destroy.h"
#include "frame/primitives.h"
#include "frame/record_array.h"
#include "frame/value_array.h"
#include "frame/whole_record.h"

namespace encoders {
namespace {

// A path on the stack. One that does not fit is treated as that of a missing node.
struct Path {
  static constexpr size_t size = 256;
  char text[size];
  bool fits;

  Path(const char* parent, const char* name) {
    fits = is_whole(snprintf(text, size, "%s/%s", parent, name));
  }
  Path(const char* parent, const char* name, int number) {
    fits = is_whole(snprintf(text, size, "%s/%s[%d]", parent, name, number));
  }
  static bool is_whole(int length) { return length >= 0 && static_cast<size_t>(length) < size; }
};

void read_at(const Call& call, const Path& path, const Document& document, void* at,
             const FieldRow& field) {
  if (!path.fits) {
    if (!call.failed()) call.fail(ENOENT);
    return;
  }
  with_kind(field.kind,
            Cases{[&](WholeRecord) {
                    from_xml(call, path.text, document, at, frame::child_record(field));
                  },
                  [&](SmallType) {
                    small_from_xml(call, path.text, document, at, frame::small_type(field));
                  },
                  [&](FixedString) {
                    null_string_from_xml(call.handle, call.instance, path.text, document.xml,
                                         static_cast<char*>(at), field.width, call.err,
                                         document.err_text, document.err_text_len);
                  },
                  [&]<Kind K>(Coded<K> coded) {
                    coded.from_xml(call, path.text, document.xml, at, document.err_text,
                                   document.err_text_len);
                  }});
}

// An element is read into an object of its own first, and then set.
void* create_scratch(const Call& call, const FieldRow& field) {
  if (field.cls == Class::value_array)
    return frame::with_element(field.kind, [&](auto element) { return element.create(call); });
  ork_fwe_ui_wayfind_trace_init();
  return frame::create_internal(call.handle, call.instance, frame::child_record(field));
}

// Also frees what was read into it, unless it has moved to the array.
void destroy_scratch(const Call& call, void* scratch, const FieldRow& field) {
  if (field.cls == Class::value_array)
    return frame::with_element(field.kind, [&](auto element) { element.destroy(call, scratch); });
  frame::destroy_filled(call.handle, call.instance, scratch, 1, frame::child_record(field));
}

void store_element(const Call& call, void* object, uint32_t index, const void* scratch,
                   const FieldRow& field) {
  if (field.cls == Class::value_array) return frame::array_set(call, object, index, scratch, field);
  frame::array_set_record(call, object, index, scratch, frame::record_set, field);
}

// Whether from_xml() checks *err after a field. It does not after a failed scratch allocation:
// later fields are still looked up.
enum class AfterField : uint8_t { check_error, keep_going };

AfterField read_array(const Call& call, const char* parent, const Document& document, void* object,
                      const FieldRow& field) {
  for (uint32_t n = 1;; ++n) {
    void* scratch = create_scratch(call, field);
    if (scratch == nullptr) {
      call.fail(ENOMEM);
      return AfterField::keep_going;
    }
    read_at(call, Path(parent, field.name, static_cast<int>(n)), document, scratch, field);
    const bool found = !call.failed();
    if (found) store_element(call, object, n - 1, scratch, field);
    destroy_scratch(call, scratch, field);
    if (!found) return AfterField::check_error;
  }
}

AfterField read_field(const Call& call, const char* parent, const Document& document, void* object,
                      const FieldRow& field) {
  if (field.cls == Class::counter) return AfterField::check_error;  // follows from the elements
  if (field.array != model::no_type) return read_array(call, parent, document, object, field);
  read_at(call, Path(parent, field.name), document, frame::field_of(object, field), field);
  return AfterField::check_error;
}

// Result of looking up one enumerator's element. Anything but `found` is also stored as the
// handle's last error.
enum class Probe : uint8_t { found, missing, failed };

Probe probe(const Call& call, const char* parent, const char* name, const Document& document) {
  const Path path(parent, name);
  char scratch[128];
  call.adopt(path.fits ? xml_get_element_value(document.xml, path.text, scratch, sizeof scratch, 0)
                       : uint32_t{ENOENT});
  if (!call.failed()) return Probe::found;
  if (call.forgive(ENOENT)) return Probe::missing;
  if (document.err_text != nullptr)
    snprintf(document.err_text, document.err_text_len, "Failed xpath: %s", parent);
  return Probe::failed;
}

// The first value that is found wins.
void read_enum(const Call& call, const char* path, const Document& document, void* object,
               const SmallRow& type) {
  for (uint32_t value = 0; value < type.values; ++value) {
    const Probe answer = probe(call, path, type.texts[value], document);
    if (answer == Probe::missing) continue;
    if (answer == Probe::found) frame::put(frame::byte_at(object, frame::at_value), value);
    return;
  }
}

// Bits are only set, never cleared: a flag that the document lacks keeps its bit.
void read_flags(const Call& call, const char* path, const Document& document, void* object,
                const SmallRow& type) {
  for (uint8_t flag = 0; flag < type.values; ++flag) {
    const Probe answer = probe(call, path, type.texts[flag], document);
    if (answer == Probe::failed) return;
    if (answer == Probe::missing) continue;
    if (object != nullptr) {
      frame::flag_set_value(call, object, flag, 1, type);
    } else if (call.start()) {
      frame::small_adjust_variant(call, object);
    }
    call.forgive(ENOENT);
  }
}

}  // namespace

void from_xml(const Call& call, const char* path, const Document& document, void* object,
              const RecordRow& record) {
  if (!call.start()) return;
  uint32_t nodes = 0;
  if (xml_get_element_nodecount(document.xml, path, &nodes) != 0 || nodes == 0)
    return call.fail(ENOENT);
  for (const FieldRow& field : model::fields_of(record)) {
    if (read_field(call, path, document, object, field) == AfterField::keep_going) continue;
    call.forgive(ENOENT);  // a field that is not there
    if (call.failed()) return;
  }
}

void small_from_xml(const Call& call, const char* path, const Document& document, void* object,
                    const SmallRow& type) {
  if (!call.start()) return;
  if (type.is_flag_set) return read_flags(call, path, document, object, type);
  read_enum(call, path, document, object, type);
}

}  // namespace encoders
