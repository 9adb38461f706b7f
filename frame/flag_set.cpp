#include "frame/flag_set.h"

namespace frame {

uint32_t flag_in_range(uint32_t flag, const SmallRow& type) { return flag < type.values ? 1 : 0; }

uint32_t flag_get_value(const Call& call, const void* object, uint32_t flag, const SmallRow& type) {
  if (call.failed()) return 0;
  if (object == nullptr || flag >= type.values) {
    call.lacks();
    return 0;
  }
  return (flag_bits(object) >> flag) & 1u;
}

uint32_t flag_get_cr(ork_handle* handle, const void* object, uint32_t flag, const SmallRow& type) {
  return flag_get_value({handle, handle->cr_instance, &handle->cr_error}, object, flag, type);
}

void flag_set_set(const Call& call, void* object, const void* from, const SmallRow& type) {
  if (!call.start()) return;
  small_adjust_variant(call, object);
  announce(call, object, type.size, object);
  memmove(object, from, type.size);
}

void flag_set_value(const Call& call, void* object, uint32_t flag, uint32_t on,
                    const SmallRow& type) {
  if (!call.start()) return;
  small_adjust_variant(call, object);
  const bool later = small_variant_of(object) >= 1;
  if (flag >= type.values && !later) return call.lacks();
  if (object == nullptr || flag >= type.values) return;
  const auto bit = static_cast<uint8_t>(1u << flag);
  const uint8_t bits = flag_bits(object);
  store(call, byte_at(object, at_flag_bits),
        static_cast<uint8_t>(on != 0 ? bits | bit : bits & ~bit), object);
}

uint32_t flag_is_valid_cr(ork_handle* handle, uint32_t flag, const SmallRow& type) {
  ork_domain_lookup_variant(handle, &handle->domain, descriptor(type), &handle->cr_error);
  return flag < type.values ? 1 : 0;
}

}  // namespace frame
