#include "support.h"

namespace platform_test {
namespace {

TEST(Statistics, count_by_variant) {
  const Handle handle;
  TestType type(1, "counted", {20, 30});
  const TestModule module({type.get()});
  uint32_t err = 0;
  orklib_type_stats_create_object(handle.get(), 0, type.get(), &type.entry(1).create_count, &err);
  orklib_type_stats_create_object(handle.get(), 0, type.get(), &type.entry(1).create_count, &err);
  orklib_type_stats_destroy_object(handle.get(), 0, type.get(), &type.entry(1).create_count, &err);
  EXPECT_EQ(type.entry(1).create_count, 2u);
  EXPECT_EQ(type.entry(1).destroy_count, 1u);
  EXPECT_EQ(type.entry(0).create_count, 0u);

  char* text = nullptr;
  size_t length = 0;
  FILE* stream = open_memstream(&text, &length);
  ork_statistics_print(nullptr, stream);
  std::fclose(stream);
  EXPECT_STREQ(text, "counted variant 1 created 2 destroyed 1 live 1\n");
  std::free(text);
}

TEST(Statistics, nothing_is_written_in_front_of_the_entries) {
  const Handle handle;
  ork_variant_entry entries[2]{};
  ork_variant_info variants{1, {}, &entries[1]};
  ork_type_info type{};
  type.varinfo = &variants;
  uint32_t err = 0;
  orklib_type_stats_create_object(handle.get(), 0, &type, &entries[0].create_count, &err);
  orklib_type_stats_destroy_object(handle.get(), 0, &type, &entries[0].create_count, &err);
  EXPECT_EQ(entries[0].create_count, 0u);
  EXPECT_EQ(entries[0].destroy_count, 0u);
}

TEST(Statistics, counters_are_announced) {
  struct Seen {
    void* counter = nullptr;
  } seen;
  const Handle handle([&](ork_options& options) {
    options.observers.ctx = &seen;
    options.observers.counter_notify = [](void* ctx, void* counter, uint32_t) {
      static_cast<Seen*>(ctx)->counter = counter;
    };
  });
  TestType type(1, "counted", {20});
  uint32_t err = 0;
  orklib_type_stats_destroy_object(handle.get(), 0, type.get(), &type.entry(0).create_count, &err);
  EXPECT_EQ(seen.counter, &type.entry(0).destroy_count);
}

}  // namespace
}  // namespace platform_test
