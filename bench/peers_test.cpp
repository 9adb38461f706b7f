// A peer that does other work than the library would be no measure of it.
#include <gtest/gtest.h>

#include <cstring>

#include "bench/bare.h"
#include "bench/table_driven.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "tests/support/exports.h"
#include "tests/support/sample.h"

namespace {

template <class Prototype>
Prototype function(const wayfind_record& type, const char* suffix) {
  return kit::function<Prototype>(type.functions, suffix);
}

template <class Record>
void expect_same_work(const char* name) {
  ork_options options;
  ork_options_init(&options);
  uint32_t err = 0;
  ork_handle* handle = ork_handle_create(&options, &err);
  const wayfind_record& type = *kit::find_record(name);
  const bare::Wire wire{handle, 1, &err};
  void* filled = sample::create(handle, type);
  sample::fill(handle, type, filled, 0);

  uint8_t image[2048];
  uint8_t other[2048];
  const uint32_t n =
      function<uint32_t (*)(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
          type, "_marshal")(handle, 1, image, filled, sizeof image, &err);
  EXPECT_EQ(bare::marshal(wire, other, static_cast<const Record*>(filled), sizeof other), n);
  EXPECT_EQ(std::memcmp(image, other, n), 0);
  std::memset(other, 0, sizeof other);
  EXPECT_EQ(table_driven::marshal(wire, other, filled, sizeof other, type), n);
  EXPECT_EQ(std::memcmp(image, other, n), 0);

  EXPECT_EQ(bare::length(wire, static_cast<const Record*>(filled)), n);
  EXPECT_EQ(table_driven::length(wire, filled, type), n);

  const auto compare = function<int32_t (*)(const void*, const void*)>(type, "_compare");
  void* read = sample::create(handle, type);
  EXPECT_EQ(bare::unmarshal(wire, image, static_cast<Record*>(read), static_cast<int32_t>(n)), n);
  EXPECT_EQ(compare(filled, read), 0);
  sample::destroy(handle, type, read);
  read = sample::create(handle, type);
  EXPECT_EQ(table_driven::unmarshal(wire, image, read, static_cast<int32_t>(n), type), n);
  EXPECT_EQ(compare(filled, read), 0);
  sample::destroy(handle, type, read);

  sample::destroy(handle, type, filled);
  EXPECT_EQ(err, 0u);
  ork_memory_report left;
  ork_handle_destroy(handle, &left);
  EXPECT_EQ(left.live_blocks, 0u);
}

TEST(BenchPeers, do_the_work_of_the_library_on_the_locator) {
  expect_same_work<bare::Mem>("fwe_cl_wayfind_mem_st");
}
TEST(BenchPeers, do_the_work_of_the_library_on_a_hop_channel) {
  expect_same_work<bare::HopChanData>("fwe_cl_wayfind_hop_chan_data");
}

}  // namespace
