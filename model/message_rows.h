// Messages, the records that they carry, bundles and the module as rows for the engines.
// model/rows.h has the rows of types and fields.
#pragma once

#include "model/rows.h"

namespace model {

// A record that a message carries.
struct CarriedRow {
  uint8_t index;
  uint8_t message;
  uint8_t record;
  uint8_t slot;  // 0 for the first record of its message
  uint32_t tag;  // call-site tag for memory accounting
};
constexpr size_t count_carried() {
  size_t n = 0;
  for (const Message* message : messages) n += message->load.count;
  return n;
}
inline constexpr size_t carried_count = count_carried();
inline constexpr uint32_t first_call_site_tag = 0xA0910400;

constexpr auto make_carried_rows() {
  std::array<CarriedRow, carried_count> rows{};
  size_t n = 0;
  for (size_t m = 0; m < message_count; ++m) {
    const Load& load = messages[m]->load;
    for (uint8_t slot = 0; slot < load.count; ++slot, ++n) {
      rows[n] = {static_cast<uint8_t>(n), static_cast<uint8_t>(m),
                 row_of(*load.records[slot], records), slot,
                 first_call_site_tag + static_cast<uint32_t>(n)};
    }
  }
  return rows;
}
inline constexpr auto carried_rows = make_carried_rows();

struct MessageRow {
  uint8_t index;
  uint8_t carried;  // row of the first record that it carries
  uint8_t records;  // 1 or 2
};
constexpr auto make_message_rows() {
  std::array<MessageRow, message_count> rows{};
  for (const CarriedRow& carried : carried_rows) {
    MessageRow& row = rows[carried.message];
    row.index = carried.message;
    if (carried.slot == 0) row.carried = carried.index;
    row.records = static_cast<uint8_t>(carried.slot + 1);
  }
  return rows;
}
inline constexpr auto message_rows = make_message_rows();

struct BundleRow {
  uint8_t index;
};
constexpr auto make_bundle_rows() {
  std::array<BundleRow, bundle_count> rows{};
  for (size_t b = 0; b < bundle_count; ++b) rows[b].index = static_cast<uint8_t>(b);
  return rows;
}
inline constexpr auto bundle_rows = make_bundle_rows();

struct ModuleRow {};
inline constexpr ModuleRow module_row{};

}  // namespace model
