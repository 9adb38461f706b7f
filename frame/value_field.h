// Accessors of fields that are values of a primitive: one path for all of them, with the field as a
// row.
#pragma once

#include "frame/primitives.h"
#include "frame/state.h"

namespace frame {

template <Kind K>
typename Primitive<K>::Storage* get(ork_handle* handle, uint32_t instance, void* object,
                                    uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return nullptr;
  auto* at = Primitive<K>::get(call, field_of(object, field));
  contain(call, at, object);
  return at;
}

template <Kind K>
typename Primitive<K>::Value get_value(ork_handle* handle, uint32_t instance, void* object,
                                       uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return 0;
  auto* at = Primitive<K>::get(call, field_of(object, field));
  if (at == nullptr) return 0;
  contain(call, at, object);
  return Primitive<K>::get_value(call, at);
}

// The containment hook is given the source here, not the field.
template <Kind K>
void set(ork_handle* handle, uint32_t instance, void* object, const void* from, uint32_t* err,
         const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  Primitive<K>::set(call, field_of(object, field), from);
  // A value that could not be marked has been written all the same, but the hook is not called.
  if (mark<Function::set>(call, object, field)) contain(call, from, object);
}

// Upgrades and gates the object, then returns the field's address for a write by value, which
// `reach` finds. Calls the containment hook twice; observers rely on both calls. Null, with *err
// set, when there is nothing to write to.
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

}  // namespace frame
