// What tests of integer arrays share: the paths of a load-balanced channel, four bytes an element.
#pragma once

#include "behaviour/frame/objects.h"

namespace frame {

inline constexpr const char* path_st = "fwe_cl_wayfind_sel_lb_path_st";

// What an array's calls are about, without the questions asked on the way.
inline std::vector<std::string> array_doings(const spy::Log& log) {
  return log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "ork_store_err",
                       "ork_store_epoch_err", "trace", "orkdb_record_containment2", "u_int32_set",
                       "u_int32_set_value"});
}

inline std::vector<uint32_t> values(SpiedHandle& h, fwe_cl_wayfind_sel_lb_path_st* obj) {
  std::vector<uint32_t> all(
      fwe_cl_wayfind_sel_lb_path_st_num_hops_get_value(h, instance, obj, &h.err));
  fwe_cl_wayfind_sel_lb_path_st_path_id_get_mem(h, instance, obj, all.data(),
                                                static_cast<uint32_t>(all.size()), &h.err);
  return all;
}

inline uint8_t* elements_of(const SpiedObject& obj, const std::string& field) {
  return load<uint8_t*>(&obj.state_of(field) + 8);
}

inline std::vector<uint8_t> element_bytes(const SpiedObject& obj, const std::string& field,
                                          size_t count) {
  const uint8_t* const elements = elements_of(obj, field);
  return {elements, elements + count};
}

}  // namespace frame
