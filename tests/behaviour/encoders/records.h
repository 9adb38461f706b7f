// Calls into the exported family of any record, and handles to make them with.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ork/platform.h"
#include "tools/schema/wayfind_schema.h"

namespace encoders {

inline constexpr uint32_t instance = 7;

template <class Prototype>
Prototype* find(const wayfind_function* table, std::string_view suffix) {
  for (const wayfind_function* function = table; function->suffix != nullptr; ++function) {
    if (suffix == function->suffix) {
      return reinterpret_cast<Prototype*>(function->address);
    }
  }
  throw std::runtime_error("no function " + std::string(suffix));
}

// ---- Releases and handles ---------------------------------------------------

struct ListDeleter {
  void operator()(ork_type_list* list) const { ork_type_list_free(list); }
};
using TypeList = std::unique_ptr<ork_type_list, ListDeleter>;

// What a release knows in which no type is newer than the variant of that number. One type may be
// told apart: at except_variant, or missing when that is negative.
inline TypeList release_list(unsigned variant, std::string_view except = {},
                             int except_variant = 0) {
  struct Context {
    std::string text;
    unsigned variant;
    std::string_view except;
    int except_variant;
  } context{{}, variant, except, except_variant};
  uint32_t err = 0;
  const TypeList all(ork_type_list_from_modules(&err));
  ork_type_list_each(
      all.get(),
      [](void* ctx, const char* name, const uint8_t* luid, uint32_t variants) {
        auto& out = *static_cast<Context*>(ctx);
        const bool apart = name == out.except;
        if (apart && out.except_variant < 0) {
          return;
        }
        const uint32_t bound =
            (apart ? static_cast<uint32_t>(out.except_variant) : out.variant) + 1;
        char digits[33];
        for (int i = 0; i < ORK_LUID_SIZE; ++i) {
          std::snprintf(digits + 2 * i, 3, "%02x", luid[i]);
        }
        out.text += std::string(name) + " " + digits + " " +
                    std::to_string(apart ? bound : std::min(bound, variants)) + "\n";
      },
      &context);
  char reason[200] = "";
  TypeList list(
      ork_type_list_parse(context.text.data(), context.text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, 0u) << reason;
  return list;
}

// A handle with storage of its own. What it still holds at the end is a leak and fails the test.
class Handle {
 public:
  struct Options {
    ork_tracking tracking = ORK_TRACKING_OFF;
    const ork_type_list* release = nullptr;
    uint32_t strict_epoch = 0;
    size_t memory_budget = 0;
    size_t workspace_size = 1 << 20;
    ork_observers observers{};
  };

  explicit Handle(ork_tracking tracking) : Handle(Options{.tracking = tracking}) {}
  explicit Handle(const Options& wanted) {
    ork_options options;
    ork_options_init(&options);
    options.tracking = wanted.tracking;
    options.release = wanted.release;
    options.strict_epoch = wanted.strict_epoch;
    options.memory_budget = wanted.memory_budget;
    options.workspace_size = wanted.workspace_size;
    options.observers = wanted.observers;
    uint32_t err = 0;
    handle_ = ork_handle_create(&options, &err);
    EXPECT_EQ(err, 0u);
  }
  ~Handle() {
    ork_memory_report report{};
    ork_handle_destroy(handle_, &report);
    if (!leaks_allowed) {
      EXPECT_EQ(report.live_blocks, 0u) << "leak of " << report.live_bytes << " bytes";
      EXPECT_EQ(report.live_distances, 0u) << "distances left in the map";
    }
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  operator ork_handle*() const { return handle_; }
  ork_handle* operator->() const { return handle_; }

  void set_peer(const ork_type_list* list) const {
    uint32_t err = 0;
    ork_handle_set_peer(handle_, "peer", list, &err);
    EXPECT_EQ(err, 0u);
  }
  ork_memory_report memory() const {
    ork_memory_report report{};
    ork_handle_memory(handle_, &report);
    return report;
  }

  bool leaks_allowed = false;

 private:
  ork_handle* handle_ = nullptr;
};

// ---- Records ----------------------------------------------------------------

// The functions of one record that tests of all records call.
struct Calls {
  using marshal_fn = uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  using clone_fn = void(ork_handle*, uint32_t, const void*, void**, uint8_t*, int32_t, uint32_t*);

  explicit Calls(const wayfind_record& record)
      : schema(&record),
        create(find<void*(ork_handle*, uint32_t)>(record.functions, "_create")),
        destroy(find<void(ork_handle*, uint32_t, void*)>(record.functions, "_destroy")),
        marshal(find<marshal_fn>(record.functions, "_marshal")),
        marshal_for_clone(find<marshal_fn>(record.functions, "_marshal_for_clone")),
        unmarshal(find<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                                uint32_t*)>(record.functions, "_unmarshal")),
        len(find<uint32_t(ork_handle*, uint32_t, const void*)>(record.functions, "_len")),
        len_cr(find<uint32_t(ork_handle*, const void*)>(record.functions, "_len_cr")),
        compare(find<int32_t(const void*, const void*)>(record.functions, "_compare")),
        hash(find<uint32_t(const void*, uint32_t)>(record.functions, "_hash")),
        print(find<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                            uint32_t, uint32_t*)>(record.functions, "_print")),
        print_cr(find<uint32_t(ork_handle*, const void*, char*, uint32_t)>(record.functions,
                                                                           "_print_cr")),
        to_xml(find<uint32_t(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t,
                             uint32_t*)>(record.functions, "_to_xml")),
        toxml_cr(
            find<uint32_t(ork_handle*, void*, char*, uint32_t)>(record.functions, "_toxml_cr")),
        from_xml(find<void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*,
                           uint32_t)>(record.functions, "_from_xml")),
        clone(find<clone_fn>(record.functions, "_clone")),
        clone_internal(find<clone_fn>(record.functions, "_clone_internal")),
        clone_cr(find<void*(ork_handle*, const void*)>(record.functions, "_clone_cr")) {}

  const wayfind_record* schema;
  void* (*create)(ork_handle*, uint32_t);
  void (*destroy)(ork_handle*, uint32_t, void*);
  marshal_fn* marshal;
  marshal_fn* marshal_for_clone;
  uint32_t (*unmarshal)(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t, uint32_t*);
  uint32_t (*len)(ork_handle*, uint32_t, const void*);
  uint32_t (*len_cr)(ork_handle*, const void*);
  int32_t (*compare)(const void*, const void*);
  uint32_t (*hash)(const void*, uint32_t);
  uint32_t (*print)(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*, uint32_t,
                    uint32_t*);
  uint32_t (*print_cr)(ork_handle*, const void*, char*, uint32_t);
  uint32_t (*to_xml)(ork_handle*, uint32_t, const char*, char*, void*, uint32_t, uint8_t,
                     uint32_t*);
  uint32_t (*toxml_cr)(ork_handle*, void*, char*, uint32_t);
  void (*from_xml)(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*, uint32_t);
  clone_fn* clone;
  clone_fn* clone_internal;
  void* (*clone_cr)(ork_handle*, const void*);

  const char* name() const { return schema->name; }
};

inline const std::vector<Calls>& all_records() {
  static const std::vector<Calls> records(wayfind_records, wayfind_records + wayfind_record_count);
  return records;
}

inline const Calls& calls_of(std::string_view name) {
  for (const Calls& calls : all_records()) {
    if (name == calls.name()) {
      return calls;
    }
  }
  throw std::runtime_error("no record " + std::string(name));
}

// An object, destroyed at the end.
class Object {
 public:
  Object(ork_handle* handle, const Calls& calls)
      : Object(handle, calls, calls.create(handle, instance)) {}
  Object(ork_handle* handle, const Calls& calls, void* adopted)
      : handle_(handle), calls_(&calls), object_(adopted) {}
  Object(Object&& other) noexcept
      : handle_(other.handle_),
        calls_(other.calls_),
        object_(std::exchange(other.object_, nullptr)) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (object_ != nullptr) {
      calls_->destroy(handle_, instance, object_);
    }
  }
  void* get() const { return object_; }
  ork_object& header() const { return *static_cast<ork_object*>(object_); }
  void* release() { return std::exchange(object_, nullptr); }

 private:
  ork_handle* handle_;
  const Calls* calls_;
  void* object_;
};

using Bytes = std::vector<uint8_t>;

// Bytes as two hexadecimal digits each, with blanks anywhere between them.
inline Bytes hex(std::string_view text) {
  Bytes bytes;
  int high = -1;
  for (const char digit : text) {
    if (digit == ' ') {
      continue;
    }
    const int value = digit <= '9' ? digit - '0' : digit - 'a' + 10;
    if (high < 0) {
      high = value;
    } else {
      bytes.push_back(static_cast<uint8_t>(high << 4 | value));
      high = -1;
    }
  }
  return bytes;
}

// Room for any golden image, and then some.
inline constexpr int32_t ample = 1 << 16;

inline Bytes marshalled(ork_handle* handle, const Calls& calls, const void* object) {
  Bytes buffer(ample + 1);
  uint32_t err = 0;
  const uint32_t length = calls.marshal(handle, instance, buffer.data(), object, ample, &err);
  EXPECT_EQ(err, 0u) << calls.name();
  buffer.resize(length);
  return buffer;
}

inline std::string printed(ork_handle* handle, const Calls& calls, const void* object) {
  std::string buffer(ample, '\0');
  uint32_t err = 0;
  const uint32_t length = calls.print(handle, instance, buffer.data(), 0, calls.name(), object,
                                      static_cast<uint32_t>(ample), &err);
  EXPECT_EQ(err, 0u) << calls.name();
  buffer.resize(length);
  return buffer;
}

inline std::string as_xml(ork_handle* handle, const Calls& calls, void* object) {
  std::string buffer(ample, '\0');
  uint32_t err = 0;
  const uint32_t length = calls.to_xml(handle, instance, calls.name(), buffer.data(), object,
                                       static_cast<uint32_t>(ample), 0, &err);
  EXPECT_EQ(err, 0u) << calls.name();
  buffer.resize(length);
  return buffer;
}

struct XmlDeleter {
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};
using Document = std::unique_ptr<ork_xml, XmlDeleter>;

inline Document parsed(const std::string& text) {
  uint32_t err = 0;
  char reason[200] = "";
  Document document(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, 0u) << reason << "\n" << text;
  return document;
}

// A test's name for a record: the type without the prefix that all share.
inline std::string short_name(const testing::TestParamInfo<unsigned>& info) {
  return wayfind_records[info.param].name;
}

}  // namespace encoders
