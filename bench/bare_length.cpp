#include "bench/bare.h"
#include "bench/bare_fields.h"

namespace bare {
namespace {

// With tracking off nothing but the fields' own widths counts, beside the fixed bytes.
struct Sum {
  const Wire& wire;
  uint32_t bytes = 0;

  void value(const uint8_t& at) { bytes += u_int8_len(wire.handle, wire.instance, &at); }
  void value(const uint16_t& at) { bytes += u_int16_len(wire.handle, wire.instance, &at); }
  void value(const uint32_t& at) { bytes += u_int32_len(wire.handle, wire.instance, &at); }
  void value(const uint64_t& at) { bytes += u_int64_len(wire.handle, wire.instance, &at); }
  template <size_t N>
  void text(const char (&at)[N]) {
    bytes += static_cast<uint32_t>(N) * char_len(wire.handle, wire.instance, at);
  }
  void enumeration(const Enum&) { bytes += 5; }
  void flag_set(const Flags&) { bytes += 6; }
  template <class Record>
  void record(const Record& object) {
    bytes += 6;
    const int8_t variant = ork_get_instance_variant(&object, 1, 0);
    if (variant >= 0) fields(*this, object, variant);
  }
};

}  // namespace

uint32_t length(const Wire& wire, const Mem* mem) {
  Sum sum{wire};
  sum.record(*mem);
  return sum.bytes;
}

uint32_t length(const Wire& wire, const HopChanData* data) {
  Sum sum{wire};
  sum.record(*data);
  return sum.bytes;
}

}  // namespace bare
