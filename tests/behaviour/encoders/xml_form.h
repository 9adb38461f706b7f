// What tests of records as XML stand on: an untracked handle, and a document read into a record.
#pragma once

#include "behaviour/encoders/values.h"

namespace encoders {

class XmlForm : public testing::Test {
 protected:
  void read(const Calls& calls, const std::string& text, const Object& object,
            const char* xpath = nullptr) {
    const Document document = parsed(text);
    const std::string top = xpath != nullptr ? xpath : std::string("//") + calls.name();
    calls.from_xml(handle, instance, top.c_str(), document.get(), object.get(), &err, reason,
                   sizeof reason);
  }

  const Calls& mem = calls_of("fwe_cl_wayfind_mem_st");
  const Calls& tunnel = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Calls& path = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Handle handle{ORK_TRACKING_OFF};
  uint32_t err = 0;
  char reason[300] = "";
};

}  // namespace encoders
