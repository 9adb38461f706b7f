// Units of selected traffic, and the primary and backup channels over which the load of each is
// balanced.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/channels.h"
#include "model/subjects/forwarding_memory.h"
#include "model/subjects/hop_channels.h"
#include "model/subjects/selection.h"

namespace model {

inline constexpr Enum select_tc_type_e{
    "fwe_cl_wayfind_select_tc_type_e",
    {.luid = "a899e0740e6183f438932fc35aa76c8a", .definition = "678fa1c7cb748f5c396201174580a8c6"},
    "What traffic is classified by.",
    {
        "WAYFIND_UI_SELECT_TC_TYPE_NONE",
        "WAYFIND_UI_SELECT_TC_TYPE_DSCP",
        "WAYFIND_UI_SELECT_TC_TYPE_APP_SET",
        "WAYFIND_UI_SELECT_TC_TYPE_APP",
        "WAYFIND_UI_SELECT_TC_TYPE_DEFAULT",
    }};

inline constexpr Enum select_tc_ui_status_e{
    "fwe_cl_wayfind_select_tc_ui_status_e",
    {.luid = "591e9d5f5412f0109decfcd8dd2ad9ca", .definition = "16d7a0ecc3706e164cd23727a8440b81"},
    "How a traffic class fares, for display; value 0 is spelled as peers know it.",
    {
        "WAYFIND_UI_SELECT_TC_STATUS_NORAMAL",
        "WAYFIND_UI_SELECT_TC_STATUS_NULL_PATH",
        "WAYFIND_UI_SELECT_TC_STATUS_ALL_UNREACH",
    }};

inline constexpr Record select_tc_stats_st{
    "fwe_cl_wayfind_select_tc_stats_st",
    {.luid = "2270e9173e5fb6aa3139df7bdbe94216", .definition = "3c1fb820bfc6a27b1f808d9e34a36865"},
    "Counters of one traffic class.",
    {
        value("send_bytes",   u_int64, 0, "Bytes that went out.", grows),
        value("send_packets", u_int64, 0, "Packets that went out.", grows),
    }};
static_assert(layout_is<select_tc_stats_st, Manifest{.size = 32},
    Sizes{.used = 32, .slop = 8, .body = 40, .state = 2, .bound = 2}>());

inline constexpr Record select_tc_ageout_st{
    "fwe_cl_wayfind_select_tc_ageout_st",
    {.luid = "da663981117b4aaacfa5ede8a8eb6e3b", .definition = "959b04ecd66a0ba0df73d6bba9199c79"},
    "How far one traffic class has aged, in the sender's units.",
    {
        value("tc_db_id",              u_int32, 0, "The traffic class, by its table's id."),
        value("ageout_phase",          u_int32, 0, "Phase of ageing now."),
        value("ageout_flag",           u_int32, 0, "Flag of ageing."),
        value("ageout_nr",             u_int32, 0, "Count of ageing."),
        value("fwe_ageout_phase_init", u_int32, 0, "Phase at its start on the forwarding engine."),
        value("fwe_ageout_phase_last", u_int32, 0, "Last phase on the forwarding engine."),
        value("fwe_ageout_times",      u_int32, 0, "Times aged on the forwarding engine.", grows),
    }};
static_assert(layout_is<select_tc_ageout_st, Manifest{.size = 40},
    Sizes{.used = 40, .slop = 8, .body = 48, .state = 7, .bound = 7}>());

inline constexpr Record sel_lb_path_human_readable_st{
    "fwe_cl_wayfind_sel_lb_path_human_readable_st",
    {.luid = "f3747514309d47c67c1c5dc5412f1828", .definition = "d9b40e152a14a26924d45480c92edc9b"},
    "Hops of a path in readable form; its counter is named unlike those of the numeric forms.",
    {
        counter     ("num_hops_str", u_int32,                   0, "Elements of path_id_str."),
        record_array("path_id_str",  hop_id_readable_format_st, 0, "Hop identifiers as text."),
    }};
static_assert(layout_is<sel_lb_path_human_readable_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record select_loadbalance_channel_st{
    "fwe_cl_wayfind_select_loadbalance_channel_st",
    {.luid = "07ddef0cccbbc5730933c42dc108bb07", .definition = "7449bca7ef5baa0ef0869c00fc8d2b34"},
    "One channel of a load balance: its weight, its counters and the hops of its path.",
    {
        object("mem",         mem_st,                        0, "Locator in forwarding memory."),
        value ("chan_id",     u_int32,                       0, "The channel, by identifier."),
        value ("weight",      u_int16,                       0, "Share of the load, as a weight."),
        value ("dscp",        u_int8,                        0, "DSCP; chan_st has it in 32 bits."),
        value ("fwd_bytes",   u_int64,                       0, "Bytes that were forwarded.",
               grows),
        value ("fwd_packets", u_int64,                       0, "Packets that were forwarded.",
               grows),
        object("path",        sel_lb_path_st,                0, "Identifier per hop."),
        value ("hops_cnt",    u_int8,                        0, "Hops; not tied to the arrays."),
        value ("ext_int_id",  u_int8,                        0, "External interface identifier."),
        object("src_intf",    sel_lb_src_intf_st,            0, "Source interface per hop."),
        object("dst_site",    sel_lb_dst_site_st,            0, "Destination site per hop."),
        object("dst_intf",    sel_lb_dst_intf_st,            0, "Destination interface per hop."),
        object("path_rf",     sel_lb_path_human_readable_st, 1, "The path in readable form."),
    }};
static_assert(layout_is<select_loadbalance_channel_st, Manifest{.size = 248},
    Sizes{.used = 216, .slop = 48, .body = 232, .state = 104, .bound = 12},
    Sizes{.used = 248, .slop = 16, .body = 264, .state = 128, .bound = 14}>());

inline constexpr Record select_tc_lb_channels_st{
    "fwe_cl_wayfind_select_tc_lb_channels_st",
    {.luid = "a398aa8db01182acd6411dfcff9e1f31", .definition = "12a825669707df489d341c7484548f3f"},
    "The channels over which a load is balanced.",
    {
        counter     ("num_channels", u_int32,                       0, "Elements of channels.",
                     column),
        record_array("channels",     select_loadbalance_channel_st, 0, "Channels with weights."),
    }};
static_assert(layout_is<select_tc_lb_channels_st, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record select_tc_data{
    "fwe_cl_wayfind_select_tc_data",
    {.luid = "f2a0d44153b58b2719c8a8a3270619e3", .definition = "9fbea448e31f89effe9fbb9ccf68352c"},
    "One traffic class: what classifies it, and the channels that its load is balanced over.",
    {
        value ("tc_id",            u_int32,                  0, "Traffic class, by identifier."),
        value ("table_id",         u_int32,                  0, "Routing table, by identifier.",
               column),
        value ("instance_id",      u_int32,                  0, "Instance, by identifier."),
        value ("spi",              u_int32,                  0, "The spi; not interpreted."),
        value ("svc_index",        u_int32,                  0, "Index of the service."),
        object("src_prefix",       ip_address,               0, "Source prefix.", column),
        object("dst_prefix",       ip_address,               0, "Destination prefix.", column),
        value ("tc_type",          select_tc_type_e,         0, "What classifies the traffic.",
               column),
        value ("appid",            u_int32,                  0, "Application, by identifier."),
        value ("dscp",             u_int8,                   0, "DSCP; chan_st has it in 32 bits.",
               column),
        object("stats",            select_tc_stats_st,       0, "Counters of the traffic class."),
        object("ageout",           select_tc_ageout_st,      0, "Ageing of the traffic class."),
        object("primary_channels", select_tc_lb_channels_st, 0, "Primary channels; may be empty."),
        object("backup_channels",  select_tc_lb_channels_st, 0, "Backup channels; may be empty."),
        value ("flags",            u_int32,                  0, "Flag word; no bit has a name."),
        value ("epoch",            u_int16,                  0, "Epoch; channel_data has 32 bits."),
        value ("tc_ui_status",     select_tc_ui_status_e,    1, "Status for display.", column),
        text  ("create_ts_msec",   32,                       1, "Creation time in ms, as text.",
               stamp),
        text  ("update_ts_msec",   32,                       1, "Last update in ms, as text.",
               stamp | column),
    }};
static_assert(layout_is<select_tc_data, Manifest{.size = 392},
    Sizes{.used = 310, .slop = 98, .body = 328, .state = 72, .bound = 16},
    Sizes{.used = 392, .slop = 16, .body = 408, .state = 72, .bound = 20}>());

inline constexpr Message select_tc_msg{
    "fwe_cl_wayfind_select_tc_msg",
    {.luid = "3f84fb53ac6c878894f64a37558d4db0", .definition = "68be94fa0fc7917410069783d5ee5245"},
    "One traffic class.",
    {&select_tc_data},
    key("tc_id")};

// Both shows stand here, where all their messages are known: that of selection carries flows
// besides traffic classes.
inline constexpr Bundle show_selection{
    "fwe_cl_wayfind_show_selection_response",
    {.start = "4257db2ac747ce626bb53d109ed90e55",
     .abort = "5e6ed78b2e8be37f17a7eb4e662ff98e",
     .commit = "8d6e65ace08c9e20eb6beee60a8ccbfa"},
    "Answer to a show of traffic classes and flows.",
    {once(select_state_msg), repeatedly(select_tc_msg), repeatedly(select_flow_msg)}};

inline constexpr Bundle show_traffic_class{
    "fwe_cl_wayfind_show_traffic_class_response",
    {.start = "8c6ba70b6d27d4a6185abf05718b9737",
     .abort = "e1ef7301d8d10a1a1aa78daefa178f86",
     .commit = "2e05ded5388fc1ad950ee4c2d392b267"},
    "Answer to a show of traffic classes.",
    {once(select_state_msg), repeatedly(select_tc_msg)}};

}  // namespace model
