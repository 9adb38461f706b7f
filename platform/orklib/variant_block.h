// A variant block of a shared descriptor's own: a module's lies in one process only, and goes with
// the module.
#pragma once

#include <cstddef>

#include "ork/handle.h"

namespace ork {

// Bytes of the block and its entries, which lie behind it. Null variants take none.
inline size_t variant_block_size(const ork_variant_info* variants) {
  const int n = variants != nullptr ? variants->n_variants : 0;
  return sizeof(ork_variant_info) + static_cast<size_t>(n > 0 ? n : 0) * sizeof(ork_variant_entry);
}

// Writes variants to memory, of the size told above. The counts are those of former, which may be
// null: 0.
inline ork_variant_info* write_variant_block(void* memory, const ork_variant_info& variants,
                                             const ork_variant_info* former) {
  auto* info = static_cast<ork_variant_info*>(memory);
  *info = {variants.n_variants, {}, reinterpret_cast<ork_variant_entry*>(info + 1)};
  for (int i = 0; i < variants.n_variants; ++i) {
    ork_variant_entry& entry = info->entries[i];
    entry = variants.entries[i];
    const bool counted = former != nullptr && i < former->n_variants;
    entry.create_count =
        counted ? __atomic_load_n(&former->entries[i].create_count, __ATOMIC_RELAXED) : 0;
    entry.destroy_count =
        counted ? __atomic_load_n(&former->entries[i].destroy_count, __ATOMIC_RELAXED) : 0;
  }
  return info;
}

}  // namespace ork
