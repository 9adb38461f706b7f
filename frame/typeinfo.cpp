#include "frame/typeinfo.h"

extern "C" void fwe_ui_wayfind_typeinfo_initialize(ork_handle* handle, uint32_t instance,
                                                   uint32_t* err);

namespace frame {

const ork_type_info* manifested(const Call& call, const ork_type_info* type) {
  if (call.handle->shared_types == 0) return type;
  return ork_type_info_ptr_get(call.handle, call.instance, type,
                               fwe_ui_wayfind_typeinfo_initialize);
}

void store_type(const Call& call, void* object, const ork_type_info* type) {
  const ork_type_info* shown = manifested(call, type);
  put(ork_get_manifested_type_info_ptr_mem(object), shown);
}

void* statistics(const ork_type_info* type, int variant) {
  const auto entries = reinterpret_cast<uintptr_t>(type->varinfo->entries);
  const auto index = static_cast<intptr_t>(variant);
  return reinterpret_cast<void*>(entries +
                                 static_cast<uintptr_t>(index) * sizeof(ork_variant_entry) +
                                 offsetof(ork_variant_entry, create_count));
}

Born write_header(const Call& call, void* object, const ork_type_info* type,
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
  const ork_type_info* shown = manifested(call, type);
  const ork_type_info** slot = ork_get_manifested_type_info_ptr_mem(object);
  if (how.notify != 0) announce(call, slot, sizeof *slot, object);
  put(slot, shown);
  write(at_flags, flags_of(object) | how.flags);
  return {variant, shown};
}

void give_back(const Call& call, void* object) {
  const uint64_t word = load<uint64_t>(object);
  if (has_flag(object, OBJ_OWNS_SLOT_BLOCK) && word != 0)
    release(call, reinterpret_cast<void*>(word));
  store<uint64_t>(call, object, 0, nullptr);
  release(call, object);
}

}  // namespace frame
