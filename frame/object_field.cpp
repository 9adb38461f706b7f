#include "frame/object_field.h"

#include "frame/flag_set.h"
#include "frame/primitives.h"
#include "frame/state.h"
#include "frame/whole_record.h"

namespace frame {

void* object_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                 const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.start() || !gate(call, object, field)) return nullptr;
  void* at = field_of(object, field);
  contain(call, at, nullptr);  // the object's own getter
  contain(call, at, object);
  return at;
}

void object_set(ork_handle* handle, uint32_t instance, void* object, const void* from,
                uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!begin_write(call, object, field)) return;
  void* at = field_of(object, field);
  visit_kind(field.kind, [&]<Kind K>(KindTag<K>) {
    if constexpr (K == Kind::record) {
      record_set(call, at, from, child_record(field));
    } else if constexpr (K == Kind::flag_set) {
      flag_set_set(call, at, from, small_type(field));
    } else if constexpr (K == Kind::ip_address) {
      ip_address_set(handle, instance, static_cast<ork_ip_address*>(at),
                     static_cast<const ork_ip_address*>(from), err);
    } else {
      no_row<Class::object, K>();
    }
  });
  if (mark<Function::set>(call, object, field)) contain(call, from, object);
}

}  // namespace frame
