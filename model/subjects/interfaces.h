// How the feature stands on each interface.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"

namespace model {

inline constexpr Enum intf_plr_state_e{
    "fwe_cl_wayfind_intf_plr_state_e",
    {.luid = "0416c816a73e9b1592fe77eb44fef64f", .definition = "6f53ef6d369ec6c860f93f53a998a521"},
    "How far plr has come on an interface; the last value is a value like any other.",
    {
        "WAYFIND_UI_INTF_PLR_DISABLED",
        "WAYFIND_UI_INTF_PLR_STANDBY",
        "WAYFIND_UI_INTF_PLR_STANDBY_SHUTDOWN",
        "WAYFIND_UI_INTF_PLR_ACTIVE",
        "WAYFIND_UI_INTF_PLR_MAX",
    }};

inline constexpr Record intf_data{
    "fwe_cl_wayfind_intf_data",
    {.luid = "62b4e4a48a0afce6b4e24db734e1ab0b", .definition = "065d767213523abe2b0ad7015ed74f53"},
    "How one interface stands: what is enabled on it, and its plr.",
    {
        value("fwe_if_h",            u_int32,          0, "Forwarding-engine interface handle."),
        text ("if_name",             32,               0, "Name of the interface.", column),
        value("sel_enabled",         u_int32,          0, "Nonzero when selection is on.", column),
        value("ingress_smp_enabled", u_int32,          0, "Nonzero when smp is on for ingress.",
              column),
        value("egress_smp_enabled",  u_int32,          0, "Nonzero when smp is on for egress.",
              column),
        value("zero_sla_type",       u_int8,           0, "Type of zero SLA."),
        value("zero_sla_dscp",       u_int8,           0, "DSCP of zero SLA."),
        text ("color",               8,                0, "Name of the colour; color_st holds 20.",
              column),
        value("plr_type",            intf_plr_state_e, 0, "State of plr on the interface.", column),
    }};
static_assert(layout_is<intf_data, Manifest{.size = 88},
    Sizes{.used = 88, .slop = 16, .body = 104, .state = 9, .bound = 9}>());

inline constexpr Record intf_sum{
    "fwe_cl_wayfind_intf_sum",
    {.luid = "3a63956cd7e37a9e2416e98ceef4976c", .definition = "c3ebdcacb23d1dab1c1f30328eeed6ba"},
    "Which debug paths are on, over all interfaces.",
    {
        value("sel_dbg_path_enabled", u_int32, 0, "Nonzero when the selection debug path is on.",
              column),
        value("smp_dbg_path_enabled", u_int32, 0, "Nonzero when the smp debug path is on.", column),
    }};
static_assert(layout_is<intf_sum, Manifest{.size = 24},
    Sizes{.used = 20, .slop = 12, .body = 32, .state = 2, .bound = 2}>());

inline constexpr Message intf_data_msg{
    "fwe_cl_wayfind_intf_data_msg",
    {.luid = "0830917da510805efe1232a3dafb30d7", .definition = "23dd99063075ba121f2c06c522ae8d3a"},
    "One interface.",
    {&intf_data},
    key("fwe_if_h")};

inline constexpr Message intf_sum_msg{
    "fwe_cl_wayfind_intf_sum_msg",
    {.luid = "10f8927b5c2a6d0370d1ed1f2586ce91", .definition = "c29f9933a252fd3235a6140d7dc92849"},
    "The summary of all interfaces, once in a response.",
    {&intf_sum}};

inline constexpr Bundle show_intf{
    "fwe_cl_wayfind_show_intf_response",
    {.start = "1f5c5e5e6a12992f81a2d69c62069a18",
     .abort = "65682e781c19c5609798abb8ba06f918",
     .commit = "fb93228ccd25ae4fd0abba15d41c4302"},
    "Answer to a show of interfaces.",
    {once(intf_sum_msg), repeatedly(intf_data_msg)}};

}  // namespace model
