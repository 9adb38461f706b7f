// The runtime calls of a record's wire operations, written out by hand for one type each and
// without state tracking: what no table, row or template has a part in. The floor under the
// library's marshal, unmarshal and length.
#pragma once

#include <cerrno>

#include "bench/layout.h"
#include "ork/orklib.h"

namespace bare {

struct Wire {
  ork_handle* handle;
  uint32_t instance;
  uint32_t* err;
};

inline bool tracks(const ork_handle* handle) {
  return handle->sttr_info != nullptr && handle->sttr_info->sttr_mode == ORK_STTR_ON;
}

// How every operation on an image begins.
inline bool begins(const Wire& wire, int32_t length) {
  if (*wire.err != 0) return false;
  ork_clear_last_error(wire.handle);
  if (length >= 1) return true;
  *wire.err = EMSGSIZE;
  ork_store_err(wire.handle, EMSGSIZE);
  return false;
}

uint32_t marshal(const Wire& wire, uint8_t* buffer, const Mem* mem, int32_t length);
uint32_t marshal(const Wire& wire, uint8_t* buffer, const HopChanData* data, int32_t length);
uint32_t unmarshal(const Wire& wire, const uint8_t* buffer, Mem* mem, int32_t length);
uint32_t unmarshal(const Wire& wire, const uint8_t* buffer, HopChanData* data, int32_t length);
uint32_t length(const Wire& wire, const Mem* mem);
uint32_t length(const Wire& wire, const HopChanData* data);

}  // namespace bare
