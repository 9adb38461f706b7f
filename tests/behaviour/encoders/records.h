// Calls into the exported family of any record, and the releases to make them at.
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
#include "support/kit.h"

namespace encoders {

using namespace kit;

// ---- Releases ---------------------------------------------------------------

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

// ---- Records ----------------------------------------------------------------

// The functions of one record that tests of all records call.
struct Calls {
  using marshal_fn = uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*);
  using clone_fn = void(ork_handle*, uint32_t, const void*, void**, uint8_t*, int32_t, uint32_t*);

  explicit Calls(const wayfind_record& record)
      : schema(&record),
        create(function<void*(ork_handle*, uint32_t)>(record.functions, "_create")),
        destroy(function<void(ork_handle*, uint32_t, void*)>(record.functions, "_destroy")),
        marshal(function<marshal_fn>(record.functions, "_marshal")),
        marshal_for_clone(function<marshal_fn>(record.functions, "_marshal_for_clone")),
        unmarshal(function<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                                    uint32_t*)>(record.functions, "_unmarshal")),
        len(function<uint32_t(ork_handle*, uint32_t, const void*)>(record.functions, "_len")),
        len_cr(function<uint32_t(ork_handle*, const void*)>(record.functions, "_len_cr")),
        compare(function<int32_t(const void*, const void*)>(record.functions, "_compare")),
        hash(function<uint32_t(const void*, uint32_t)>(record.functions, "_hash")),
        print(function<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                                uint32_t, uint32_t*)>(record.functions, "_print")),
        print_cr(function<uint32_t(ork_handle*, const void*, char*, uint32_t)>(record.functions,
                                                                               "_print_cr")),
        to_xml(function<uint32_t(ork_handle*, uint32_t, const char*, char*, void*, uint32_t,
                                 uint8_t, uint32_t*)>(record.functions, "_to_xml")),
        toxml_cr(
            function<uint32_t(ork_handle*, void*, char*, uint32_t)>(record.functions, "_toxml_cr")),
        from_xml(function<void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*,
                               char*, uint32_t)>(record.functions, "_from_xml")),
        clone(function<clone_fn>(record.functions, "_clone")),
        clone_internal(function<clone_fn>(record.functions, "_clone_internal")),
        clone_cr(function<void*(ork_handle*, const void*)>(record.functions, "_clone_cr")) {}

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
  operator const wayfind_record&() const { return *schema; }
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
