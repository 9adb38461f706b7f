// The records of a hop channel as plain structs, for the hand-written sequences that the library is
// measured against. Natural alignment gives the layout; the padding at the end is the room that a
// body keeps behind its last field.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bare {

struct Header {
  uint8_t type_info_slot[8];
  int8_t variant;
  uint8_t variant_cap;
  uint8_t obj_flags;
};

struct alignas(8) Enum {
  Header header;
  uint32_t value;
};
static_assert(offsetof(Enum, value) == 12 && sizeof(Enum) == 16);

struct alignas(8) Flags {
  Header header;
  uint8_t bits;
  uint8_t slop[12];
};
static_assert(sizeof(Flags) == 24);

struct Mem {
  Header header;
  uint32_t fwe_num;
  uint64_t ppe_addr;
  uint64_t exmem_addr;
  uint8_t slop[8];
};
static_assert(sizeof(Mem) == 40);

struct HopChan {
  Header header;
  uint32_t hop_chan_id;
  uint32_t hop_id;
  uint8_t src_intf_id;
  uint8_t dst_intf_id;
  uint16_t dst_site_id;
  uint8_t dscp;
  uint32_t adj_id;
  uint32_t inst_id;
  uint32_t flags;
  uint8_t tw_index;
  uint8_t need_sample;
  uint32_t sa_id;
  char create_ts_msec[32];
  char update_ts_msec[32];
  Flags flags_show;
  uint8_t slop[16];
};
static_assert(offsetof(HopChan, create_ts_msec) == 48 && sizeof(HopChan) == 152);

struct Stats {
  Header header;
  uint32_t send_probes;
  uint32_t recv_probes;
  uint64_t send_packets;
  uint64_t send_bytes;
  uint64_t recv_packets;
  uint64_t recv_bytes;
  uint32_t send_sample_packets;
  uint32_t recv_sample_packets;
  uint8_t slop[8];
};
static_assert(sizeof(Stats) == 72);

struct Probe {
  Header header;
  Enum rx_ctrl_state;
  Enum rx_state;
  Enum tx_ctrl_state;
  Enum tx_state;
  uint32_t sample_cd;
  uint32_t unreach_cd;
  uint32_t monitor_cd;
  uint8_t slop[20];
};
static_assert(sizeof(Probe) == 112);

struct Serv {
  Header header;
  uint32_t last_probe_send_ts;
  uint32_t last_probe_recv_ts;
  uint32_t last_sample_send_ts;
  uint32_t last_sample_recv_ts;
  char last_rx_r2u_ts[32];
  char last_tx_r2u_ts[32];
  char last_rx_u2r_ts[32];
  char last_tx_u2r_ts[32];
  uint16_t rx_r2u_cnt;
  uint16_t tx_r2u_cnt;
  uint16_t rx_u2r_cnt;
  uint16_t tx_u2r_cnt;
  alignas(4) uint8_t slop[20];
};
static_assert(offsetof(Serv, slop) == 164 && sizeof(Serv) == 184);

struct HopChanData {
  Header header;
  alignas(8) HopChan hop_chan;
  alignas(8) Stats stats;
  alignas(8) Mem mem;
  char dscp_str[8];
  alignas(8) Probe probe;
  alignas(8) Serv serv;
  uint8_t slop[16];
};
static_assert(offsetof(HopChanData, probe) == 288 && offsetof(HopChanData, serv) == 400 &&
              sizeof(HopChanData) == 600);

}  // namespace bare
