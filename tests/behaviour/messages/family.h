// Calls into the exported families of messages and bundles by name, the same way for every member.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "behaviour/encoders/values.h"
#include "ork/platform.h"
#include "support/kit.h"
#include "tools/schema/wayfind_schema.h"

namespace messages {

// Size of the frame in front of a message's records, and of its two pieces, bytes.
inline constexpr int32_t header_size = 27;
inline constexpr int32_t luid_size = 16;
inline constexpr int32_t frame_size = header_size + luid_size;

// Where a message object holds what, bytes from its start.
inline constexpr size_t header_offset = 12;
inline constexpr size_t records_offset = 32;

using namespace kit;

// One message of the library with its functions.
class Message {
 public:
  explicit Message(const wayfind_message& schema) : schema_(&schema) {}

  const wayfind_message& schema() const { return *schema_; }
  const char* name() const { return schema_->name; }
  size_t record_count() const { return schema_->record_count; }
  const wayfind_record& record(size_t i) const { return *schema_->records[i]; }

  void* create(ork_handle* handle, uint32_t instance) const {
    return call<void*(ork_handle*, uint32_t)>("_create")(handle, instance);
  }
  void* create_shallow(ork_handle* handle, uint32_t instance) const {
    return call<void*(ork_handle*, uint32_t)>("_create_shallow")(handle, instance);
  }
  void* create_cr(ork_handle* handle) const {
    return call<void*(ork_handle*)>("_create_cr")(handle);
  }
  void destroy(ork_handle* handle, uint32_t instance, void* msg) const {
    destroy_function()(handle, instance, msg);
  }
  ork_message_destroy_fn destroy_function() const {
    return call<void(ork_handle*, uint32_t, void*)>("_destroy");
  }
  void destroy_cr(ork_handle* handle, void* msg) const {
    call<void(ork_handle*, void*)>("_destroy_cr")(handle, msg);
  }
  uint32_t len(ork_handle* handle, uint32_t instance, const void* msg) const {
    return call<uint32_t(ork_handle*, uint32_t, const void*)>("_len")(handle, instance, msg);
  }
  uint32_t len_cr(ork_handle* handle, const void* msg) const {
    return call<uint32_t(ork_handle*, const void*)>("_len_cr")(handle, msg);
  }
  uint32_t is_valid_cr(ork_handle* handle) const {
    return call<uint32_t(ork_handle*)>("_is_valid_cr")(handle);
  }

  void* get(ork_handle* handle, uint32_t instance, void* msg, uint32_t* err,
            size_t record = 0) const {
    return call<void*(ork_handle*, uint32_t, void*, uint32_t*)>(of_record(record, "_get"))(
        handle, instance, msg, err);
  }
  void* get_detach(ork_handle* handle, uint32_t instance, void* msg, uint32_t* err,
                   size_t record = 0) const {
    return call<void*(ork_handle*, uint32_t, void*, uint32_t*)>(of_record(record, "_get_detach"))(
        handle, instance, msg, err);
  }
  void set(ork_handle* handle, uint32_t instance, void* msg, void* value, uint32_t* err,
           size_t record = 0) const {
    call<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(of_record(record, "_set"))(
        handle, instance, msg, value, err);
  }
  void free_and_set(ork_handle* handle, uint32_t instance, void* msg, void* value, uint32_t* err,
                    size_t record = 0) const {
    call<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(of_record(record, "_free_and_set"))(
        handle, instance, msg, value, err);
  }

  uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, void* msg,
                   int32_t length, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, uint8_t*, void*, int32_t, uint32_t*)>("_marshal")(
        handle, instance, buffer, msg, length, err);
  }
  uint32_t marshal_cr(ork_handle* handle, void* msg, uint8_t* buffer, int32_t length) const {
    return call<uint32_t(ork_handle*, void*, uint8_t*, int32_t)>("_marshal_cr")(handle, msg, buffer,
                                                                                length);
  }
  ork_message_unmarshal_fn unmarshal_function() const {
    return call<std::remove_pointer_t<ork_message_unmarshal_fn>>("_unmarshal");
  }
  uint32_t unmarshal(ork_handle* handle, uint32_t instance, void* ctx, void** out,
                     const uint8_t* buffer, int32_t length, ork_message_handler handler,
                     uint32_t* err) const {
    return unmarshal_function()(handle, instance, ctx, out, buffer, length, handler, err);
  }
  uint32_t unmarshal_only(ork_handle* handle, uint32_t instance, void** out, const uint8_t* buffer,
                          int32_t length, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, void**, const uint8_t*, int32_t, uint32_t*)>(
        "_unmarshal_only")(handle, instance, out, buffer, length, err);
  }
  uint32_t print(ork_handle* handle, uint32_t instance, char* buffer, const void* msg,
                 uint32_t length, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*)>("_print")(
        handle, instance, buffer, msg, length, err);
  }
  uint32_t print_cr(ork_handle* handle, const void* msg, char* buffer, uint32_t length) const {
    return call<uint32_t(ork_handle*, const void*, char*, uint32_t)>("_print_cr")(handle, msg,
                                                                                  buffer, length);
  }
  uint32_t to_xml(ork_handle* handle, uint32_t instance, char* buffer, const void* msg,
                  uint32_t length, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, char*, const void*, uint32_t, uint32_t*)>(
        "_to_xml")(handle, instance, buffer, msg, length, err);
  }
  uint32_t toxml_cr(ork_handle* handle, const void* msg, char* buffer, uint32_t length) const {
    return call<uint32_t(ork_handle*, const void*, char*, uint32_t)>("_toxml_cr")(handle, msg,
                                                                                  buffer, length);
  }
  void* from_xml(ork_handle* handle, uint32_t instance, ork_xml* xml, uint32_t* err,
                 char* err_text = nullptr, uint32_t err_text_len = 0) const {
    return call<void*(ork_handle*, uint32_t, ork_xml*, uint32_t*, char*, uint32_t)>("_from_xml")(
        handle, instance, xml, err, err_text, err_text_len);
  }

  // The record pointers of a message as its storage holds them.
  std::vector<void*> slots(const void* msg) const {
    std::vector<void*> found(record_count());
    std::memcpy(found.data(), static_cast<const uint8_t*>(msg) + records_offset, 8 * found.size());
    return found;
  }
  ork_message_header header(const void* msg) const {
    ork_message_header header;
    std::memcpy(&header, static_cast<const uint8_t*>(msg) + header_offset, sizeof header);
    return header;
  }

 private:
  template <typename Prototype>
  Prototype* call(std::string_view suffix) const {
    return function<Prototype>(schema_->functions, std::string(suffix));
  }
  std::string of_record(size_t i, const char* suffix) const {
    return std::string("_") + record(i).name + suffix;
  }

  const wayfind_message* schema_;
};

// The functions of a record that messages lean on.
class Record {
 public:
  explicit Record(const wayfind_record& schema) : schema_(&schema) {}

  const char* name() const { return schema_->name; }
  void* create(ork_handle* handle, uint32_t instance) const {
    return function<void*(ork_handle*, uint32_t)>(schema_->functions, "_create")(handle, instance);
  }
  void* create_cr(ork_handle* handle) const {
    return function<void*(ork_handle*)>(schema_->functions, "_create_cr")(handle);
  }
  void* create_internal(ork_handle* handle, uint32_t instance) const {
    return function<void*(ork_handle*, uint32_t)>(schema_->functions, "_create_internal")(handle,
                                                                                          instance);
  }
  void destroy(ork_handle* handle, uint32_t instance, void* obj) const {
    function<void(ork_handle*, uint32_t, void*)>(schema_->functions, "_destroy")(handle, instance,
                                                                                 obj);
  }
  uint32_t len(ork_handle* handle, uint32_t instance, const void* obj) const {
    return function<uint32_t(ork_handle*, uint32_t, const void*)>(schema_->functions, "_len")(
        handle, instance, obj);
  }
  uint32_t marshal(ork_handle* handle, uint32_t instance, uint8_t* buffer, const void* obj,
                   int32_t length, uint32_t* err) const {
    return function<uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
        schema_->functions, "_marshal")(handle, instance, buffer, obj, length, err);
  }
  uint32_t unmarshal(ork_handle* handle, uint32_t instance, const uint8_t* buffer, void* obj,
                     int32_t length, uint32_t* err) const {
    return function<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                             uint32_t*)>(schema_->functions, "_unmarshal")(handle, instance, buffer,
                                                                           obj, length, 0, err);
  }
  uint32_t print(ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
                 const void* obj, uint32_t length, uint32_t* err) const {
    return function<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                             uint32_t, uint32_t*)>(schema_->functions, "_print")(
        handle, instance, buffer, indent, name(), obj, length, err);
  }
  uint32_t to_xml(ork_handle* handle, uint32_t instance, char* buffer, void* obj, uint32_t length,
                  uint32_t* err) const {
    return function<uint32_t(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t,
                             uint32_t*)>(schema_->functions, "_to_xml")(
        handle, instance, name(), buffer, obj, length, 0, err);
  }
  // From anywhere in the document.
  void from_xml(ork_handle* handle, uint32_t instance, void* obj, ork_xml* xml, uint32_t* err,
                char* err_text, uint32_t err_text_len) const {
    const std::string path = std::string("//") + name();
    function<void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*, uint32_t)>(
        schema_->functions, "_from_xml")(handle, instance, path.c_str(), xml, obj, err, err_text,
                                         err_text_len);
  }
  int32_t compare(const void* a, const void* b) const {
    return function<int32_t(const void*, const void*)>(schema_->functions, "_compare")(a, b);
  }

 private:
  const wayfind_record* schema_;
};

inline uint64_t live_blocks(const Handle& handle) { return handle.memory().live_blocks; }

inline std::vector<Message> all() {
  std::vector<Message> all;
  for (const wayfind_message& message : std::span(wayfind_messages, wayfind_message_count)) {
    all.emplace_back(message);
  }
  return all;
}

inline Message message(std::string_view name) {
  for (const Message& each : all()) {
    if (name == each.name()) {
      return each;
    }
  }
  throw std::runtime_error("no message " + std::string(name));
}

// A name for a parametrised test.
struct ByName {
  template <typename Info>
  std::string operator()(const Info& info) const {
    return info.param.name();
  }
};

inline void PrintTo(const Message& each, std::ostream* out) { *out << each.name(); }

// A peer that knows every type of this process except those with the given names.
inline void set_peer_without(const Handle& handle, const std::vector<std::string>& missing) {
  uint32_t err = 0;
  ork_type_list* all = ork_type_list_from_modules(&err);
  struct Filter {
    const std::vector<std::string>* missing;
    std::string text;
  } filter{&missing, {}};
  ork_type_list_each(
      all,
      [](void* ctx, const char* name, const uint8_t* luid, uint32_t variants) {
        auto& into = *static_cast<Filter*>(ctx);
        if (std::find(into.missing->begin(), into.missing->end(), name) != into.missing->end()) {
          return;
        }
        into.text += name;
        into.text += ' ';
        for (int i = 0; i < luid_size; ++i) {
          char digits[3];
          std::snprintf(digits, sizeof digits, "%02x", luid[i]);
          into.text += digits;
        }
        into.text += ' ' + std::to_string(variants) + '\n';
      },
      &filter);
  ork_type_list* rest =
      ork_type_list_parse(filter.text.data(), filter.text.size(), &err, nullptr, 0);
  ork_handle_set_peer(handle.get(), "peer", rest, &err);
  EXPECT_EQ(err, 0u);
  ork_type_list_free(rest);
  ork_type_list_free(all);
}

// A message with filled records, different for each seed, which destroys itself.
class Made {
 public:
  Made(const Message& message, ork_handle* handle, uint32_t seed = 1, uint32_t instance = 0)
      : message_(message),
        handle_(handle),
        instance_(instance),
        object_(message.create(handle, instance)) {
    for (size_t i = 0; object_ != nullptr && i < message.record_count(); ++i) {
      const std::string root = std::string(message.record(i).name) + "#" + std::to_string(seed);
      encoders::Filler(handle, 2).fill(message.record(i), message.slots(object_)[i], root);
    }
  }
  ~Made() { message_.destroy(handle_, instance_, object_); }
  Made(const Made&) = delete;
  Made& operator=(const Made&) = delete;

  void* get() const { return object_; }
  void* record(size_t i) const { return message_.slots(object_)[i]; }
  void* release() { return std::exchange(object_, nullptr); }

  // The whole frame.
  std::vector<uint8_t> frame() const {
    std::vector<uint8_t> bytes(message_.len(handle_, instance_, object_) + 16);
    uint32_t err = 0;
    bytes.resize(message_.marshal(handle_, instance_, bytes.data(), object_,
                                  static_cast<int32_t>(bytes.size()), &err));
    EXPECT_EQ(err, 0u);
    return bytes;
  }

 private:
  Message message_;
  ork_handle* handle_;
  uint32_t instance_;
  void* object_;
};

}  // namespace messages
