#include "frame/trace.h"

extern "C" {

[[gnu::visibility("default")]] uint16_t g_ork_fwe_ui_wayfind_trace_module_id;
[[gnu::visibility("default")]] uint16_t g_ork_fwe_ui_wayfind_stub_trace_module_id;

[[gnu::visibility("default")]] int32_t ork_fwe_ui_wayfind_trace_init(void) {
  static uint32_t once;  // the runtime's, to initialize a module only once
  return flight_module_init_fn("ork_fwe_ui_wayfind", &g_ork_fwe_ui_wayfind_trace_module_id, &once);
}

// The index sections.
[[gnu::visibility("hidden")]] extern const uint8_t wayfind_trace_section_0[];
[[gnu::visibility("hidden")]] extern const uint8_t wayfind_trace_section_1[];
[[gnu::visibility("hidden")]] extern const uint8_t wayfind_trace_section_2[];
}

namespace trace {

const void* section_id(uint8_t section) {
  switch (section) {
    case 0: return wayfind_trace_section_0 + section_id_offset;
    case 1: return wayfind_trace_section_1 + section_id_offset;
    default: return wayfind_trace_section_2 + section_id_offset;
  }
}

}  // namespace trace
