// The handle as the runtime sees it: the members that modules are bound to, and behind them its
// own.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "domain.h"
#include "oid.h"
#include "ork/platform.h"
#include "storage.h"
#include "type_list.h"

namespace ork {

struct Runtime : ork_handle {
  uint32_t last_error = 0;
  bool strict_epoch = false;
  bool suppress_messages = false;
  size_t frame_base = 0;
  size_t frame_factor = 0;
  ork_sttr_info sttr{ORK_STTR_OFF};
  ork_observers observers{};
  std::string domain_name_text;

  std::unique_ptr<ork_storage> own_storage;  // null for a handle on storage that it shares
  ork_storage* storage = nullptr;
  std::unique_ptr<uint8_t[]> workspace;
  int32_t workspace_size = 0;

  std::optional<ork_type_list> release;  // what this process pretends to be
  Domain peer;  // what domain.runtime points at once there is something to know
  DomainCache domain_cache;
  Oids oids;

  const ork_bundle_dispatch_info* dispatching = nullptr;
  const ork_dispatcher* dispatcher = nullptr;
};

inline Runtime& runtime(ork_handle* handle) { return *static_cast<Runtime*>(handle); }

inline const Runtime& runtime(const ork_handle* handle) {
  return *static_cast<const Runtime*>(handle);
}

// Writes the caller's slot and the handle's last error at once.
void fail(ork_handle* handle, uint32_t* err, uint32_t number);

// The same where work goes on after an error: the first one stays.
inline void fail_first(ork_handle* handle, uint32_t* err, uint32_t number) {
  if (*err == 0) {
    fail(handle, err, number);
  }
}

}  // namespace ork
