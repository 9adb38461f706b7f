// What the tests of the platform share.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ork/orklib.h"
#include "ork/platform.h"
#include "support/handle.h"

namespace platform_test {

using kit::Handle;

inline void* allocate(const Handle& handle, size_t size) {
  return handle->alloc_fn(handle->mem_pool, 0, size);
}

inline void release(const Handle& handle, void* ptr) { handle->free_fn(handle->mem_pool, 0, ptr); }

// A descriptor with the given used lengths, its LUID filled with one byte.
class TestType {
 public:
  TestType(uint8_t luid_byte, const char* name, std::vector<uint32_t> used_lengths) {
    for (const uint32_t used : used_lengths) {
      entries_.push_back({static_cast<uint32_t>(entries_.size()), used, 0, 0, 0, 0, 0});
    }
    variants_ = {static_cast<int8_t>(entries_.size()), {}, entries_.data()};
    type_.magic = ORK_TYPE_INFO_MAGIC;
    std::memset(type_.luid, luid_byte, sizeof type_.luid);
    for (size_t i = 0; i < sizeof type_.luid; ++i) {
      std::snprintf(type_.luid_text + 2 * i, 3, "%02x", luid_byte);
    }
    std::strncpy(type_.name, name, sizeof type_.name - 1);
    type_.unassigned_id = -1;
    type_.varinfo = &variants_;
  }
  TestType(const TestType&) = delete;
  TestType& operator=(const TestType&) = delete;

  const ork_type_info* get() const { return &type_; }
  ork_variant_entry& entry(size_t i) { return entries_[i]; }

 private:
  std::vector<ork_variant_entry> entries_;
  ork_variant_info variants_{};
  ork_type_info type_{};
};

// A module of given types, linked for the test's time the way a module links itself.
class TestModule {
 public:
  explicit TestModule(std::vector<const ork_type_info*> types) : types_(std::move(types)) {
    types_.push_back(nullptr);
    module_ = {"test", types_.data(), nullptr, ork_module_tot_root.tail};
    *ork_module_tot_root.tail = &module_;
    ork_module_tot_root.tail = &module_.next;
    ork_module_tot_root.count += 1;
  }
  ~TestModule() {
    ork_module_tot_root.tail = module_.prev_link;
    *module_.prev_link = nullptr;
    ork_module_tot_root.count -= 1;
  }
  TestModule(const TestModule&) = delete;
  TestModule& operator=(const TestModule&) = delete;

 private:
  std::vector<const ork_type_info*> types_;
  ork_module module_{};
};

// Parses the text form of a type list, which has to be right.
struct ListFree {
  void operator()(ork_type_list* list) const { ork_type_list_free(list); }
};
using List = std::unique_ptr<ork_type_list, ListFree>;

inline List parse_list(std::string_view text) {
  uint32_t err = 0;
  char reason[128] = "";
  List list(ork_type_list_parse(text.data(), text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, 0u) << reason;
  return list;
}

struct XmlFree {
  void operator()(ork_xml* xml) const { ork_xml_free(xml); }
};
using Xml = std::unique_ptr<ork_xml, XmlFree>;

inline Xml parse_xml(std::string_view text) {
  uint32_t err = 0;
  char reason[128] = "";
  Xml xml(ork_xml_parse(text.data(), text.size(), &err, reason, sizeof reason));
  EXPECT_EQ(err, 0u) << reason;
  return xml;
}

}  // namespace platform_test
