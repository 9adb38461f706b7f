// Field numbers run through the variants, with one number between each and the next that no field
// has.
#include "laws/frame/fields.h"

namespace frame {

namespace {

// The numbers between variants, by record; the other records have one variant.
const std::map<std::string, std::vector<unsigned>> skipped = {
    {"fwe_cl_wayfind_hop_chan_data", {5}},
    {"fwe_cl_wayfind_select_loadbalance_channel_st", {12}},
    {"fwe_cl_wayfind_chan_st", {20, 23, 29}},
    {"fwe_cl_wayfind_global_info_data", {8}},
    {"fwe_cl_wayfind_global_state_data", {4, 10}},
    {"fwe_cl_wayfind_auto_tunnel", {3}},
    {"fwe_cl_wayfind_select_state_data", {5}},
    {"fwe_cl_wayfind_select_flow_data", {9}},
    {"fwe_cl_wayfind_select_tc_data", {16}},
    {"fwe_cl_wayfind_enforce_hop", {5}},
    {"fwe_cl_wayfind_chan_stats_st", {8}},
    {"fwe_cl_wayfind_channel_data", {11}},
    {"fwe_cl_wayfind_hop_chan_st", {12}}};

// The oldest variant that every number is in use from.
std::map<unsigned, int> oldest_variants(const told::Record& record) {
  std::map<unsigned, int> oldest;
  for (const told::Field& field : record.fields) {
    oldest[field.number] = static_cast<int>(field.variant);
  }
  if (const auto found = skipped.find(record.name); found != skipped.end()) {
    int variant = 0;
    for (const unsigned number : found->second) {
      EXPECT_TRUE(oldest.emplace(number, ++variant).second)
          << record.name << " has a field of number " << number;
    }
  }
  return oldest;
}

}  // namespace

TEST(FieldNumbers, are_in_use_from_their_variant_on_as_the_lower_of_domain_and_object_tells) {
  SpiedHandle h;
  for (const Type& type : types()) {
    const std::map<unsigned, int> oldest = oldest_variants(type.told);
    ASSERT_EQ(oldest.size(), type.told.newest().bound) << type.told.name;
    SpiedObject obj(h, type);
    const int newest = static_cast<int>(type.told.newest_variant());
    for (int known = -1; known <= newest + 1; ++known) {
      const auto domain = h.domain({{type.told.name, static_cast<int8_t>(known)}});
      const auto expect = [&](int deciding, uint64_t at, uint64_t flags) {
        const auto valid = [&](uint64_t number) {
          return static_cast<uint32_t>(type.call("_is_valid_cr", {word(h), at, number, flags}));
        };
        for (const auto& [number, variant] : oldest) {
          EXPECT_EQ(valid(number), variant == 0 || variant <= deciding ? 1u : 0u)
              << type.told.name << " number " << number << " at " << deciding;
        }
        EXPECT_EQ(valid(type.told.newest().bound), 0u) << type.told.name;
        EXPECT_EQ(valid(0xFFFFFFFF), 0u) << type.told.name;
      };
      expect(known, 0, 1);
      for (int own = -1; own <= newest; ++own) {
        header(obj.get()).variant = static_cast<int8_t>(own);
        expect(std::min(known, own), obj.word(), 0);
      }
      header(obj.get()).variant = static_cast<int8_t>(newest);
    }
  }
}

}  // namespace frame
