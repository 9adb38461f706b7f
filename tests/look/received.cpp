#include "tests/look/received.h"

#include <cstdio>
#include <cstdlib>

#include "tests/support/sample.h"
#include "tools/look/function.h"

namespace look {
namespace {

[[noreturn]] void give_up(const std::string& reason) {
  std::fprintf(stderr, "%s\n", reason.c_str());
  std::abort();
}

template <class Row>
const Row& named(const Row* rows, unsigned count, const std::string& name) {
  for (unsigned i = 0; i < count; ++i) {
    if (rows[i].name == name || rows[i].name == "fwe_cl_wayfind_" + name) return rows[i];
  }
  give_up("there is no " + name);
}

ork_handle* make_handle(ork_tracking tracking, const std::string& release) {
  ork_options options;
  ork_options_init(&options);
  options.tracking = tracking;
  uint32_t err = 0;
  char reason[256] = "";
  ork_type_list* list = nullptr;
  if (!release.empty()) {
    const std::string path = WAYFIND_RELEASES "/" + release;
    list = ork_type_list_read(path.c_str(), &err, reason, sizeof reason);
  }
  options.release = list;
  ork_handle* handle = ork_handle_create(&options, &err);
  ork_type_list_free(list);
  if (err != 0) give_up("no handle");
  return handle;
}

void keep(ork_handle*, uint32_t, void* ctx, void* msg, uint32_t*) {
  *static_cast<void**>(ctx) = msg;
}

}  // namespace

const wayfind_message& message_named(const std::string& name) {
  return named(wayfind_messages, wayfind_message_count, name);
}
const wayfind_bundle& bundle_named(const std::string& name) {
  return named(wayfind_bundles, wayfind_bundle_count, name);
}
const wayfind_field& field_named(const std::string& record, const std::string& name) {
  const wayfind_record& found = named(wayfind_records, wayfind_record_count, record);
  return named(found.fields, found.field_count, name);
}

Received::Received(ork_tracking tracking, const std::string& release)
    : handle_(make_handle(tracking, release)) {}

Received::~Received() {
  using Destroy = void(ork_handle*, uint32_t, void*);
  for (const Message& message : messages_)
    function<Destroy>(message.type->functions, "_destroy")(handle_, ORK_NO_INSTANCE, message.msg);
  ork_handle_destroy(handle_, nullptr);
}

const Message& Received::add(const std::string& name, const std::string& xml) {
  using FromXml = void*(ork_handle*, uint32_t, ork_xml*, uint32_t*, char*, uint32_t);
  const wayfind_message& type = message_named(name);
  const std::string record = type.records[0]->name;
  const std::string document = xml.starts_with("<fwe_")
                                   ? "<all>" + xml + "</all>"
                                   : "<all><" + record + ">" + xml + "</" + record + "></all>";
  uint32_t err = 0;
  char reason[256] = "";
  ork_xml* parsed = ork_xml_parse(document.data(), document.size(), &err, reason, sizeof reason);
  if (err != 0) give_up(reason);
  void* made = function<FromXml>(type.functions, "_from_xml")(handle_, ORK_NO_INSTANCE, parsed,
                                                              &err, reason, sizeof reason);
  ork_xml_free(parsed);
  if (err != 0) give_up(name + ": " + reason);
  return send(type, made);
}

const Message& Received::add_filled(const wayfind_message& type, uint32_t elements) {
  using Create = void*(ork_handle*, uint32_t);
  void* made = function<Create>(type.functions, "_create")(handle_, ORK_NO_INSTANCE);
  const Message message(handle_, type, made);
  for (unsigned slot = 0; slot < type.record_count; ++slot)
    sample::fill(handle_, *type.records[slot], const_cast<uint8_t*>(message.at[slot]), elements);
  return send(type, made);
}

const Message& Received::send(const wayfind_message& type, void* made) {
  using Marshal = uint32_t(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*);
  using Destroy = void(ork_handle*, uint32_t, void*);
  std::vector<uint8_t> frame(size_t{1} << 20);
  uint32_t err = 0;
  const uint32_t length = function<Marshal>(type.functions, "_marshal")(
      handle_, ORK_NO_INSTANCE, frame.data(), made, static_cast<int32_t>(frame.size()), &err);
  function<Destroy>(type.functions, "_destroy")(handle_, ORK_NO_INSTANCE, made);
  void* received = nullptr;
  const auto unmarshal =
      reinterpret_cast<ork_message_unmarshal_fn>(function<void()>(type.functions, "_unmarshal"));
  unmarshal(handle_, ORK_NO_INSTANCE, &received, nullptr, frame.data(),
            static_cast<int32_t>(length), keep, &err);
  if (received == nullptr || err != 0) give_up(std::string("cannot send ") + type.name);
  return messages_.emplace_back(handle_, type, received);
}

}  // namespace look
