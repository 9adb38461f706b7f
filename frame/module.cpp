// The module's record in the runtime's list of modules.
#include "frame/typeinfo.h"

namespace frame {
namespace {

constexpr char name[] = "fwe_ui_wayfind";

ork_module module_record{name, descriptors, nullptr, nullptr};
uint8_t module_link_once;

// Appends the module to the runtime's list, once per load.
[[gnu::constructor]] void link_module() {
  if (module_link_once != 0) return;
  ork_module_root& root = ork_module_tot_root;
  module_record.next = nullptr;
  module_record.prev_link = root.tail;
  *root.tail = &module_record;
  root.tail = &module_record.next;
  ++root.count;
  module_link_once = 1;
}

// module_link_once stays set: an unlinked module is not linked again.
[[gnu::destructor]] void unlink_module() {
  if (module_record.next == nullptr && module_record.prev_link == nullptr) return;
  ork_module_root& root = ork_module_tot_root;
  if (module_record.next != nullptr) {
    module_record.next->prev_link = module_record.prev_link;
  } else {
    root.tail = module_record.prev_link;
  }
  *module_record.prev_link = module_record.next;
  module_record.next = nullptr;
  module_record.prev_link = nullptr;
  --root.count;
}

}  // namespace

}  // namespace frame
