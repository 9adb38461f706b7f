// Any record from any bytes: invariants 1 to 10 of docs/invariants.md.
//
// Input: the record's number, the world's bits, which allocation fails, then bit 0 reuse of
// storage, bit 1 a record that was filled before, bit 2 else, without tracking, one that was laid
// out for its first variant; the rest is the image.
#include "fuzz/world.h"
#include "tests/support/exports.h"

namespace {

using Marshal = uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
using Unmarshal = uint32_t (*)(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                               uint32_t*);
using Length = uint32_t (*)(ork_handle*, uint32_t, const void*);
using Compare = int32_t (*)(const void*, const void*);

template <class Prototype>
Prototype function(const wayfind_record& type, const char* suffix) {
  return kit::function<Prototype>(type.functions, suffix);
}

// What was read can be written, into any room, and read again as the same record.
void round_trip(fuzz::World& world, const wayfind_record& type, void* object) {
  ork_handle* handle = world.handle();
  const uint32_t needed = function<Length>(type, "_len")(handle, fuzz::instance, object);
  if (needed > (1u << 20)) return;
  const auto marshal = function<Marshal>(type, "_marshal");
  // ra data takes 9 bytes per record that no length counts; the byte behind the room may take a
  // state byte.
  const uint32_t room = needed + needed / 2 + 64;
  std::unique_ptr<uint8_t[]> image(new uint8_t[room + 1]);
  uint32_t err = 0;
  const uint32_t n =
      marshal(handle, fuzz::instance, image.get(), object, static_cast<int32_t>(room), &err);
  if (err == 0) {
    void* again = sample::create(handle, type);
    if (again != nullptr) {
      const fuzz::Exact exact(image.get(), n);
      function<Unmarshal>(type, "_unmarshal")(handle, fuzz::instance, exact.bytes(), again,
                                              exact.size(), 0, &err);
      const bool same_variant =
          static_cast<ork_object*>(again)->variant == static_cast<ork_object*>(object)->variant;
      if (err == 0 && same_variant) fuzz::render(world, type, again);
      sample::destroy(handle, type, again);
    }
  }
  for (const uint32_t less : {1u, 7u, n / 2, n}) {
    const uint32_t short_room = n - (less < n ? less : n);
    std::unique_ptr<uint8_t[]> small(new uint8_t[short_room + 1]);
    err = 0;
    marshal(handle, fuzz::instance, small.get(), object, static_cast<int32_t>(short_room), &err);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const wayfind_record& type = wayfind_records[input.byte() % wayfind_record_count];
  const uint8_t bits = input.byte();
  const uint8_t nth = input.byte();
  const uint8_t how = input.byte();
  fuzz::World world(bits, nth);
  ork_handle* handle = world.handle();

  void* object = sample::create(handle, type);
  if (object == nullptr) return 0;
  if ((how & 2) != 0) sample::fill(handle, type, object, 3);
  // With tracking on, an older layout would also have its state bytes elsewhere.
  if ((how & 6) == 4 && (bits & 2) == 0) {
    static_cast<ork_object*>(object)->variant_cap = 0;
    static_cast<ork_object*>(object)->variant = 0;
  }

  // Storage that is not reused is given back without a look at what its elements own: only an empty
  // record can do without.
  const uint32_t reuse = (how & 3) != 0 ? 1 : 0;
  const fuzz::Exact image(input.rest(), input.size());
  function<Unmarshal>(type, "_unmarshal")(handle, fuzz::instance, image.bytes(), object,
                                          image.size(), reuse, &world.err);
  fuzz::render(world, type, object);
  round_trip(world, type, object);

  uint32_t err = 0;
  void* copy = nullptr;
  uint8_t* workspace = nullptr;
  int32_t workspace_size = 0;
  orklib_get_handle_ws(handle, &workspace, &workspace_size);
  kit::function<void (*)(ork_handle*, uint32_t, const void*, void**, uint8_t*, int32_t, uint32_t*)>(
      type.functions, "_clone")(handle, fuzz::instance, object, &copy, workspace, workspace_size,
                                &err);
  fuzz::require(err == 0 || copy == nullptr, "a clone that failed leaves nothing");
  if (copy != nullptr) sample::destroy(handle, type, copy);
  if ((how & 2) != 0) fuzz::raise(type, object);
  sample::destroy(handle, type, object);
  return 0;
}
