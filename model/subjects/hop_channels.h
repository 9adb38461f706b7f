// Path monitoring between this device and one hop towards a site, for one DSCP: probe states,
// counters and stamps.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/forwarding_memory.h"

namespace model {

inline constexpr Enum hop_chan_state_e{
    "fwe_cl_wayfind_hop_chan_state_e",
    {.luid = "0d1318c4e5bbbfb68637fd7883faf9e5", .definition = "94e9b86309e2afd36d2e9c7613e35e95"},
    "How far one side of a hop channel has come; unlike chan_state_e it begins with unreachable.",
    {
        "WAYFIND_UI_HOP_CHAN_STATE_UNREACHABLE",
        "WAYFIND_UI_HOP_CHAN_STATE_REACHABLE",
        "WAYFIND_UI_HOP_CHAN_STATE_INITIATED",
    }};

inline constexpr FlagSet hop_chan_flags{
    "fwe_cl_wayfind_hop_chan_flags",
    {.luid = "1681f53dbd0a8fa8b9c9e39f20f0649e", .definition = "4fbd263bf09f467ee902935f1704bc61"},
    "Conditions of a hop channel, each with a bit of its own.",
    {
        "WAYFIND_UI_HOP_CHAN_FLAG_INT_SHUT",
        "WAYFIND_UI_HOP_CHAN_FLAG_ADDR_CHANGE",
        "WAYFIND_UI_HOP_CHAN_FLAG_ACK",
        "WAYFIND_UI_HOP_CHAN_FLAG_INIT",
        "WAYFIND_UI_HOP_CHAN_FLAG_MUTE",
    }};

inline constexpr Record hop_chan_st{
    "fwe_cl_wayfind_hop_chan_st",
    {.luid = "3dee099b8d5292190db9081fdf93f46b", .definition = "ae5011f297b5ebc8087eb693e0c4e9dc"},
    "A hop channel: one hop towards a site, monitored for one DSCP between two interfaces.",
    {
        value ("hop_chan_id",    u_int32,        0, "The hop channel, by identifier."),
        value ("hop_id",         u_int32,        0, "The hop, by identifier.", column),
        value ("src_intf_id",    u_int8,         0, "Source interface, by identifier.", column),
        value ("dst_intf_id",    u_int8,         0, "Destination interface, by identifier.",
               column),
        value ("dst_site_id",    u_int16,        0, "Destination site, by identifier.", column),
        value ("dscp",           u_int8,         0, "DSCP; chan_st has it in 32 bits."),
        value ("adj_id",         u_int32,        0, "Adjacency, by identifier."),
        value ("inst_id",        u_int32,        0, "Instance, by identifier."),
        value ("flags",          u_int32,        0, "Flag word; flags_show is independent."),
        value ("tw_index",       u_int8,         0, "The tw index; not interpreted."),
        value ("need_sample",    u_int8,         0, "Nonzero when a sample is due."),
        value ("sa_id",          u_int32,        0, "The sa, by identifier; not interpreted."),
        text  ("create_ts_msec", 32,             1, "Creation time in ms, as text.", stamp),
        text  ("update_ts_msec", 32,             1, "Last update in ms, as text.", stamp | column),
        object("flags_show",     hop_chan_flags, 1, "Named flags; flags is independent.", column),
    }};
static_assert(layout_is<hop_chan_st, Manifest{.size = 136},
    Sizes{.used = 48, .slop = 104, .body = 56, .state = 12, .bound = 12},
    Sizes{.used = 136, .slop = 16, .body = 152, .state = 15, .bound = 16}>());

inline constexpr Record hop_chan_stats_st{
    "fwe_cl_wayfind_hop_chan_stats_st",
    {.luid = "fb59b0dd4b4a8797f59d0023b1de1701", .definition = "91b37fdeb1116c7cc584ec547a756829"},
    "Counters of one hop channel: probes first, sent before received, packets before bytes.",
    {
        value("send_probes",         u_int32, 0, "Probes that went out.", grows),
        value("recv_probes",         u_int32, 0, "Probes that came in.", grows),
        value("send_packets",        u_int64, 0, "Packets that went out.", grows),
        value("send_bytes",          u_int64, 0, "Bytes that went out.", grows),
        value("recv_packets",        u_int64, 0, "Packets that came in.", grows),
        value("recv_bytes",          u_int64, 0, "Bytes that came in.", grows),
        value("send_sample_packets", u_int32, 0, "Sample packets that went out.", grows),
        value("recv_sample_packets", u_int32, 0, "Sample packets that came in.", grows),
    }};
static_assert(layout_is<hop_chan_stats_st, Manifest{.size = 64},
    Sizes{.used = 64, .slop = 8, .body = 72, .state = 8, .bound = 8}>());

inline constexpr Record hop_chan_probe_st{
    "fwe_cl_wayfind_hop_chan_probe_st",
    {.luid = "4cfb0320fc3458306d81da4e85ea9a00", .definition = "27bce93f7148b2a4d010a70ec82d933e"},
    "Where the probing of one hop channel stands; countdowns are in the sender's unit.",
    {
        value("rx_ctrl_state", hop_chan_state_e, 0, "Control state of the receive side."),
        value("rx_state",      hop_chan_state_e, 0, "State of the receive side.", column),
        value("tx_ctrl_state", hop_chan_state_e, 0, "Control state of the transmit side."),
        value("tx_state",      hop_chan_state_e, 0, "State of the transmit side.", column),
        value("sample_cd",     u_int32,          0, "Sample countdown."),
        value("unreach_cd",    u_int32,          0, "Unreachable countdown."),
        value("monitor_cd",    u_int32,          0, "Monitor countdown."),
    }};
static_assert(layout_is<hop_chan_probe_st, Manifest{.size = 96},
    Sizes{.used = 92, .slop = 20, .body = 112, .state = 7, .bound = 7}>());

inline constexpr Record hop_chan_serv_st{
    "fwe_cl_wayfind_hop_chan_serv_st",
    {.luid = "dc0424b5bd9dab64ef57ba24d08d7ca2", .definition = "01de02a8b5d78024c4d6af01ddb4c2ac"},
    "Last events of one hop channel. Stamps of probes and samples are numbers in the sender's "
    "unit, those of r2u and u2r events are text.",
    {
        value("last_probe_send_ts",  u_int32, 0, "Stamp of the last probe sent.", stamp),
        value("last_probe_recv_ts",  u_int32, 0, "Stamp of the last probe received.", stamp),
        value("last_sample_send_ts", u_int32, 0, "Stamp of the last sample sent.", stamp),
        value("last_sample_recv_ts", u_int32, 0, "Stamp of the last sample received.", stamp),
        text ("last_rx_r2u_ts",      32,      0, "Stamp of the last r2u event received.", stamp),
        text ("last_tx_r2u_ts",      32,      0, "Stamp of the last r2u event sent.", stamp),
        text ("last_rx_u2r_ts",      32,      0, "Stamp of the last u2r event received.", stamp),
        text ("last_tx_u2r_ts",      32,      0, "Stamp of the last u2r event sent.", stamp),
        value("rx_r2u_cnt",          u_int16, 0, "r2u events received.", grows),
        value("tx_r2u_cnt",          u_int16, 0, "r2u events sent.", grows),
        value("rx_u2r_cnt",          u_int16, 0, "u2r events received.", grows),
        value("tx_u2r_cnt",          u_int16, 0, "u2r events sent.", grows),
    }};
static_assert(layout_is<hop_chan_serv_st, Manifest{.size = 168},
    Sizes{.used = 164, .slop = 20, .body = 184, .state = 12, .bound = 12}>());

inline constexpr Record hop_chan_data{
    "fwe_cl_wayfind_hop_chan_data",
    {.luid = "00e3b2fbd11cb82176dc46293dcfde58", .definition = "6f75ed8552a07a4a954d9a318dc27c0b"},
    "One hop channel as a show tells it.",
    {
        object("hop_chan", hop_chan_st,       0, "The hop channel itself."),
        object("stats",    hop_chan_stats_st, 0, "Counters of the hop channel."),
        object("mem",      mem_st,            0, "Locator in forwarding memory."),
        text  ("dscp_str", 8,                 0, "The DSCP as text.", column),
        object("probe",    hop_chan_probe_st, 0, "Probing of the hop channel."),
        object("serv",     hop_chan_serv_st,  1, "Last events of the hop channel."),
    }};
static_assert(layout_is<hop_chan_data, Manifest{.size = 584},
    Sizes{.used = 400, .slop = 200, .body = 416, .state = 38, .bound = 5},
    Sizes{.used = 584, .slop = 16, .body = 600, .state = 51, .bound = 7}>());

inline constexpr Record hop_chan_state_data{
    "fwe_cl_wayfind_hop_chan_state_data",
    {.luid = "9b244df586d6a5b1b76d5bb18a1ecc90", .definition = "2dfa2ae33945700bdf1e665c04cad88e"},
    "What a show of hop channels asks for, and how many there are.",
    {
        value("show_all",        ork_boolean, 0, "Asks for every entry.", asked),
        value("show_for_pd",     ork_boolean, 0, "Asks for the pd form of the output.", asked),
        value("show_detail",     ork_boolean, 0, "Asks for the detailed form.", asked),
        value("show_tbl_format", ork_boolean, 0, "Asks for the output as a table.", asked),
        value("new_walk",        ork_boolean, 0, "Asks for a new walk, not the last one.", asked),
        value("num_hop_chans",   u_int32,     0, "How many hop channels there are.", entries),
        value("show_summary",    ork_boolean, 0, "Asks for the summary alone.", asked),
    }};
static_assert(layout_is<hop_chan_state_data, Manifest{.size = 40},
    Sizes{.used = 40, .slop = 8, .body = 48, .state = 7, .bound = 7}>());

inline constexpr Record hop_id_readable_format_st{
    "fwe_cl_wayfind_hop_id_readable_format_st",
    {.luid = "838ed4e80c8d1ccf65cc7df4db3bf93c", .definition = "0caa332c96af3a285079f7216dea99f7"},
    "One hop of a path in readable form.",
    {
        text("hop_id_str", 14, 0, "Identifier of the hop as text."),
    }};
static_assert(layout_is<hop_id_readable_format_st, Manifest{.size = 32},
    Sizes{.used = 25, .slop = 15, .body = 40, .state = 1, .bound = 1}>());

inline constexpr Message hop_chan_msg{
    "fwe_cl_wayfind_hop_chan_msg",
    {.luid = "a0581d69a339fa07f4b78de21bff7a6b", .definition = "7179d1c295bcf180ae030ca6479293f6"},
    "One hop channel.",
    {&hop_chan_data},
    key("hop_chan.hop_chan_id")};

inline constexpr Message hop_chan_state_msg{
    "fwe_cl_wayfind_hop_chan_state_msg",
    {.luid = "ed1052e2681102ea37f91d21cdc46509", .definition = "3dd56415a29e2b46c626d1433a4e69ad"},
    "What was asked of a show of hop channels and their number, once in a response.",
    {&hop_chan_state_data}};

inline constexpr Bundle show_hop_chan{
    "fwe_cl_wayfind_show_hop_chan_response",
    {.start = "34cebb96f37f430918367de735d3dcaf",
     .abort = "95587e492b80b1aaa9ed938fb9b539e9",
     .commit = "46ac958ee4a970c1127eed0eeef3a6a9"},
    "Answer to a show of hop channels.",
    {once(hop_chan_state_msg), repeatedly(hop_chan_msg)}};

}  // namespace model
