#include "frame/whole_values.h"

#include "frame/enum_field.h"
#include "frame/enum_type.h"
#include "frame/primitives.h"

namespace frame {
namespace {

void read_field(const Call& call, void* object, void* out, const FieldRow& field) {
  visit_kind(field.kind, [&]<Kind K>(KindTag<K>) {
    if constexpr (K == Kind::enumeration) {
      put(out, read_enum_field(call, object, field));
    } else if constexpr (requires { sizeof(Primitive<K>); }) {
      using Value = typename Primitive<K>::Value;
      auto* at = Primitive<K>::get(call, field_of(object, field));
      if (at == nullptr) return put(out, Value{0});
      contain(call, at, object);
      put(out, Primitive<K>::get_value(call, at));
    } else {
      no_row<Class::value, K>();
    }
  });
}

void write_field(const Call& call, void* object, uint64_t value, const FieldRow& field) {
  void* at = field_of(object, field);
  visit_kind(field.kind, [&]<Kind K>(KindTag<K>) {
    if constexpr (K == Kind::enumeration) {
      enum_set_value(call, at, static_cast<uint32_t>(value), small_type(field));
    } else if constexpr (requires { sizeof(Primitive<K>); }) {
      Primitive<K>::set_value(call, at, static_cast<typename Primitive<K>::Value>(value));
    } else {
      no_row<Class::value, K>();
    }
  });
}

}  // namespace

void get_all(ork_handle* handle, uint32_t instance, void* object, void* const* out, uint32_t* err,
             const RecordRow& record) {
  const Call call{handle, instance, err};
  if (!call.start()) return;
  for (const FieldRow& field : model::fields_of(record, variant_of(object))) {
    if (field.cls == model::Class::value || field.cls == model::Class::counter)
      read_field(call, object, *out++, field);
  }
}

void set_all(ork_handle* handle, uint32_t instance, void* object, const uint64_t* values,
             uint32_t* err, const RecordRow& record) {
  const Call call{handle, instance, err};
  if (!call.start()) return;
  adjust(call, object, record.newest());
  for (const FieldRow& field : model::fields_of(record, variant_of(object))) {
    if (field.cls == model::Class::value) write_field(call, object, *values++, field);
  }
}

}  // namespace frame
