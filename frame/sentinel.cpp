#include "frame/sentinel.h"

namespace frame {
namespace {

// One block for all records, so that no table of pointers needs relocation.
constexpr size_t sentinel_offset(size_t record) {
  size_t offset = 0;
  for (size_t r = 0; r < record; ++r) offset += model::record_rows[r].newest_layout().body;
  return offset;
}
constexpr auto sentinel_offsets = [] {
  std::array<uint16_t, model::record_count> offsets{};
  for (size_t r = 0; r < model::record_count; ++r)
    offsets[r] = static_cast<uint16_t>(sentinel_offset(r));
  return offsets;
}();
alignas(8) uint8_t record_sentinels[sentinel_offset(model::record_count)];

constexpr size_t largest = 24;
alignas(8) uint8_t small_sentinels[model::small_type_count][largest];

}  // namespace

void* sentinel(const RecordRow& record) {
  return &record_sentinels[sentinel_offsets[record.index]];
}
void* sentinel(const SmallRow& type) { return small_sentinels[type.index]; }

}  // namespace frame
