// Tunnel interfaces that come up by themselves, and the flows on them.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"

namespace model {

inline constexpr Record auto_tunnel_gstatus{
    "fwe_cl_wayfind_auto_tunnel_gstatus",
    {.luid = "703ba59cb404c803643f2dbbfa48874c", .definition = "fbbcc8ab7a43135608a46e68e94acedf"},
    "How many auto tunnels there are.",
    {
        value("number", u_int32, 0, "Auto tunnels present.", entries),
    }};
static_assert(layout_is<auto_tunnel_gstatus, Manifest{.size = 16},
    Sizes{.used = 16, .slop = 8, .body = 24, .state = 1, .bound = 1}>());

inline constexpr Record auto_tunnel{
    "fwe_cl_wayfind_auto_tunnel",
    {.luid = "b505b42b97aede154ffbd34045464b01", .definition = "6462a553356cb6339db92540402eb9a6"},
    "One auto tunnel.",
    {
        value("table_id",             u_int32, 0, "Routing table of the tunnel, by identifier.",
              column),
        value("tunnel_fwe_if_handle", u_int32, 0, "Forwarding-engine interface handle."),
        value("tunnel_flow_counts",   u_int32, 0, "Flows that use the tunnel.", column),
        text ("create_ts_msec",       32,      1, "Creation time in ms, as text.", stamp),
        text ("update_ts_msec",       32,      1, "Last update in ms, as text.", stamp | column),
    }};
static_assert(layout_is<auto_tunnel, Manifest{.size = 88},
    Sizes{.used = 24, .slop = 80, .body = 32, .state = 3, .bound = 3},
    Sizes{.used = 88, .slop = 16, .body = 104, .state = 5, .bound = 6}>());

inline constexpr Record auto_tunnel_misc{
    "fwe_cl_wayfind_auto_tunnel_misc",
    {.luid = "bacbc6e76037b41273b3e430967fa19d", .definition = "5f2c6691077082e8249b09f326d4cb28"},
    "Name of the interface of one auto tunnel.",
    {
        text("intf_name", 32, 0, "Name of the tunnel's interface.", column),
    }};
static_assert(layout_is<auto_tunnel_misc, Manifest{.size = 48},
    Sizes{.used = 43, .slop = 13, .body = 56, .state = 1, .bound = 1}>());

inline constexpr Message auto_tunnel_gstatus_show{
    "fwe_cl_wayfind_auto_tunnel_gstatus_show",
    {.luid = "cf708fc38a783132a91781930c169d65", .definition = "6ab5146ffa80c0ed310be09044118b05"},
    "The number of auto tunnels, once in a response.",
    {&auto_tunnel_gstatus}};

inline constexpr Message auto_tunnel_show{
    "fwe_cl_wayfind_auto_tunnel_show",
    {.luid = "9c579133d0577cd746900ae092784e42", .definition = "fcf1f7028b92ab72e956431f2ad5c0d4"},
    "One auto tunnel and the name of its interface.",
    {&auto_tunnel, &auto_tunnel_misc},
    key("tunnel_fwe_if_handle")};

inline constexpr Bundle show_auto_tunnel{
    "fwe_cl_wayfind_show_auto_tunnel_response",
    {.start = "3cc86929afb741e169f0610ee5a8dc66",
     .abort = "68b306904fec64a80377a28945b93df6",
     .commit = "6816b1618057dd077ca328d6aeee4aed"},
    "Answer to a show of auto tunnels.",
    {once(auto_tunnel_gstatus_show), repeatedly(auto_tunnel_show)}};

}  // namespace model
