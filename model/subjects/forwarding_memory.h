// Where an entry sits in the memory of a forwarding engine.
#pragma once

// Tables stand in columns, by hand.
// clang-format off

#include "model/checks.h"

namespace model {

inline constexpr Record mem_st{
    "fwe_cl_wayfind_mem_st",
    {.luid = "626bcfa9bf2ece1433a19411749e06fc", .definition = "cf798abf981f2d70da89d2f37438098b"},
    "Locator of an entry in forwarding memory.",
    {
        value("fwe_num",    u_int32, 0, "Forwarding engine that holds the entry, by number."),
        value("ppe_addr",   u_int64, 0, "The ppe address of the entry."),
        value("exmem_addr", u_int64, 0, "Address of the entry in external memory."),
    }};
static_assert(layout_is<mem_st, Manifest{.size = 32},
    Sizes{.used = 32, .slop = 8, .body = 40, .state = 3, .bound = 3}>());

}  // namespace model
