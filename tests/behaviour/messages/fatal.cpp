// Broken invariants of message objects end the process.
#include <sys/resource.h>

#include "behaviour/messages/spied.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::instance;

class MessageFatal : public testing::TestWithParam<Message> {
 protected:
  // What every child would do again is done once: the words of traces are unpacked, and no core
  // is written.
  static void SetUpTestSuite() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    const Handle scratch;
    uint32_t err = 22;
    const spy::Log log;
    messages::all()[0].get(scratch.get(), instance, nullptr, &err);
  }

  const Message message = GetParam();
  const Handle handle;

  // From now on objects of the message get a descriptor whose variant block is missing.
  [[nodiscard]] spy::Replacement without_variants() {
    broken = *message.schema().type;
    broken.varinfo = nullptr;
    broken.shared = 1;
    handle->shared_types = 2;  // shared storage that no hook watches
    return spy::replace(
        ork_type_info_ptr_get,
        [this](ork_handle*, uint32_t, const ork_type_info* type, ork_type_info_init_fn) {
          return type == message.schema().type ? &broken : type;
        });
  }
  static void point_at(void* msg, const ork_type_info* type) {
    std::memcpy(msg, &type, sizeof type);
  }

  ork_type_info broken{};
};
using FatalDeathTest = MessageFatal;

TEST_P(FatalDeathTest, unknown_mode_word) {
  ork_sttr_info corrupted{0x1234};
  ork_sttr_info* const before = std::exchange(handle->sttr_info, &corrupted);
  EXPECT_DEATH(message.create_shallow(handle.get(), instance),
               "trace\\(fatal,Corrupted ORK Handle\\)");
  handle->sttr_info = before;
  // Records look at the word as well: it goes bad behind their back.
  handle->sttr_info = &corrupted;
  corrupted.sttr_mode = ORK_STTR_OFF;
  static ork_sttr_info* shared_word;
  shared_word = &corrupted;
  handle->counter_notify_fn = [](void*, void*, uint32_t, uint32_t) { shared_word->sttr_mode = 0; };
  EXPECT_DEATH(message.create(handle.get(), instance), "trace\\(fatal,Corrupted ORK Handle\\)");
  handle->sttr_info = before;
}

TEST_P(FatalDeathTest, missing_variant_block_at_create) {
  const auto found = without_variants();
  EXPECT_DEATH(message.create(handle.get(), instance), "trace\\(fatal,varinfo is NULL\\)");
  EXPECT_DEATH(message.create_shallow(handle.get(), instance), "trace\\(fatal,varinfo is NULL\\)");
  handle->shared_types = 0;
}

TEST_P(FatalDeathTest, missing_variant_block_at_destroy) {
  void* msg = message.create(handle.get(), instance);
  broken = *message.schema().type;
  broken.varinfo = nullptr;
  point_at(msg, &broken);
  EXPECT_DEATH(message.destroy(handle.get(), instance, msg), "trace\\(fatal,varinfo is NULL\\)");
  point_at(msg, message.schema().type);
  message.destroy(handle.get(), instance, msg);
}

ork_free_fn platform_free;

void free_and_tell(void* pool, uint32_t each, void* block) {
  std::fprintf(stderr, "freed %p\n", block);
  platform_free(pool, each, block);
}

// The records go before the descriptor is looked at.
TEST_P(FatalDeathTest, corrupted_descriptor_loses_the_records_first) {
  void* msg = message.create(handle.get(), instance);
  platform_free = std::exchange(handle->free_fn, free_and_tell);
  char freed[64];
  std::snprintf(freed, sizeof freed, "freed %p", message.slots(msg).back());
  const std::string expected =
      std::string(freed) + "(.|\n)*trace\\(fatal,tinfo is null or corrupted\\)";
  point_at(msg, nullptr);
  EXPECT_DEATH(message.destroy(handle.get(), instance, msg), expected);
  broken = *message.schema().type;
  broken.magic = 0xBEEFF00C;
  point_at(msg, &broken);
  EXPECT_DEATH(message.destroy(handle.get(), instance, msg), expected);
  EXPECT_DEATH(message.destroy_cr(handle.get(), msg), expected);
  handle->free_fn = platform_free;
  point_at(msg, message.schema().type);
  message.destroy(handle.get(), instance, msg);
}

INSTANTIATE_TEST_SUITE_P(All, FatalDeathTest, testing::ValuesIn(messages::all()),
                         messages::ByName());

}  // namespace
