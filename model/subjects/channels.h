// Forwarding paths by destination, and the columns of hops that describe a path.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/forwarding_memory.h"

namespace model {

inline constexpr Enum chan_state_e{
    "fwe_cl_wayfind_chan_state_e",
    {.luid = "14138dd010fbc7e7e3f03820ccbd75dc", .definition = "dcf3e17c34584679d313de605bc0d8ad"},
    "How far a channel has come; the last value is a value like any other.",
    {
        "WAYFIND_UI_CHAN_STATE_INITIATED",
        "WAYFIND_UI_CHAN_STATE_REACHABLE",
        "WAYFIND_UI_CHAN_STATE_UNREACHABLE",
        "WAYFIND_UI_CHAN_STATE_MAX",
    }};

inline constexpr Enum chan_rx_state_e{
    "fwe_cl_wayfind_chan_rx_state_e",
    {.luid = "b64d8e6b67a68ad1ca4435ee8c98b39c", .definition = "8731a2d1503e4a4fb92739ea9d534aa6"},
    "How far the receive side of a channel has come; the last value is a value like any other.",
    {
        "WAYFIND_UI_CHAN_RX_STATE_SMP_INITIAL_STATE",
        "WAYFIND_UI_CHAN_RX_STATE_SMP_REACHABLE",
        "WAYFIND_UI_CHAN_RX_STATE_SMP_UNREACHABLE",
        "WAYFIND_UI_CHAN_RX_STATE_MAX",
    }};

inline constexpr Enum chan_tx_state_e{
    "fwe_cl_wayfind_chan_tx_state_e",
    {.luid = "3ea56fec13f353db50ae0e9e7d438edb", .definition = "0fb1b26bfc989b24d2a87495bd849c6b"},
    "How far the transmit side of a channel has come; a new channel reads reachable.",
    {
        "WAYFIND_UI_CHAN_TX_STATE_REACHABLE",
        "WAYFIND_UI_CHAN_TX_STATE_UNREACHABLE",
        "WAYFIND_UI_CHAN_TX_STATE_MAX",
    }};

inline constexpr Record sel_lb_path_st{
    "fwe_cl_wayfind_sel_lb_path_st",
    {.luid = "95cf0953ff528f9d0cb9cf3fc99ebf7e", .definition = "fd29db2e7f48f1c14b65521d00684551"},
    "Hops of a path: their identifiers.",
    {
        counter    ("num_hops", u_int32, 0, "Elements of path_id."),
        value_array("path_id",  u_int32, 0, "Identifier of each hop."),
    }};
static_assert(layout_is<sel_lb_path_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record sel_lb_src_intf_st{
    "fwe_cl_wayfind_sel_lb_src_intf_st",
    {.luid = "7bf3e31e353e68e72c7d046f62537727", .definition = "0d429b0ce3b9ff484c6b7564c781b37f"},
    "Hops of a path: their source interfaces.",
    {
        counter    ("num_hops",    u_int32, 0, "Elements of src_intf_id."),
        value_array("src_intf_id", u_int8,  0, "Source interface of each hop, by identifier."),
    }};
static_assert(layout_is<sel_lb_src_intf_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record sel_lb_dst_site_st{
    "fwe_cl_wayfind_sel_lb_dst_site_st",
    {.luid = "361607f368a5d2bfd715d2dd0e82baf2", .definition = "92a913d194e688dfbf86848e71b5da1e"},
    "Hops of a path: their destination sites.",
    {
        counter    ("num_hops",    u_int32, 0, "Elements of dst_site_id."),
        value_array("dst_site_id", u_int16, 0, "Destination site of each hop, by identifier."),
    }};
static_assert(layout_is<sel_lb_dst_site_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record sel_lb_dst_intf_st{
    "fwe_cl_wayfind_sel_lb_dst_intf_st",
    {.luid = "f5e4240bd7c297af3e7b75d558c2f05c", .definition = "e75cb0116c9e2ed7b2ecf9f9b06207fa"},
    "Hops of a path: their destination interfaces.",
    {
        counter    ("num_hops",    u_int32, 0, "Elements of dst_intf_id."),
        value_array("dst_intf_id", u_int8,  0, "Destination interface of each hop, by identifier."),
    }};
static_assert(layout_is<sel_lb_dst_intf_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record chan_st{
    "fwe_cl_wayfind_chan_st",
    {.luid = "c78cc0bd7dbfb49ebd6710e189e15a13", .definition = "dba0aec4c61d2a99fc8439315ccb743b"},
    "A channel: the forwarding path to one destination, its states and, from variant 2, its hops.",
    {
        value ("chan_id",            u_int32,            0, "The channel, by identifier."),
        value ("table_id",           u_int32,            0, "Routing table, by identifier."),
        object("site_id",            ip_address,         0, "Site, by address (not in the maps).",
               column),
        value ("fwe_if_h",           u_int32,            0, "Forwarding-engine interface handle."),
        text  ("if_name",            32,                 0, "Name of the interface.", column),
        value ("in_uidb",            u_int32,            0, "The in_uidb; not interpreted."),
        value ("dscp",               u_int32,            0, "DSCP; hop_chan_st has it in 8 bits."),
        object("next_hop",           ip_address,         0, "Address of the next hop.", column),
        value ("state",              chan_state_e,       0, "State of the channel.", column),
        value ("rx_state",           chan_rx_state_e,    0, "State of the receive side.", column),
        value ("tx_state",           chan_tx_state_e,    0, "State of the transmit side.", column),
        value ("smp_last_recv_ts",   u_int32,            0, "Stamp of the last smp received.",
               stamp),
        value ("smp_last_send_ts",   u_int32,            0, "Stamp of the last smp sent.", stamp),
        value ("zero_sla_supported", u_int8,             0, "Nonzero when zero SLA is supported."),
        value ("zero_sla_mute",      u_int8,             0, "Nonzero when zero SLA is muted."),
        value ("path_label",         u_int32,            0, "Label of the path."),
        value ("rx_ctrl_state",      chan_rx_state_e,    0, "Control state of the receive side."),
        value ("plr_rx",             u_int8,             0, "The plr of the receive side."),
        value ("plr_tx",             u_int8,             0, "The plr of the transmit side."),
        value ("plr_established",    u_int8,             0, "Nonzero when plr is established."),
        value ("in_burst",           u_int8,             1, "Nonzero during a burst."),
        value ("enable_burst",       u_int8,             1, "Nonzero when bursts are enabled."),
        value ("ext_int_id",         u_int8,             2, "External interface, by identifier."),
        object("path",               sel_lb_path_st,     2, "Identifier of each hop."),
        object("src_intf",           sel_lb_src_intf_st, 2, "Source interface of each hop."),
        object("dst_site",           sel_lb_dst_site_st, 2, "Destination site of each hop."),
        object("dst_intf",           sel_lb_dst_intf_st, 2, "Destination interface of each hop."),
        value ("hop_count",          u_int8,             3, "Hops; not tied to the arrays.",
               column),
    }};
static_assert(layout_is<chan_st, Manifest{.size = 392},
    Sizes{.used = 251, .slop = 157, .body = 272, .state = 20, .bound = 20},
    Sizes{.used = 253, .slop = 155, .body = 272, .state = 22, .bound = 23},
    Sizes{.used = 384, .slop = 24, .body = 400, .state = 112, .bound = 29},
    Sizes{.used = 385, .slop = 23, .body = 408, .state = 120, .bound = 31}>());

inline constexpr Record chan_stats_st{
    "fwe_cl_wayfind_chan_stats_st",
    {.luid = "28b2be322da6ddd2a286e8413ae28bea", .definition = "ddfba3ab1d690832f5deaabf7e931dd2"},
    "Counters of one channel: bytes before packets, received before sent.",
    {
        value("recv_bytes",        u_int64, 0, "Bytes that came in.", grows),
        value("recv_packets",      u_int64, 0, "Packets that came in.", grows),
        value("send_bytes",        u_int64, 0, "Bytes that went out.", grows),
        value("send_packets",      u_int64, 0, "Packets that went out.", grows),
        value("recv_probes",       u_int32, 0, "Probes that came in.", grows),
        value("send_probes",       u_int32, 0, "Probes that went out.", grows),
        value("blackhole_bytes",   u_int64, 0, "Bytes that were blackholed.", grows),
        value("blackhole_packets", u_int64, 0, "Packets that were blackholed.", grows),
        value("burst_probes",      u_int32, 1, "Probes of kind burst.", grows),
        value("ac_probes",         u_int32, 1, "Probes of kind ac.", grows),
        value("unreach_probes",    u_int32, 1, "Probes of kind unreachable.", grows),
    }};
static_assert(layout_is<chan_stats_st, Manifest{.size = 88},
    Sizes{.used = 72, .slop = 32, .body = 88, .state = 8, .bound = 8},
    Sizes{.used = 84, .slop = 20, .body = 104, .state = 11, .bound = 12}>());

inline constexpr Record channel_data{
    "fwe_cl_wayfind_channel_data",
    {.luid = "08fd7884f6ee4dffa8d4de25138b627c", .definition = "c80ee2d68a4848daa0fbe58db4248f4f"},
    "One channel as a show tells it.",
    {
        object("chan",           chan_st,       0, "The channel itself."),
        value ("epoch",          u_int32,       0, "Epoch; select_flow_data has 16 bits."),
        object("stats",          chan_stats_st, 0, "Counters of the channel."),
        object("mem",            mem_st,        0, "Locator in forwarding memory."),
        value ("l_dcid",         u_int8,        0, "The dcid of the local end."),
        value ("r_dcid",         u_int8,        0, "The dcid of the remote end."),
        value ("l_intf_id",      u_int16,       0, "Local interface, by identifier."),
        value ("r_intf_id",      u_int16,       0, "Remote interface, by identifier."),
        text  ("color",          8,             0, "Name of the colour; color_st holds 20.",
               column),
        value ("version",        u_int32,       0, "Version number."),
        text  ("dscp_str",       8,             0, "The DSCP as text.", column),
        text  ("create_ts_msec", 32,            1, "Creation time in ms, as text.", stamp),
        text  ("update_ts_msec", 32,            1, "Last update in ms, as text.", stamp | column),
    }};
static_assert(layout_is<channel_data, Manifest{.size = 672},
    Sizes{.used = 604, .slop = 84, .body = 624, .state = 152, .bound = 11},
    Sizes{.used = 668, .slop = 20, .body = 688, .state = 160, .bound = 14}>());

inline constexpr Record channel_state_data{
    "fwe_cl_wayfind_channel_state_data",
    {.luid = "c4ffc241920e26de713c8e5b1ec56bfc", .definition = "902c1c8b00a88833955df9562b496991"},
    "What a show of channels asks for, and how many there are.",
    {
        value("show_all",        ork_boolean, 0, "Asks for every entry.", asked),
        value("show_for_pd",     ork_boolean, 0, "Asks for the pd form of the output.", asked),
        value("show_detail",     ork_boolean, 0, "Asks for the detailed form.", asked),
        value("show_tbl_format", ork_boolean, 0, "Asks for the output as a table.", asked),
        value("new_walk",        ork_boolean, 0, "Asks for a new walk, not the last one.", asked),
        value("num_channels",    u_int32,     0, "How many channels there are.", entries),
        value("show_summary",    ork_boolean, 0, "Asks for the summary alone.", asked),
    }};
static_assert(layout_is<channel_state_data, Manifest{.size = 40},
    Sizes{.used = 40, .slop = 8, .body = 48, .state = 7, .bound = 7}>());

inline constexpr Message channel_msg{
    "fwe_cl_wayfind_channel_msg",
    {.luid = "636f46b402fb68bbec91fe8c3a0d96a1", .definition = "1836b6b16c23a1c8ee5c6a495acfd3cc"},
    "One channel.",
    {&channel_data},
    key("chan.chan_id")};

inline constexpr Message channel_state_msg{
    "fwe_cl_wayfind_channel_state_msg",
    {.luid = "05d6955aa318e11f18ebbb1cfe5dfcf4", .definition = "fa6d192d346c261b5fabf0281dccd164"},
    "What was asked of a show of channels and their number, once in a response.",
    {&channel_state_data}};

inline constexpr Bundle show_channel{
    "fwe_cl_wayfind_show_channel_response",
    {.start = "d93b0f1fa5c915101c5fedcf47254fdd",
     .abort = "c77b457aec6631ac5d99456349dc3d73",
     .commit = "c2cfbac157efbca29cfb6cec5c312ed9"},
    "Answer to a show of channels.",
    {once(channel_state_msg), repeatedly(channel_msg)}};

}  // namespace model
