#include "domain.h"

#include <algorithm>

#include "guard.h"
#include "ork/orklib.h"
#include "runtime.h"
#include "support/export.h"

namespace ork {

void Domain::learn(const ork_type_list* peer, const ork_type_list* own_release) {
  decltype(newest_) newest;
  const ork_type_list& list = peer != nullptr ? *peer : *own_release;
  for (const auto& entry : list.entries) {
    const uint32_t own =
        peer != nullptr && own_release != nullptr ? own_release->variants(entry.luid) : UINT32_MAX;
    if (own != 0) {
      newest.emplace(entry.luid, static_cast<int8_t>(std::min(entry.variants, own) - 1));
    }
  }
  newest_.swap(newest);
}

int8_t Domain::newest_variant(const ork_type_info& type) const {
  const auto found = newest_.find(luid_at(type.luid));
  return found != newest_.end() ? found->second : int8_t{-1};
}

namespace {

// A domain that knows nothing yet stands in the way of nothing.
int8_t newest_in(const ork_domain& domain, const ork_type_info& type) {
  const auto* known = static_cast<const Domain*>(domain.runtime);
  return known != nullptr ? known->newest_variant(type) : newest_of(type);
}

}  // namespace
}  // namespace ork

extern "C" {

ORK_EXPORT int8_t ork_domain_lookup_variant(struct ork_handle* handle,
                                            const struct ork_domain* domain,
                                            const struct ork_type_info* tinfo, uint32_t*) {
  if (tinfo == nullptr) {
    return 0;
  }
  if (domain != &handle->domain) {
    return ork::newest_in(*domain, *tinfo);
  }
  return ork::runtime(handle).domain_cache.get(tinfo,
                                               [&] { return ork::newest_in(*domain, *tinfo); });
}

ORK_EXPORT uint32_t ork_domain_lookup_message_ok(struct ork_handle* handle,
                                                 const struct ork_domain* domain,
                                                 const struct ork_type_info* tinfo, uint32_t* err) {
  return tinfo != nullptr && ork_domain_lookup_variant(handle, domain, tinfo, err) >= 0 ? 1 : 0;
}

ORK_EXPORT void ork_handle_set_peer(struct ork_handle* handle, const char* name,
                                    const struct ork_type_list* peer, uint32_t* err) {
  ork::guarded(err, [&] {
    ork::Runtime& runtime = ork::runtime(handle);
    const ork_type_list* release = runtime.release ? &*runtime.release : nullptr;
    std::string text = name != nullptr ? name : "";
    if (peer != nullptr || release != nullptr) {
      runtime.peer.learn(peer, release);
    }
    runtime.domain.runtime = peer != nullptr || release != nullptr ? &runtime.peer : nullptr;
    runtime.domain_name_text.swap(text);
    runtime.domain_name = runtime.domain_name_text.c_str();
    runtime.domain_cache.clear();
  });
}

ORK_EXPORT struct ork_type_list* ork_handle_announcement(const struct ork_handle* handle,
                                                         uint32_t* err) {
  return ork::guarded(err, [&] {
    const auto& release = ork::runtime(handle).release;
    const ork_type_list known = ork::types_of_modules();
    return new ork_type_list(release ? ork::common_types(known, *release) : known);
  });
}

}  // extern "C"
