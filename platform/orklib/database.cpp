// Database hooks: the reference runtime has no database, its handles' observers are told.
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace {

template <typename Hook, typename... Arguments>
void tell(ork_handle* handle, Hook hook, Arguments... arguments) {
  const ork_observers& observers = ork::runtime(handle).observers;
  if (observers.*hook != nullptr) {
    (observers.*hook)(observers.ctx, arguments...);
  }
}

}  // namespace

extern "C" {

ORK_EXPORT void orkdb_record_containment2(struct ork_handle* handle, uint32_t instance,
                                          const void* child, const void* parent, uint32_t) {
  tell(handle, &ork_observers::containment, instance, child, parent);
}

ORK_EXPORT void orkdb_plat_set_dirty(struct ork_handle* handle, uint32_t instance,
                                     const void* obj) {
  tell(handle, &ork_observers::set_dirty, instance, obj);
}

ORK_EXPORT void orkdb_plat_set_destroy(struct ork_handle* handle, uint32_t instance,
                                       const void* obj) {
  tell(handle, &ork_observers::set_destroy, instance, obj);
}

ORK_EXPORT void orkdb_plat_set_detach(struct ork_handle* handle, uint32_t instance, const void* obj,
                                      uint32_t) {
  tell(handle, &ork_observers::set_detach, instance, obj);
}

}  // extern "C"
