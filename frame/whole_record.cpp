#include "frame/whole_record.h"

#include "frame/array_storage.h"
#include "frame/small_type.h"
#include "frame/typeinfo.h"

namespace frame {
namespace {

// The target keeps its own flags on state bytes: a copy never gains any.
void copy_body(const Call& call, void* to, const void* from, Tracking mode,
               const RecordRow& record) {
  const size_t announced =
      mode == Tracking::absent ? record.newest_layout().body : layout_of(record, to).body;
  const size_t copied = layout_of(record, from).body;
  const uint8_t before = flags_of(to);
  announce(call, to, announced, to);
  memcpy(to, from, copied);
  if ((before & OBJ_STATE_TRACKED) == 0) clear_tracking_flags(to, record);
  *byte_at(to, at_flags) =
      static_cast<uint8_t>((flags_of(to) & ~OBJ_STTR_OFFSET) | (before & OBJ_STTR_OFFSET));
}

// Both objects are tracked. Registers the parts of the target's state block that belong to its
// embedded records, then copies the block.
void copy_states(const Call& call, void* to, void* from, const RecordRow& record) {
  uint8_t* target = state_block(call, to, record);
  const uint8_t* source = state_block(call, from, record);
  if (record.embeds) offset_update(call, to, target, record);
  const size_t size = layout_of(record, from).state;
  announce(call, target, size, target);
  memcpy(target, source, size);
}

// Moves fields that own more than their bytes.
void set_children(const Call& call, void* to, const void* from, const RecordRow& record) {
  for (const FieldRow& field : fields_in_layout(record, to)) {
    if (is_embedded_record(field)) {
      record_set(call, field_of(to, field), field_of(from, field), child_record(field));
    } else if (field.kind == Kind::ip_address) {
      ip_address_set(call.handle, call.instance, static_cast<ork_ip_address*>(field_of(to, field)),
                     static_cast<const ork_ip_address*>(field_of(from, field)), call.err);
    }
  }
}

}  // namespace

void* record_get(ork_handle* handle, uint32_t instance, void* object, const RecordRow&) {
  contain(DetachedCall(handle, instance), object, nullptr);
  return object;
}

void record_set(const Call& call, void* to, const void* source, const RecordRow& record) {
  void* from = const_cast<void*>(source);  // a set is a move: arrays leave the source
  adjust(call, to, record.newest());
  if (to == from) return;
  if (variant_of(to) < variant_of(from) || variant_cap_of(to) != variant_cap_of(from))
    return call.lacks();
  // The target's element bytes will not match the elements that it gets, unless the source's
  // follow.
  const Tracking mode = checked_mode<Function::record_set>(call.handle, record);
  if (mode != Tracking::on || !has_flag(from, OBJ_STATE_TRACKED))
    drop_all_element_states(call, to, record);
  copy_body(call, to, from, mode, record);
  const bool on = checked_mode<Function::record_set>(call.handle, record) == Tracking::on;
  if (on && !has_flag(to, OBJ_STATE_TRACKED)) {
    detach_all_arrays(call, from, record);
    call.fail(EINVAL);
    return trace::raise<Function::record_set, Form::not_tracked>(record);
  }
  if (on) {
    copy_states(call, to, from, record);
    if (record.has_array) detach_element_states(call, from, record);
  }
  set_children(call, to, from, record);
  if (record.has_array) detach_array(call, from, record);
}

void post_copyout_cleanup(const Call& call, void* to, void* from, const RecordRow& record) {
  if (call.failed()) return;
  set_children(call, to, from, record);
  if (record.has_array) detach_array(call, from, record);
}

int32_t index_cap(int32_t variant, int newest) {
  if (static_cast<int8_t>(variant) <= newest) return variant;
  return static_cast<int32_t>((static_cast<uint32_t>(variant) & ~0xFFu) |
                              static_cast<uint32_t>(newest));
}

uint32_t is_valid_cr(ork_handle* handle, const void* object, uint32_t field_number, uint32_t flags,
                     const RecordRow& record) {
  const ork_type_info* type = descriptor(record);
  int known = cap(static_cast<int8_t>(
                      ork_domain_lookup_variant(handle, &handle->domain, type, &handle->cr_error)),
                  record.newest());
  if ((flags & 1) == 0) {
    const int own = variant_of(object);
    if (known > own) known = own;
  }
  for (int variant = 1; variant < record.variants; ++variant) {
    if (field_number >= record.layouts[variant - 1].bound && known < variant) return 0;
  }
  return field_number < record.newest_layout().bound ? 1 : 0;
}

}  // namespace frame
