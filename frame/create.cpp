// Making records: allocation, the header, statistics, the base of the state bytes, and the fields
// that are objects.
#include "frame/make.h"
#include "frame/primitives.h"
#include "frame/state.h"

namespace frame {
namespace {

constexpr size_t sentinel_offset(size_t record) {
  size_t offset = 0;
  for (size_t r = 0; r < record; ++r) offset += model::record_rows[r].newest_layout().body;
  return offset;
}
constexpr auto sentinel_offsets = [] {
  std::array<uint16_t, model::record_count> offsets{};
  for (size_t r = 0; r < model::record_count; ++r)
    offsets[r] = static_cast<uint16_t>(sentinel_offset(r));
  return offsets;
}();
alignas(8) uint8_t sentinels[sentinel_offset(model::record_count)];

// The base that embedded records take theirs from. False when a nested object was given none.
bool find_state_base(const Call& call, void* object, uint8_t*& base, const RecordRow& record) {
  if (tracking<Function::initialize>(call.handle, record) != Tracking::on) return true;
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

void initialize_field(const Call& call, void* at, const Initialization& how,
                      const FieldRow& field) {
  const ork_type_info* type = nullptr;
  switch (field.kind) {
    case Kind::record:
      return initialize(call, at, descriptor(child_record(field)), how, child_record(field));
    case Kind::enumeration:
    case Kind::flag_set:
      return initialize(call, at, descriptor(small_type(field)), how, small_type(field));
    case Kind::ip_address:
      type = descriptor(Kind::ip_address);
      return ip_address_initialize(call.handle, call.instance, static_cast<ork_ip_address*>(at),
                                   type, how.notify, how.no_stats, how.flags, how.base, call.err);
    case Kind::ork_boolean:
      type = descriptor(Kind::ork_boolean);
      return ork_boolean_initialize(call.handle, call.instance, static_cast<ork_boolean*>(at), type,
                                    how.notify, how.no_stats, how.flags, how.base, call.err);
    case Kind::link_type:
      type = descriptor(Kind::link_type);
      return link_type_initialize(call.handle, call.instance, static_cast<ork_link_type*>(at), type,
                                  how.notify, how.no_stats, how.flags, how.base, call.err);
    case Kind::u_int8:
    case Kind::u_int16:
    case Kind::u_int32:
    case Kind::u_int64:
    case Kind::character: return;
  }
}

}  // namespace

void* sentinel(const RecordRow& record) { return &sentinels[sentinel_offsets[record.index]]; }

uint32_t size_of(const ork_handle* handle, const RecordRow& record) {
  const Layout& layout = record.newest_layout();
  const bool on = tracking<Function::size_of>(handle, record) == Tracking::on;
  return on ? uint32_t{layout.body} + layout.state : layout.body;
}

uint32_t size_of_internal(const ork_handle* handle, const void* object, uint32_t with_state,
                          uint32_t state_only, const RecordRow& record) {
  const Tracking mode = tracking<Function::size_of>(handle, record);
  const bool newest = object == nullptr || mode == Tracking::absent;
  const Layout& layout = newest ? record.newest_layout() : layout_of(record, object);
  if (mode != Tracking::on) return state_only != 0 ? 0 : layout.body;
  if (state_only != 0) return layout.state;
  return with_state != 0 ? uint32_t{layout.body} + layout.state : layout.body;
}

void* create(ork_handle* handle, uint32_t instance, const RecordRow& record) {
  ork_fwe_ui_wayfind_trace_init();
  return create_internal(handle, instance, record);
}

void* create_cr(ork_handle* handle, const RecordRow& record) {
  ork_fwe_ui_wayfind_trace_init();
  handle->cr_active = 1;
  void* object = create_internal(handle, handle->cr_instance, record);
  handle->cr_active = 0;
  return object;
}

void* create_internal(ork_handle* handle, uint32_t instance, const RecordRow& record) {
  return make<Function::create_internal, Form::create_failed>(handle, instance, record);
}

void initialize(const Call& call, void* object, const ork_type_info* type, Initialization how,
                const RecordRow& record) {
  if (!call.begins()) return;
  const Born born = write_header(call, object, type, how, record.newest());
  if (tracking<Function::initialize>(call.handle, record) == Tracking::on) {
    if (how.notify != 0) announce(call, byte_at(object, at_flags), 1, object);
    *byte_at(object, at_flags) |= OBJ_STATE_TRACKED;
  }
  if (how.no_stats == 0) {
    check_variants<Function::initialize>(born.type, born.variant, record);
    orklib_type_stats_create_object(call.handle, call.instance, born.type,
                                    statistics(born.type, born.variant), call.err);
    if (!find_state_base(call, object, how.base, record)) return;
  }
  const Initialization child{how.notify, how.no_stats, OBJ_NESTED, how.base};
  for (const FieldRow& field : model::fields_of(record)) {
    if (field.cls == model::Class::value || field.cls == model::Class::object)
      initialize_field(call, field_of(object, field), child, field);
  }
}

void renew(const Call& call, void* element, const RecordRow& record) {
  uint32_t local = 0;
  const Call own{call.handle, call.instance, &local};
  const Layout& layout = record.newest_layout();
  const bool mapped = has_flag(element, OBJ_STTR_OFFSET);
  const int32_t distance =
      mapped ? orklib_get_sttr_offset(call.handle, call.instance, element) : int32_t{layout.body};
  uint8_t* states = static_cast<uint8_t*>(element) + distance;
  destroy_filled(call.handle, call.instance, element, 0, record);
  announce(own, element, layout.body, element);
  memset(element, 0, layout.body);
  if (mapped) {
    announce(own, states, layout.state, nullptr);
    memset(states, 0, layout.state);
    orklib_update_sttr_offset(call.handle, call.instance, element, distance);
  }
  initialize(own, element, descriptor(record), {1, 0, OBJ_NESTED, states}, record);
}

void set_instance_embedded(ork_handle* handle, uint32_t instance, void* object,
                           const RecordRow& record) {
  if (object == nullptr)
    return trace::raise<Function::set_instance_embedded, Form::embed_object>(record);
  uint32_t local = 0;
  const Call call{handle, instance, &local};
  for (const FieldRow& field : held_fields(record, object)) {
    if (field.cls != model::Class::value && field.cls != model::Class::object) continue;
    void* at = field_of(object, field);
    switch (field.kind) {
      case Kind::record: set_instance_embedded(handle, instance, at, child_record(field)); break;
      case Kind::enumeration:
      case Kind::flag_set: set_instance_embedded(handle, instance, at, small_type(field)); break;
      case Kind::ip_address:
        ip_address_set_instance_embedded(handle, instance, static_cast<ork_ip_address*>(at));
        break;
      case Kind::ork_boolean:
        ork_boolean_set_instance_embedded(handle, instance, static_cast<ork_boolean*>(at));
        break;
      case Kind::link_type:
        link_type_set_instance_embedded(handle, instance, static_cast<ork_link_type*>(at));
        break;
      case Kind::u_int8:
      case Kind::u_int16:
      case Kind::u_int32:
      case Kind::u_int64:
      case Kind::character: break;
    }
  }
  mark_embedded(call, object);
}

}  // namespace frame
