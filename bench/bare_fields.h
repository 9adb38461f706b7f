// The fields of a hop channel's records in wire order, for a visitor that makes the runtime's
// calls.
#pragma once

#include <concepts>
#include <type_traits>

#include "bench/layout.h"

namespace bare {

template <class T, class Record>
concept Is = std::same_as<std::remove_const_t<T>, Record>;

template <class Visit>
void fields(Visit& visit, Is<Mem> auto& mem, int8_t) {
  visit.value(mem.fwe_num);
  visit.value(mem.ppe_addr);
  visit.value(mem.exmem_addr);
}

template <class Visit>
void fields(Visit& visit, Is<HopChan> auto& hop, int8_t variant) {
  visit.value(hop.hop_chan_id);
  visit.value(hop.hop_id);
  visit.value(hop.src_intf_id);
  visit.value(hop.dst_intf_id);
  visit.value(hop.dst_site_id);
  visit.value(hop.dscp);
  visit.value(hop.adj_id);
  visit.value(hop.inst_id);
  visit.value(hop.flags);
  visit.value(hop.tw_index);
  visit.value(hop.need_sample);
  visit.value(hop.sa_id);
  if (variant < 1) return;
  visit.text(hop.create_ts_msec);
  visit.text(hop.update_ts_msec);
  visit.flag_set(hop.flags_show);
}

template <class Visit>
void fields(Visit& visit, Is<Stats> auto& stats, int8_t) {
  visit.value(stats.send_probes);
  visit.value(stats.recv_probes);
  visit.value(stats.send_packets);
  visit.value(stats.send_bytes);
  visit.value(stats.recv_packets);
  visit.value(stats.recv_bytes);
  visit.value(stats.send_sample_packets);
  visit.value(stats.recv_sample_packets);
}

template <class Visit>
void fields(Visit& visit, Is<Probe> auto& probe, int8_t) {
  visit.enumeration(probe.rx_ctrl_state);
  visit.enumeration(probe.rx_state);
  visit.enumeration(probe.tx_ctrl_state);
  visit.enumeration(probe.tx_state);
  visit.value(probe.sample_cd);
  visit.value(probe.unreach_cd);
  visit.value(probe.monitor_cd);
}

template <class Visit>
void fields(Visit& visit, Is<Serv> auto& serv, int8_t) {
  visit.value(serv.last_probe_send_ts);
  visit.value(serv.last_probe_recv_ts);
  visit.value(serv.last_sample_send_ts);
  visit.value(serv.last_sample_recv_ts);
  visit.text(serv.last_rx_r2u_ts);
  visit.text(serv.last_tx_r2u_ts);
  visit.text(serv.last_rx_u2r_ts);
  visit.text(serv.last_tx_u2r_ts);
  visit.value(serv.rx_r2u_cnt);
  visit.value(serv.tx_r2u_cnt);
  visit.value(serv.rx_u2r_cnt);
  visit.value(serv.tx_u2r_cnt);
}

template <class Visit>
void fields(Visit& visit, Is<HopChanData> auto& data, int8_t variant) {
  visit.record(data.hop_chan);
  visit.record(data.stats);
  visit.record(data.mem);
  visit.text(data.dscp_str);
  visit.record(data.probe);
  if (variant >= 1) visit.record(data.serv);
}

}  // namespace bare
