// A type of which the runtime knows as many variants as a signed byte can count, since a newer
// module entered it first.
#include "behaviour/frame/objects.h"

namespace frame {

TEST(ManyVariants, of_127_that_the_runtime_knows_the_newest_own_one_is_taken_without_a_trace) {
  SpiedHandle h({.shared = true});
  std::vector<ork_variant_entry> entries(127);
  ork_variant_info variants{127, {}, entries.data()};
  ork_type_info type = _fwe_cl_wayfind_chan_st_type_info_internal;
  type.varinfo = &variants;
  const auto shared = spy::answer(ork_type_info_ptr_get, &type);
  const auto newest = spy::answer(ork_domain_lookup_variant, 126);
  spy::Log log;
  alignas(8) uint8_t block[408] = {};
  auto* const obj = reinterpret_cast<fwe_cl_wayfind_chan_st*>(block);
  fwe_cl_wayfind_chan_st_initialize(h, instance, obj, &_fwe_cl_wayfind_chan_st_type_info_internal,
                                    0, 0, 0, nullptr, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(header(block).variant, 3);
  EXPECT_EQ(header(block).variant_cap, 3);
  fwe_cl_wayfind_chan_st_destroy_internal(h, instance, obj, 0);
  EXPECT_CALLS(log.calls_of({"trace"}), {});
  EXPECT_EQ(entries[3].create_count, 1u);
  EXPECT_EQ(entries[3].destroy_count, 1u);
}

}  // namespace frame
