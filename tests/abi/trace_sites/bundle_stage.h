// The handlers of a bundle's control messages, called as the library would call them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "stage.h"

namespace trace_sites {

// The dispatch in progress, and the table that it runs on.
inline const ork_bundle_dispatch_info& dispatch(ork_bundle_handler handler = nullptr) {
  static ork_bundle_dispatch_info info{};
  info.name = "the bundle";
  info.bundle_handler = handler;
  return info;
}
inline void* const dispatch_table = reinterpret_cast<void*>(uintptr_t{0xD15A});

// Answers for what the runtime knows: null when no dispatch is in progress.
inline spy::Replacement dispatching(const ork_bundle_dispatch_info* info) {
  return spy::replace(orklib_in_dispatch_message_info, [info](auto, void** lut) {
    if (lut != nullptr) *lut = dispatch_table;
    return info;
  });
}

struct Bundle {
  const wayfind_bundle& schema;

  std::string name(const char* suffix) const { return schema.name + std::string(suffix); }
  std::string prefixed(const char* suffix) const {
    return std::string("fwe_ui_wayfind_") + schema.name + suffix;
  }

  // Which is "start", "abort" or "commit"; error stands in the slot beforehand.
  void handle(const char* kind, const TickingHandle& handle, uint32_t error) const {
    handle.err = error;
    const std::string handler = prefixed("_bundle_") + kind + "_message_handler";
    function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(schema.functions, handler)(
        handle, instance, nullptr, nullptr, &handle.err);
  }
};

inline std::vector<Bundle> bundles() {
  std::vector<Bundle> all;
  for (const wayfind_bundle& bundle : std::span(wayfind_bundles, wayfind_bundle_count))
    all.push_back({bundle});
  return all;
}

}  // namespace trace_sites
