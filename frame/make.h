// The one sequence that makes objects: records, enums, the flag set.
#pragma once

#include "frame/sentinel.h"
#include "frame/size.h"
#include "frame/small_type.h"

namespace frame {

// When there is no memory, returns the type's sentinel in cr mode, else null. size_of() is called
// twice on purpose: it reads the tracking mode, and each decision reads that again.
template <Function F, Form failed, class Row>
void* make(ork_handle* handle, uint32_t instance, const Row& type) {
  const DetachedCall call(handle, instance);
  void* object = nullptr;
  if (handle->cr_active == 0 || handle->cr_error == 0)
    object = allocate(call, size_of(handle, type));
  if (object != nullptr) {
    // Not announced: nobody can know the block yet.
    memset(object, 0, size_of(handle, type));
    initialize(call, object, descriptor(type), {1, 0, 0, nullptr}, type);
    if (call.failed()) {
      trace::raise<F, failed>(type, call.error_text());
      release(call, object);
      return nullptr;
    }
  } else if (handle->cr_active != 0) {
    object = sentinel(type);
    if (handle->cr_error == 0) ork_store_err(handle, ENOMEM);
  }
  contain(call, object, nullptr);
  if (watched(call)) orkdb_plat_set_dirty(handle, instance, object);
  return object;
}

}  // namespace frame
