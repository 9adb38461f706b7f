// Where things lead: prefixes to sites, sites to hops, remote end points to next hops, dcids to
// site addresses; and the hops that are enforced.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"

namespace model {

inline constexpr Record pal_site_prefix_data{
    "fwe_pal_wayfind_site_prefix_data",
    {.luid = "6347514a510a1f8fb519ccb9702bac5a", .definition = "7ff1f74cd73c08b5a559014e4a61f8f2"},
    "From a prefix to its site, as the platform layer knows it.",
    {
        value ("table_id", u_int32,    0, "Routing table, by identifier."),
        value ("site_id",  u_int32,    0, "Site identifier; an address in chan_st.", column),
        value ("flags",    u_int32,    0, "Flag word; no bit has a name.", column),
        object("pfx",      ip_address, 0, "The prefix."),
    }};
static_assert(layout_is<pal_site_prefix_data, Manifest{.size = 72},
    Sizes{.used = 72, .slop = 16, .body = 88, .state = 4, .bound = 4}>());

inline constexpr Record prefixtosite_stats_st{
    "fwe_cl_wayfind_prefixtosite_stats_st",
    {.luid = "b8b3e68f725963c5c6d71ba3c9714b04", .definition = "bd9d967ef11e1e1a0d89c86406e1854d"},
    "Counters of one prefix, by way of its primary and of its backup site.",
    {
        value("pri_send_bytes",      u_int64, 0, "Bytes that went by the primary.", grows),
        value("pri_send_packets",    u_int64, 0, "Packets that went by the primary.", grows),
        value("backup_send_bytes",   u_int64, 0, "Bytes that went by the backup.", grows),
        value("backup_send_packets", u_int64, 0, "Packets that went by the backup.", grows),
        value("total_send_bytes",    u_int64, 0, "Total bytes sent.", grows),
        value("total_send_packets",  u_int64, 0, "Total packets sent.", grows),
    }};
static_assert(layout_is<prefixtosite_stats_st, Manifest{.size = 64},
    Sizes{.used = 64, .slop = 8, .body = 72, .state = 6, .bound = 6}>());

inline constexpr Record prefixtosite_data{
    "fwe_cl_wayfind_prefixtosite_data",
    {.luid = "6c0719897fb5e6944b9cb0086ae90133", .definition = "6c78dd8f2b22182c943ec819528a2c35"},
    "From a prefix to its primary and backup site, as the client layer knows them.",
    {
        object("pfx",            ip_address,            0, "The prefix."),
        value ("table_id",       u_int32,               0, "Routing table, by identifier."),
        value ("flags",          u_int32,               0, "Flag word; no bit has a name."),
        value ("instance_id",    u_int32,               0, "Instance, by identifier.", column),
        value ("pri_site_id",    u_int32,               0, "Primary site, by identifier.", column),
        value ("backup_site_id", u_int32,               0, "Backup site, by identifier.", column),
        object("stats",          prefixtosite_stats_st, 0, "Counters of the prefix."),
    }};
static_assert(layout_is<prefixtosite_data, Manifest{.size = 160},
    Sizes{.used = 160, .slop = 16, .body = 176, .state = 13, .bound = 7}>());

inline constexpr Record sitetohop_stats_st{
    "fwe_cl_wayfind_sitetohop_stats_st",
    {.luid = "400addd989ff15c04b7a77e4c8b86053", .definition = "3823ace25ec0d8fb01d8f530f18a87d7"},
    "Counters of one site, by its primary and backup hop; no prefixtosite_stats_st.",
    {
        value("pri_send_bytes",      u_int64, 0, "Bytes that went by the primary.", grows),
        value("pri_send_packets",    u_int64, 0, "Packets that went by the primary.", grows),
        value("backup_send_bytes",   u_int64, 0, "Bytes that went by the backup.", grows),
        value("backup_send_packets", u_int64, 0, "Packets that went by the backup.", grows),
        value("total_send_bytes",    u_int64, 0, "Total bytes sent.", grows),
        value("total_send_packets",  u_int64, 0, "Total packets sent.", grows),
    }};
static_assert(layout_is<sitetohop_stats_st, Manifest{.size = 64},
    Sizes{.used = 64, .slop = 8, .body = 72, .state = 6, .bound = 6}>());

inline constexpr Record sitetohop_data{
    "fwe_cl_wayfind_sitetohop_data",
    {.luid = "90452fb6973ff0599b76b403ea3dc259", .definition = "a3bf4325ee810f78601eb5b74327dbd6"},
    "From a site to its primary and backup hop.",
    {
        value ("site_id",       u_int32,            0, "Site identifier; an address in chan_st."),
        value ("flags",         u_int32,            0, "Flag word; no bit has a name."),
        value ("pri_hop_id",    u_int32,            0, "Primary hop, by identifier.", column),
        value ("backup_hop_id", u_int32,            0, "Backup hop, by identifier.", column),
        object("stats",         sitetohop_stats_st, 0, "Counters of the site."),
    }};
static_assert(layout_is<sitetohop_data, Manifest{.size = 104},
    Sizes{.used = 104, .slop = 16, .body = 120, .state = 11, .bound = 5}>());

inline constexpr Record enforce_hop{
    "fwe_cl_wayfind_enforce_hop",
    {.luid = "14a618b7c49686daca0b35669a051771", .definition = "9d40b7a4a7cc79a52622ae30c35e7d85"},
    "A hop that is enforced.",
    {
        value("hop_id",         u_int32,   0, "The hop, by identifier."),
        value("inst_id",        u_int32,   0, "Instance, by identifier."),
        value("linktype",       link_type, 0, "Type of the link.", column),
        value("adj_id",         u_int32,   0, "Adjacency, by identifier.", column),
        value("sa_id",          u_int32,   0, "The sa, by identifier; not interpreted."),
        text ("create_ts_msec", 32,        1, "Creation time in ms, as text.", stamp),
        text ("update_ts_msec", 32,        1, "Last update in ms, as text.", stamp | column),
    }};
static_assert(layout_is<enforce_hop, Manifest{.size = 112},
    Sizes{.used = 48, .slop = 80, .body = 56, .state = 5, .bound = 5},
    Sizes{.used = 112, .slop = 16, .body = 128, .state = 7, .bound = 8}>());

inline constexpr Record multi_nh_map{
    "fwe_cl_wayfind_multi_nh_map",
    {.luid = "1e3e736f348f037d975b063c5c5cb54b", .definition = "ff76862de1ef60e84c548c9239c6a903"},
    "A next hop of a remote end point.",
    {
        value ("vrf_id",          u_int32,    0, "VRF, by identifier."),
        object("remote_endpoint", ip_address, 0, "Remote end point, by address."),
        object("remote_ip",       ip_address, 0, "Remote side, by IP address."),
        value ("tag",             u_int16,    0, "Tag; 0 is a tag like any other.", column),
    }};
static_assert(layout_is<multi_nh_map, Manifest{.size = 120},
    Sizes{.used = 114, .slop = 22, .body = 136, .state = 4, .bound = 4}>());

inline constexpr Record dcid_siteip_map{
    "fwe_cl_wayfind_dcid_siteip_map",
    {.luid = "557c1b5bc09c0934038f1d939ebce68f", .definition = "3195ba689bc6b56730513afd87460eb5"},
    "From a dcid to the address of its site.",
    {
        value ("vrf_id",  u_int32,    0, "VRF, by identifier."),
        value ("dc_id",   u_int8,     0, "The dcid; 0 is a dcid like any other."),
        object("site_ip", ip_address, 0, "Site, by address.", column),
    }};
static_assert(layout_is<dcid_siteip_map, Manifest{.size = 72},
    Sizes{.used = 72, .slop = 16, .body = 88, .state = 3, .bound = 3}>());

inline constexpr Message pal_site_prefix_msg{
    "fwe_pal_wayfind_site_prefix_msg",
    {.luid = "8163e8975dd691b9f7b82f91d23869c7", .definition = "8ca819adb0cb73b63647ead4865398d5"},
    "The site of a prefix, from the platform layer.",
    {&pal_site_prefix_data},
    key("table_id", "pfx")};

inline constexpr Message prefixtosite_msg{
    "fwe_cl_wayfind_prefixtosite_msg",
    {.luid = "b67c437b85f16ea0d0502d7b13394e88", .definition = "fc254143f9927dcb9f8ad53fe06eea0a"},
    "The sites of one prefix, from the client layer.",
    {&prefixtosite_data},
    key("table_id", "pfx")};

inline constexpr Message sitetohop_msg{
    "fwe_cl_wayfind_sitetohop_msg",
    {.luid = "d1b59668de413522d96fa338fffa4ca2", .definition = "f35e905534e7e29e59ecb22e5a13ac97"},
    "The hops of one site.",
    {&sitetohop_data},
    key("site_id")};

inline constexpr Message enforce_hop_msg{
    "fwe_cl_wayfind_enforce_hop_msg",
    {.luid = "a563984a1aa84bb7a950f92710461479", .definition = "cc6fb7b58158c9bd1983af9b9e7ad024"},
    "One enforced hop.",
    {&enforce_hop},
    key("hop_id", "inst_id")};

inline constexpr Message multi_nh_map_msg{
    "fwe_cl_wayfind_multi_nh_map_msg",
    {.luid = "cefbd67a3d1715a7569c58715004cbe5", .definition = "d11236e28073e1e76cc2e15e119ab0b2"},
    "One next hop of a remote end point.",
    {&multi_nh_map},
    key("vrf_id", "remote_endpoint", "remote_ip")};

inline constexpr Message dcid_siteip_map_msg{
    "fwe_cl_wayfind_dcid_siteip_map_msg",
    {.luid = "80ddab35407f8e2e8e5c6d8013a60c7f", .definition = "79a461a4c3c6d9df896a0c5599c4732c"},
    "The site address of one dcid.",
    {&dcid_siteip_map},
    key("vrf_id", "dc_id")};

inline constexpr Bundle show_site_prefix{
    "fwe_pal_wayfind_show_site_prefix_response",
    {.start = "0104118afac60f28246f0f99ee218957",
     .abort = "d89bcf1781434d20f3fdb9e4f27a4861",
     .commit = "1647a1b74987d5d016d94a8e5c07ab3e"},
    "Answer to a show of the platform's map from prefixes to sites.",
    {once(pal_site_prefix_msg)}};

inline constexpr Bundle show_prefixtosite{
    "fwe_cl_wayfind_show_prefixtosite_response",
    {.start = "70c7bf6e1f953905eb317f2b63cdd209",
     .abort = "8305bab14518da98f587d9380dc35477",
     .commit = "a08b121f53e41433c698c817838d3f51"},
    "Answer to a show of the map from prefixes to sites.",
    {repeatedly(prefixtosite_msg)}};

inline constexpr Bundle show_sitetohop{
    "fwe_cl_wayfind_show_sitetohop_response",
    {.start = "beb12c5f8834c06b43dc951bbf4cbb7b",
     .abort = "a2e97a490d672eeb57544fd8c9e84d38",
     .commit = "e97f746956d87c6444700a1b2c7c3513"},
    "Answer to a show of the map from sites to hops.",
    {repeatedly(sitetohop_msg)}};

inline constexpr Bundle show_enforce_hop{
    "fwe_cl_wayfind_show_enforce_hop_resp",
    {.start = "7ccbc2e6f03e3797ed5968312f858efe",
     .abort = "27bf47054a967b6815b15097f3e863c6",
     .commit = "0a58024643278d6be6b75341f7aab29f"},
    "Answer to a show of enforced hops.",
    {repeatedly(enforce_hop_msg)}};

inline constexpr Bundle show_multi_nh_map{
    "fwe_cl_wayfind_show_multi_nh_map_resp",
    {.start = "203a1b9e71a84beaf1f05a207cca0b1c",
     .abort = "04f66e009a57159337987ed51a64dfa1",
     .commit = "2b53803ebaa2f5b01bb7daffc2588b09"},
    "Answer to a show of the next hops of remote end points.",
    {repeatedly(multi_nh_map_msg)}};

inline constexpr Bundle show_dcid_siteip_map{
    "fwe_cl_wayfind_show_dcid_siteip_map_resp",
    {.start = "9df292e967ddd05cafb69599090a8761",
     .abort = "86e392b8ef5448b9e78698dfc290b00d",
     .commit = "5a8d9a2fa9de4f4f9f762842ad81a4d8"},
    "Answer to a show of the map from dcids to site addresses.",
    {repeatedly(dcid_siteip_map_msg)}};

}  // namespace model
