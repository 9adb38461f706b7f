// Two threads with a handle each share descriptors, the trace sink, the accounts and the recorder's
// switch.
#include <thread>

#include "ork/flight.h"
#include "ork/tawny.h"
#include "support.h"

namespace platform_test {
namespace {

constexpr int rounds = 2000;

void work(TestType& type) {
  const Handle handle([](ork_options& options) { options.tracking = ORK_TRACKING_ON; });
  static const unsigned char section[16] = {};
  static uint16_t module_id = 0;
  static uint32_t once = 0;
  uint32_t err = 0;
  for (int i = 0; i < rounds; ++i) {
    flight_module_init_fn("threads", &module_id, &once);
    tawny_set_callsite_tag(0xa0910888);
    void* block = allocate(handle, 64);
    std::memset(block, 0, 64);
    orklib_update_sttr_offset(handle.get(), 0, block, 48);
    ork_domain_lookup_variant(handle.get(), &handle->domain, type.get(), &err);
    orklib_type_stats_create_object(handle.get(), 0, type.get(), &type.entry(0).create_count, &err);
    __FLf_4(section, 0, 1, ORK_LEVEL_DEBUG, 1);
    orklib_msg_recorder_get_state();
    orklib_type_stats_destroy_object(handle.get(), 0, type.get(), &type.entry(0).create_count,
                                     &err);
    release(handle, block);
  }
}

TEST(Concurrency, two_threads_with_two_handles) {
  TestType type(1, "shared", {20});
  std::thread a([&] { work(type); });
  std::thread b([&] { work(type); });
  ork_recorder_switch(1);
  ork_recorder_switch(0);
  a.join();
  b.join();
  EXPECT_EQ(type.entry(0).create_count, 2u * rounds);
  EXPECT_EQ(type.entry(0).destroy_count, 2u * rounds);
  flight_ring_clear();
}

}  // namespace
}  // namespace platform_test
