#include "encoders/xml_write.h"

#include <cstdio>

#include "encoders/primitives.h"
#include "frame/array_state.h"

namespace encoders {
namespace {

constexpr size_t element_text_size = 96;

void open(const Call& call, TextBuffer& out, const char* tag, uint8_t state) {
  out.position = start_tag(call.handle, call.instance, out.start, tag, out.room(), state, call.err);
}
uint32_t close(const Call& call, TextBuffer& out, const char* tag) {
  out.position += end_tag(call.handle, call.instance, out.here(), tag, out.room(), call.err);
  return out.position;
}

uint32_t write_at(const Call& call, TextBuffer& out, void* at, uint8_t state,
                  const FieldRow& field) {
  return with_kind(field.kind,
                   Cases{[&](WholeRecord) {
                           return to_xml(call, field.name, out.here(), at, out.room_bytes(), state,
                                         frame::child_record(field));
                         },
                         [&](SmallType) {
                           return small_to_xml(call, field.name, out.here(), at, out.room_bytes(),
                                               frame::small_type(field));
                         },
                         [&](FixedString) {
                           return null_string_to_xml(call.handle, call.instance, field.name,
                                                     out.here(), static_cast<const char*>(at),
                                                     out.room(), field.width, state, call.err);
                         },
                         [&]<Kind K>(Coded<K> coded) {
                           return coded.to_xml(call, field.name, out.here(), at, out.room(), state);
                         }});
}

// Each element is a child with the field's name. An element is written even if its state getter
// fails.
void write_array(const Call& call, TextBuffer& out, void* object, bool tracked,
                 const FieldRow& field) {
  const uint32_t count = frame::usable_count(object, field);
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t state =
        tracked ? frame::array_state_get(call.handle, call.instance, object, i, call.err, field)
                : uint8_t{0};
    out.position += write_at(call, out, frame::element_at(object, field, i), state, field);
  }
}

void write_field(const Call& call, TextBuffer& out, void* object, bool tracked,
                 const FieldRow& field) {
  if (field.array != model::no_type) return write_array(call, out, object, tracked, field);
  uint8_t state = 0;
  // Counters have no state byte.
  if (tracked && field.cls != Class::counter)
    state = frame::state_flag_get(call.handle, call.instance, object, call.err, field);
  out.position += write_at(call, out, frame::field_of(object, field), state, field);
}

[[gnu::format(printf, 3, 0)]] void put_element(const Call& call, TextBuffer& out,
                                               const char* format, const char* name) {
  char text[element_text_size];
  const auto length = static_cast<uint32_t>(snprintf(text, sizeof text, format, name));
  out.position +=
      xml_enum_print(call.handle, call.instance, out.here(), text, out.room(), length, call.err);
}

void write_enum(const Call& call, TextBuffer& out, const void* object, const SmallRow& type) {
  const uint32_t value = frame::enum_value(object);
  if (value < type.values) {
    put_element(call, out, "<%s/>", type.texts[value]);
  } else {
    put_element(call, out, "<%s value out of range/>", frame::descriptor(type)->name);
  }
}

void write_flags(const Call& call, TextBuffer& out, const void* object, const SmallRow& type) {
  for (uint8_t flag = 0; flag < type.values; ++flag) {
    // The runtime decides whether asking a null object for a flag is an error.
    if (object == nullptr) {
      uint32_t scratch = 0;
      ork_store_epoch_err(call.handle, EIDRM, &scratch);
      if (scratch != 0) put_element(call, out, "<error>%s</error>", "ERR");
    } else if ((frame::flag_bits(object) >> flag & 1) != 0) {
      put_element(call, out, "<%s/>", type.texts[flag]);
    }
  }
}

}  // namespace

uint32_t to_xml(const Call& call, const char* tag, char* buffer, void* object, uint32_t length,
                uint8_t state, const RecordRow& record) {
  if (!call.start()) return 0;
  const int variant = frame::variant_of(object);
  const bool tracked = frame::checked_mode<Function::to_xml>(call.handle, record) == Tracking::on;
  TextBuffer out{buffer, length};
  open(call, out, tag, state);
  for (const FieldRow& field : model::fields_of(record, variant)) {
    if (!call.failed()) write_field(call, out, object, tracked, field);
  }
  return close(call, out, tag);
}

uint32_t to_xml_cr(ork_handle* handle, void* object, char* buffer, uint32_t length,
                   const RecordRow& record) {
  const Call call{handle, handle->cr_instance, &handle->cr_error};
  return cr_result(
      handle, to_xml(call, frame::descriptor(record)->name, buffer, object, length, 0, record));
}

uint32_t small_to_xml(const Call& call, const char* tag, char* buffer, const void* object,
                      uint32_t length, const SmallRow& type) {
  if (!call.start()) return 0;
  TextBuffer out{buffer, length};
  open(call, out, tag, 0);
  if (type.is_flag_set) {
    write_flags(call, out, object, type);
  } else {
    write_enum(call, out, object, type);
  }
  return close(call, out, tag);
}

uint32_t small_to_xml_cr(ork_handle* handle, const void* object, char* buffer, uint32_t length,
                         const SmallRow& type) {
  const Call call{handle, handle->cr_instance, &handle->cr_error};
  return cr_result(handle,
                   small_to_xml(call, frame::descriptor(type)->name, buffer, object, length, type));
}

}  // namespace encoders
