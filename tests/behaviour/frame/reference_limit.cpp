// The references of one field lie on the stack while they are given up: 4,096 of them at most.
#include "behaviour/frame/objects.h"

namespace frame {

namespace {

// The only field of site_prefix_data that can hold references, its address, holds that many. Counts
// the calls for lists and the references that were given up, which begin with number 0.
struct References {
  explicit References(uint32_t number) : held(number) {}
  uint32_t held;
  uint32_t lists = 0;
  uint32_t released = 0;
  spy::Replacement count = spy::answer(ip_address_get_oid_count, held);
  spy::Replacement list = spy::replace(
      ip_address_get_object_references,
      [this](ork_handle*, uint32_t, const ork_ip_address*, void** refs, uint32_t n, uint32_t*) {
        ++lists;
        EXPECT_EQ(n, held);
        for (uintptr_t i = 0; i < n; ++i) refs[i] = reinterpret_cast<void*>(i * 16);
      });
  spy::Replacement release =
      spy::replace(orklib_lookup_and_update_oid_ref_count,
                   [this](ork_handle*, uint32_t, void* oid, uint32_t, uint32_t*) {
                     EXPECT_EQ(reinterpret_cast<uintptr_t>(oid), released * uintptr_t{16});
                     ++released;
                   });
};

}  // namespace

TEST(ReferenceLimit, of_one_field_4096_are_given_up) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  References references(4096);
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(
      h, instance, static_cast<fwe_pal_wayfind_site_prefix_data*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"trace", "ip_address_destroy_internal", "free_fn"}),
               {"ip_address_destroy_internal(7,obj+24,0)", "free_fn(7,obj)"});
  EXPECT_EQ(references.lists, 1u);
  EXPECT_EQ(references.released, 4096u);
}

TEST(ReferenceLimit, of_one_field_4097_are_refused_like_a_list_that_fails) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  {
    References references(4097);
    spy::Log log;
    fwe_pal_wayfind_site_prefix_data_destroy(h, instance, obj);
    EXPECT_CALLS(log.calls_of({"trace", "ip_address_destroy_internal", "ork_store_err",
                               "orklib_type_stats_destroy_object", "free_fn"}),
                 {"trace(error,fwe_pal_wayfind_site_prefix_data destroy: Failed to get oid "
                  "references from object. Error Cannot allocate memory)"});
    EXPECT_EQ(references.lists, 0u);
    EXPECT_EQ(references.released, 0u);
  }
  EXPECT_EQ(h.memory().live_blocks, 1u) << "the object stays";
}

}  // namespace frame
