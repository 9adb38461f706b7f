#include "type_table.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "guard.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

void *TypeTable::alloc(void *pool, uint32_t, size_t size) {
    auto &table = *static_cast<TypeTable *>(pool);
    uint32_t err = 0;
    return guarded(&err, [&]() -> void * {
        const std::lock_guard lock(table.mutex_);
        const size_t units = size / sizeof(std::max_align_t) + 1;
        return table.memory_.emplace_back(units).data();
    });
}

ork_type_info *TypeTable::find(void *table, uint32_t, const char *luid_text) {
    auto &self = *static_cast<TypeTable *>(table);
    const std::lock_guard lock(self.mutex_);
    const auto found = self.types_.find(luid_text);
    return found != self.types_.end() ? found->second : nullptr;
}

uint32_t TypeTable::add(void *table, uint32_t, const char *luid_text, ork_type_info *copy) {
    auto &self = *static_cast<TypeTable *>(table);
    uint32_t err = 0;
    guarded(&err, [&] {
        const std::lock_guard lock(self.mutex_);
        if (!self.types_.emplace(luid_text, copy).second) {
            err = EEXIST;
        }
    });
    return err;
}

namespace {

// Enters the runtime's own types, as a module enters its.
void enter_own_type(ork_handle *handle, uint32_t instance, const ork_type_info &type) {
    auto *copy = static_cast<ork_type_info *>(
        handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE, ORK_SHARED_TYPE_INFO_SIZE));
    if (copy == nullptr) {
        return;
    }
    std::memset(copy, 0, ORK_SHARED_TYPE_INFO_SIZE);
    *copy = type;
    copy->shared = handle->shared_types;
    ork_update_variant_info(handle, instance, copy, &type, 1);
    handle->type_table_add_fn(handle->type_table, instance, copy->luid_text, copy);
}

bool is_own_type(const ork_type_info *type) {
    return type == &_ip_address_type_info_internal || type == &_link_type_type_info_internal ||
           type == &_ork_boolean_type_info_internal;
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT const struct ork_type_info *ork_type_info_ptr_get(struct ork_handle *handle, uint32_t instance,
                                                             const struct ork_type_info *tinfo,
                                                             ork_type_info_init_fn init_fn) {
    const auto find = [&] { return handle->type_table_find_fn(handle->type_table, instance, tinfo->luid_text); };
    if (const ork_type_info *copy = find()) {
        return copy;
    }
    if (ork::is_own_type(tinfo)) {
        ork::enter_own_type(handle, instance, *tinfo);
    } else if (init_fn != nullptr) {
        uint32_t err = 0;
        init_fn(handle, instance, &err);
    }
    if (const ork_type_info *copy = find()) {
        return copy;
    }
    ork_store_err(handle, ENOMEM);
    return tinfo;
}

ORK_EXPORT uint32_t ork_update_variant_info(struct ork_handle *handle, uint32_t, struct ork_type_info *entry,
                                            const struct ork_type_info *tinfo, uint32_t is_new) {
    const ork_variant_info &known = *tinfo->varinfo;
    // A copy made just now, or one whose table could not be made then, still points at a module's own.
    const bool has_table = is_new == 0 && entry->varinfo != nullptr && entry->varinfo != tinfo->varinfo;
    const int kept = has_table ? entry->varinfo->n_variants : 0;
    if (kept >= known.n_variants) {
        return 0;
    }
    const auto n = static_cast<size_t>(known.n_variants);
    void *memory = handle->shared_alloc_fn(handle->shared_pool, ORK_NO_INSTANCE,
                                           sizeof(ork_variant_info) + n * sizeof(ork_variant_entry));
    if (memory == nullptr) {
        ork_store_err(handle, ENOMEM);
        return ENOMEM;
    }
    auto *info = static_cast<ork_variant_info *>(memory);
    *info = {known.n_variants, {}, reinterpret_cast<ork_variant_entry *>(info + 1)};
    for (size_t i = 0; i < n; ++i) {
        info->entries[i] = known.entries[i];
        const bool counted = i < static_cast<size_t>(std::max(kept, 0));
        info->entries[i].create_count = counted ? entry->varinfo->entries[i].create_count : 0;
        info->entries[i].destroy_count = counted ? entry->varinfo->entries[i].destroy_count : 0;
    }
    entry->varinfo = info;
    return 0;
}

}  // extern "C"
