// Create, destroy and the accessors call for call, over all messages.
#include "behaviour/messages/spied.h"

namespace {

using messages::Message;
using messages::Record;
using messages::instance;
using messages::Outcome;
using messages::Stage;

class CreateCalls : public testing::TestWithParam<Message> {
 protected:
  const Message message = GetParam();
  const std::string object_size = message.record_count() == 2 ? "48" : "40";
};

using Create = void* (*)(const Message&, ork_handle*, uint32_t);

Outcome created(const Message& message, ork_tracking tracking, Create create,
                unsigned fail_alloc = 0) {
  Stage stage(message, tracking);
  void* msg;
  Outcome outcome;
  {
    const spy::Log log;
    spy::fail_alloc(fail_alloc);
    msg = create(message, stage.handle(), instance);
    spy::fail_alloc(0);
    outcome = stage.outcome(log, msg != nullptr, msg);
  }
  message.destroy(stage.handle(), instance, msg);
  return outcome;
}

void* library_create(const Message& message, ork_handle* handle, uint32_t each) {
  return message.create(handle, each);
}

void* library_create_shallow(const Message& message, ork_handle* handle, uint32_t each) {
  return message.create_shallow(handle, each);
}

TEST_P(CreateCalls, allocates_tags_makes_records_and_counts) {
  for (const ork_tracking tracking : messages::trackings) {
    const Outcome hand = created(message, tracking, by_hand::create);
    const Outcome made = created(message, tracking, library_create);
    messages::expect_same(made, hand, "create");
    EXPECT_EQ(made.calls.front(), "alloc_fn(7," + object_size + ")=new1");
    EXPECT_EQ(made.calls[1],
              "tawny_set_callsite_tag(" + std::to_string(message.schema().call_site_tag) + ")");
    EXPECT_EQ(made.calls.back(), "counter_notify_fn(create_count,1,7)");
    EXPECT_EQ(made.created, 1u);
  }
}

TEST_P(CreateCalls, shallow_allocates_and_counts) {
  for (const ork_tracking tracking : messages::trackings) {
    const Outcome hand = created(message, tracking, by_hand::create_shallow);
    const Outcome made = created(message, tracking, library_create_shallow);
    messages::expect_same(made, hand, "create_shallow");
    EXPECT_CALLS(made.calls, std::vector<std::string>{"alloc_fn(7," + object_size + ")=new1",
                                                      "counter_notify_fn(create_count,1,7)"});
  }
}

TEST_P(CreateCalls, every_failing_allocation_undoes_the_same) {
  for (unsigned nth = 1; nth <= 3; ++nth) {
    const Outcome hand = created(message, ORK_TRACKING_ON, by_hand::create, nth);
    const Outcome made = created(message, ORK_TRACKING_ON, library_create, nth);
    messages::expect_same(made, hand, "allocation " + std::to_string(nth));
  }
  const Outcome none = created(message, ORK_TRACKING_OFF, library_create, 1);
  EXPECT_CALLS(none.calls, std::vector<std::string>{"alloc_fn(7," + object_size + ")=null"});
  const Outcome no_record = created(message, ORK_TRACKING_OFF, library_create, 2);
  EXPECT_EQ(no_record.calls.back(), "free_fn(7,new1)");
  EXPECT_EQ(no_record.created, 0u);
  EXPECT_EQ(no_record.live_blocks, 0u);
}

// A descriptor of shared storage, with counters of its own; those with shared 0 are counted
// atomically, to the same effect.
TEST_P(CreateCalls, shared_types_go_through_the_type_table_and_are_counted_there) {
  struct Way {
    Create hand;
    Create library;
  };
  for (const auto& [by_hand_create, made_create] :
       {Way{by_hand::create_shallow, library_create_shallow},
        Way{by_hand::create, library_create}}) {
    for (const uint32_t shared : {1u, 0u}) {
      std::vector<std::vector<std::string>> calls;
      for (const Create create : {by_hand_create, made_create}) {
        Stage stage(message, ORK_TRACKING_OFF);
        messages::OwnDescriptor own(message, stage.handle(), shared);
        own.entry.create_count = 10;
        own.entry.destroy_count = 4;
        spy::name_at(&own.entry.create_count, "copy's create_count");
        spy::name_at(&own.entry.destroy_count, "copy's destroy_count");
        void* msg;
        {
          const spy::Log log;
          msg = create(message, stage.handle(), instance);
          calls.push_back(log.calls());
        }
        EXPECT_EQ(ork_get_manifested_type_info(msg), &own.type);
        EXPECT_EQ(own.entry.create_count, 11u);
        const spy::Log log;
        message.destroy(stage.handle(), instance, msg);
        EXPECT_EQ(own.entry.destroy_count, 5u);
        EXPECT_CALLS(log.calls_of({"counter_notify_fn"}),
                     {"counter_notify_fn(copy's destroy_count,1,7)"});
        const Outcome outcome = stage.outcome(log, 0, nullptr);
        EXPECT_EQ(outcome.created, 0u) << "the static descriptor";
        EXPECT_EQ(outcome.destroyed, 0u);
      }
      EXPECT_CALLS(calls[1], calls[0]);
      EXPECT_EQ(calls[1].front(), "alloc_fn(7," + object_size + ")=new1");
      EXPECT_EQ(calls[1][calls[1].size() - 2], std::string("ork_type_info_ptr_get(7,type(") +
                                                   message.name() +
                                                   "),fwe_ui_wayfind_typeinfo_initialize)");
      EXPECT_EQ(calls[1].back(), "counter_notify_fn(copy's create_count,1,7)");
      if (made_create == library_create_shallow) {
        EXPECT_EQ(calls[1].size(), 3u);
      }
    }
  }
}

// The count is a signed byte, and printed without a sign. It is looked at before the counter rises.
TEST_P(CreateCalls, only_a_negative_variant_count_is_traced_and_it_is_survived) {
  for (const auto& [count, printed] : {std::pair<int8_t, const char*>{-1, "4294967295"},
                                       {-128, "4294967168"},
                                       {0, nullptr},
                                       {1, nullptr}}) {
    Stage stage(message, ORK_TRACKING_OFF);
    messages::OwnDescriptor own(message, stage.handle());
    own.variants.n_variants = count;
    const uint64_t before = own.entry.create_count;
    spy::name_at(&own.entry.create_count, "created");
    spy::name_at(&own.entry.destroy_count, "destroyed");
    std::vector<std::string> expected;
    for (const char* counter : {"created", "created", "destroyed", "destroyed"}) {
      if (printed != nullptr) {
        expected.push_back(std::string("trace(info,variant 0 requested only ") + printed +
                           " variants present)");
      }
      expected.push_back(std::string("counter_notify_fn(") + counter + ",1,7)");
    }
    const spy::Log log;
    void* shallow = message.create_shallow(stage.handle(), instance);
    void* whole = message.create(stage.handle(), instance);
    message.destroy(stage.handle(), instance, shallow);
    message.destroy(stage.handle(), instance, whole);
    std::vector<std::string> made = log.calls_of({"trace", "counter_notify_fn"});
    std::erase(made, "counter_notify_fn(?,1,7)");  // of what the records hold
    EXPECT_CALLS(made, expected) << int{count};
    EXPECT_EQ(own.entry.create_count, before + 2);
  }
}

Outcome destroyed(const Message& message, ork_tracking tracking, decltype(&by_hand::destroy) way,
                  size_t detach) {
  Stage stage(message, tracking);
  void* msg = message.create(stage.handle(), instance);
  stage.name(msg);
  void* detached = nullptr;
  if (detach < message.record_count()) {
    detached = message.get_detach(stage.handle(), instance, msg, &stage.err, detach);
  }
  Outcome outcome;
  {
    const spy::Log log;
    way(message, stage.handle(), instance, msg);
    outcome = stage.outcome(log, 0, nullptr);
  }
  if (detached != nullptr) {
    Record(message.record(detach)).destroy(stage.handle(), instance, detached);
  }
  return outcome;
}

TEST_P(CreateCalls, destroy_gives_records_back_counts_and_frees) {
  for (const ork_tracking tracking : messages::trackings) {
    for (size_t detach = 0; detach <= message.record_count(); ++detach) {
      const Outcome hand = destroyed(message, tracking, by_hand::destroy, detach);
      const Outcome made = destroyed(
          message, tracking,
          [](const Message& m, ork_handle* handle, uint32_t each, void* msg) {
            m.destroy(handle, each, msg);
          },
          detach);
      messages::expect_same(made, hand, "destroy without record " + std::to_string(detach));
      EXPECT_EQ(made.calls[made.calls.size() - 2], "counter_notify_fn(destroy_count,1,7)");
      EXPECT_EQ(made.calls.back(), "free_fn(7,msg)");
    }
  }
}

// ---- Accessors --------------------------------------------------------------

TEST_P(CreateCalls, accessors_trace_what_keeps_them_from_acting) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 1, instance);
  for (size_t i = 0; i < message.record_count(); ++i) {
    const std::string record = message.record(i).name;
    for (const bool pending : {true, false}) {
      stage.err = pending ? 22 : 0;
      void* msg = pending ? made.get() : nullptr;
      const std::string error = pending ? "Invalid argument" : "Success";
      const spy::Log log;
      message.get(stage.handle(), instance, msg, &stage.err, i);
      message.get_detach(stage.handle(), instance, msg, &stage.err, i);
      message.set(stage.handle(), instance, msg, nullptr, &stage.err, i);
      message.free_and_set(stage.handle(), instance, msg, nullptr, &stage.err, i);
      EXPECT_CALLS(
          log,
          std::vector<std::string>{
              "trace(debug,Error present when getting value for " + record + ": " + error + ")",
              "trace(debug,Error present getting detached " + record + " value for " +
                  message.name() + ": " + error + ")",
              "trace(debug,Error present when setting value for " + record + ": " + error + ")",
              "trace(debug,Error present when freeing and setting value for " + record + ": " +
                  error + ")"});
    }
  }
}

TEST_P(CreateCalls, accessors_call_nothing) {
  Stage stage(message, ORK_TRACKING_OFF);
  const messages::Made made(message, stage.handle(), 1, instance);
  for (size_t i = 0; i < message.record_count(); ++i) {
    void* record = made.record(i);
    const spy::Log log;
    message.get(stage.handle(), instance, made.get(), &stage.err, i);
    message.get_detach(stage.handle(), instance, made.get(), &stage.err, i);
    message.set(stage.handle(), instance, made.get(), record, &stage.err, i);
    EXPECT_CALLS(log, std::initializer_list<const char*>{});
    EXPECT_EQ(made.record(i), record);
  }
  for (size_t i = 0; i < message.record_count(); ++i) {
    void* const old = message.get_detach(stage.handle(), instance, made.get(), &stage.err, i);
    const spy::Log log;
    message.free_and_set(stage.handle(), instance, made.get(), old, &stage.err, i);
    EXPECT_CALLS(log, std::initializer_list<const char*>{}) << "over an empty slot";
  }
}

// The old record is destroyed, even when it is the one that is given, and stays in its slot until
// that is done.
TEST_P(CreateCalls, free_and_set_destroys_the_old_record_and_then_stores) {
  enum Way { alone, another, itself };
  Stage stage(message, ORK_TRACKING_ON);
  for (size_t i = 0; i < message.record_count(); ++i) {
    std::vector<std::vector<std::string>> calls;
    for (const Way way : {alone, another, itself}) {
      const messages::Made made(message, stage.handle(), 1, instance);
      void* const old = made.record(i);
      void* const given = way == itself ? old : nullptr;
      spy::name(old, 4, "old");
      unsigned freed = 0;
      spy::Log log;
      log.on_free = [&](const void*) {
        freed += 1;
        EXPECT_EQ(made.record(i), old);
      };
      if (way == alone) {
        Record(message.record(i)).destroy(stage.handle(), instance, old);
        message.set(stage.handle(), instance, made.get(), nullptr, &stage.err, i);
      } else {
        message.free_and_set(stage.handle(), instance, made.get(), given, &stage.err, i);
      }
      calls.push_back(log.calls());
      log.on_free = nullptr;
      EXPECT_GT(freed, 0u);
      EXPECT_EQ(message.get_detach(stage.handle(), instance, made.get(), &stage.err, i), given);
    }
    EXPECT_CALLS(calls[another], calls[alone]);
    EXPECT_CALLS(calls[itself], calls[alone]);
  }
}

TEST_P(CreateCalls, is_valid_asks_about_the_static_descriptor) {
  Stage stage(message, ORK_TRACKING_OFF);
  const std::string question =
      std::string("ork_domain_lookup_message_ok(domain,type(") + message.name() + "),cr_error)";
  for (const uint32_t answer : {0u, 1u, 77u}) {
    const auto scripted = spy::answer(ork_domain_lookup_message_ok, answer);
    const spy::Log log;
    EXPECT_EQ(message.is_valid_cr(stage.handle()), answer);
    const messages::OwnDescriptor own(message, stage.handle());
    EXPECT_EQ(message.is_valid_cr(stage.handle()), answer);
    EXPECT_CALLS(log, std::vector<std::string>{question, question})
        << "with shared descriptors as well";
  }
}

INSTANTIATE_TEST_SUITE_P(All, CreateCalls, testing::ValuesIn(messages::all()), messages::ByName());

}  // namespace
