#include <malloc.h>

#include <cstdio>
#include <cstdlib>

#include "ork/tawny.h"
#include "support.h"

namespace platform_test {
namespace {

TEST(Memory, budget_refuses_what_would_pass_it) {
  const Handle handle([](ork_options& options) { options.memory_budget = 1000; });
  void* first = allocate(handle, 500);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(allocate(handle, 500), nullptr) << "with two heads that is more than 1000";
  void* second = allocate(handle, 300);
  EXPECT_NE(second, nullptr);
  release(handle, first);
  release(handle, second);
  EXPECT_EQ(handle.memory().refusals, 1u);
  EXPECT_EQ(handle.memory().held_bytes, 0u);
}

// What malloc has handed out in this process; always 0 where a sanitizer stands in for malloc.
size_t process_holds() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// What malloc keeps for itself of blocks given back shifts the sum by a few of them.
void expect_taken(size_t before, size_t counted) {
  const size_t now = process_holds();
  if (now != 0) {
    EXPECT_LE(now - before, counted);
    EXPECT_GT(now - before, counted - 1024);
  }
}

TEST(Memory, small_blocks_count_with_their_heads) {
  constexpr size_t budget = size_t{1} << 20;
  const Handle handle([](ork_options& options) { options.memory_budget = budget; });
  std::vector<void*> blocks;
  blocks.reserve(budget);
  const size_t before = process_holds();
  while (void* block = allocate(handle, 1)) {
    blocks.push_back(block);
  }
  const ork_memory_report report = handle.memory();
  expect_taken(before, report.held_bytes);
  EXPECT_LE(report.held_bytes, budget);
  EXPECT_GT(report.held_bytes, budget - 1024);
  EXPECT_EQ(report.peak_held_bytes, report.held_bytes);
  EXPECT_EQ(report.live_bytes, blocks.size());
  for (void* block : blocks) {
    release(handle, block);
  }
  EXPECT_EQ(handle.memory().held_bytes, 0u);
}

TEST(Memory, distances_count_and_find_room_kept_for_them) {
  constexpr size_t budget = size_t{1} << 20;
  const Handle handle([](ork_options& options) {
    options.memory_budget = budget;
    options.tracking = ORK_TRACKING_ON;
  });
  std::vector<char*> blocks;
  while (void* block = allocate(handle, 240)) {
    std::memset(block, 0, 240);
    blocks.push_back(static_cast<char*>(block));
  }
  EXPECT_GT(blocks.size(), 500u);
  const size_t before = process_holds();
  for (char* block : blocks) {
    for (int at = 0; at < 240; at += 24) {
      orklib_update_sttr_offset(handle.get(), 0, block + at, at + 1);
    }
  }
  const ork_memory_report report = handle.memory();
  EXPECT_LE(report.peak_held_bytes, budget);
  expect_taken(before, report.live_distances * 64);
  EXPECT_GE(report.held_bytes, blocks.size() * 240 + report.live_distances * 64);
  for (char* block : blocks) {
    release(handle, block);
  }
  EXPECT_EQ(handle.memory().held_bytes, 0u);
}

TEST(Memory, hostile_sizes_are_refused) {
  const Handle handle;
  EXPECT_EQ(allocate(handle, SIZE_MAX), nullptr);
  EXPECT_EQ(allocate(handle, SIZE_MAX - 16), nullptr);
  EXPECT_EQ(allocate(handle, PTRDIFF_MAX), nullptr);
}

TEST(Memory, size_zero_gives_blocks_of_their_own) {
  const Handle handle;
  void* a = allocate(handle, 0);
  void* b = allocate(handle, 0);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(a, b);
  release(handle, a);
  release(handle, b);
  EXPECT_EQ(handle.memory().live_blocks, 0u);
}

TEST(Memory, leaks_are_counted) {
  Handle handle;
  allocate(handle, 10);
  allocate(handle, 20);
  ork_memory_report report;
  ork_handle_destroy(handle.release(), &report);
  EXPECT_EQ(report.live_blocks, 2u);
  EXPECT_EQ(report.live_bytes, 30u);
  EXPECT_EQ(report.peak_bytes, 30u);
}

TEST(Memory, nth_allocation_fails_once) {
  const Handle handle;
  ork_handle_fail_allocation(handle.get(), 2);
  void* a = allocate(handle, 1);
  EXPECT_EQ(allocate(handle, 1), nullptr);
  void* b = allocate(handle, 1);
  EXPECT_NE(b, nullptr);
  release(handle, a);
  release(handle, b);
}

TEST(Memory, block_freed_through_another_handle_goes_back_to_its_own_account) {
  const Handle a;
  const Handle b;
  release(b, allocate(a, 100));
  EXPECT_EQ(a.memory().live_bytes, 0u);
  EXPECT_EQ(b.memory().live_bytes, 0u);
}

struct alignas(8) Block {
  unsigned char bytes[64];
};

TEST(Mapping, distance_is_kept_and_the_flag_set) {
  Handle handle;
  handle.expect_leaks();
  Block block{};
  orklib_update_sttr_offset(handle.get(), 0, &block, 48);
  EXPECT_EQ(block.bytes[ORK_OFFSET_OBJ_FLAGS], OBJ_STTR_OFFSET);
  EXPECT_EQ(orklib_get_sttr_offset(handle.get(), 0, &block), 48);
  orklib_update_sttr_offset(handle.get(), 0, &block, 56);
  EXPECT_EQ(orklib_get_sttr_offset(handle.get(), 0, &block), 56);
  EXPECT_EQ(handle.memory().live_distances, 1u);
}

TEST(Mapping, destroy_of_nothing_is_no_error) {
  const Handle handle;
  Block block{};
  uint32_t err = 0;
  ork_hd_mapping_destroy(handle.get(), 0, &block, &err);
  EXPECT_EQ(err, 0u);
}

TEST(Mapping, freeing_a_block_drops_every_distance_inside_it_and_no_other) {
  const Handle handle;
  auto* a = static_cast<unsigned char*>(allocate(handle, 128));
  auto* b = static_cast<unsigned char*>(allocate(handle, 128));
  std::memset(a, 0, 128);
  std::memset(b, 0, 128);
  for (int at : {0, 32, 112}) {
    orklib_update_sttr_offset(handle.get(), 0, a + at, 1);
    orklib_update_sttr_offset(handle.get(), 0, b + at, 2);
  }
  release(handle, a);
  EXPECT_EQ(handle.memory().live_distances, 3u);
  EXPECT_EQ(orklib_get_sttr_offset(handle.get(), 0, b), 2);
  release(handle, b);
  EXPECT_EQ(handle.memory().live_distances, 0u);
}

TEST(Mapping, untold_distance_of_an_array_record_leads_to_an_empty_entry_in_its_own_body) {
  const Handle handle;
  const TestType type(1, "array", {24});
  alignas(8) unsigned char object[32] = {};
  *ork_get_manifested_type_info_ptr_mem(object) = type.get();
  EXPECT_EQ(orklib_get_sttr_offset(handle.get(), 0, object), 16);
}

TEST(Tawny, tag_belongs_to_the_next_allocation) {
  const Handle handle;
  struct Account {
    int64_t bytes = 0;
    int64_t blocks = 0;
  } account;
  const auto read = [&] {
    account = {};
    tawny_each(
        [](void* ctx, uint32_t tag, int64_t bytes, int64_t blocks) {
          if (tag == 0xa0910777) {
            *static_cast<Account*>(ctx) = {bytes, blocks};
          }
        },
        &account);
  };
  tawny_set_callsite_tag(0xa0910777);
  void* tagged = allocate(handle, 40);
  void* untagged = allocate(handle, 50);
  read();
  EXPECT_EQ(account.bytes, 40);
  EXPECT_EQ(account.blocks, 1);
  release(handle, tagged);
  release(handle, untagged);
  read();
  EXPECT_EQ(account.bytes, 0);
  EXPECT_EQ(account.blocks, 0);
}

TEST(Tawny, prints_a_line_for_each_tag) {
  const Handle handle;
  const auto printed = [] {
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    tawny_print(stream);
    fclose(stream);
    const std::string all = "\n" + std::string(text, size);
    free(text);
    return all;
  };
  tawny_set_callsite_tag(0xa0910777);
  void* first = allocate(handle, 40);
  tawny_set_callsite_tag(0x00000777);
  void* second = allocate(handle, 50);
  EXPECT_NE(printed().find("\ntag 0xa0910777 bytes 40 blocks 1\n"), std::string::npos) << printed();
  EXPECT_NE(printed().find("\ntag 0x00000777 bytes 50 blocks 1\n"), std::string::npos) << printed();
  release(handle, first);
  EXPECT_NE(printed().find("\ntag 0xa0910777 bytes 0 blocks 0\n"), std::string::npos) << printed();
  release(handle, second);
}

}  // namespace
}  // namespace platform_test
