#include <cinttypes>

#include "ork/orklib.h"
#include "ork/platform.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {
namespace {

// The entry whose statistics block this is, or null. A negative variant leads in front of the
// table, and nothing may be written there.
ork_variant_entry* entry_of(const ork_type_info& type, const void* statistics) {
  if (type.varinfo == nullptr) {
    return nullptr;
  }
  for (int i = 0; i < type.varinfo->n_variants; ++i) {
    ork_variant_entry& entry = type.varinfo->entries[i];
    if (static_cast<const void*>(&entry.create_count) == statistics) {
      return &entry;
    }
  }
  return nullptr;
}

// Descriptors are all that two threads with two handles share.
void count(ork_handle* handle, uint32_t instance, uint64_t& counter) {
  handle->counter_notify_fn(handle->mem_pool, &counter, 1, instance);
  __atomic_fetch_add(&counter, uint64_t{1}, __ATOMIC_RELAXED);
}

template <typename Visit>
void each_variant(const ork_type_info& type, Visit visit) {
  for (int i = 0; type.varinfo != nullptr && i < type.varinfo->n_variants; ++i) {
    const ork_variant_entry& entry = type.varinfo->entries[i];
    visit(type.name, static_cast<uint32_t>(i),
          __atomic_load_n(&entry.create_count, __ATOMIC_RELAXED),
          __atomic_load_n(&entry.destroy_count, __ATOMIC_RELAXED));
  }
}

template <typename Visit>
void each(const ork_storage* storage, Visit visit) {
  for (const ork_module* module = ork_module_tot_root.head; module != nullptr;
       module = module->next) {
    for (const ork_type_info* const* type = module->descriptors; *type != nullptr; ++type) {
      each_variant(**type, visit);
    }
  }
  if (storage != nullptr) {
    storage->each_type([&](const ork_type_info& type) { each_variant(type, visit); });
  }
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT uint32_t orklib_type_stats_create_object(struct ork_handle* handle, uint32_t instance,
                                                    const struct ork_type_info* tinfo,
                                                    void* statistics, uint32_t*) {
  if (ork_variant_entry* entry = ork::entry_of(*tinfo, statistics)) {
    ork::count(handle, instance, entry->create_count);
  }
  return 0;
}

ORK_EXPORT uint32_t orklib_type_stats_destroy_object(struct ork_handle* handle, uint32_t instance,
                                                     const struct ork_type_info* tinfo,
                                                     void* statistics, uint32_t*) {
  if (ork_variant_entry* entry = ork::entry_of(*tinfo, statistics)) {
    ork::count(handle, instance, entry->destroy_count);
  }
  return 0;
}

ORK_EXPORT void ork_statistics_each(const struct ork_storage* storage,
                                    void (*visit)(void* ctx, const char* name, uint32_t variant,
                                                  uint64_t created, uint64_t destroyed),
                                    void* ctx) {
  ork::each(storage, [&](const char* name, uint32_t variant, uint64_t created, uint64_t destroyed) {
    visit(ctx, name, variant, created, destroyed);
  });
}

ORK_EXPORT void ork_statistics_print(const struct ork_storage* storage, FILE* stream) {
  ork::each(storage, [&](const char* name, uint32_t variant, uint64_t created, uint64_t destroyed) {
    if (created != 0) {
      std::fprintf(stream,
                   "%s variant %" PRIu32 " created %" PRIu64 " destroyed %" PRIu64 " live %" PRId64
                   "\n",
                   name, variant, created, destroyed, static_cast<int64_t>(created - destroyed));
    }
  });
}

}  // extern "C"
