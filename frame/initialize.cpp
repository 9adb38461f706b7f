#include "frame/initialize.h"

#include "frame/kinds.h"
#include "frame/small_type.h"
#include "frame/state.h"
#include "ork/primitives.h"

namespace frame {
namespace {

// Primitives that are objects: they have a header, which the runtime makes.
template <Kind>
struct ObjectPrimitive;

#define WAYFIND_OBJECT(family, storage)                                                         \
  template <>                                                                                   \
  struct ObjectPrimitive<Kind::family> {                                                        \
    static void initialize(const Call& c, void* at, const Initialization& how) {                \
      family##_initialize(c.handle, c.instance, static_cast<storage*>(at),                      \
                          &_##family##_type_info_internal, how.notify, how.no_stats, how.flags, \
                          how.base, c.err);                                                     \
    }                                                                                           \
    static void set_instance_embedded(const Call& c, void* at) {                                \
      family##_set_instance_embedded(c.handle, c.instance, static_cast<storage*>(at));          \
    }                                                                                           \
  };

WAYFIND_OBJECT(ip_address, ork_ip_address)
WAYFIND_OBJECT(ork_boolean, ork_boolean)
WAYFIND_OBJECT(link_type, ork_link_type)
#undef WAYFIND_OBJECT

// Kinds that have no header and need no initialization: zero is a value of theirs.
template <Kind K>
inline constexpr bool is_plain = K == Kind::u_int8 || K == Kind::u_int16 || K == Kind::u_int32 ||
                                 K == Kind::u_int64 || K == Kind::character;

// Finds where the state block of the object begins, which embedded records take theirs from. False,
// with EINVAL (22), when a nested object was given no base.
bool find_state_base(const Call& call, void* object, uint8_t*& base, const RecordRow& record) {
  if (checked_mode<Function::initialize>(call.handle, record) != Tracking::on) return true;
  const bool nested = has_flag(object, OBJ_NESTED);
  const bool mapped = has_flag(object, OBJ_STTR_OFFSET);
  if (nested && base == nullptr) {
    call.fail(EINVAL);
    trace::raise<Function::initialize, Form::no_state_base>(record);
    return false;
  }
  if (!record.embeds) {
    if (mapped) orklib_get_sttr_offset(call.handle, call.instance, object);
    return true;
  }
  uint8_t* found = base != nullptr ? base : byte_at(object, record.newest_layout().body);
  if (mapped) found = mapped_states(call, object);
  if (mapped || !nested) initialize_offsets(call, object, found, record);
  if (base == nullptr) base = found;
  return true;
}

// For fields of the classes value and object.
void initialize_field(const Call& call, void* object, const Initialization& how,
                      const FieldRow& field) {
  void* at = field_of(object, field);
  visit_kind(field.kind, [&]<Kind K>(KindTag<K>) {
    if constexpr (K == Kind::record) {
      initialize(call, at, descriptor(child_record(field)), how, child_record(field));
    } else if constexpr (K == Kind::enumeration || K == Kind::flag_set) {
      initialize(call, at, descriptor(small_type(field)), how, small_type(field));
    } else if constexpr (!is_plain<K>) {
      ObjectPrimitive<K>::initialize(call, at, how);
    }
  });
}

void set_field_embedded(const Call& call, void* object, const FieldRow& field) {
  void* at = field_of(object, field);
  visit_kind(field.kind, [&]<Kind K>(KindTag<K>) {
    if constexpr (K == Kind::record) {
      set_instance_embedded(call.handle, call.instance, at, child_record(field));
    } else if constexpr (K == Kind::enumeration || K == Kind::flag_set) {
      set_instance_embedded(call.handle, call.instance, at, small_type(field));
    } else if constexpr (!is_plain<K>) {
      ObjectPrimitive<K>::set_instance_embedded(call, at);
    }
  });
}

}  // namespace

InitializedHeader write_header(const Call& call, void* object, const ork_type_info* type,
                               const Initialization& how, int newest) {
  const int8_t known = static_cast<int8_t>(
      ork_domain_lookup_variant(call.handle, &call.handle->domain, type, call.err));
  const int variant = cap(known, newest);
  const auto write = [&](size_t offset, uint8_t value) {
    if (how.notify != 0) announce(call, byte_at(object, offset), 1, object);
    *byte_at(object, offset) = value;
  };
  write(at_variant_cap, static_cast<uint8_t>(newest));
  write(at_variant, static_cast<uint8_t>(variant));
  const ork_type_info* shown = shared_copy_of(call, type);
  const ork_type_info** slot = ork_get_manifested_type_info_ptr_mem(object);
  if (how.notify != 0) announce(call, slot, sizeof *slot, object);
  put(slot, shown);
  write(at_flags, flags_of(object) | how.flags);
  return {variant, shown};
}

void initialize(const Call& call, void* object, const ork_type_info* type, Initialization how,
                const RecordRow& record) {
  if (!call.start()) return;
  const InitializedHeader header = write_header(call, object, type, how, record.newest());
  if (checked_mode<Function::initialize>(call.handle, record) == Tracking::on) {
    if (how.notify != 0) announce(call, byte_at(object, at_flags), 1, object);
    *byte_at(object, at_flags) |= OBJ_STATE_TRACKED;
  }
  if (how.no_stats == 0) {
    check_variants<Function::initialize>(header.type, header.variant, record);
    orklib_type_stats_create_object(call.handle, call.instance, header.type,
                                    statistics(header.type, header.variant), call.err);
    if (!find_state_base(call, object, how.base, record)) return;
  }
  const Initialization child{how.notify, how.no_stats, OBJ_NESTED, how.base};
  for (const FieldRow& field : model::fields_of(record)) {
    if (field.cls == model::Class::value || field.cls == model::Class::object)
      initialize_field(call, object, child, field);
  }
}

void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const RecordRow& record) {
  if (object == nullptr)
    return trace::raise<Function::set_instance_embedded, Form::embed_object>(record);
  const DetachedCall call(handle, instance);
  for (const FieldRow& field : fields_in_body(record, object)) {
    if (field.cls == model::Class::value || field.cls == model::Class::object)
      set_field_embedded(call, object, field);
  }
  mark_embedded(call, object);
}

}  // namespace frame
