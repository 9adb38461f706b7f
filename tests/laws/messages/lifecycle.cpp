// What holds for the life of every message object, with tracking absent, off and on.
#include "behaviour/messages/family.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;

constexpr uint32_t instance = 7;

class Lifecycle : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const ork_variant_entry& entry() const { return message.schema().type->varinfo->entries[0]; }
};

const ork_tracking all_trackings[] = {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON};

void expect_fresh(const Message& message, const void* object, bool tracked) {
  const auto* base = static_cast<const ork_object*>(object);
  const ork_type_info* type;
  std::memcpy(&type, base->type_info_slot, sizeof type);
  EXPECT_EQ(type, message.schema().type);
  EXPECT_EQ(base->variant, 0);
  EXPECT_EQ(base->variant_cap, 0);
  EXPECT_EQ(base->obj_flags, tracked ? OBJ_STATE_TRACKED : 0);
  const ork_message_header header = message.header(object);
  EXPECT_EQ(header.marker, 0xBC);
  for (const uint8_t filler : header.filler) {
    EXPECT_EQ(filler, 0xFF);
  }
  EXPECT_EQ(header.sttr_marker, tracked ? 1 : 0);
  EXPECT_EQ(header.sequence, 0u);
  EXPECT_EQ(header.length, 0u);
}

TEST_P(Lifecycle, create_gives_a_fresh_message_with_its_records) {
  for (const ork_tracking tracking : all_trackings) {
    const Handle handle(tracking);
    void* object = message.create(handle.get(), instance);
    ASSERT_NE(object, nullptr);
    expect_fresh(message, object, tracking == ORK_TRACKING_ON);
    for (size_t i = 0; i < message.record_count(); ++i) {
      void* record = message.slots(object)[i];
      ASSERT_NE(record, nullptr);
      EXPECT_EQ(ork_get_manifested_type_info(record), message.record(i).type);
    }
    message.destroy(handle.get(), instance, object);
  }
}

TEST_P(Lifecycle, create_shallow_gives_a_fresh_message_without_records) {
  for (const ork_tracking tracking : all_trackings) {
    const Handle handle(tracking);
    void* object = message.create_shallow(handle.get(), instance);
    ASSERT_NE(object, nullptr);
    expect_fresh(message, object, tracking == ORK_TRACKING_ON);
    for (const void* record : message.slots(object)) {
      EXPECT_EQ(record, nullptr);
    }
    EXPECT_EQ(messages::live_blocks(handle), 1u);
    message.destroy(handle.get(), instance, object);
  }
}

TEST_P(Lifecycle, create_cr_clears_cr_active) {
  const Handle handle;
  void* object = message.create_cr(handle.get());
  ASSERT_NE(object, nullptr);
  expect_fresh(message, object, false);
  EXPECT_EQ(handle->cr_active, 0u);
  EXPECT_EQ(handle->cr_error, 0u);
  message.destroy_cr(handle.get(), object);
}

TEST_P(Lifecycle, counters_balance) {
  const Handle handle;
  const ork_variant_entry before = entry();
  void* deep = message.create(handle.get(), instance);
  void* shallow = message.create_shallow(handle.get(), instance);
  void* cr = message.create_cr(handle.get());
  EXPECT_EQ(entry().create_count, before.create_count + 3);
  EXPECT_EQ(entry().destroy_count, before.destroy_count);
  message.destroy(handle.get(), instance, deep);
  message.destroy(handle.get(), instance, shallow);
  message.destroy_cr(handle.get(), cr);
  EXPECT_EQ(entry().create_count, before.create_count + 3);
  EXPECT_EQ(entry().destroy_count, before.destroy_count + 3);
  EXPECT_EQ(entry().runtime_word, before.runtime_word);
}

struct Told {
  std::vector<std::pair<void*, uint32_t>> counters;
  std::vector<uint64_t> values;  // at the moment of the notice
};

TEST_P(Lifecycle, counters_are_announced_before_they_are_written) {
  Told told;
  const Handle handle([&](ork_options& options) {
    options.observers.ctx = &told;
    options.observers.counter_notify = [](void* ctx, void* counter, uint32_t each) {
      auto* into = static_cast<Told*>(ctx);
      into->counters.emplace_back(counter, each);
      into->values.push_back(*static_cast<uint64_t*>(counter));
    };
  });
  ork_variant_entry& counts = const_cast<ork_variant_entry&>(entry());
  const uint64_t created = counts.create_count;
  const uint64_t destroyed = counts.destroy_count;
  void* object = message.create_shallow(handle.get(), instance);
  message.destroy(handle.get(), instance, object);
  const std::vector<std::pair<void*, uint32_t>> expected = {{&counts.create_count, instance},
                                                            {&counts.destroy_count, instance}};
  EXPECT_EQ(told.counters, expected);
  EXPECT_EQ(told.values, (std::vector<uint64_t>{created, destroyed}));
}

TEST_P(Lifecycle, nothing_of_the_object_is_announced_as_a_write) {
  struct Range {
    const uint8_t* begin;
    size_t size;
    bool touched;
  } range{nullptr, 0, false};
  const Handle handle([&](ork_options& options) {
    options.observers.ctx = &range;
    options.observers.write_notify = [](void* ctx, ork_handle*, const void* address, size_t,
                                        uint32_t, const void*) {
      auto* r = static_cast<Range*>(ctx);
      const auto* at = static_cast<const uint8_t*>(address);
      r->touched |= r->begin != nullptr && at >= r->begin && at < r->begin + r->size;
      r->touched |= r->begin == nullptr;
    };
  });
  void* object = message.create_shallow(handle.get(), instance);
  EXPECT_FALSE(range.touched) << "create";
  range.begin = static_cast<const uint8_t*>(object);
  range.size = entry().used_length;
  uint32_t err = 0;
  for (size_t i = 0; i < message.record_count(); ++i) {
    message.set(handle.get(), instance, object,
                Record(message.record(i)).create(handle.get(), instance), &err, i);
  }
  std::vector<uint8_t> buffer(message.len(handle.get(), instance, object));
  message.marshal(handle.get(), instance, buffer.data(), object,
                  static_cast<int32_t>(buffer.size()), &err);
  message.destroy(handle.get(), instance, object);
  EXPECT_EQ(err, 0u);
  EXPECT_FALSE(range.touched);
}

TEST_P(Lifecycle, null_is_ignored_by_destroy) {
  const Handle handle;
  const uint64_t destroyed = entry().destroy_count;
  message.destroy(handle.get(), instance, nullptr);
  message.destroy_cr(handle.get(), nullptr);
  EXPECT_EQ(entry().destroy_count, destroyed);
}

TEST_P(Lifecycle, object_that_cannot_be_allocated_is_null_and_stores_nothing) {
  const Handle handle;
  const uint64_t created = entry().create_count;
  ork_handle_fail_allocation(handle.get(), 1);
  EXPECT_EQ(message.create(handle.get(), instance), nullptr);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
  ork_handle_fail_allocation(handle.get(), 1);
  EXPECT_EQ(message.create_shallow(handle.get(), instance), nullptr);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
  EXPECT_EQ(entry().create_count, created);
  EXPECT_EQ(messages::live_blocks(handle), 0u);
}

TEST_P(Lifecycle, record_that_cannot_be_allocated_takes_the_whole_message_with_it) {
  const Handle handle;
  const uint64_t created = entry().create_count;
  for (uint64_t i = 0; i < message.record_count(); ++i) {
    ork_handle_fail_allocation(handle.get(), 2 + i);
    EXPECT_EQ(message.create(handle.get(), instance), nullptr);
    EXPECT_EQ(messages::live_blocks(handle), 0u);
    ork_handle_fail_allocation(handle.get(), 0);
  }
  EXPECT_EQ(entry().create_count, created) << "the object is counted after its records are there";
}

TEST_P(Lifecycle, cr_create_without_memory_gives_the_sentinel_and_twelve) {
  const Handle handle;
  const uint64_t created = entry().create_count;
  const uint64_t destroyed = entry().destroy_count;
  ork_handle_fail_allocation(handle.get(), 1);
  void* sentinel = message.create_cr(handle.get());
  ASSERT_NE(sentinel, nullptr);
  EXPECT_EQ(handle->cr_error, 12u);
  EXPECT_EQ(ork_handle_last_error(handle.get()), 12u);
  EXPECT_EQ(handle->cr_active, 0u);
  EXPECT_EQ(ork_get_manifested_type_info(sentinel), nullptr) << "a sentinel has no type";
  EXPECT_EQ(message.header(sentinel).marker, 0) << "nor a header";
  for (const void* record : message.slots(sentinel)) {
    EXPECT_NE(record, nullptr) << "a record pointer lands in it";
    EXPECT_EQ(ork_get_manifested_type_info(record), nullptr) << "that of the record's sentinel";
  }
  EXPECT_EQ(messages::live_blocks(handle), 0u);
  handle->cr_error = 0;
  message.destroy_cr(handle.get(), sentinel);
  message.destroy(handle.get(), instance, sentinel);
  EXPECT_NE(message.slots(sentinel)[0], nullptr) << "destroy leaves a sentinel as it is";
  EXPECT_EQ(entry().create_count, created);
  EXPECT_EQ(entry().destroy_count, destroyed);
}

TEST_P(Lifecycle, cr_create_with_a_pending_error_tries_no_allocation) {
  const Handle handle;
  handle->cr_error = 5;
  ork_memory_report before;
  ork_handle_memory(handle.get(), &before);
  void* first = message.create_cr(handle.get());
  void* second = message.create_cr(handle.get());
  ork_memory_report after;
  ork_handle_memory(handle.get(), &after);
  EXPECT_EQ(first, second);
  EXPECT_EQ(after.allocations, before.allocations);
  EXPECT_EQ(handle->cr_error, 5u);
  handle->cr_error = 0;
}

TEST_P(Lifecycle, length_is_the_records_and_forty_three) {
  for (const ork_tracking tracking : all_trackings) {
    const Handle handle(tracking);
    const messages::Made made(message, handle.get());
    uint32_t expected = 43;
    for (size_t i = 0; i < message.record_count(); ++i) {
      expected += Record(message.record(i)).len(handle.get(), 0, made.record(i));
    }
    EXPECT_EQ(message.len(handle.get(), 0, made.get()), expected);
    EXPECT_EQ(message.len_cr(handle.get(), made.get()), expected);
    handle->cr_error = 5;
    EXPECT_EQ(message.len_cr(handle.get(), made.get()), 0u);
    EXPECT_EQ(handle->cr_error, 5u);
    handle->cr_error = 0;
  }
}

TEST_P(Lifecycle, get_lends_and_detach_gives_away) {
  const Handle handle;
  uint32_t err = 0;
  for (size_t i = 0; i < message.record_count(); ++i) {
    const messages::Made made(message, handle.get());
    void* record = made.record(i);
    EXPECT_EQ(message.get(handle.get(), 0, made.get(), &err, i), record);
    EXPECT_EQ(made.record(i), record);
    EXPECT_EQ(message.get_detach(handle.get(), 0, made.get(), &err, i), record);
    EXPECT_EQ(made.record(i), nullptr);
    EXPECT_EQ(message.get(handle.get(), 0, made.get(), &err, i), nullptr);
    EXPECT_EQ(message.get_detach(handle.get(), 0, made.get(), &err, i), nullptr);
    Record(message.record(i)).destroy(handle.get(), 0, record);
  }
  EXPECT_EQ(err, 0u);
}

TEST_P(Lifecycle, destroy_after_detach_leaves_the_record_alive) {
  const Handle handle;
  uint32_t err = 0;
  void* object = message.create(handle.get(), 0);
  std::vector<void*> records;
  for (size_t i = 0; i < message.record_count(); ++i) {
    records.push_back(message.get_detach(handle.get(), 0, object, &err, i));
  }
  message.destroy(handle.get(), 0, object);
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(ork_get_manifested_type_info(records[i]), message.record(i).type);
    Record(message.record(i)).destroy(handle.get(), 0, records[i]);
  }
}

TEST_P(Lifecycle, set_leaves_the_old_record_and_free_and_set_destroys_it) {
  const Handle handle;
  uint32_t err = 0;
  for (size_t i = 0; i < message.record_count(); ++i) {
    const Record record(message.record(i));
    const messages::Made made(message, handle.get());
    void* first = made.record(i);
    void* second = record.create(handle.get(), 0);
    const uint64_t blocks = messages::live_blocks(handle);
    message.set(handle.get(), 0, made.get(), second, &err, i);
    EXPECT_EQ(made.record(i), second);
    EXPECT_EQ(messages::live_blocks(handle), blocks) << "the old record stays";
    message.free_and_set(handle.get(), 0, made.get(), first, &err, i);
    EXPECT_EQ(made.record(i), first);
    EXPECT_LT(messages::live_blocks(handle), blocks) << "the old record goes";
    message.free_and_set(handle.get(), 0, made.get(), nullptr, &err, i);
    EXPECT_EQ(made.record(i), nullptr);
    void* third = record.create(handle.get(), 0);
    const uint64_t then = messages::live_blocks(handle);
    message.free_and_set(handle.get(), 0, made.get(), third, &err, i);
    EXPECT_EQ(made.record(i), third) << "over an empty slot it only stores";
    EXPECT_EQ(messages::live_blocks(handle), then);
  }
  EXPECT_EQ(err, 0u);
}

TEST_P(Lifecycle, accessors_do_nothing_with_an_error_pending_or_without_a_message) {
  const Handle handle;
  for (size_t i = 0; i < message.record_count(); ++i) {
    const Record type(message.record(i));
    const messages::Made made(message, handle.get());
    void* const own = made.record(i);
    void* const other = type.create(handle.get(), 0);
    const uint64_t blocks = messages::live_blocks(handle);
    for (const bool pending : {true, false}) {
      uint32_t err = pending ? 22 : 0;
      void* target = pending ? made.get() : nullptr;
      EXPECT_EQ(message.get(handle.get(), 0, target, &err, i), nullptr);
      EXPECT_EQ(message.get_detach(handle.get(), 0, target, &err, i), nullptr);
      message.set(handle.get(), 0, target, other, &err, i);
      message.free_and_set(handle.get(), 0, target, other, &err, i);
      EXPECT_EQ(err, pending ? 22u : 0u);
      EXPECT_EQ(ork_handle_last_error(handle.get()), 0u);
      EXPECT_EQ(made.record(i), own);
      EXPECT_EQ(messages::live_blocks(handle), blocks);
    }
    type.destroy(handle.get(), 0, other);
  }
}

TEST_P(Lifecycle, is_valid_asks_the_domain) {
  const Handle handle;
  EXPECT_NE(message.is_valid_cr(handle.get()), 0u);
  messages::set_peer_without(handle, {message.name()});
  EXPECT_EQ(message.is_valid_cr(handle.get()), 0u);
  messages::set_peer_without(handle, {"nothing"});
  handle->cr_error = 5;
  EXPECT_NE(message.is_valid_cr(handle.get()), 0u) << "a pending error is not looked at";
  EXPECT_EQ(handle->cr_error, 5u);
  handle->cr_error = 0;
}

void collect(void* ctx, uint32_t tag, int64_t bytes, int64_t) {
  auto* into = static_cast<std::vector<std::pair<uint32_t, int64_t>>*>(ctx);
  into->emplace_back(tag, bytes);
}

int64_t account(uint32_t tag) {
  std::vector<std::pair<uint32_t, int64_t>> all;
  tawny_each(collect, &all);
  for (const auto& [each, bytes] : all) {
    if (each == tag) {
      return bytes;
    }
  }
  return 0;
}

TEST_P(Lifecycle, records_are_accounted_under_their_tags) {
  const Handle handle;
  const uint32_t tag = message.schema().call_site_tag;
  const auto count = static_cast<uint32_t>(message.record_count());
  std::vector<int64_t> before;
  for (uint32_t i = 0; i < count; ++i) {
    before.push_back(account(tag + i));
  }
  void* shallow = message.create_shallow(handle.get(), 0);
  for (uint32_t i = 0; i < count; ++i) {
    EXPECT_EQ(account(tag + i), before[i]) << "a shallow message has no record to account for";
  }
  void* object = message.create(handle.get(), 0);
  for (uint32_t i = 0; i < count; ++i) {
    EXPECT_GT(account(tag + i), before[i]);
  }
  message.destroy(handle.get(), 0, object);
  message.destroy(handle.get(), 0, shallow);
}

INSTANTIATE_TEST_SUITE_P(All, Lifecycle, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
