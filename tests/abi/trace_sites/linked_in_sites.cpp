// The one site of a bundle that only a process with a handler of its own can raise: here all 18 are
// defined.
#include "bundle_stage.h"
#include "texts.h"

#define DEFINE_HANDLER(bundle)                                                           \
  extern "C" void fwe_ui_wayfind_##bundle##_bundle_handler(ork_handle*, uint32_t, void*, \
                                                           uint32_t*) {}

DEFINE_HANDLER(fwe_pal_wayfind_show_site_prefix_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_prefixtosite_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_sitetohop_response)
DEFINE_HANDLER(fwe_pal_wayfind_show_debug_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_debug_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_global_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_global_new_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_auto_tunnel_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_selection_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_traffic_class_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_nb_channel_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_enforce_hop_resp)
DEFINE_HANDLER(fwe_cl_wayfind_show_multi_nh_map_resp)
DEFINE_HANDLER(fwe_cl_wayfind_show_dcid_siteip_map_resp)
DEFINE_HANDLER(fwe_cl_wayfind_show_channel_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_hop_chan_response)
DEFINE_HANDLER(fwe_dp_wayfind_show_debug_response)
DEFINE_HANDLER(fwe_cl_wayfind_show_intf_response)

namespace trace_sites {
namespace {

TEST(LinkedInSites, commit) {
  for (const Bundle& bundle : bundles()) {
    expect_trace({bundle.name("_commit"), text::calling_linked_handler, "debug", {"the bundle"}},
                 [&] {
                   const auto accumulating = spy::answer(orklib_is_accumulating_bundle, 1);
                   const auto info = dispatching(&dispatch());
                   const TickingHandle handle;
                   handle->bundle_receive_list.next = handle->bundle_receive_list.prev =
                       &handle->bundle_receive_list;
                   bundle.handle("commit", handle, 0);
                 });
  }
  EXPECT_EQ(raised().size(), 18u);
}

}  // namespace
}  // namespace trace_sites
