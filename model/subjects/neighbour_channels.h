// Channels as they are seen towards a neighbour.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"
#include "model/subjects/channels.h"
#include "model/subjects/forwarding_memory.h"

namespace model {

inline constexpr Enum chan_nb_state_e{
    "fwe_cl_wayfind_chan_nb_state_e",
    {.luid = "b93f15b657876e81241e50ea988eb663", .definition = "020b57581082b50d771ec6dfe3b1f234"},
    "Whether a neighbour channel is up; the last value is a value like any other.",
    {
        "WAYFIND_UI_CHAN_NB_STATE_DOWN",
        "WAYFIND_UI_CHAN_NB_STATE_UP",
        "WAYFIND_UI_CHAN_NB_STATE_MAX",
    }};

inline constexpr Record chan_nb_st{
    "fwe_cl_wayfind_chan_nb_st",
    {.luid = "1968bd3e728d9f8119561a75657693b9", .definition = "8bb7e99ce4bf9f84cb2b1f3fcac92ef0"},
    "A channel as it is seen towards a neighbour.",
    {
        value("chan_id",  u_int32,         0, "The channel, by identifier."),
        value("state",    chan_nb_state_e, 0, "Whether the neighbour channel is up.", column),
        value("tx_state", chan_tx_state_e, 0, "State of the transmit side.", column),
        value("vrf_id",   u_int32,         0, "VRF, by identifier.", column),
    }};
static_assert(layout_is<chan_nb_st, Manifest{.size = 56},
    Sizes{.used = 52, .slop = 12, .body = 64, .state = 4, .bound = 4}>());

inline constexpr Record nb_channel_data{
    "fwe_cl_wayfind_nb_channel_data",
    {.luid = "47eecb8e8c086caa24e93d0cb094a264", .definition = "9bbd08a449e0214d5b4ed5b2569dd8e3"},
    "One neighbour channel as a show tells it.",
    {
        object("chan_nb", chan_nb_st, 0, "The neighbour channel itself."),
        object("mem",     mem_st,     0, "Locator in forwarding memory."),
    }};
static_assert(layout_is<nb_channel_data, Manifest{.size = 120},
    Sizes{.used = 120, .slop = 16, .body = 136, .state = 9, .bound = 2}>());

inline constexpr Record nb_channel_state_data{
    "fwe_cl_wayfind_nb_channel_state_data",
    {.luid = "f7f883a6a3551dc4775d0cb8075a4785", .definition = "9091dc0c77ed8d44798937846f100276"},
    "What a show of neighbour channels asks for, and how many there are.",
    {
        value("show_all",        ork_boolean, 0, "Asks for every entry.", asked),
        value("show_detail",     ork_boolean, 0, "Asks for the detailed form.", asked),
        value("num_nb_channels", u_int32,     0, "How many neighbour channels there are.", entries),
        value("new_walk",        ork_boolean, 0, "Asks for a new walk, not the last one.", asked),
    }};
static_assert(layout_is<nb_channel_state_data, Manifest{.size = 32},
    Sizes{.used = 28, .slop = 12, .body = 40, .state = 4, .bound = 4}>());

inline constexpr Message nb_channel_msg{
    "fwe_cl_wayfind_nb_channel_msg",
    {.luid = "862a0bca19501da355fc722ffbefe4b8", .definition = "e4341023abecc384e289772369b356c4"},
    "One neighbour channel.",
    {&nb_channel_data},
    key("chan_nb.chan_id")};

inline constexpr Message nb_channel_state_msg{
    "fwe_cl_wayfind_nb_channel_state_msg",
    {.luid = "5e8670ee3e22607ab2b5c0f381bea5f8", .definition = "b832c73d2e78d0c7c402b6f639fbfeba"},
    "What was asked of a show of neighbour channels and their number, once in a response.",
    {&nb_channel_state_data}};

inline constexpr Bundle show_nb_channel{
    "fwe_cl_wayfind_show_nb_channel_response",
    {.start = "4edc52c856a31dd55fb9882f0ea14339",
     .abort = "509901274867611b41fbfd021a210cd4",
     .commit = "1cd9f42a5e6656dc929d22c1bd795e57"},
    "Answer to a show of neighbour channels.",
    {once(nb_channel_state_msg), repeatedly(nb_channel_msg)}};

}  // namespace model
