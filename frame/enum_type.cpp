#include "frame/enum_type.h"

namespace frame {
namespace {

// Unlike small_adjust_variant(), passes the first word of the header to the runtime as it is.
void enum_adjust(const Call& call, void* object) {
  const auto* type = load<const ork_type_info*>(object);
  orklib_adjust_variant(call.handle, call.instance, object, type, 0, call.err);
}

// False, with EIDRM (43), for a value that this library does not know, unless the object says that
// it is of a later variant, which has more values.
bool admits(const Call& call, const void* object, uint32_t value, const SmallRow& type) {
  const bool later = small_variant_of(object) > 0;
  if (value < type.values || later) return true;
  call.lacks();
  return false;
}

}  // namespace

void* enum_get(ork_handle* handle, uint32_t instance, void* object) {
  contain(DetachedCall(handle, instance), object, nullptr);
  return object;
}

uint32_t enum_get_value(const Call& call, const void* object) {
  if (call.failed()) return 0;
  if (object == nullptr) {
    call.fail(EINVAL);
    return 0;
  }
  return enum_value(object);
}

void enum_set(const Call& call, void* object, const void* from, const SmallRow& type) {
  if (!call.start()) return;
  enum_adjust(call, object);
  if (!admits(call, object, enum_value(from), type)) return;
  announce(call, object, type.size, object);
  memmove(object, from, type.size);
}

void enum_set_value(const Call& call, void* object, uint32_t value, const SmallRow& type) {
  if (!call.start()) return;
  enum_adjust(call, object);
  if (admits(call, object, value, type)) store(call, byte_at(object, at_value), value, object);
}

uint32_t enum_is_valid_cr(ork_handle* handle, int32_t value, const SmallRow& type) {
  ork_domain_lookup_variant(handle, &handle->domain, descriptor(type), &handle->cr_error);
  return value < type.values ? 1 : 0;
}

}  // namespace frame
