// Any record from any document: invariants 1, 3, 4, 5, 8 and 14 of docs/invariants.md.
//
// Input: the record's number, the world's bits, which allocation fails; the rest is the document,
// the record in its root element.
#include <cstring>

#include "fuzz/world.h"
#include "tests/support/exports.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using FromXml =
      void (*)(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*, uint32_t);
  fuzz::Input input(data, size);
  const wayfind_record& type = wayfind_records[input.byte() % wayfind_record_count];
  const uint8_t bits = input.byte();
  const uint8_t nth = input.byte();
  fuzz::World world(bits, nth);

  char reason[64];
  ork_xml* document = ork_xml_parse(reinterpret_cast<const char*>(input.rest()), input.size(),
                                    &world.err, reason, sizeof reason);
  if (document == nullptr) return 0;
  void* object = sample::create(world.handle(), type);
  if (object != nullptr) {
    world.err = 0;
    kit::function<FromXml>(type.functions, "_from_xml")(world.handle(), fuzz::instance, "/record",
                                                        document, object, &world.err, reason,
                                                        sizeof reason);
    fuzz::require(std::memchr(reason, '\0', sizeof reason) != nullptr, "a reason is ended");
    fuzz::render(world, type, object);
    fuzz::raise(type, object);
    sample::destroy(world.handle(), type, object);
  }
  ork_xml_free(document);
  return 0;
}
