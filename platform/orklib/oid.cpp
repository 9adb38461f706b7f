#include "oid.h"

#include <algorithm>
#include <cerrno>

#include "guard.h"
#include "object.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {
namespace {

template <typename Wanted>
Oid* first(const std::vector<std::unique_ptr<Oid>>& oids, Wanted wanted) {
  const auto found = std::find_if(oids.begin(), oids.end(), wanted);
  return found != oids.end() ? found->get() : nullptr;
}

void forget(ork_handle* handle, uint32_t instance, Oid* oid) {
  store_flags(handle, instance, oid->object,
              static_cast<uint8_t>(header(oid->object)->obj_flags & ~OBJ_OID_MAPPED));
  runtime(handle).oids.remove(oid);
}

}  // namespace

Oid* Oids::add(void* object, ork_deferred_destroy_fn destroy) {
  oids_.push_back(std::make_unique<Oid>(Oid{object, destroy}));
  return oids_.back().get();
}

Oid* Oids::of_object(const void* object) const {
  return first(oids_, [&](const auto& oid) { return oid->object == object; });
}

Oid* Oids::known(const void* oid) const {
  return first(oids_, [&](const auto& candidate) { return candidate.get() == oid; });
}

void Oids::remove(const Oid* oid) {
  std::erase_if(oids_, [&](const auto& candidate) { return candidate.get() == oid; });
}

}  // namespace ork

extern "C" {

ORK_EXPORT void* ork_oid_map(struct ork_handle* handle, uint32_t instance, void* obj,
                             ork_deferred_destroy_fn destroy, uint32_t* err) {
  return ork::guarded(err, [&]() -> void* {
    ork::Oids& oids = ork::runtime(handle).oids;
    if (oids.of_object(obj) != nullptr) {
      *err = EEXIST;
      return nullptr;
    }
    ork::Oid* oid = oids.add(obj, destroy);
    ork::store_flags(handle, instance, obj,
                     static_cast<uint8_t>(ork::header(obj)->obj_flags | OBJ_OID_MAPPED));
    return oid;
  });
}

ORK_EXPORT void ork_oid_hold(struct ork_handle* handle, void* oid, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  if (ork::Oid* known = ork::runtime(handle).oids.known(oid)) {
    known->references += 1;
  } else {
    ork::fail(handle, err, ENOENT);
  }
}

ORK_EXPORT void* ork_oid_object(const struct ork_handle* handle, const void* oid) {
  const ork::Oid* known = ork::runtime(handle).oids.known(oid);
  return known != nullptr ? known->object : nullptr;
}

ORK_EXPORT uint32_t ork_request_oid_mapping_destroy(struct ork_handle* handle, uint32_t instance,
                                                    void* obj, uint32_t* err) {
  if (*err != 0) {
    return 0;
  }
  ork::Oid* oid = ork::runtime(handle).oids.of_object(obj);
  if (oid == nullptr) {
    *err = ENOENT;
    return 0;
  }
  if (oid->references > 0) {
    oid->destroy_asked = true;
    return 0;
  }
  ork::forget(handle, instance, oid);
  return 1;
}

ORK_EXPORT void orklib_lookup_and_update_oid_ref_count(struct ork_handle* handle, uint32_t instance,
                                                       void* oid, uint32_t raise, uint32_t* err) {
  if (*err != 0) {
    return;
  }
  ork::Oid* known = ork::runtime(handle).oids.known(oid);
  if (known == nullptr || (raise == 0 && known->references == 0)) {
    *err = ENOENT;
    return;
  }
  if (raise != 0) {
    known->references += 1;
    return;
  }
  known->references -= 1;
  if (known->references == 0 && known->destroy_asked) {
    void* object = known->object;
    const ork_deferred_destroy_fn destroy = known->destroy;
    ork::forget(handle, instance, known);
    if (destroy != nullptr) {
      destroy(handle, instance, object);
    }
  }
}

}  // extern "C"
