// Well-formed frames in any order, a few of them damaged: invariants 1 to 5, 8, 9 and 11 to 13 of
// docs/invariants.md.
//
// Input: the world's bits, which allocation fails, then four bytes per frame: what it is (start,
// abort, commit, message), which one, and a place and a value that is put there (0: none). A place
// from 0xF0 on cuts the frame instead.
#include <string>
#include <vector>

#include "fuzz/world.h"
#include "tests/support/exports.h"

namespace {

std::vector<uint8_t> control_frame(ork_handle* handle, unsigned kind, unsigned number) {
  using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  static const char* const names[] = {"_bundle_start_message_marshal",
                                      "_bundle_abort_message_marshal",
                                      "_bundle_commit_message_marshal"};
  std::vector<uint8_t> frame(64);
  uint32_t err = 0;
  const wayfind_bundle& bundle = wayfind_bundles[number % wayfind_bundle_count];
  // A handle refuses what does not fit its own state; the receiver is to see every order.
  handle->bundle_ctx = kind == 0 ? 0 : 1;
  frame.resize(kit::function<Marshal>(bundle.functions, names[kind])(
      handle, fuzz::instance, frame.data(), nullptr, 64, &err));
  return frame;
}

std::vector<uint8_t> message_frame(ork_handle* handle, unsigned number) {
  using Create = void* (*)(ork_handle*, uint32_t);
  using Get = void* (*)(ork_handle*, uint32_t, void*, uint32_t*);
  using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*);
  const wayfind_message& message = wayfind_messages[number % wayfind_message_count];
  std::vector<uint8_t> frame(8192);
  void* object = kit::function<Create>(message.functions, "_create")(handle, fuzz::instance);
  if (object == nullptr) return {};
  uint32_t err = 0;
  for (unsigned r = 0; r < message.record_count; ++r) {
    const wayfind_record& type = *message.records[r];
    const std::string getter = std::string("_") + type.name + "_get";
    void* record =
        kit::function<Get>(message.functions, getter)(handle, fuzz::instance, object, &err);
    if (record != nullptr) sample::fill(handle, type, record, number % 3);
  }
  handle->bundle_ctx = 0;
  frame.resize(kit::function<Marshal>(message.functions, "_marshal")(
      handle, fuzz::instance, frame.data(), object, 8192, &err));
  kit::function<ork_message_destroy_fn>(message.functions, "_destroy")(handle, fuzz::instance,
                                                                       object);
  return frame;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t bits = input.byte();
  const uint8_t nth = input.byte();
  fuzz::World sender(bits & 3, 0);
  fuzz::World receiver(bits, nth);
  while (!input.empty()) {
    const unsigned what = input.byte() % 5;
    const unsigned which = input.byte();
    const size_t place = input.byte();
    const uint8_t value = input.byte();
    std::vector<uint8_t> frame = what < 3 ? control_frame(sender.handle(), what, which)
                                          : message_frame(sender.handle(), which);
    if (value != 0 && place < 0xF0 && place < frame.size()) frame[place] = value;
    if (value != 0 && place >= 0xF0) frame.resize(frame.size() - value % (frame.size() + 1));
    const fuzz::Exact exact(frame.data(), frame.size());
    receiver.err = 0;
    ork_dispatch(fuzz::dispatcher(), receiver.handle(), fuzz::instance, nullptr, exact.bytes(),
                 static_cast<uint32_t>(exact.size()), &receiver.err);
  }
  sender.handle()->bundle_ctx = 0;
  return 0;
}
