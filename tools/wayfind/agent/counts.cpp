#include "tools/wayfind/agent/counts.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

using SetValue = void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*);

struct Count {
  std::string_view record;
  std::string_view field;  // a u_int32
  std::string_view
      counted;  // a message, of which the agent has so many; empty: what repeats in the show
};

constexpr Count counts[] = {
    {"fwe_cl_wayfind_hop_chan_state_data", "num_hop_chans", ""},
    {"fwe_cl_wayfind_channel_state_data", "num_channels", ""},
    {"fwe_cl_wayfind_nb_channel_state_data", "num_nb_channels", ""},
    {"fwe_cl_wayfind_select_state_data", "count", ""},
    {"fwe_cl_wayfind_global_state_data", "count", ""},
    {"fwe_cl_wayfind_auto_tunnel_gstatus", "number", ""},
    {"fwe_cl_wayfind_global_info_data", "num_inst", "fwe_cl_wayfind_inst_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_color", "fwe_cl_wayfind_color_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_chan", "fwe_cl_wayfind_channel_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_chan_nb", "fwe_cl_wayfind_nb_channel_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_sel_tc", "fwe_cl_wayfind_select_tc_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_sel_flow", "fwe_cl_wayfind_select_flow_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_auto_tunnel", "fwe_cl_wayfind_auto_tunnel_show"},
    {"fwe_cl_wayfind_global_info_data", "num_hop_chan", "fwe_cl_wayfind_hop_chan_msg"},
    {"fwe_cl_wayfind_global_info_data", "num_enf_hop", "fwe_cl_wayfind_enforce_hop_msg"},
};

uint32_t entries_of(const wayfind_bundle& bundle, const DataFolder& data, ork_handle* client) {
  size_t entries = 0;
  for (unsigned i = 0; i < bundle.member_count; ++i) {
    const wayfind_message& message = *bundle.members[i].message;
    const bool goes_out = message_type(message).is_valid(client) != 0;
    if (bundle.members[i].repeatable != 0 && goes_out) entries += data.messages(message)->size();
  }
  return static_cast<uint32_t>(entries);
}

const wayfind_field& field_named(const wayfind_record& record, std::string_view name) {
  return *std::find_if(record.fields, record.fields + record.field_count,
                       [&](const wayfind_field& field) { return field.name == name; });
}

}  // namespace

bool tells_counts(const wayfind_message& message) {
  return std::any_of(std::begin(counts), std::end(counts),
                     [&](const Count& count) { return count.record == message.records[0]->name; });
}

void fill_counts(const wayfind_bundle& bundle, const DataFolder& data, ork_handle* client,
                 const wayfind_message& message, void* msg) {
  const wayfind_record& record = *message.records[0];
  for (const Count& count : counts) {
    if (count.record != record.name) continue;
    const uint32_t entries =
        count.counted.empty()
            ? entries_of(bundle, data, client)
            : static_cast<uint32_t>(
                  data.messages(*find_message_type(count.counted)->schema)->size());
    SetValue* set_value = nullptr;
    find_function(field_named(record, count.field).functions, "_set_value", set_value);
    uint32_t err = 0;
    set_value(data.handle(), ORK_NO_INSTANCE, message_type(message).record(data.handle(), msg, 0),
              entries, &err);
    expect_done(err, std::string(count.field));
  }
}

}  // namespace wayfind
