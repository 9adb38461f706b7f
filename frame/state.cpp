#include "frame/state.h"

#include "frame/array.h"

namespace frame {

uint8_t state_flag_get(ork_handle* handle, uint32_t instance, void* object, uint32_t* err,
                       const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_read<Function::state_flag_get>(call, object, field)) return 0;
  // An object that was upgraded in place uses bytes for all fields of its variant, even past the
  // end of its layout's block.
  const bool there = handle->sttr_info == nullptr ||
                     field.variant <= static_cast<int8_t>(*byte_at(object, at_variant)) ||
                     field.state < layout_of(owner(field), object).state;
  return there ? seen_state_block(call, object, owner(field))[field.state] : uint8_t{0};
}

void state_flag_set(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                    uint32_t* err, const FieldRow& field) {
  const Call call{handle, instance, err};
  if (!allow_state_write<Function::state_flag_set>(call, object, field)) return;
  if (!upgrade_and_gate(call, object, field)) return;
  store(call, state_block(call, object, owner(field)) + field.state, value, nullptr);
}

// One unannounced fill of the whole block. It overwrites the pointers in the entries of arrays too:
// peers rely on the bytes, so element_states() takes a filled pointer for null.
void set_all_state_tracking_flag(ork_handle* handle, uint32_t instance, void* object, uint8_t value,
                                 const RecordRow& record) {
  if (mode_of(handle) != Tracking::on || !has_flag(object, OBJ_STATE_TRACKED)) return;
  const DetachedCall call(handle, instance);
  const Layout& layout = layout_of(record, object);
  uint8_t* block = state_block(call, object, layout);
  memset(block, value, layout.state);
  if (!record.has_array) return;
  for (const FieldRow& field : fields_in_layout(record, object)) {
    if (field.array == model::no_type) continue;
    const uint32_t count = usable_count(object, field);
    if (uint8_t* elements = element_states(block + field.state); elements != nullptr)
      memset(elements, value, count);
    if (field.cls != model::Class::record_array) continue;
    for (uint32_t i = 0; i < count; ++i) {
      set_all_state_tracking_flag(handle, instance, element_at(object, field, i), value,
                                  child_record(field));
    }
  }
}

namespace {

using FieldsOf = model::FieldSpan (*)(const RecordRow& record, const void* object);

model::FieldSpan newest_fields(const RecordRow& record, const void*) {
  return model::fields_of(record);
}

void update_offsets(const Call& call, void* object, uint8_t* block, const RecordRow& record,
                    FieldsOf fields) {
  if (call.failed() || !record.embeds) return;
  for (const FieldRow& field : fields(record, object)) {
    if (!is_embedded_record(field)) continue;
    void* child = field_of(object, field);
    uint8_t* nested = block + field.nested;
    const intptr_t distance = nested - static_cast<uint8_t*>(child);
    orklib_update_sttr_offset(call.handle, call.instance, child, static_cast<int32_t>(distance));
    update_offsets(call, child, nested, child_record(field), fields);
  }
}

}  // namespace

void offset_update(const Call& call, void* object, uint8_t* block, const RecordRow& record) {
  update_offsets(call, object, block, record, fields_in_layout);
}

void initialize_offsets(const Call& call, void* object, uint8_t* block, const RecordRow& record) {
  update_offsets(call, object, block, record, newest_fields);
}

void offset_remove(const Call& call, void* object, const RecordRow& record) {
  if (call.failed() || !record.embeds) return;
  for (const FieldRow& field : fields_in_layout(record, object)) {
    if (!is_embedded_record(field)) continue;
    void* child = field_of(object, field);
    ork_hd_mapping_destroy(call.handle, call.instance, child, call.err);
    offset_remove(call, child, child_record(field));
  }
}

void clear_tracking_flags(void* object, const RecordRow& record) {
  constexpr unsigned claims = OBJ_STATE_TRACKED | OBJ_STTR_OFFSET;
  *byte_at(object, at_flags) = static_cast<uint8_t>(flags_of(object) & ~claims);
  for (const FieldRow& field : fields_in_layout(record, object)) {
    if (is_embedded_record(field))
      clear_tracking_flags(field_of(object, field), child_record(field));
  }
}

}  // namespace frame
