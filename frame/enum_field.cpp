#include "frame/enum_field.h"

#include "frame/enum_type.h"
#include "frame/value_field.h"

namespace frame {

uint32_t read_enum_field(const Call& call, void* object, const FieldRow& field) {
  void* at = field_of(object, field);
  contain(call, at, object);
  return call.start() ? enum_value(at) : 0;
}

uint32_t enum_field_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                              const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return 0;
  return read_enum_field(call, object, field);
}

void enum_field_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                    uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  enum_set(call, field_of(object, field), from, small_type(field));
  if (mark<Function::set>(call, object, field)) contain(call, from, object);
}

void enum_field_set_value(ork_handle* handle, uint32_t instance, void* object, uint32_t value,
                          uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  void* at = reach_field(call, object, field, [](void* address) { return address; });
  if (at == nullptr) return;
  enum_set_value(call, at, value, small_type(field));
  mark<Function::set_value>(call, object, field);
}

}  // namespace frame
