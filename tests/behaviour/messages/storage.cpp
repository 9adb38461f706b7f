// What the storage of message objects holds from their making to their end, and what an empty slot
// means.
#include "behaviour/messages/spied.h"
#include "ork/tawny.h"
#include "support/bytes.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;
using messages::instance;
using messages::Stage;

class Storage : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
};

ork_alloc_fn alloc_of_platform;

void* soiled(void* pool, uint32_t each, size_t size) {
  void* block = alloc_of_platform(pool, each, size);
  std::memset(block, 0xA5, size);
  return block;
}

// Also the bytes that no member stands in.
TEST_P(Storage, is_cleared_before_it_is_filled) {
  for (const ork_tracking tracking : messages::trackings) {
    const Handle handle(tracking);
    const bool tracked = tracking == ORK_TRACKING_ON;
    alloc_of_platform = std::exchange(handle->alloc_fn, soiled);
    uint8_t expected[32] = {};
    kit::store(expected, message.schema().type);
    expected[10] = tracked ? OBJ_STATE_TRACKED : 0;
    expected[12] = 0xBC;
    std::memset(expected + 13, 0xFF, 6);
    expected[19] = tracked ? 1 : 0;
    for (const bool shallow : {false, true}) {
      void* msg = shallow ? message.create_shallow(handle.get(), instance)
                          : message.create(handle.get(), instance);
      EXPECT_EQ(std::memcmp(msg, expected, sizeof expected), 0);
      for (const void* record : message.slots(msg)) {
        EXPECT_EQ(record == nullptr, shallow);
      }
      message.destroy(handle.get(), instance, msg);
    }
    handle->alloc_fn = alloc_of_platform;
  }
}

void* first_block;

void* noted(void* pool, uint32_t each, size_t size) {
  void* const block = alloc_of_platform(pool, each, size);
  first_block = first_block == nullptr ? block : first_block;
  return block;
}

// The records come first, then the descriptor, then the count, and only then the header and its
// marks.
TEST_P(Storage, is_filled_in_order) {
  const ork_variant_entry& entry = message.schema().type->varinfo->entries[0];
  for (const bool shallow : {false, true}) {
    Stage stage(message, ORK_TRACKING_ON);
    first_block = nullptr;
    alloc_of_platform = std::exchange(stage.handle()->alloc_fn, noted);
    const uint64_t count = entry.create_count;
    uint8_t expected[messages::records_offset] = {};
    size_t tags = 0;
    const auto at_tag = spy::replace(tawny_set_callsite_tag, [&](uint32_t) {
      EXPECT_EQ(std::memcmp(first_block, expected, sizeof expected), 0) << "at tag " << tags;
      for (size_t i = 0; i < message.record_count(); ++i) {
        EXPECT_EQ(message.slots(first_block)[i] != nullptr, i < tags) << "at tag " << tags;
      }
      tags += 1;
    });
    unsigned notices = 0;
    spy::Log log;
    log.on_announcement = [&](const spy::Announcement& told) {
      if (static_cast<const void*>(told.address) == &entry.create_count) {
        notices += 1;
        kit::store(expected, message.schema().type);
        EXPECT_EQ(std::memcmp(first_block, expected, sizeof expected), 0);
        EXPECT_EQ(entry.create_count, count);
        for (const void* record : message.slots(first_block)) {
          EXPECT_EQ(record == nullptr, shallow);
        }
      }
    };
    void* const msg = shallow ? message.create_shallow(stage.handle(), instance)
                              : message.create(stage.handle(), instance);
    EXPECT_EQ(msg, first_block);
    EXPECT_EQ(tags, shallow ? 0 : message.record_count());
    EXPECT_EQ(notices, 1u);
    stage.handle()->alloc_fn = alloc_of_platform;
    message.destroy(stage.handle(), instance, msg);
  }
}

// Each slot is cleared behind its record's end; then comes the count, and the descriptor goes last.
TEST_P(Storage, is_emptied_in_order) {
  const ork_variant_entry& entry = message.schema().type->varinfo->entries[0];
  Stage stage(message, ORK_TRACKING_ON);
  void* const msg = message.create(stage.handle(), instance);
  const std::vector<void*> records = message.slots(msg);
  const uint64_t count = entry.destroy_count;
  std::vector<void*> left = records;
  unsigned notices = 0;
  spy::Log log;
  log.on_free = [&](const void* block) {
    EXPECT_EQ(message.slots(msg), left);
    EXPECT_EQ(entry.destroy_count, block == msg ? count + 1 : count);
    EXPECT_EQ(kit::load<const void*>(msg), block == msg ? nullptr : message.schema().type);
    if (const auto gone = std::find(records.begin(), records.end(), block); gone != records.end()) {
      left[static_cast<size_t>(gone - records.begin())] = nullptr;
    }
  };
  log.on_announcement = [&](const spy::Announcement& told) {
    if (static_cast<const void*>(told.address) == &entry.destroy_count) {
      notices += 1;
      EXPECT_EQ(message.slots(msg), std::vector<void*>(records.size()));
      EXPECT_EQ(kit::load<const void*>(msg), message.schema().type);
      EXPECT_EQ(entry.destroy_count, count);
    }
  };
  message.destroy(stage.handle(), instance, msg);
  EXPECT_EQ(left, std::vector<void*>(records.size())) << "all records were seen to go";
  EXPECT_EQ(notices, 1u);
}

TEST_P(Storage, holds_neither_type_nor_record_when_it_goes_back) {
  Stage stage(message, ORK_TRACKING_ON);
  void* const msg = message.create(stage.handle(), instance);
  bool seen = false;
  spy::Log log;
  log.on_free = [&](const void* block) {
    if (block == msg) {
      seen = true;
      EXPECT_EQ(kit::load<uint64_t>(block), 0u);
      EXPECT_EQ(message.slots(block), std::vector<void*>(message.record_count()));
    }
  };
  message.destroy(stage.handle(), instance, msg);
  EXPECT_TRUE(seen);
}

TEST_P(Storage, empty_slots_count_as_their_records_do_without_an_object) {
  Stage stage(message, ORK_TRACKING_OFF);
  uint32_t none = 43;
  for (size_t i = 0; i < message.record_count(); ++i) {
    none += Record(message.record(i)).len(stage.handle(), instance, nullptr);
  }
  void* const shallow = message.create_shallow(stage.handle(), instance);
  EXPECT_EQ(message.len(stage.handle(), instance, shallow), none);
  message.destroy(stage.handle(), instance, shallow);

  const messages::Made made(message, stage.handle(), 1, instance);
  uint32_t rest = message.len(stage.handle(), instance, made.get());
  for (size_t i = 0; i < message.record_count(); ++i) {
    const Record type(message.record(i));
    void* const record = message.get_detach(stage.handle(), instance, made.get(), &stage.err, i);
    rest -=
        type.len(stage.handle(), instance, record) - type.len(stage.handle(), instance, nullptr);
    EXPECT_EQ(message.len(stage.handle(), instance, made.get()), rest) << "without record " << i;
    type.destroy(stage.handle(), instance, record);
  }
  EXPECT_EQ(rest, none);
}

INSTANTIATE_TEST_SUITE_P(All, Storage, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
