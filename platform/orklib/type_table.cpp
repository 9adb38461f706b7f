#include "type_table.h"

#include <cerrno>
#include <cstring>

#include "guard.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"
#include "variant_block.h"

namespace ork {

void* TypeTable::take(size_t size) {
  return memory_.emplace_back(size / sizeof(std::max_align_t) + 1).data();
}

void* TypeTable::alloc(void* pool, uint32_t, size_t size) {
  auto& self = *static_cast<TypeTable*>(pool);
  uint32_t err = 0;
  return guarded(&err, [&]() -> void* {
    const std::lock_guard lock(self.mutex_);
    return self.take(size);
  });
}

ork_type_info* TypeTable::find(void* table, uint32_t, const char* luid_text) {
  auto& self = *static_cast<TypeTable*>(table);
  const std::lock_guard lock(self.mutex_);
  const auto found = self.types_.find(luid_text);
  return found != self.types_.end() ? found->second : nullptr;
}

uint32_t TypeTable::add(void* table, uint32_t, const char* luid_text, ork_type_info* copy) {
  auto& self = *static_cast<TypeTable*>(table);
  uint32_t err = 0;
  guarded(&err, [&] {
    const std::lock_guard lock(self.mutex_);
    if (self.types_.contains(luid_text)) {
      err = EEXIST;
      return;
    }
    if (copy->varinfo != nullptr) {
      copy->varinfo = write_variant_block(self.take(variant_block_size(copy->varinfo)),
                                          *copy->varinfo, nullptr);
    }
    self.types_.emplace(luid_text, copy);
  });
  return err;
}

namespace {

// Enters the runtime's own types, as a module enters its.
void enter_own_type(ork_handle* handle, uint32_t instance, const ork_type_info& type) {
  auto* copy = static_cast<ork_type_info*>(
      handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE, ORK_SHARED_TYPE_INFO_SIZE));
  if (copy == nullptr) {
    return;
  }
  std::memset(copy, 0, ORK_SHARED_TYPE_INFO_SIZE);
  *copy = type;
  copy->shared = handle->shared_types;
  handle->type_table_add_fn(handle->type_table, instance, copy->luid_text, copy);
}

bool is_own_type(const ork_type_info* type) {
  return type == &_ip_address_type_info_internal || type == &_link_type_type_info_internal ||
         type == &_ork_boolean_type_info_internal;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT const struct ork_type_info* ork_type_info_ptr_get(struct ork_handle* handle,
                                                             uint32_t instance,
                                                             const struct ork_type_info* tinfo,
                                                             ork_type_info_init_fn init_fn) {
  const auto find = [&] {
    return handle->type_table_find_fn(handle->type_table, instance, tinfo->luid_text);
  };
  if (const ork_type_info* copy = find()) {
    return copy;
  }
  if (ork::is_own_type(tinfo)) {
    ork::enter_own_type(handle, instance, *tinfo);
  } else if (init_fn != nullptr) {
    uint32_t err = 0;
    init_fn(handle, instance, &err);
  }
  if (const ork_type_info* copy = find()) {
    return copy;
  }
  ork_store_err(handle, ENOMEM);
  return tinfo;
}

ORK_EXPORT uint32_t ork_update_variant_info(struct ork_handle* handle, uint32_t,
                                            struct ork_type_info* entry,
                                            const struct ork_type_info* tinfo, uint32_t is_new) {
  // A table of ours gave the entry a block of its own when it was added; another's copy made just
  // now has none yet.
  ork_variant_info* former = __atomic_load_n(&entry->varinfo, __ATOMIC_ACQUIRE);
  const bool borrowed = former == nullptr || (is_new != 0 && former == tinfo->varinfo);
  if (!borrowed && former->n_variants >= tinfo->varinfo->n_variants) {
    return 0;
  }
  void* memory = handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE,
                                         ork::variant_block_size(tinfo->varinfo));
  if (memory == nullptr) {
    ork_store_err(handle, ENOMEM);
    return ENOMEM;
  }
  ork_variant_info* info =
      ork::write_variant_block(memory, *tinfo->varinfo, borrowed ? nullptr : former);
  // Another process may have brought a block of its own meanwhile. The longer one stays; nothing
  // goes back to the pool.
  while (!__atomic_compare_exchange_n(&entry->varinfo, &former, info, false, __ATOMIC_ACQ_REL,
                                      __ATOMIC_ACQUIRE)) {
    if (former->n_variants >= info->n_variants) {
      break;
    }
  }
  return 0;
}

}  // extern "C"
