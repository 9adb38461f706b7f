#include "encoders/text.h"

#include <cstdio>

#include "encoders/primitives.h"

namespace encoders {
namespace {

constexpr uint32_t step = 2;  // blanks per level of nesting
constexpr size_t element_name_size = 80;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"  // every format is a literal where it is given
template <class... Args>
void put(const Call& call, TextBuffer& out, const char* format, Args... args) {
  out.position +=
      ork_snprintf(call.handle, call.instance, out.here(), out.room(), call.err, format, args...);
}
#pragma GCC diagnostic pop

void open(const Call& call, TextBuffer& out, uint32_t indent) {
  out.position =
      ork_print_space(call.handle, call.instance, out.start, indent, out.room(), call.err);
}
// The runtime appends the blanks to the text at the start of the buffer, whatever the position.
void close(const Call& call, TextBuffer& out, uint32_t indent) {
  out.position +=
      ork_print_space(call.handle, call.instance, out.start, indent, out.room(), call.err);
  put(call, out, "}\n");
}

uint32_t print_at(const Call& call, TextBuffer& out, uint32_t indent, const char* name,
                  const void* at, const FieldRow& field) {
  return with_kind(field.kind,
                   Cases{[&](WholeRecord) {
                           return print(call, out.here(), indent, name, at, out.room_bytes(),
                                        frame::child_record(field));
                         },
                         [&](SmallType) {
                           return small_print(call, out.here(), indent, name, at, out.room_bytes(),
                                              frame::small_type(field));
                         },
                         [&](FixedString) {
                           return null_string_print(call.handle, call.instance, out.here(), indent,
                                                    name, static_cast<const char*>(at), out.room(),
                                                    field.width, call.err);
                         },
                         [&]<Kind K>(Coded<K> coded) {
                           return coded.print(call, out.here(), indent, name, at, out.room());
                         }});
}

void print_field(const Call& call, TextBuffer& out, uint32_t indent, const void* object,
                 const FieldRow& field) {
  if (field.array == model::no_type) {
    out.position += print_at(call, out, indent, field.name, frame::field_of(object, field), field);
    return;
  }
  const uint32_t count = frame::usable_count(object, field);
  for (uint32_t i = 0; i < count; ++i) {
    char name[element_name_size];
    snprintf(name, sizeof name, "%s[%d]", field.name, static_cast<int>(i));
    out.position += print_at(call, out, indent, name, frame::element_at(object, field, i), field);
  }
}

// The text for a value out of range has no newline: the next field follows on the same line.
uint32_t enum_print(const Call& call, TextBuffer& out, const void* object, const SmallRow& type) {
  const uint32_t value = frame::enum_value(object);
  if (value < type.values) {
    put(call, out, "%s\n", type.texts[value]);
  } else {
    put(call, out, "Enum value out of range");
  }
  return out.position;
}

uint32_t flag_set_print(const Call& call, TextBuffer& out, const void* object,
                        const SmallRow& type) {
  for (uint8_t flag = 0; flag < type.values; ++flag) {
    // The runtime decides whether asking a null object for a flag is an error.
    if (object == nullptr) {
      uint32_t scratch = 0;
      ork_store_epoch_err(call.handle, EIDRM, &scratch);
      if (scratch != 0) put(call, out, "%s", "ERR ");
    } else if ((frame::flag_bits(object) >> flag & 1) != 0) {
      char text[sizeof type.texts[flag] + 1];  // the runtime is given the blank with the text
      snprintf(text, sizeof text, "%s ", type.texts[flag]);
      put(call, out, "%s", static_cast<const char*>(text));
    }
  }
  put(call, out, "\n");
  return out.position;
}

}  // namespace

uint32_t print(const Call& call, char* buffer, uint32_t indent, const char* name,
               const void* object, uint32_t length, const RecordRow& record) {
  if (!call.start()) return 0;
  const int variant = frame::variant_of(object);
  TextBuffer out{buffer, length};
  open(call, out, indent);
  put(call, out, "%s@%s: {\n", name, frame::descriptor(record)->name);
  if (variant < 0) return out.position;
  for (const FieldRow& field : model::fields_of(record, variant))
    print_field(call, out, indent + step, object, field);
  // An object of an older variant stops at the first gate, and so lacks the closing line.
  if (variant >= record.newest()) close(call, out, indent);
  return out.position;
}

uint32_t print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                  const RecordRow& record) {
  const Call call{handle, handle->cr_instance, &handle->cr_error};
  return cr_result(handle,
                   print(call, buffer, 0, frame::descriptor(record)->name, object, length, record));
}

uint32_t small_print(const Call& call, char* buffer, uint32_t indent, const char* name,
                     const void* object, uint32_t length, const SmallRow& type) {
  if (!call.start()) return 0;
  TextBuffer out{buffer, length};
  open(call, out, indent);
  put(call, out, "%s@%s:", name, frame::descriptor(type)->name);
  return type.is_flag_set ? flag_set_print(call, out, object, type)
                          : enum_print(call, out, object, type);
}

uint32_t small_print_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                        const SmallRow& type) {
  const Call call{handle, handle->cr_instance, &handle->cr_error};
  return cr_result(
      handle, small_print(call, buffer, 0, frame::descriptor(type)->name, object, length, type));
}

}  // namespace encoders
