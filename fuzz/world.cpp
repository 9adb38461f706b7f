#include "fuzz/world.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/exports.h"

namespace fuzz {
namespace {

// All types at their first variant.
const ork_type_list* first_release() {
  static const ork_type_list* const list = [] {
    std::string text;
    const auto add = [&](const char* luid) { text += std::string("type ") + luid + " 1\n"; };
    for (unsigned i = 0; i < wayfind_record_count; ++i) add(wayfind_records[i].luid_text);
    for (unsigned i = 0; i < wayfind_small_type_count; ++i) add(wayfind_small_types[i].luid_text);
    for (unsigned i = 0; i < wayfind_message_count; ++i) add(wayfind_messages[i].luid_text);
    uint32_t err = 0;
    const ork_type_list* made = ork_type_list_parse(text.data(), text.size(), &err, nullptr, 0);
    require(made != nullptr, "the release parses");
    return made;
  }();
  return list;
}

// Room for any form of a record of 1 MiB budget is not needed: what does not fit is error 90.
constexpr uint32_t text_room = 16384;
constexpr uint8_t canary = 0xA5;

template <class Prototype>
Prototype get(const wayfind_function* functions, const char* suffix) {
  return kit::function<Prototype>(functions, suffix);
}

// Outside a bundle a message belongs to its handler: this one gives it back.
template <unsigned M>
void drop(ork_handle* handle, uint32_t at, void*, void* message, uint32_t*) {
  get<ork_message_destroy_fn>(wayfind_messages[M].functions, "_destroy")(handle, at, message);
}
template <size_t... M>
void add_messages(ork_dispatcher* table, std::index_sequence<M...>) {
  uint32_t err = 0;
  const auto add = [&](unsigned m, ork_message_handler handler) {
    const wayfind_message& message = wayfind_messages[m];
    const ork_dispatch_entry entry{
        {message.luid, message.name, get<ork_message_unmarshal_fn>(message.functions, "_unmarshal"),
         handler, nullptr},
        get<ork_message_destroy_fn>(message.functions, "_destroy")};
    ork_dispatcher_add(table, &entry, &err);
  };
  (add(M, drop<M>), ...);
  require(err == 0 && sizeof...(M) == wayfind_message_count, "every message has a row");
}

void take_bundle(ork_handle* handle, uint32_t, void*, uint32_t*) {
  for (ork_bundle_member* member = ork_bundle_next(handle, nullptr); member != nullptr;
       member = ork_bundle_next(handle, member)) {
    require(ork_bundle_member_message(member) != nullptr, "a member has its message");
  }
}

void add_bundles(ork_dispatcher* table) {
  static const char* const kinds[] = {"_bundle_start_message_unmarshal",
                                      "_bundle_abort_message_unmarshal",
                                      "_bundle_commit_message_unmarshal"};
  uint32_t err = 0;
  for (unsigned b = 0; b < wayfind_bundle_count; ++b) {
    const wayfind_bundle& bundle = wayfind_bundles[b];
    for (size_t kind = 0; kind < 3; ++kind) {
      const ork_dispatch_entry entry{
          {bundle.luids[kind], bundle.name,
           get<ork_message_unmarshal_fn>(bundle.functions, kinds[kind]), nullptr, take_bundle},
          nullptr};
      ork_dispatcher_add(table, &entry, &err);
    }
  }
  require(err == 0, "every control message has a row");
}

}  // namespace

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

World::World(uint8_t bits, uint8_t nth) {
  static constexpr ork_tracking modes[] = {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON,
                                           ORK_TRACKING_ON};
  ork_options options;
  ork_options_init(&options);
  options.tracking = modes[bits & 3];
  options.memory_budget = 1 << 20;
  options.workspace_size = 1 << 16;
  uint32_t problem = 0;
  handle_ = ork_handle_create(&options, &problem);
  require(handle_ != nullptr, "a handle is made");
  if ((bits & 4) != 0) ork_handle_fail_allocation(handle_, nth + uint64_t{1});
  if ((bits & 8) != 0) ork_handle_set_peer(handle_, "first", first_release(), &problem);
  require(problem == 0, "a peer is told");
}

World::~World() {
  ork_memory_report left;
  ork_handle_destroy(handle_, &left);
  require(left.live_blocks == 0, "every block is given back");
  require(left.live_distances == 0, "every distance is taken back");
}

Exact::Exact(const uint8_t* bytes, size_t size)
    : copy_(new uint8_t[size + 1]), size_(static_cast<int32_t>(size)) {
  if (size != 0) std::memcpy(copy_.get(), bytes, size);
  copy_[size] = 0;
}

void render(World& world, const wayfind_record& type, void* object) {
  using Print = uint32_t (*)(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                             uint32_t, uint32_t*);
  using ToXml =
      uint32_t (*)(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t, uint32_t*);
  ork_handle* handle = world.handle();
  std::vector<char> room(text_room + 1, static_cast<char>(canary));
  uint32_t err = 0;
  room[0] = '\0';
  uint32_t n = get<Print>(type.functions, "_print")(handle, instance, room.data(), 0, "record",
                                                    object, text_room, &err);
  require(n <= text_room, "a text stays in its buffer");
  require(err != 0 || room[n] == '\0', "a text is ended");
  err = 0;
  n = get<ToXml>(type.functions, "_to_xml")(handle, instance, "record", room.data(), object,
                                            text_room, 0, &err);
  require(n <= text_room, "a document stays in its buffer");
  require(static_cast<uint8_t>(room[text_room]) == canary, "nothing behind a buffer is written");

  require(
      get<int32_t (*)(const void*, const void*)>(type.functions, "_compare")(object, object) == 0,
      "a record equals itself");
  const auto hash = get<uint32_t (*)(const void*, uint32_t)>(type.functions, "_hash");
  require(hash(object, 1) == hash(object, 1), "a hash depends on the record alone");
}

void raise(const wayfind_record& type, void* object) {
  auto* bytes = static_cast<uint8_t*>(object);
  auto* header = static_cast<ork_object*>(object);
  header->variant = static_cast<int8_t>(header->variant_cap);
  uint32_t count = 0;
  for (unsigned f = 0; f < type.field_count; ++f) {
    const wayfind_field& field = type.fields[f];
    uint8_t* at = bytes + field.offset;
    if (field.cls == WAYFIND_COUNTER) {
      count = *at;
      if (field.kind == WAYFIND_U_INT32) std::memcpy(&count, at, sizeof count);
    }
    if (field.cls == WAYFIND_OBJECT && field.kind == WAYFIND_RECORD) raise(*field.record, at);
    if (field.cls != WAYFIND_RECORD_ARRAY) continue;
    uint8_t* block = nullptr;
    std::memcpy(&block, at, sizeof block);
    for (uint32_t i = 0; block != nullptr && i < count; ++i)
      raise(*field.record, block + size_t{i} * field.width);
  }
}

const ork_dispatcher* dispatcher() {
  static const ork_dispatcher* const table = [] {
    uint32_t err = 0;
    ork_dispatcher* made = ork_dispatcher_create(&err);
    require(made != nullptr, "a dispatcher is made");
    add_messages(made, std::make_index_sequence<28>{});
    add_bundles(made);
    return made;
  }();
  return table;
}

}  // namespace fuzz
