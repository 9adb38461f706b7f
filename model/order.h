// The orders in which the types, messages and bundles of the module follow each other. A new one
// goes to the end of its array, so that the tags of those before it stay.
#pragma once

#include "model/subjects/auto_tunnels.h"
#include "model/subjects/channels.h"
#include "model/subjects/debug.h"
#include "model/subjects/forwarding_memory.h"
#include "model/subjects/globals.h"
#include "model/subjects/hop_channels.h"
#include "model/subjects/interfaces.h"
#include "model/subjects/maps.h"
#include "model/subjects/neighbour_channels.h"
#include "model/subjects/selection.h"
#include "model/subjects/traffic_classes.h"

namespace model {

// Registered with the runtime first. Within a section, trace entries of records stand in this order
// too.
inline constexpr const Record* records[] = {
    &mem_st,
    &inst_st,
    &color_st,
    &select_policy,
    &hop_id_readable_format_st,
    &sel_lb_path_st,
    &sel_lb_path_human_readable_st,
    &sel_lb_src_intf_st,
    &sel_lb_dst_site_st,
    &sel_lb_dst_intf_st,
    &select_loadbalance_channel_st,
    &select_tc_lb_channels_st,
    &chan_st,
    &chan_nb_st,
    &pal_site_prefix_data,
    &prefixtosite_stats_st,
    &prefixtosite_data,
    &sitetohop_stats_st,
    &sitetohop_data,
    &pal_debug_data,
    &cl_debug_data,
    &proxy_stats,
    &global_info_data,
    &color_data,
    &inst_data,
    &global_state_data,
    &global_param_data,
    &global_show_type_data,
    &auto_tunnel_gstatus,
    &auto_tunnel,
    &auto_tunnel_misc,
    &select_state_data,
    &select_all_policies,
    &select_flow_data,
    &select_tc_stats_st,
    &select_tc_ageout_st,
    &select_tc_data,
    &nb_channel_data,
    &nb_channel_state_data,
    &enforce_hop,
    &multi_nh_map,
    &dcid_siteip_map,
    &chan_stats_st,
    &channel_data,
    &channel_state_data,
    &hop_chan_probe_st,
    &hop_chan_st,
    &hop_chan_stats_st,
    &hop_chan_serv_st,
    &hop_chan_data,
    &hop_chan_state_data,
    &dp_debug_setting,
    &dp_debug_data_per_complex,
    &dp_debug_data,
    &intf_data,
    &intf_sum,
};

// Registered behind the records; trace entries in this order.
inline constexpr const Enum* enums[] = {
    &select_tc_ui_status_e, &select_tc_type_e,   &select_ui_type_e, &hop_chan_state_e,
    &chan_state_e,          &chan_rx_state_e,    &chan_tx_state_e,  &chan_nb_state_e,
    &show_db_type_e,        &show_global_type_e, &intf_plr_state_e,
};

// Registered behind the enums.
inline constexpr const FlagSet* flag_sets[] = {
    &hop_chan_flags,
};

// Registered last; trace entries in this order. Call-site tags run without a gap over the records
// of all messages, so that a message with two records takes two.
inline constexpr const Message* messages[] = {
    &pal_site_prefix_msg,
    &prefixtosite_msg,
    &sitetohop_msg,
    &pal_debug_msg,
    &cl_debug_msg,
    &global_info_msg,
    &color_msg,
    &inst_msg,
    &global_state_msg,
    &global_param_msg,
    &global_show_type_msg,
    &auto_tunnel_gstatus_show,
    &auto_tunnel_show,
    &select_state_msg,
    &select_flow_msg,
    &select_tc_msg,
    &nb_channel_msg,
    &nb_channel_state_msg,
    &enforce_hop_msg,
    &multi_nh_map_msg,
    &dcid_siteip_map_msg,
    &channel_msg,
    &channel_state_msg,
    &hop_chan_msg,
    &hop_chan_state_msg,
    &dp_debug_msg,
    &intf_data_msg,
    &intf_sum_msg,
};

// Never registered, as a bundle has no descriptor; its trace entries stand in this order, before
// those of all messages.
inline constexpr const Bundle* bundles[] = {
    &show_site_prefix,   &show_prefixtosite,    &show_sitetohop,
    &pal_show_debug,     &cl_show_debug,        &show_global,
    &show_global_new,    &show_auto_tunnel,     &show_selection,
    &show_traffic_class, &show_nb_channel,      &show_enforce_hop,
    &show_multi_nh_map,  &show_dcid_siteip_map, &show_channel,
    &show_hop_chan,      &dp_show_debug,        &show_intf,
};

}  // namespace model
