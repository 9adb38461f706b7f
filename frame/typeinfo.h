// Type descriptors at run time: the list of all of them, their shared copies, the pointer in an
// object's header, the variant block with its statistics. frame/descriptor.h has their contents.
#pragma once

#include "frame/object.h"

// Enters every type into the handle's shared table, or updates its entry. Declared under its
// exported name, because the runtime is given the address of that.
extern "C" void fwe_ui_wayfind_typeinfo_initialize(ork_handle* handle, uint32_t instance,
                                                   uint32_t* err);

namespace frame {

// In the order of registration: records, enums, the flag set, messages, then a null.
extern const ork_type_info* const descriptors[];
const ork_type_info* descriptor(const RecordRow& record);
const ork_type_info* descriptor(const SmallRow& type);

void type_variant_dump(int (*print)(const char* format, ...));

// The descriptor that a new object must point to: the type's own, or its copy when the handle keeps
// types in a shared table.
inline const ork_type_info* shared_copy_of(const Call& call, const ork_type_info* type) {
  if (call.handle->shared_types == 0) return type;
  return ork_type_info_ptr_get(call.handle, call.instance, type,
                               fwe_ui_wayfind_typeinfo_initialize);
}
inline const ork_type_info* type_in_header(const void* object) {
  return ork_get_manifested_type_info(object);
}
// Writes it into the object's header, unannounced.
void store_type(const Call& call, void* object, const ork_type_info* type);

// A missing variant block ends the process; one with fewer variants than `variant` is only traced.
template <Function F, class Row>
void check_variants(const ork_type_info* type, int variant, const Row& row) {
  if (type->varinfo == nullptr) trace::fatal<F, Form::no_variants>(row);
  const int present = type->varinfo->n_variants;
  if (present < variant) {
    trace::raise<F, Form::variant_beyond>(row, static_cast<uint32_t>(variant),
                                          static_cast<uint32_t>(present));
  }
}
template <Function F, class Row>
const ork_type_info* checked_type(const ork_type_info* type, int variant, const Row& row) {
  if (type == nullptr || type->magic != ORK_TYPE_INFO_MAGIC)
    trace::fatal<F, Form::type_corrupted>(row);
  check_variants<F>(type, variant, row);
  return type;
}

// Address of the statistics of one variant. A negative variant gives an address before the entries,
// to which the runtime must not write.
inline void* statistics(const ork_type_info* type, int variant) {
  const auto entries = reinterpret_cast<uintptr_t>(type->varinfo->entries);
  const auto index = static_cast<intptr_t>(variant);
  return reinterpret_cast<void*>(entries +
                                 static_cast<uintptr_t>(index) * sizeof(ork_variant_entry) +
                                 offsetof(ork_variant_entry, create_count));
}
// Enums, the flag set and messages count for themselves, without the runtime's statistics. A
// private descriptor is used by all threads of the process, so its counters are incremented
// atomically.
inline void increment(const Call& call, const ork_type_info* type, uint64_t& counter) {
  call.handle->counter_notify_fn(call.handle->mem_pool, &counter, 1, call.instance);
  if (type->shared != 0) {
    ++counter;
  } else {
    __atomic_fetch_add(&counter, 1, __ATOMIC_RELAXED);
  }
}

}  // namespace frame
