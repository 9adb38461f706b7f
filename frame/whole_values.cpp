// All values of a record in one call, and the fields that are strings or objects.
#include "frame/array.h"
#include "frame/small_type.h"
#include "frame/value_field.h"
#include "frame/whole_record.h"

namespace frame {
namespace {

void read_field(const Call& call, void* object, void* out, const FieldRow& field) {
  if (field.kind == Kind::enumeration) return put(out, read_enum_field(call, object, field));
  with_value(field.kind, [&](auto primitive) {
    using Value = typename decltype(primitive)::Value;
    auto* at = primitive.get(call, field_of(object, field));
    if (at == nullptr) return put(out, Value{0});
    contain(call, at, object);
    put(out, primitive.get_value(call, at));
  });
}

void write_field(const Call& call, void* object, uint64_t value, const FieldRow& field) {
  void* at = field_of(object, field);
  if (field.kind == Kind::enumeration)
    return enum_set_value(call, at, static_cast<uint32_t>(value), small_type(field));
  with_value(field.kind, [&](auto primitive) {
    primitive.set_value(call, at, static_cast<typename decltype(primitive)::Value>(value));
  });
}

}  // namespace

void get_all(ork_handle* handle, uint32_t instance, void* object, void* const* out, uint32_t* err,
             const RecordRow& record) {
  const Call call{handle, instance, err};
  if (!call.begins()) return;
  for (const FieldRow& field : model::fields_of(record, variant_of(object))) {
    if (field.cls == model::Class::value || field.cls == model::Class::counter)
      read_field(call, object, *out++, field);
  }
}

void set_all(ork_handle* handle, uint32_t instance, void* object, const uint64_t* values,
             uint32_t* err, const RecordRow& record) {
  const Call call{handle, instance, err};
  if (!call.begins()) return;
  adjust(call, object, record.newest());
  for (const FieldRow& field : model::fields_of(record, variant_of(object))) {
    if (field.cls == model::Class::value) write_field(call, object, *values++, field);
  }
}

void* object_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                 const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins() || !gate(call, object, field)) return nullptr;
  void* at = field_of(object, field);
  contain(call, at, nullptr);
  contain(call, at, object);
  return at;
}

void object_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  void* at = field_of(object, field);
  if (field.kind == Kind::record) {
    record_set(call, at, from, child_record(field));
  } else if (field.kind == Kind::flag_set) {
    flag_set_set(call, at, from, small_type(field));
  } else {
    ip_address_set(handle, instance, static_cast<ork_ip_address*>(at),
                   static_cast<const ork_ip_address*>(from), err);
  }
  if (mark<Function::set>(call, object, field)) contain(call, from, object);
}

void text_get(ork_handle* handle, uint32_t instance, const void* object, char* to, uint32_t size,
              uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins()) return;
  if (size == 0) return call.fail(EINVAL);
  if (!gate(call, object, field)) return;
  uint32_t length = field.width;
  if (size <= length) {
    call.fail(ENOSPC);
    length = size - 1;
  }
  strncpy(to, static_cast<const char*>(field_of(object, field)), length);
  to[length] = '\0';
}

// The end byte comes last, behind the mark, and nobody is told of it; a text of full width has
// none.
void text_set(ork_handle* handle, uint32_t instance, void* object, const char* from,
              uint32_t length, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  if (length > field.width) return call.fail(EINVAL);
  auto* text = static_cast<char*>(field_of(object, field));
  announce(call, text, length, object);
  strncpy(text, from, length);
  if (!mark<Function::set>(call, object, field)) return;
  if (length < field.width) text[length] = '\0';
}

}  // namespace frame
