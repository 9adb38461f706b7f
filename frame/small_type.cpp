#include "frame/small_type.h"

#include "frame/destroy.h"
#include "frame/make.h"
#include "frame/value_field.h"

namespace frame {

void* small_create_internal(ork_handle* handle, uint32_t instance, const SmallRow& type) {
  return make<Function::small_create_internal, Form::small_create_failed>(handle, instance, type);
}

void* small_create_cr(ork_handle* handle, const SmallRow& type) {
  handle->cr_active = 1;
  void* object = small_create_internal(handle, handle->cr_instance, type);
  handle->cr_active = 0;
  return object;
}

void initialize(const Call& call, void* object, const ork_type_info* info, Initialization how,
                const SmallRow& type) {
  if (!call.begins()) return;
  const Born born = write_header(call, object, info, how, 0);
  if (how.no_stats != 0) return;
  check_variants<Function::small_initialize>(born.type, born.variant, type);
  if (born.variant >= 0)
    raise_counter(call, born.type, born.type->varinfo->entries[0].create_count);
}

void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const SmallRow& type) {
  if (object == nullptr)
    return trace::raise<Function::small_set_instance_embedded, Form::small_embed_object>(type);
  uint32_t local = 0;
  mark_embedded({handle, instance, &local}, object);
}

void small_destroy(ork_handle* handle, uint32_t instance, void* object, const SmallRow& type) {
  if (object == sentinel(type)) return;
  small_destroy_internal(handle, instance, object, 1, type);
}

void small_destroy_internal(ork_handle* handle, uint32_t instance, void* object,
                            uint32_t free_storage, const SmallRow& type) {
  if (object == nullptr || object == sentinel(type)) return;
  uint32_t local = 0;
  const Call call{handle, instance, &local};
  const int variant = small_variant_of(object);
  const ork_type_info* info =
      checked_type<Function::small_destroy_internal>(manifested_type(object), variant, type);
  if (variant >= 0) raise_counter(call, info, info->varinfo->entries[0].destroy_count);
  if (free_storage == 0) return;
  if (watched(call)) orkdb_plat_set_destroy(handle, instance, object);
  give_back(call, object);
}

uint32_t small_adjust_variant(const Call& call, void* object) {
  const ork_type_info* type = object != nullptr ? manifested_type(object) : nullptr;
  return orklib_adjust_variant(call.handle, call.instance, object, type, 0, call.err);
}

// Enums. ----------------------------------------------------------------------

namespace {

// The runtime is given the raw first word of the header as the type.
void enum_adjust(const Call& call, void* object) {
  const auto* type = load<const ork_type_info*>(object);
  orklib_adjust_variant(call.handle, call.instance, object, type, 0, call.err);
}

// Values beyond those of the first variant need a later one, and there is none.
bool admits(const Call& call, const void* object, uint32_t value, const SmallRow& type) {
  const bool later = small_variant_of(object) > 0;
  if (value < type.values || later) return true;
  call.lacks();
  return false;
}

}  // namespace

void* enum_get(ork_handle* handle, uint32_t instance, void* object) {
  uint32_t local = 0;
  contain({handle, instance, &local}, object, nullptr);
  return object;
}

uint32_t enum_get_value(const Call& call, const void* object) {
  if (call.failed()) return 0;
  if (object == nullptr) {
    call.fail(EINVAL);
    return 0;
  }
  return enum_value(object);
}

void enum_set(const Call& call, void* object, const void* from, const SmallRow& type) {
  if (!call.begins()) return;
  enum_adjust(call, object);
  if (!admits(call, object, enum_value(from), type)) return;
  announce(call, object, type.size, object);
  memmove(object, from, type.size);
}

void enum_set_value(const Call& call, void* object, uint32_t value, const SmallRow& type) {
  if (!call.begins()) return;
  enum_adjust(call, object);
  if (admits(call, object, value, type)) store(call, byte_at(object, at_value), value, object);
}

uint32_t enum_is_valid_cr(ork_handle* handle, int32_t value, const SmallRow& type) {
  ork_domain_lookup_variant(handle, &handle->domain, descriptor(type), &handle->cr_error);
  return value < type.values ? 1 : 0;
}

uint32_t read_enum_field(const Call& call, void* object, const FieldRow& field) {
  void* at = field_of(object, field);
  contain(call, at, object);
  return call.begins() ? enum_value(at) : 0;
}

uint32_t enum_field_get_value(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                              const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!call.begins() || !gate(call, object, field)) return 0;
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

// The flag set. ---------------------------------------------------------------

uint32_t flag_in_range(uint32_t flag, const SmallRow& type) { return flag < type.values ? 1 : 0; }

uint32_t flag_get_value(const Call& call, const void* object, uint32_t flag, const SmallRow& type) {
  if (call.failed()) return 0;
  if (object == nullptr || flag >= type.values) {
    call.lacks();
    return 0;
  }
  return (flag_bits(object) >> flag) & 1u;
}

uint32_t flag_get_cr(ork_handle* handle, const void* object, uint32_t flag, const SmallRow& type) {
  return flag_get_value({handle, handle->cr_instance, &handle->cr_error}, object, flag, type);
}

void flag_set_set(const Call& call, void* object, const void* from, const SmallRow& type) {
  if (!call.begins()) return;
  small_adjust_variant(call, object);
  announce(call, object, type.size, object);
  memmove(object, from, type.size);
}

void flag_set_value(const Call& call, void* object, uint32_t flag, uint32_t on,
                    const SmallRow& type) {
  if (!call.begins()) return;
  small_adjust_variant(call, object);
  const bool later = small_variant_of(object) >= 1;
  if (flag >= type.values && !later) return call.lacks();
  if (object == nullptr || flag >= type.values) return;
  const auto bit = static_cast<uint8_t>(1u << flag);
  const uint8_t bits = flag_bits(object);
  store(call, byte_at(object, at_flag_bits),
        static_cast<uint8_t>(on != 0 ? bits | bit : bits & ~bit), object);
}

uint32_t flag_is_valid_cr(ork_handle* handle, uint32_t flag, const SmallRow& type) {
  ork_domain_lookup_variant(handle, &handle->domain, descriptor(type), &handle->cr_error);
  return flag < type.values ? 1 : 0;
}

}  // namespace frame
