// What is global to the feature: parameters, counts, instances and colours.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/forwarding_memory.h"

namespace model {

inline constexpr Enum show_db_type_e{
    "fwe_cl_wayfind_show_db_type_e",
    {.luid = "beca80516520b5bd2fe7fbe49d284f11", .definition = "ae9d20cb15d4e306667bdbf357edbc5a"},
    "Tables that a show of instances, colours and counts is about.",
    {
        "WAYFIND_UI_DB_INST",
        "WAYFIND_UI_DB_COLOR",
        "WAYFIND_UI_DB_INFO",
        "WAYFIND_UI_DB_ALL",
    }};

inline constexpr Enum show_global_type_e{
    "fwe_cl_wayfind_show_global_type_e",
    {.luid = "cbc5eb9f6da03d7c47ccf6216569cc14", .definition = "e3556f10321acc77ba9bc449ee0d344d"},
    "Blocks that a show of parameters and counts is about.",
    {
        "WAYFIND_UI_GLOBAL_PARAM",
        "WAYFIND_UI_GLOBAL_INFO",
        "WAYFIND_UI_GLOBAL_ALL",
    }};

inline constexpr Record inst_st{
    "fwe_cl_wayfind_inst_st",
    {.luid = "a1387d3825c3d227cdcfdd781c4f742d", .definition = "39f7130c85b62e5512a8d7d9480be4f0"},
    "An instance: how the paths of one table are probed.",
    {
        value ("table_id",        u_int32,    0, "Routing table, by identifier."),
        value ("symmetry",        u_int32,    0, "Setting of symmetry."),
        object("probe_src",       ip_address, 0, "Address that probes come from.", column),
        value ("unreach_time",    u_int32,    0, "Time until unreachable, in the sender's unit."),
        value ("probe_period",    u_int32,    0, "Period of probes, in the sender's unit.", column),
        value ("src_port",        u_int16,    0, "Source port; 32 bits in global_param_data.",
               column),
        value ("dst_port",        u_int16,    0, "Destination port; 32 bits in global_param_data.",
               column),
        value ("dscp_bitmap",     u_int64,    0, "Set of DSCP values, one bit for each of the 64."),
        value ("interval",        u_int32,    0, "Interval, in the sender's unit."),
        value ("discovery",       u_int32,    0, "Setting of discovery."),
        value ("discovery_probe", u_int32,    0, "Setting of the probes of discovery."),
        value ("mml",             u_int32,    0, "The mml; not interpreted."),
    }};
static_assert(layout_is<inst_st, Manifest{.size = 112},
    Sizes{.used = 112, .slop = 16, .body = 128, .state = 12, .bound = 12}>());

inline constexpr Record color_st{
    "fwe_cl_wayfind_color_st",
    {.luid = "60f49645e756f62cdc67f5cabef7ca77", .definition = "57e6198a998597123248a103cddad423"},
    "A colour: its name and tag on one interface.",
    {
        value("fwe_if_h", u_int32, 0, "Forwarding-engine interface handle."),
        text ("if_name",  32,      0, "Name of the interface.", column),
        text ("color",    20,      0, "Name of the colour; channel_data and intf_data hold 8.",
              column),
        value("tag",      u_int16, 0, "Tag of the colour.", column),
    }};
static_assert(layout_is<color_st, Manifest{.size = 72},
    Sizes{.used = 70, .slop = 18, .body = 88, .state = 4, .bound = 4}>());

inline constexpr Record inst_data{
    "fwe_cl_wayfind_inst_data",
    {.luid = "fe01ead5e4342e7a6fbdb7ca9a5d6c4b", .definition = "e99fc783c4bdd011221329471d3f309d"},
    "One instance as a show tells it.",
    {
        value ("hash_val", u_int32, 0, "Hash that the sender computed."),
        object("inst",     inst_st, 0, "The instance itself."),
        object("mem",      mem_st,  0, "Locator in forwarding memory."),
    }};
static_assert(layout_is<inst_data, Manifest{.size = 184},
    Sizes{.used = 184, .slop = 16, .body = 200, .state = 18, .bound = 3}>());

inline constexpr Record color_data{
    "fwe_cl_wayfind_color_data",
    {.luid = "b2f13819437eda2c4b2d3e81348ec73a", .definition = "fe5f943782191b43d6ed2123028fbf53"},
    "One colour as a show tells it.",
    {
        object("color", color_st, 0, "The colour itself."),
        object("mem",   mem_st,   0, "Locator in forwarding memory."),
    }};
static_assert(layout_is<color_data, Manifest{.size = 144},
    Sizes{.used = 144, .slop = 16, .body = 160, .state = 9, .bound = 2}>());

inline constexpr Record proxy_stats{
    "fwe_cl_wayfind_proxy_stats",
    {.luid = "f8a4a9db12d121d92a7556a05c955b5c", .definition = "bca947a995d67dc2948acfa99fa4d419"},
    "Counters of the proxy.",
    {
        value("proxy_sendcnt", u_int32, 0, "How often the proxy sent.", grows),
        value("proxy_rcvcnt",  u_int32, 0, "How often the proxy received.", grows),
        value("proxy_errcnt",  u_int32, 0, "How often the proxy met an error.", grows),
    }};
static_assert(layout_is<proxy_stats, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 3, .bound = 3}>());

inline constexpr Record global_info_data{
    "fwe_cl_wayfind_global_info_data",
    {.luid = "ada2fe2ea98d67a58e917c6597cac985", .definition = "1a69bb704330b085f20220f145ee86c9"},
    "How many entries each table holds, and the counters of the proxy.",
    {
        value ("num_inst",        u_int32,     0, "How many instances there are.",
               column | count_of("fwe_cl_wayfind_inst_msg")),
        value ("num_color",       u_int32,     0, "How many colours there are.",
               column | count_of("fwe_cl_wayfind_color_msg")),
        value ("num_chan",        u_int32,     0, "How many channels there are.",
               column | count_of("fwe_cl_wayfind_channel_msg")),
        value ("num_chan_nb",     u_int32,     0, "How many neighbour channels there are.",
               column | count_of("fwe_cl_wayfind_nb_channel_msg")),
        value ("num_sel_tc",      u_int32,     0, "How many traffic classes there are.",
               column | count_of("fwe_cl_wayfind_select_tc_msg")),
        value ("num_sel_flow",    u_int32,     0, "How many flows there are.",
               column | count_of("fwe_cl_wayfind_select_flow_msg")),
        value ("num_auto_tunnel", u_int32,     0, "How many auto tunnels there are.",
               column | count_of("fwe_cl_wayfind_auto_tunnel_show")),
        object("proxy_stats",     proxy_stats, 0, "Counters of the proxy."),
        value ("num_hop_chan",    u_int32,     1, "How many hop channels there are.",
               column | count_of("fwe_cl_wayfind_hop_chan_msg")),
        value ("num_sel_flow_tc", u_int32,     1, "How many traffic classes are under flows.",
               column),
        value ("num_enf_hop",     u_int32,     1, "How many enforced hops there are.",
               column | count_of("fwe_cl_wayfind_enforce_hop_msg")),
    }};
static_assert(layout_is<global_info_data, Manifest{.size = 88},
    Sizes{.used = 72, .slop = 32, .body = 88, .state = 11, .bound = 8},
    Sizes{.used = 84, .slop = 20, .body = 104, .state = 14, .bound = 12}>());

inline constexpr Record global_state_data{
    "fwe_cl_wayfind_global_state_data",
    {.luid = "9491f81a00b4fd68b507514bc359a130", .definition = "ad8e36089b9e1f3ae3f5309b8ffad70a"},
    "What a show of instances, colours and counts asks for, and how probes burst.",
    {
        value("db_type",                    show_db_type_e, 0, "Table that the show is about.",
              asked),
        value("show_all",                   ork_boolean,    0, "Asks for every entry.", asked),
        value("show_detail",                ork_boolean,    0, "Asks for the detailed form.",
              asked),
        value("count",                      u_int32,        0, "How many entries there are.",
              entries),
        value("probe_burst",                u_int16,        1, "Probe burst."),
        value("probe_burst_interval",       u_int16,        1, "Interval of probe bursts."),
        value("quick_probe_burst",          u_int16,        1, "Quick probe burst."),
        value("quick_probe_burst_interval", u_int16,        1, "Interval of quick probe bursts."),
        value("hash_val",                   u_int32,        1, "Hash that the sender computed."),
        value("unreach_interval",           u_int32,        2, "Interval until unreachable."),
    }};
static_assert(layout_is<global_state_data, Manifest{.size = 64},
    Sizes{.used = 44, .slop = 28, .body = 56, .state = 4, .bound = 4},
    Sizes{.used = 56, .slop = 16, .body = 64, .state = 9, .bound = 10},
    Sizes{.used = 60, .slop = 12, .body = 72, .state = 10, .bound = 12}>());

inline constexpr Record global_param_data{
    "fwe_cl_wayfind_global_param_data",
    {.luid = "f4a13387a39ec4c67d257d469877f8a1", .definition = "3a3d3f5626a0f4066e6a7e0f1d6c72a5"},
    "Parameters of the device as a whole.",
    {
        value("site_id",          u_int32,     0, "Own site, by identifier.", column),
        value("unreach_time",     u_int32,     0, "Time until unreachable, in the sender's unit."),
        value("sample_period",    u_int32,     0, "Period of samples, in the sender's unit."),
        value("monitor_interval", u_int32,     0, "Interval of monitoring, in the sender's unit."),
        value("src_port",         u_int32,     0, "Source port; inst_st has 16 bits."),
        value("dst_port",         u_int32,     0, "Destination port; inst_st has 16 bits."),
        value("region_id",        u_int32,     0, "Region, by identifier.", column),
        value("tenant_id",        u_int32,     0, "Tenant, by identifier.", column),
        value("device_id",        u_int32,     0, "Device, by identifier.", column),
        value("is_no_type",       ork_boolean, 0, "Role: none; the five are independent."),
        value("is_pxtr",          ork_boolean, 0, "Role: pxtr."),
        value("is_rtr",           ork_boolean, 0, "Role: rtr."),
        value("is_ntr",           ork_boolean, 0, "Role: ntr."),
        value("is_xtr",           ork_boolean, 0, "Role: xtr."),
        value("ageout_max_phase", u_int32,     0, "Highest phase of ageing."),
        text ("create_ts_msec",   32,          0, "Creation time in ms, as text.", stamp),
        text ("update_ts_msec",   32,          0, "Last update in ms, as text.", stamp | column),
    }};
static_assert(layout_is<global_param_data, Manifest{.size = 136},
    Sizes{.used = 136, .slop = 16, .body = 152, .state = 17, .bound = 17}>());

inline constexpr Record global_show_type_data{
    "fwe_cl_wayfind_global_show_type_data",
    {.luid = "ee5bcf75c1ae9a5c9a40d3b942404ecc", .definition = "b52e630d04ebbedb3b774b00846d50bc"},
    "What a show of parameters and counts asks for.",
    {
        value("db_type", show_global_type_e, 0, "Block that the show is about.", asked),
    }};
static_assert(layout_is<global_show_type_data, Manifest{.size = 32},
    Sizes{.used = 32, .slop = 8, .body = 40, .state = 1, .bound = 1}>());

inline constexpr Message global_state_msg{
    "fwe_cl_wayfind_global_state_msg",
    {.luid = "9c5614443691147312123442a6adfab0", .definition = "994c31c0ccca747ccbee2df285ffa3d6"},
    "What was asked of a show of instances, colours and counts, once in a response.",
    {&global_state_data}};

inline constexpr Message inst_msg{
    "fwe_cl_wayfind_inst_msg",
    {.luid = "af2686b7f81864d58fc24bc63c05e492", .definition = "e2b89cbc507084a3df001138a7939bf7"},
    "One instance.",
    {&inst_data},
    key("inst.table_id")};

inline constexpr Message color_msg{
    "fwe_cl_wayfind_color_msg",
    {.luid = "c5d3dc32bfaae97fe3de5b76c67ed802", .definition = "c68c24bf98c673463d8ab518be285bf3"},
    "One colour.",
    {&color_data},
    key("color.fwe_if_h")};

inline constexpr Message global_info_msg{
    "fwe_cl_wayfind_global_info_msg",
    {.luid = "61c3ec01d38102bd50ba8a99af52febb", .definition = "1f80166caea4e216bcc26a7ffc1fd304"},
    "The counts of all tables, once in a response of either global show.",
    {&global_info_data}};

inline constexpr Message global_show_type_msg{
    "fwe_cl_wayfind_global_show_type_msg",
    {.luid = "753301789f54cfa52d3c11e613f1ac73", .definition = "f0c80f16accc15a58bb8d6c3bf5a2a76"},
    "What was asked of a show of parameters and counts, once in a response.",
    {&global_show_type_data}};

inline constexpr Message global_param_msg{
    "fwe_cl_wayfind_global_param_msg",
    {.luid = "72ee5b7d860db833f07187634d0719e8", .definition = "9067e0cab42d309dd4e7d7ceb13d6db9"},
    "The parameters, once in a response.",
    {&global_param_data}};

inline constexpr Bundle show_global{
    "fwe_cl_wayfind_show_global_response",
    {.start = "fe8a6ae13bcc21e52923ac55f372e097",
     .abort = "d65bc64c40376531f14dfabcc8a28813",
     .commit = "f43a00e44f3af42ab692b65cca52ab9a"},
    "Answer to a show of instances, colours and counts.",
    {
        once(global_state_msg),
        repeatedly(inst_msg),
        repeatedly(color_msg),
        once(global_info_msg),
    }};

inline constexpr Bundle show_global_new{
    "fwe_cl_wayfind_show_global_new_response",
    {.start = "ac695bc3b7e34df638e5a3dfa0e569ad",
     .abort = "4286847bd783a55409ecab04a2b39b18",
     .commit = "02bdb5c0e1141c084a41e3703aa8f466"},
    "Answer to a show of parameters and counts.",
    {once(global_show_type_msg), once(global_param_msg), once(global_info_msg)}};

}  // namespace model
