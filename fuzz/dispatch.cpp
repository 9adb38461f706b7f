// A stream of frames from a peer that may send anything: invariants 1 to 5, 8, 9 and 11 to 13 of
// docs/invariants.md.
//
// Input: the world's bits, which allocation fails, then the stream. A stream that stops making
// sense is left as a connection is closed.
#include "fuzz/world.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t bits = input.byte();
  const uint8_t nth = input.byte();
  fuzz::World world(bits, nth);
  const uint8_t* at = input.rest();
  size_t left = input.size();
  while (left != 0) {
    world.err = 0;
    const uint32_t length = ork_frame_length(at, static_cast<uint32_t>(left), 1 << 20, &world.err);
    if (world.err != 0 || length == 0 || length > left) {
      // The rest as one frame of whatever length it claims.
      const fuzz::Exact rest(at, left);
      world.err = 0;
      ork_dispatch(fuzz::dispatcher(), world.handle(), fuzz::instance, nullptr, rest.bytes(),
                   static_cast<uint32_t>(rest.size()), &world.err);
      break;
    }
    const fuzz::Exact frame(at, length);
    ork_dispatch(fuzz::dispatcher(), world.handle(), fuzz::instance, nullptr, frame.bytes(), length,
                 &world.err);
    at += length;
    left -= length;
  }
  return 0;
}
