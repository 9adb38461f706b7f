#include "frame/typeinfo.h"

namespace frame {
namespace {

struct SharedCopy {
  ork_type_info type;
  uint64_t runtime_words[2];
};
static_assert(sizeof(SharedCopy) == ORK_SHARED_TYPE_INFO_SIZE);

// Copies a descriptor to the shared pool. Null when that is exhausted.
ork_type_info* share(ork_handle* handle, const ork_type_info& type) {
  auto* copy = static_cast<SharedCopy*>(
      handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE, sizeof(SharedCopy)));
  if (copy == nullptr) return nullptr;
  memcpy(&copy->type, &type, sizeof type);
  copy->runtime_words[0] = 0;
  copy->runtime_words[1] = 0;
  copy->type.shared = handle->shared_types;
  copy->type.unassigned_id = -1;
  return &copy->type;
}

void enter_types(ork_handle* handle, uint32_t instance, uint32_t* err) {
  for (const ork_type_info* const* type = descriptors; *type != nullptr; ++type) {
    ork_type_info* entry =
        handle->type_table_find_fn(handle->type_table, instance, (*type)->luid_text);
    const bool is_new = entry == nullptr;
    if (is_new) {
      entry = share(handle, **type);
      if (entry == nullptr) return Call{handle, instance, err}.fail(ENOMEM);
      handle->type_table_add_fn(handle->type_table, instance, entry->luid_text, entry);
    }
    if ((*type)->varinfo != nullptr)
      ork_update_variant_info(handle, instance, entry, *type, is_new ? 1 : 0);
  }
}

}  // namespace

const ork_type_info* descriptor(const RecordRow& record) { return descriptors[record.index]; }
const ork_type_info* descriptor(const SmallRow& type) {
  return descriptors[model::record_count + type.index];
}

void type_variant_dump(int (*print)(const char* format, ...)) {
  for (const ork_type_info* const* type = descriptors; *type != nullptr; ++type) {
    const ork_variant_info* variants = (*type)->varinfo;
    if (variants == nullptr) {
      trace::raise<Function::variant_dump, Form::dump_without_variants>(model::module_row);
      continue;
    }
    print("n_variants %d\n", int{variants->n_variants});
    for (int i = 0; i < variants->n_variants; ++i) {
      const ork_variant_entry& entry = variants->entries[i];
      print("variant %d used length %d alloc slop %d\n", i, static_cast<int>(entry.used_length),
            static_cast<int>(entry.alloc_slop));
    }
  }
}

void store_type(const Call& call, void* object, const ork_type_info* type) {
  const ork_type_info* shown = shared_copy_of(call, type);
  put(ork_get_manifested_type_info_ptr_mem(object), shown);
}

}  // namespace frame

extern "C" [[gnu::visibility("default")]] void fwe_ui_wayfind_typeinfo_initialize(
    ork_handle* handle, uint32_t instance, uint32_t* err) {
  frame::enter_types(handle, instance, err);
}
