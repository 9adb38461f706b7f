// Tables that are right in every row. wrong_rows_test.py makes one of them wrong at a time.
#include "model/order_checks.h"

namespace model {

inline constexpr Enum weather_e{
    "weather_e",
    {.luid = "00000000000000000000000000000001", .definition = "10000000000000000000000000000001"},
    "An enum.",
    {"WEATHER_DRY", "WEATHER_WET"}};

inline constexpr FlagSet gear_flags{
    "gear_flags",
    {.luid = "00000000000000000000000000000002", .definition = "10000000000000000000000000000002"},
    "A flag set.",
    {"GEAR_ROPE", "GEAR_TENT"}};

inline constexpr Record camp_st{
    "camp_st",
    {.luid = "00000000000000000000000000000003", .definition = "10000000000000000000000000000003"},
    "A record that stands in others.",
    {
        value("altitude", u_int32, 0, "A value.", column | count_of("trail_msg")),
    }};
static_assert(layout_is<camp_st, Manifest{.size = 16},
                        Sizes{.used = 16, .slop = 8, .body = 24, .state = 1, .bound = 1}>());

inline constexpr Record stages_st{
    "stages_st",
    {.luid = "00000000000000000000000000000004", .definition = "10000000000000000000000000000004"},
    "A record with an array of records.",
    {
        counter("num_stages", u_int8, 0, "A counter."),
        record_array("stages", camp_st, 0, "An array."),
    }};
static_assert(layout_is<stages_st, Manifest{.size = 24},
                        Sizes{.used = 24, .slop = 8, .body = 32, .state = 16, .bound = 2}>());

inline constexpr Record trail_st{
    "trail_st",
    {.luid = "00000000000000000000000000000005", .definition = "10000000000000000000000000000005"},
    "A record with a field of each class.",
    {
        counter("num_marks", u_int32, 0, "A counter."),
        value_array("marks", u_int16, 0, "An array."),
        value("length", u_int64, 0, "A value.", grows),
        value("weather", weather_e, 0, "An enum."),
        object("gear", gear_flags, 0, "A flag set."),
        object("camp", camp_st, 0, "A record."),
        object("address", ip_address, 0, "An object of the runtime's."),
        text("name", 12, 1, "A text."),
    }};
static_assert(layout_is<trail_st, Manifest{.size = 160},
                        Sizes{.used = 144, .slop = 32, .body = 160, .state = 24, .bound = 7},
                        Sizes{.used = 156, .slop = 20, .body = 176, .state = 24, .bound = 9}>());

inline constexpr Message trail_msg{
    "trail_msg",
    {.luid = "00000000000000000000000000000006", .definition = "10000000000000000000000000000006"},
    "A message.",
    {&trail_st, &stages_st},
    key("camp.altitude", "name")};

inline constexpr Message stages_msg{
    "stages_msg",
    {.luid = "0000000000000000000000000000000b", .definition = "10000000000000000000000000000008"},
    "A message that nothing tells from its like.",
    {&stages_st},
    no_key};

inline constexpr Message camp_msg{
    "camp_msg",
    {.luid = "00000000000000000000000000000007", .definition = "10000000000000000000000000000007"},
    "Another message.",
    {&camp_st},
    key("altitude")};

inline constexpr Bundle trail_response{
    "trail_response",
    {.start = "00000000000000000000000000000008",
     .abort = "00000000000000000000000000000009",
     .commit = "0000000000000000000000000000000a"},
    "A bundle.",
    {once(trail_msg), repeatedly(camp_msg), repeatedly(stages_msg)}};

inline constexpr const Record* records[] = {&camp_st, &stages_st, &trail_st};
inline constexpr const Enum* enums[] = {&weather_e};
inline constexpr const FlagSet* flag_sets[] = {&gear_flags};
inline constexpr const Message* messages[] = {&trail_msg, &camp_msg, &stages_msg};
inline constexpr const Bundle* bundles[] = {&trail_response};

inline constexpr Tables tables{records, enums, flag_sets, messages, bundles};
static_assert(are_right<tables>());

}  // namespace model
