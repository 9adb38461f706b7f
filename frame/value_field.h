// Accessors of value fields: the same straight path for every primitive, with the field as a row;
// enums carry their own range check.
#pragma once

#include "frame/primitives.h"
#include "frame/small_type.h"
#include "frame/state.h"

namespace frame {

template <Kind K>
typename Primitive<K>::Storage* get(ork_handle* handle, uint32_t instance, void* object,
                                    uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins() || !gate(call, object, field)) return nullptr;
  auto* at = Primitive<K>::get(call, field_of(object, field));
  contain(call, at, object);
  return at;
}

template <Kind K>
typename Primitive<K>::Value get_value(ork_handle* handle, uint32_t instance, void* object,
                                       uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins() || !gate(call, object, field)) return 0;
  auto* at = Primitive<K>::get(call, field_of(object, field));
  if (at == nullptr) return 0;
  contain(call, at, object);
  return Primitive<K>::get_value(call, at);
}

// The source is what the database hook hears of here, not the field.
template <Kind K>
void set(ork_handle* handle, uint32_t instance, void* object, const void* from, uint32_t* err,
         const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  Primitive<K>::set(call, field_of(object, field), from);
  if (mark<Function::set>(call, object, field)) contain(call, from, object);
}

// The way to a field that is written by value: asked for like a getter's, and told to the database
// hook twice. Null with the error set when there is nothing to write to.
template <class Reach>
void* reach_field(const Call& call, void* object, const FieldRow& field, Reach reach) {
  if (!begin_write(call, object, field)) return nullptr;
  void* at = nullptr;
  if (!call.failed()) {
    ork_clear_last_error(call.handle);
    if (gate(call, object, field)) {
      at = reach(field_of(object, field));
      contain(call, at, object);
    }
  }
  contain(call, at, object);
  if (call.failed()) return nullptr;
  if (at == nullptr) call.fail(ENOENT);
  return at;
}

template <Kind K>
void set_value(ork_handle* handle, uint32_t instance, void* object,
               typename Primitive<K>::Value value, uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  void* at = reach_field(call, object, field,
                         [&](void* address) { return Primitive<K>::get(call, address); });
  if (at == nullptr) return;
  Primitive<K>::set_value(call, at, value);
  mark<Function::set_value>(call, object, field);
}

// Enums. A refused value leaves the field as it is; the state byte is marked all the same.
// Reads a field that is an enum; the database hook hears of it once.
uint32_t read_enum_field(const Call& call, void* object, const FieldRow& field);
uint32_t enum_field_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                              const FieldRow& field);
void enum_field_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                    uint32_t* err, const FieldRow& field);
void enum_field_set_value(ork_handle* handle, uint32_t instance, void* object, uint32_t value,
                          uint32_t* err, const FieldRow& field);

}  // namespace frame
