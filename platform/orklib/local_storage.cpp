#include "local_storage.h"

namespace ork {

void* LocalStorage::alloc(void* pool, uint32_t, size_t size) {
  auto& self = *static_cast<LocalStorage*>(static_cast<ork_storage*>(pool));
  return self.heap_.allocate(size, self.allowance.spend(size));
}

void LocalStorage::serve(ork_handle& handle) {
  handle.shared_alloc_fn = TypeTable::alloc;
  handle.type_table_add_fn = TypeTable::add;
  handle.type_table_find_fn = TypeTable::find;
  handle.type_table = &types_;
  handle.shared_pool = &types_;
  handle.alloc_fn = alloc;
  handle.free_fn = Heap::release;
  handle.mem_pool = static_cast<ork_storage*>(this);
  handle.hd_mapping = &heap_.mapping();
}

}  // namespace ork
