// Create in cr mode: the handle's instance, and the sentinel where nothing could be created.
#include "behaviour/messages/spied.h"
#include "support/bytes.h"

namespace {

using kit::Handle;
using messages::Message;
using messages::Record;
using messages::instance;
using messages::Outcome;
using messages::Stage;

class CreateCr : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const std::string object_size = message.record_count() == 2 ? "48" : "40";
};

TEST_P(CreateCr, cr_forms_use_the_handles_instance) {
  Stage stage(message, ORK_TRACKING_OFF);
  stage.handle()->cr_instance = 9;
  std::vector<std::string> calls;
  {
    const spy::Log log;
    void* msg = message.create_cr(stage.handle());
    message.destroy_cr(stage.handle(), msg);
    calls = log.calls_of({"alloc_fn", "free_fn", "counter_notify_fn"});
  }
  for (const std::string& call : calls) {
    EXPECT_TRUE(call.find("(9,") != std::string::npos || call.find(",9)") != std::string::npos)
        << call;
  }
  EXPECT_EQ(calls.front(), "alloc_fn(9," + object_size + ")=new1");
}

// The address of the message's sentinel.
void* sentinel_of(const Message& message) {
  const Handle handle;
  handle->cr_error = 5;
  return message.create_cr(handle.get());
}

// The sentinels of the records that a message carries.
std::vector<void*> record_sentinels_of(const Message& message) {
  const Handle handle;
  handle->cr_error = 5;
  std::vector<void*> found;
  for (size_t i = 0; i < message.record_count(); ++i) {
    found.push_back(Record(message.record(i)).create_cr(handle.get()));
  }
  return found;
}

TEST_P(CreateCr, cr_active_is_one_while_it_runs_and_zero_afterwards_whatever_it_was) {
  for (const uint32_t before : {0u, 1u, 256u}) {
    Stage stage(message, ORK_TRACKING_OFF);
    ork_handle* const handle = stage.handle();
    handle->cr_active = before;
    unsigned looks = 0;
    spy::Log log;
    log.on_announcement = [&](const spy::Announcement&) {
      looks += 1;
      EXPECT_EQ(handle->cr_active, 1u) << "before: " << before;
    };
    void* const msg = message.create_cr(handle);
    EXPECT_GT(looks, 0u);
    EXPECT_EQ(handle->cr_active, 0u) << "before: " << before;
    log.on_announcement = nullptr;
    message.destroy_cr(handle, msg);
  }
}

TEST_P(CreateCr, cr_create_with_a_pending_error_still_tags_and_makes_each_record) {
  void* const sentinel = sentinel_of(message);
  Stage stage(message, ORK_TRACKING_ON);
  stage.handle()->cr_error = 5;
  const spy::Log log;
  EXPECT_EQ(message.create_cr(stage.handle()), sentinel);
  EXPECT_EQ(log.count("alloc_fn"), 0u);
  EXPECT_EQ(log.count("counter_notify_fn"), 0u);
  EXPECT_EQ(log.count("tawny_set_callsite_tag"), message.record_count());
  EXPECT_EQ(log.count("flight_module_init_fn"), message.record_count())
      << "each record's create ran";
  EXPECT_EQ(log.count("ork_store_err"), 0u);
  EXPECT_EQ(stage.handle()->cr_error, 5u);
  stage.handle()->cr_error = 0;
}

TEST_P(CreateCr, cr_create_without_memory_stores_twelve_once_and_goes_on) {
  void* const sentinel = sentinel_of(message);
  Stage stage(message, ORK_TRACKING_OFF);
  stage.handle()->cr_instance = instance;
  const spy::Log log;
  spy::fail_alloc(1);
  EXPECT_EQ(message.create_cr(stage.handle()), sentinel);
  spy::fail_alloc(0);
  EXPECT_EQ(log.calls()[0], "alloc_fn(7," + object_size + ")=null") << "with the handle's instance";
  EXPECT_EQ(log.calls()[1], "ork_store_err(12)");
  EXPECT_EQ(log.count("ork_store_err"), 1u);
  EXPECT_EQ(log.count("tawny_set_callsite_tag"), message.record_count());
  EXPECT_EQ(stage.handle()->cr_error, 12u);
  stage.handle()->cr_error = 0;
}

// The message is whole then; the record that could not be made, and what is made behind it, is a
// sentinel.
TEST_P(CreateCr, cr_create_without_memory_for_a_record_gives_a_message_with_its_sentinel) {
  void* const sentinel = sentinel_of(message);
  const std::vector<void*> record_sentinels = record_sentinels_of(message);
  for (unsigned failing = 0; failing < message.record_count(); ++failing) {
    Stage stage(message, ORK_TRACKING_ON);
    const spy::Log log;
    spy::fail_alloc(2 + failing);
    void* const msg = message.create_cr(stage.handle());
    spy::fail_alloc(0);
    ASSERT_NE(msg, nullptr);
    EXPECT_NE(msg, sentinel);
    const Outcome made = stage.outcome(log, 0, msg);
    EXPECT_EQ(made.created, 1u);
    EXPECT_EQ(made.header.marker, 0xBC);
    EXPECT_EQ(made.header.sttr_marker, 1);
    EXPECT_EQ(log.count("alloc_fn"), 2 + failing) << "nothing is tried behind the failure";
    EXPECT_EQ(log.count("ork_store_err"), 1u);
    EXPECT_EQ(log.count("tawny_set_callsite_tag"), message.record_count());
    EXPECT_EQ(ork_get_manifested_type_info(msg), message.schema().type);
    for (size_t i = 0; i < message.record_count(); ++i) {
      EXPECT_EQ(message.slots(msg)[i] == record_sentinels[i], i >= failing) << "record " << i;
    }
    EXPECT_EQ(std::exchange(stage.handle()->cr_error, 0), 12u);
    message.destroy_cr(stage.handle(), msg);
  }
}

// Nothing of a sentinel is ever written but its slots, and these each time.
TEST_P(CreateCr, every_cr_create_rewrites_the_slots_of_the_sentinel_and_nothing_else) {
  void* const sentinel = sentinel_of(message);
  const std::vector<void*> record_sentinels = record_sentinels_of(message);
  const uint8_t zeros[messages::records_offset] = {};
  const std::vector<void*> stale(message.record_count(), sentinel);
  for (const bool pending : {true, false}) {
    Stage stage(message, ORK_TRACKING_ON);
    std::memcpy(kit::bytes(sentinel) + messages::records_offset, stale.data(), 8 * stale.size());
    stage.handle()->cr_error = pending ? 5 : 0;
    spy::fail_alloc(pending ? 0 : 1);
    EXPECT_EQ(message.create_cr(stage.handle()), sentinel);
    spy::fail_alloc(0);
    EXPECT_EQ(message.slots(sentinel), record_sentinels) << "pending: " << pending;
    EXPECT_EQ(std::memcmp(sentinel, zeros, sizeof zeros), 0);
    stage.handle()->cr_error = 0;
  }
}

// A platform that keeps nothing in cr_error lets the records of a sentinel be made as usual.
TEST_P(CreateCr, records_of_a_sentinel_may_be_real_ones) {
  void* const sentinel = sentinel_of(message);
  Stage stage(message, ORK_TRACKING_OFF);
  const auto keep = spy::replace(ork_store_err, [](ork_handle*, uint32_t) {});
  spy::fail_alloc(1);
  EXPECT_EQ(message.create_cr(stage.handle()), sentinel);
  spy::fail_alloc(0);
  for (size_t i = 0; i < message.record_count(); ++i) {
    void* const record = message.slots(sentinel)[i];
    EXPECT_EQ(ork_get_manifested_type_info(record), message.record(i).type);
    Record(message.record(i)).destroy(stage.handle(), instance, record);
  }
  sentinel_of(message);  // which leaves no dead record in it
}

// cr_active is read as it stands, and left so.
TEST_P(CreateCr, plain_create_in_cr_mode_gives_the_sentinel_too) {
  void* const sentinel = sentinel_of(message);
  Stage stage(message, ORK_TRACKING_OFF);
  stage.handle()->cr_active = 1;
  stage.handle()->cr_instance = 9;
  {
    const spy::Log log;
    spy::fail_alloc(1);
    EXPECT_EQ(message.create(stage.handle(), instance), sentinel);
    spy::fail_alloc(0);
    EXPECT_EQ(log.calls()[0], "alloc_fn(7," + object_size + ")=null")
        << "with the instance of the call";
    EXPECT_EQ(log.calls()[1], "ork_store_err(12)");
    EXPECT_EQ(log.count("tawny_set_callsite_tag"), message.record_count());
  }
  EXPECT_EQ(stage.handle()->cr_error, 12u);
  EXPECT_EQ(stage.handle()->cr_active, 1u);
  stage.handle()->cr_error = 5;
  {
    const spy::Log log;
    EXPECT_EQ(message.create(stage.handle(), instance), sentinel);
    EXPECT_EQ(log.count("alloc_fn"), 0u);
    EXPECT_EQ(log.count("ork_store_err"), 0u);
    EXPECT_EQ(log.count("tawny_set_callsite_tag"), message.record_count());
  }
  EXPECT_EQ(stage.handle()->cr_error, 5u);
  EXPECT_EQ(stage.handle()->cr_active, 1u);
  stage.handle()->cr_error = 0;
  stage.handle()->cr_active = 0;
}

TEST_P(CreateCr, pending_cr_error_means_nothing_outside_cr_mode) {
  Stage stage(message, ORK_TRACKING_OFF);
  std::vector<std::vector<std::string>> calls;
  for (const uint32_t pending : {0u, 5u}) {
    stage.handle()->cr_error = pending;
    void* msg;
    {
      const spy::Log log;
      msg = message.create(stage.handle(), instance);
      calls.push_back(log.calls());
    }
    EXPECT_EQ(ork_get_manifested_type_info(msg), message.schema().type) << "no sentinel";
    message.destroy(stage.handle(), instance, msg);
    const spy::Log log;
    spy::fail_alloc(1);
    EXPECT_EQ(message.create(stage.handle(), instance), nullptr);
    spy::fail_alloc(0);
    EXPECT_CALLS(log, std::vector<std::string>{"alloc_fn(7," + object_size + ")=null"});
    EXPECT_EQ(stage.handle()->cr_error, pending);
  }
  EXPECT_CALLS(calls[1], calls[0]);
  stage.handle()->cr_error = 0;
}

// An allocator may report for itself.
TEST_P(CreateCr, error_that_the_allocator_left_stands) {
  void* const sentinel = sentinel_of(message);
  Stage stage(message, ORK_TRACKING_OFF);
  static ork_handle* failing;
  failing = stage.handle();
  const ork_alloc_fn before = failing->alloc_fn;
  failing->alloc_fn = [](void*, uint32_t, size_t) -> void* {
    failing->cr_error = 5;
    return nullptr;
  };
  {
    const spy::Log log;
    EXPECT_EQ(message.create_cr(failing), sentinel);
    EXPECT_EQ(log.count("ork_store_err"), 0u);
  }
  EXPECT_EQ(failing->cr_error, 5u);
  failing->cr_error = 0;
  failing->alloc_fn = before;
}

TEST(Sentinels, each_message_has_one_of_its_own_of_its_size) {
  std::vector<std::pair<const char*, size_t>> found;
  for (const Message& message : messages::all()) {
    void* const sentinel = sentinel_of(message);
    EXPECT_EQ(sentinel, sentinel_of(message)) << "whatever the handle";
    found.emplace_back(static_cast<const char*>(sentinel), message.record_count() == 2 ? 48 : 40);
  }
  EXPECT_EQ(found.size(), 28u);
  std::sort(found.begin(), found.end());
  for (size_t i = 1; i < found.size(); ++i) {
    EXPECT_LE(found[i - 1].first + found[i - 1].second, found[i].first);
  }
}

TEST_P(CreateCr, shallow_knows_no_cr_mode) {
  Stage stage(message, ORK_TRACKING_OFF);
  stage.handle()->cr_active = 1;
  stage.handle()->cr_instance = 9;
  for (const uint32_t pending : {5u, 0u}) {
    stage.handle()->cr_error = pending;
    spy::forget_names();
    {
      const spy::Log log;
      void* msg = message.create_shallow(stage.handle(), instance);
      EXPECT_NE(msg, nullptr);
      EXPECT_EQ(log.calls()[0], "alloc_fn(7," + object_size + ")=new1");
      EXPECT_EQ(log.count("ork_store_err"), 0u);
      message.destroy(stage.handle(), instance, msg);
    }
    const spy::Log log;
    spy::fail_alloc(1);
    EXPECT_EQ(message.create_shallow(stage.handle(), instance), nullptr);
    spy::fail_alloc(0);
    EXPECT_CALLS(log, std::vector<std::string>{"alloc_fn(7," + object_size + ")=null"});
    EXPECT_EQ(stage.handle()->cr_error, pending);
    EXPECT_EQ(ork_handle_last_error(stage.handle()), 0u);
  }
  stage.handle()->cr_active = 0;
}

const void* sentinel_block;
ork_free_fn free_of_platform;
std::vector<const void*> freed;

// The platform's own, but for a sentinel, which is no block of its.
void free_but_for_the_sentinel(void* pool, uint32_t each, void* block) {
  freed.push_back(block);
  if (block != sentinel_block) {
    free_of_platform(pool, each, block);
  }
}

// A platform that lets one record not start: its create gives its block back and null, in cr mode
// too.
TEST_P(CreateCr, sentinel_goes_to_free_when_a_record_gives_null) {
  void* const sentinel = sentinel_of(message);
  for (size_t failing = 0; failing < message.record_count(); ++failing) {
    Stage stage(message, ORK_TRACKING_OFF);
    const auto broken =
        spy::replace(orklib_type_stats_create_object, [&](ork_handle* handle, uint32_t each,
                                                          const ork_type_info* type,
                                                          void* statistics, uint32_t* err) {
          if (type != message.record(failing).type) {
            return spy::next(orklib_type_stats_create_object)(handle, each, type, statistics, err);
          }
          return *err = 5;
        });
    spy::forget(stage.handle());
    freed.clear();
    sentinel_block = sentinel;
    free_of_platform = std::exchange(stage.handle()->free_fn, free_but_for_the_sentinel);
    // The object's own block fails; those of its records do not.
    ork_handle_fail_allocation(stage.handle(), 1);
    const auto keep = spy::replace(ork_store_err, [](ork_handle*, uint32_t) {});
    EXPECT_EQ(message.create_cr(stage.handle()), nullptr);
    EXPECT_EQ(freed.size(), failing + 2) << "each record that was made, the one that was not, and";
    EXPECT_EQ(freed.back(), sentinel) << "which is how it stays";
    EXPECT_EQ(stage.handle()->cr_active, 0u);
    stage.handle()->free_fn = free_of_platform;
    spy::observe(stage.handle());
  }
  sentinel_of(message);  // which leaves no dead record in it
}

INSTANTIATE_TEST_SUITE_P(All, CreateCr, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
