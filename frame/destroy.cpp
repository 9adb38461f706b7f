#include "frame/destroy.h"

#include <alloca.h>

#include "frame/array_storage.h"
#include "frame/primitives.h"
#include "frame/sentinel.h"
#include "frame/typeinfo.h"

namespace frame {
namespace {

constexpr uint32_t max_references = 4096;  // of one field, as their list lies on the stack

// False when the object must stay: its mapping cannot be removed, or references to it are left.
bool remove_oid_mapping(const Call& call, void* object, const RecordRow& record) {
  const uint32_t gone =
      ork_request_oid_mapping_destroy(call.handle, call.instance, object, call.err);
  if (call.failed()) {
    trace::raise<Function::destroy_mapping, Form::mapping_stays>(record, call.error_text());
    ork_store_err(call.handle, call.error());
    return false;
  }
  if (gone == 0) {
    trace::raise<Function::destroy_mapping, Form::has_references>(record);
    return false;
  }
  trace::raise<Function::destroy_mapping, Form::mapping_removed>(record);
  return true;
}

uint32_t count_references(const Call& call, void* at, const FieldRow& field) {
  if (field.kind == Kind::record) return get_oid_count(call, at, child_record(field));
  return ip_address_get_oid_count(call.handle, call.instance, static_cast<ork_ip_address*>(at),
                                  call.err);
}

// Releases the references that a field holds. False when they cannot be listed.
bool drop_references(const Call& call, void* at, uint32_t count, const FieldRow& field) {
  auto** references = static_cast<void**>(
      alloca((count < max_references ? count : max_references) * sizeof(void*)));
  if (count > max_references) {
    call.fail_quietly(ENOMEM);
  } else if (field.kind == Kind::record) {
    get_object_references(call, at, child_record(field));
  } else {
    ip_address_get_object_references(call.handle, call.instance, static_cast<ork_ip_address*>(at),
                                     references, count, call.err);
  }
  if (call.failed()) {
    trace::raise<Function::destroy_field, Form::references_failed>(field, call.error_text());
    return false;
  }
  for (uint32_t i = 0; i < count; ++i) {
    orklib_lookup_and_update_oid_ref_count(call.handle, call.instance, references[i], 0, call.err);
    if (call.failed()) {
      trace::raise<Function::destroy_field, Form::reference_stays>(
          field, static_cast<const void*>(references[i]), call.error_text());
      call.clear();
    }
  }
  return true;
}

bool destroy_field(const Call& call, void* object, const FieldRow& field) {
  if (field.array != model::no_type) {
    destroy_array(call, object, field);
    return true;
  }
  if (!model::may_refer(field)) return true;
  void* at = field_of(object, field);
  const uint32_t count = count_references(call, at, field);
  if (count != 0 && !drop_references(call, at, count, field)) return false;
  if (field.kind == Kind::record) {
    destroy_internal(call.handle, call.instance, at, 0, child_record(field));
  } else {
    ip_address_destroy_internal(call.handle, call.instance, static_cast<ork_ip_address*>(at), 0);
  }
  return true;
}

// The state block of a tracked object that is being destroyed.
uint8_t* last_state_block(const Call& call, void* object, const RecordRow& record) {
  if (has_flag(object, OBJ_STTR_OFFSET)) return mapped_states(call, object);
  checked_mode<Function::destroy_internal>(call.handle, record);
  return byte_at(object, layout_of(record, object).body);
}

constexpr int nothing_reached = INT8_MIN;

// Frees the arrays that destroying the object would leave, as it visits only fields up to the
// variant `reached`.
void release_unreached_arrays(const Call& call, void* object, int reached,
                              const RecordRow& record) {
  for (const FieldRow& field : fields_in_layout(record, object)) {
    const bool is_reached = field.variant <= reached;
    if (is_embedded_record(field)) {
      void* child = field_of(object, field);
      const RecordRow& type = child_record(field);
      release_unreached_arrays(call, child, is_reached ? variant_of(child) : nothing_reached, type);
      if (!is_reached && type.has_array && has_flag(child, OBJ_STATE_TRACKED))
        free_element_states(call, last_state_block(call, child, type), type);
    } else if (field.array != model::no_type && block_of(object, field) != nullptr) {
      for (uint64_t i = 0; field.kind == Kind::record && i < stored_count(object, field); ++i) {
        void* element = element_at(object, field, i);
        release_unreached_arrays(call, element, variant_of(element), child_record(field));
      }
      if (!is_reached) destroy_array(call, object, field);
    }
  }
}

}  // namespace

void destroy_filled(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                    const RecordRow& record) {
  if (object == nullptr || object == sentinel(record)) return;
  if (record.holds_array)
    release_unreached_arrays(DetachedCall(handle, instance), object, variant_of(object), record);
  destroy_internal(handle, instance, object, free_storage, record);
}

void destroy(ork_handle* handle, uint32_t instance, void* object, const RecordRow& record) {
  if (object == sentinel(record)) return;
  destroy_internal(handle, instance, object, 1, record);
}

void destroy_internal(ork_handle* handle, uint32_t instance, void* object, uint32_t free_storage,
                      const RecordRow& record) {
  if (object == nullptr || object == sentinel(record)) return;
  const DetachedCall call(handle, instance);
  if (has_flag(object, OBJ_OID_MAPPED) && !remove_oid_mapping(call, object, record)) return;

  const int variant = variant_of(object);
  for (const FieldRow& field : model::fields_of(record, variant)) {
    if (!destroy_field(call, object, field)) return;
  }
  if (has_flag(object, OBJ_STATE_TRACKED))
    free_element_states(call, last_state_block(call, object, record), record);

  const ork_type_info* type =
      checked_type<Function::destroy_internal>(type_in_header(object), variant, record);
  orklib_type_stats_destroy_object(handle, instance, type,
                                   statistics(type, cap(variant, record.newest())), call.err);
  if (has_flag(object, OBJ_STTR_OFFSET | OBJ_RA_DATA) && handle->hd_mapping != nullptr) {
    ork_hd_mapping_destroy(handle, instance, object, call.err);
    if (call.failed()) {
      trace::raise<Function::destroy_internal, Form::mapping_stays>(record, call.error_text());
      ork_store_err(handle, call.error());
      return;
    }
  }
  if (free_storage == 0) return;
  if (watched(call)) orkdb_plat_set_destroy(handle, instance, object);
  free_object(call, object);
}

}  // namespace frame
