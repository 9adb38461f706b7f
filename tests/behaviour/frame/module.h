// What tests of the module as a whole share: its types in their order, and its place in the
// runtime's list.
#pragma once

#include <sys/mman.h>

#include "behaviour/frame/objects.h"

namespace frame {

// The names of all types in the order of registration, messages without the word.
inline std::vector<std::string> registration_order() {
  std::vector<std::string> names;
  for (const auto& record : told::tables().records) {
    names.push_back(record.name);
  }
  for (const auto& small : told::tables().smalls) {
    names.push_back(small.name);
  }
  for (const auto& message : told::tables().messages) {
    names.push_back(message.name);
  }
  return names;
}

inline ork_module* module_record() {
  for (ork_module* module = ork_module_tot_root.head; module; module = module->next) {
    if (std::strcmp(module->name, "fwe_ui_wayfind") == 0) {
      return module;
    }
  }
  return nullptr;
}

// Robs one descriptor of its variants, for the rest of the process.
inline void rob_a_descriptor() {
  auto* const type = const_cast<ork_type_info*>(&_fwe_cl_wayfind_chan_st_type_info_internal);
  const auto page = reinterpret_cast<uintptr_t>(&type->varinfo) & ~uintptr_t{4095};
  mprotect(reinterpret_cast<void*>(page), 8192, PROT_READ | PROT_WRITE);
  type->varinfo = nullptr;
}

}  // namespace frame
