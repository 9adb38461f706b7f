// What tests of record arrays share: debug settings without a record inside them, and policies with
// one.
#pragma once

#include "behaviour/frame/paths.h"

namespace frame {

inline constexpr const char* per_complex =
    "fwe_dp_wayfind_debug_data_per_complex"; /* num_fwes at 11, dbg_setting at 16 */
inline constexpr const char* setting =
    "fwe_dp_wayfind_debug_setting"; /* body 56, 9 state bytes, fwe_num at 11 */
inline constexpr const char* all_policies =
    "fwe_cl_wayfind_select_all_policies"; /* num_policies at 12, policy at 16 */
inline constexpr const char* policy =
    "fwe_cl_wayfind_select_policy"; /* body 88, 7 state bytes, mem at 16 with its own at 2 */

// Which error slot a forgotten distance is given is the growth's own affair.
inline std::vector<std::string> any_slot(std::vector<std::string> calls) {
  for (std::string& call : calls) {
    if (call.find("ork_hd_mapping_destroy") == 0) {
      call.replace(call.rfind(','), std::string::npos, ")");
    }
  }
  return calls;
}

inline uint8_t* block_of(const SpiedObject& obj, const std::string& field) {
  return load<uint8_t*>(obj.field(field));
}

// An array of debug settings and a source for its elements.
struct Settings {
  explicit Settings(const Mode& mode) : h(mode), obj(h, per_complex), src(h, setting, "src") {}
  void set(uint32_t index) { set(index, src); }
  void set(uint32_t index, const SpiedObject& from) {
    fwe_dp_wayfind_debug_data_per_complex_dbg_setting_set(h, instance, obj, index, from, &h.err);
  }
  fwe_dp_wayfind_debug_setting* get(uint32_t index) {
    return fwe_dp_wayfind_debug_data_per_complex_dbg_setting_get(h, instance, obj, index, &h.err);
  }
  uint8_t number(uint32_t index) {
    return fwe_dp_wayfind_debug_setting_fwe_num_get_value(h, instance, get(index), &h.err);
  }
  uint8_t state(uint32_t index) {
    return fwe_dp_wayfind_debug_setting_fwe_num_state_flag_get(h, instance, get(index), &h.err);
  }
  SpiedHandle h;
  SpiedObject obj;
  SpiedObject src;
};

}  // namespace frame
