// Calls into the exported families of bundles and their control messages by name, the same way for
// every member.
#pragma once

#include "behaviour/messages/family.h"

namespace messages {

enum Kind { start, abort, commit };
inline constexpr const char* kind_names[] = {"start", "abort", "commit"};

// One control message of a bundle.
class Control {
 public:
  Control(const wayfind_bundle& bundle, Kind kind) : bundle_(&bundle), kind_(kind) {}

  std::string name() const { return std::string(bundle_->name) + "_bundle_" + kind_names[kind_]; }
  const uint8_t* luid() const { return bundle_->luids[kind_]; }

  void* create(ork_handle* handle, uint32_t instance) const {
    return call<void*(ork_handle*, uint32_t)>("_create")(handle, instance);
  }
  void* create_cr(ork_handle* handle) const {
    return call<void*(ork_handle*)>("_create_cr")(handle);
  }
  void destroy(ork_handle* handle, uint32_t instance, void* msg) const {
    call<void(ork_handle*, uint32_t, void*)>("_destroy")(handle, instance, msg);
  }
  void destroy_cr(ork_handle* handle, void* msg) const {
    call<void(ork_handle*, void*)>("_destroy_cr")(handle, msg);
  }
  uint32_t len() const { return call<uint32_t()>("_len")(); }
  uint32_t len_cr(ork_handle* handle) const {
    return call<uint32_t(ork_handle*)>("_len_cr")(handle);
  }
  uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, int32_t length,
                   uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
        "_marshal")(handle, instance, buffer, nullptr, length, err);
  }
  uint32_t marshal_cr(ork_handle* handle, uint8_t* buffer, int32_t length) const {
    return call<uint32_t(ork_handle*, const void*, uint8_t*, int32_t)>("_marshal_cr")(
        handle, nullptr, buffer, length);
  }
  ork_message_unmarshal_fn unmarshal_function() const {
    return call<std::remove_pointer_t<ork_message_unmarshal_fn>>("_unmarshal");
  }
  uint32_t unmarshal(ork_handle* handle, uint32_t instance, void* ctx, void** out,
                     const uint8_t* buffer, int32_t length, ork_message_handler handler,
                     uint32_t* err) const {
    return unmarshal_function()(handle, instance, ctx, out, buffer, length, handler, err);
  }
  uint32_t unmarshal_only() const { return call<uint32_t()>("_unmarshal_only")(); }
  uint32_t print(ork_handle* handle, uint32_t instance, char* buffer, uint32_t length,
                 uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*)>("_print")(
        handle, instance, buffer, nullptr, length, err);
  }
  uint32_t print_cr(ork_handle* handle, char* buffer, uint32_t length) const {
    return call<uint32_t(ork_handle*, const void*, char*, uint32_t)>("_print_cr")(handle, nullptr,
                                                                                  buffer, length);
  }
  uint32_t to_xml(ork_handle* handle, uint32_t instance, char* buffer, uint32_t length,
                  uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*)>(
        "_to_xml")(handle, instance, buffer, nullptr, length, err);
  }
  uint32_t toxml_cr(ork_handle* handle, char* buffer, uint32_t length) const {
    return call<uint32_t(ork_handle*, const void*, char*, uint32_t)>("_toxml_cr")(handle, nullptr,
                                                                                  buffer, length);
  }
  void* from_xml(ork_handle* handle, uint32_t instance, ork_xml* xml, uint32_t* err) const {
    return call<void*(ork_handle*, uint32_t, ork_xml*, uint32_t*, char*, uint32_t)>("_from_xml")(
        handle, instance, xml, err, nullptr, 0);
  }
  uint32_t valid_cr() const { return call<uint32_t()>("_valid_cr")(); }
  void handle_message(ork_handle* handle, uint32_t instance, void* ctx, void* msg,
                      uint32_t* err) const {
    const std::string whole_name = "fwe_ui_wayfind_" + name() + "_message_handler";
    function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(bundle_->functions, whole_name)(
        handle, instance, ctx, msg, err);
  }

 private:
  template <typename Prototype>
  Prototype* call(const char* operation) const {
    return function<Prototype>(
        bundle_->functions, std::string("_bundle_") + kind_names[kind_] + "_message" + operation);
  }

  const wayfind_bundle* bundle_;
  Kind kind_;
};

// One bundle of the library.
class Bundle {
 public:
  explicit Bundle(const wayfind_bundle& schema) : schema_(&schema), table_(table_of(schema)) {}

  const wayfind_bundle& schema() const { return *schema_; }
  const char* name() const { return schema_->name; }
  const ork_bundle_message_row* table() const { return table_; }
  Control control(Kind kind) const { return {*schema_, kind}; }
  Control start() const { return control(Kind::start); }
  Control abort() const { return control(Kind::abort); }
  Control commit() const { return control(Kind::commit); }
  ork_bundle_handler do_register(ork_bundle_handler handler) const {
    return function<ork_bundle_handler(ork_bundle_handler)>(
        schema_->functions,
        "fwe_ui_wayfind_" + std::string(name()) + "_bundle_handler_register")(handler);
  }
  ork_bundle_handler unregister() const {
    return function<ork_bundle_handler()>(
        schema_->functions,
        "fwe_ui_wayfind_" + std::string(name()) + "_bundle_handler_unregister")();
  }

 private:
  // Only an open bundle shows its table.
  static const ork_bundle_message_row* table_of(const wayfind_bundle& schema) {
    const Handle handle;
    uint8_t buffer[frame_size];
    uint32_t err = 0;
    Control(schema, Kind::start).marshal(handle.get(), 0, buffer, frame_size, &err);
    return handle->bundle_table;
  }

  const wayfind_bundle* schema_;
  const ork_bundle_message_row* table_;
};

inline std::vector<Bundle> bundles() {
  std::vector<Bundle> all;
  for (const wayfind_bundle& bundle : std::span(wayfind_bundles, wayfind_bundle_count)) {
    all.emplace_back(bundle);
  }
  return all;
}

inline std::vector<Control> controls() {
  std::vector<Control> all;
  for (const Bundle& bundle : bundles()) {
    for (const Kind kind : {start, abort, commit}) {
      all.push_back(bundle.control(kind));
    }
  }
  return all;
}

inline Bundle bundle(std::string_view name) {
  for (const Bundle& each : bundles()) {
    if (name == each.name()) {
      return each;
    }
  }
  throw std::runtime_error("no bundle " + std::string(name));
}

inline void PrintTo(const Bundle& each, std::ostream* out) { *out << each.name(); }
inline void PrintTo(const Control& each, std::ostream* out) { *out << each.name(); }

}  // namespace messages
