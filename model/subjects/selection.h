// Flows, and the policies by which paths are chosen for them.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/forwarding_memory.h"

namespace model {

inline constexpr Enum select_ui_type_e{
    "fwe_cl_wayfind_select_ui_type_e",
    {.luid = "fe31fdca540407064407e3ad53a5ed80", .definition = "19c826bca962453a0388a26dbbad2298"},
    "Tables that a show of selection is about.",
    {
        "WAYFIND_UI_SELECT_TC",
        "WAYFIND_UI_SELECT_FLOW",
        "WAYFIND_UI_SELECT_ALL",
    }};

inline constexpr Record select_policy{
    "fwe_cl_wayfind_select_policy",
    {.luid = "b582de8e17a747f8ecf8da3c6885753d", .definition = "0360f8b20baa26431104a14c0d90972b"},
    "One policy by which paths are chosen for a flow.",
    {
        value ("policy_seq",        u_int32, 0, "Place of the policy in its sequence."),
        object("mem",               mem_st,  0, "Locator in forwarding memory."),
        value ("blackhole_bytes",   u_int64, 0, "Bytes that the policy blackholed.", grows),
        value ("blackhole_packets", u_int64, 0, "Packets that the policy blackholed.", grows),
    }};
static_assert(layout_is<select_policy, Manifest{.size = 72},
    Sizes{.used = 72, .slop = 16, .body = 88, .state = 7, .bound = 4}>());

inline constexpr Record select_all_policies{
    "fwe_cl_wayfind_select_all_policies",
    {.luid = "0feeb47aeb7f8273779ad4c233f0aa13", .definition = "73a456512389d54cb35211cd7aa8cdf7"},
    "The policies of one flow.",
    {
        counter     ("num_policies", u_int32,       0, "Elements of policy.", column),
        record_array("policy",       select_policy, 0, "Each policy."),
    }};
static_assert(layout_is<select_all_policies, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record select_state_data{
    "fwe_cl_wayfind_select_state_data",
    {.luid = "9ae45adaa3a5670d914c9e281f65a4fc", .definition = "b67885a1c6f7aefcbb2b23a885aee867"},
    "What a show of flows or traffic classes asks for, and how many entries there are.",
    {
        value("db_type",             select_ui_type_e, 0, "Table that the show is about.", asked),
        value("show_all",            ork_boolean,      0, "Asks for every entry.", asked),
        value("show_detail",         ork_boolean,      0, "Asks for the detailed form.", asked),
        value("new_walk",            ork_boolean,      0, "Asks for a new walk, not the last one.",
              asked),
        value("count",               u_int32,          0, "How many entries there are.", entries),
        value("show_human_readable", ork_boolean,      1, "Asks for the readable form of paths.",
              asked),
    }};
static_assert(layout_is<select_state_data, Manifest{.size = 56},
    Sizes{.used = 48, .slop = 16, .body = 56, .state = 5, .bound = 5},
    Sizes{.used = 52, .slop = 12, .body = 64, .state = 6, .bound = 7}>());

inline constexpr Record select_flow_data{
    "fwe_cl_wayfind_select_flow_data",
    {.luid = "f95a3181322c84617dbbe4c2defadd34", .definition = "640418807cbc4fed2952013427ff31e1"},
    "One flow: a pair of prefixes, its policies and the number of its traffic classes.",
    {
        value ("table_id",         u_int32,             0, "Routing table, by identifier."),
        object("src_prefix",       ip_address,          0, "Prefix that the flow comes from."),
        object("dst_prefix",       ip_address,          0, "Prefix that the flow goes to."),
        value ("tc_nr",            u_int32,             0, "Number of traffic classes.", column),
        value ("tc_slow_nr",       u_int32,             0, "Number of slow traffic classes.",
               column),
        value ("epoch",            u_int16,             0, "Epoch; channel_data has 32 bits."),
        value ("hash_val",         u_int32,             0, "Hash that the sender computed."),
        object("sel_all_policies", select_all_policies, 0, "Policies of the flow; may be empty."),
        object("mem",              mem_st,              0, "Locator in forwarding memory."),
        text  ("create_ts_msec",   32,                  1, "Creation time in ms, as text.", stamp),
        text  ("update_ts_msec",   32,                  1, "Last update in ms, as text.",
               stamp | column),
    }};
static_assert(layout_is<select_flow_data, Manifest{.size = 264},
    Sizes{.used = 200, .slop = 80, .body = 216, .state = 32, .bound = 9},
    Sizes{.used = 264, .slop = 16, .body = 280, .state = 32, .bound = 12}>());

inline constexpr Message select_flow_msg{
    "fwe_cl_wayfind_select_flow_msg",
    {.luid = "262857714ceb1dc0d9581204a0030c66", .definition = "e4b1e65c541a52f05f60846fecca57a4"},
    "One flow.",
    {&select_flow_data},
    key("table_id", "src_prefix", "dst_prefix")};

inline constexpr Message select_state_msg{
    "fwe_cl_wayfind_select_state_msg",
    {.luid = "c716f2280aee9260d11ba0a5b9a02ea3", .definition = "368c16163bad141fd91621c1f59bfd7b"},
    "What was asked of a show of selection or of traffic classes, once in a response of either.",
    {&select_state_data}};

}  // namespace model
