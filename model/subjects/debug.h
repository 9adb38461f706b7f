// What each of the three layers debugs: the data plane by forwarding engine, the platform and the
// client by class.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"

namespace model {

inline constexpr Record dp_debug_setting{
    "fwe_dp_wayfind_debug_setting",
    {.luid = "13ce072128048fb88bc4bd55adadc345", .definition = "c3d89253f48d81e420dc6715b020e7ea"},
    "What one forwarding engine debugs; a switch is a number, not an ork_boolean.",
    {
        value("fwe_num",                  u_int8,  0, "Forwarding engine; mem_st has 32 bits."),
        value("mode_selection_enabled",   u_int32, 0, "Nonzero when selection is debugged."),
        value("mode_smart_probe_enabled", u_int32, 0, "Nonzero when smart probes are debugged."),
        value("mode_interface_enabled",   u_int32, 0, "Nonzero when interfaces are debugged."),
        value("mode_packet_enabled",      u_int32, 0, "Nonzero when packets are debugged."),
        value("mode_proxy_enabled",       u_int32, 0, "Nonzero when the proxy is debugged."),
        value("mode_ft_enabled",          u_int32, 0, "Nonzero when ft is debugged."),
        value("mode_validator_enabled",   u_int32, 0, "Nonzero when the validator is debugged."),
        value("mode_collector_enabled",   u_int32, 0, "Nonzero when the collector is debugged."),
    }};
static_assert(layout_is<dp_debug_setting, Manifest{.size = 48},
    Sizes{.used = 44, .slop = 12, .body = 56, .state = 9, .bound = 9}>());

inline constexpr Record dp_debug_data_per_complex{
    "fwe_dp_wayfind_debug_data_per_complex",
    {.luid = "3bf05a20e182ec0d3797e19dbb3e949c", .definition = "105c2fe83d26e1f2b11e1db341436502"},
    "What the forwarding engines of one complex debug.",
    {
        counter     ("num_fwes",    u_int8,           0, "Elements of dbg_setting, low 8 bits."),
        record_array("dbg_setting", dp_debug_setting, 0, "Settings of each forwarding engine."),
    }};
static_assert(layout_is<dp_debug_data_per_complex, Manifest{.size = 24},
    Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record dp_debug_data{
    "fwe_dp_wayfind_debug_data",
    {.luid = "ce7af2236992c7b70229410030d617a5", .definition = "25664daad5f50959da0355f93e5327cc"},
    "What the data-plane layer debugs.",
    {
        counter     ("num_complexes",   u_int8,                    0,
                     "Elements of dbg_per_complex, low 8 bits.", column),
        record_array("dbg_per_complex", dp_debug_data_per_complex, 0, "Settings of each complex."),
        value       ("is_none",         ork_boolean,               0, "Stands for no setting.",
                     column),
    }};
static_assert(layout_is<dp_debug_data, Manifest{.size = 32},
    Sizes{.used = 28, .slop = 12, .body = 40, .state = 24, .bound = 3}>());

inline constexpr Record pal_debug_data{
    "fwe_pal_wayfind_debug_data",
    {.luid = "f8097734088d70eca2209a2548fa85b9", .definition = "e3d5056484e25d9299807dad8eb02f67"},
    "What the platform layer debugs; a switch is a number, not an ork_boolean.",
    {
        value("info_enabled",  u_int32,     0, "Nonzero when class info is on.", column),
        value("trace_enabled", u_int32,     0, "Nonzero when class trace is on.", column),
        value("warn_enabled",  u_int32,     0, "Nonzero when class warn is on.", column),
        value("error_enabled", u_int32,     0, "Nonzero when class error is on.", column),
        value("is_none",       ork_boolean, 0, "Stands for no setting.", column),
    }};
static_assert(layout_is<pal_debug_data, Manifest{.size = 32},
    Sizes{.used = 32, .slop = 8, .body = 40, .state = 5, .bound = 5}>());

inline constexpr Record cl_debug_data{
    "fwe_cl_wayfind_debug_data",
    {.luid = "dfb8073f9d067348365595f476b895ec", .definition = "67ac3b0b8234583d47d3102d337cb160"},
    "What the client layer debugs; a switch is a number, not an ork_boolean.",
    {
        value("info_enabled",  u_int32,     0, "Nonzero when class info is on.", column),
        value("trace_enabled", u_int32,     0, "Nonzero when class trace is on.", column),
        value("warn_enabled",  u_int32,     0, "Nonzero when class warn is on.", column),
        value("error_enabled", u_int32,     0, "Nonzero when class error is on.", column),
        value("stats_enabled", u_int32,     0, "Nonzero when class stats is on.", column),
        value("is_none",       ork_boolean, 0, "Stands for no setting.", column),
    }};
static_assert(layout_is<cl_debug_data, Manifest{.size = 40},
    Sizes{.used = 36, .slop = 12, .body = 48, .state = 6, .bound = 6}>());

inline constexpr Message dp_debug_msg{
    "fwe_dp_wayfind_debug_msg",
    {.luid = "e3d866d26f0d67418bb342f8930ed923", .definition = "ee9e7aa2cc8310473ed4146e592feff2"},
    "What the data-plane layer debugs, once in a response.",
    {&dp_debug_data}};

inline constexpr Message pal_debug_msg{
    "fwe_pal_wayfind_debug_msg",
    {.luid = "7cd1308dea76ef41b4d5a3f334aae604", .definition = "70a07e215b18a971b17aadd0b7de4c07"},
    "What the platform layer debugs, once in a response.",
    {&pal_debug_data}};

inline constexpr Message cl_debug_msg{
    "fwe_cl_wayfind_debug_msg",
    {.luid = "532e4ca227aedb5fab1e5ec58da66467", .definition = "c00771840a9ba2e792411fd2df67ef79"},
    "What the client layer debugs, once in a response.",
    {&cl_debug_data}};

inline constexpr Bundle pal_show_debug{
    "fwe_pal_wayfind_show_debug_response",
    {.start = "159d53e2654ba75b3d3691aead744b6b",
     .abort = "b511d42535c519a991b5191c6e62befa",
     .commit = "e6dc9e99c2c584ca6f4d410d4fcd46c6"},
    "Answer to a show of what the platform layer debugs.",
    {once(pal_debug_msg)}};

inline constexpr Bundle cl_show_debug{
    "fwe_cl_wayfind_show_debug_response",
    {.start = "8c12ebca51fa2352b92be26175047391",
     .abort = "6900bffec7e3c3fcfd60fd11d587ba12",
     .commit = "e2393165d71d4205da1c784266948e77"},
    "Answer to a show of what the client layer debugs.",
    {once(cl_debug_msg)}};

inline constexpr Bundle dp_show_debug{
    "fwe_dp_wayfind_show_debug_response",
    {.start = "f9746519f4e190b635800622c97cc899",
     .abort = "aef2f77cb32218089835d27df4c77b2a",
     .commit = "d9c79797092fe554dc48a9ad96c9ff39"},
    "Answer to a show of what the data-plane layer debugs.",
    {once(dp_debug_msg)}};

}  // namespace model
