// The storage of arrays while they are read: which blocks go, which come, in which order, and that
// the bytes of the elements' states never number fewer than the elements.
#include "behaviour/encoders/arrays.h"
#include "support/spied.h"

namespace {

using namespace encoders;

constexpr const char* path_name = "fwe_cl_wayfind_sel_lb_path_st";
constexpr const char* readable_name = "fwe_cl_wayfind_sel_lb_path_human_readable_st";

const Calls& path() { return calls_of(path_name); }
const Calls& readable() { return calls_of(readable_name); }

// A path of that many hops, as a handle with that tracking writes it.
Bytes image_of(const Calls& calls, ork_tracking tracking, uint32_t hops) {
  const Handle writer(tracking);
  return marshalled(writer, calls, filled(writer, calls, hops).get());
}

uint32_t read(ork_handle* handle, const Calls& calls, const Bytes& image, const Object& object,
              uint32_t reuse) {
  uint32_t err = 0;
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  reuse, &err);
  return err;
}

void read_without_tracking(ork_handle* handle, const Calls& calls, const Object& object,
                           uint32_t hops) {
  ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
  EXPECT_EQ(read(handle, calls, image_of(calls, ORK_TRACKING_OFF, hops), object, 0), 0u);
  ork_handle_set_tracking(handle, ORK_TRACKING_ON);
}

// ---- State bytes of elements ------------------------------------------------

class ElementStatesOfATrackedPath : public testing::Test {
 protected:
  // Either there are no bytes for the elements' states, or there is one for each of them: a mark
  // on the last one is safe.
  void expect_states_for_each_element() {
    EXPECT_EQ(array_of(object).count, 5u);
    const uint64_t held = handle.memory().live_bytes - (32 + 16) - 5 * sizeof(uint32_t);
    EXPECT_TRUE(entry_of(object).elements == nullptr ? held == 0 : held >= 5)
        << held << " bytes for 5 elements";
    uint32_t err = 0;
    function<void(ork_handle*, uint32_t, void*, uint32_t, uint8_t, uint32_t*)>(
        path().schema->fields[1].functions, "_state_flag_set")(handle, instance, object.get(), 4, 9,
                                                               &err);
    EXPECT_EQ(err, 0u);
  }

  const Handle handle{ORK_TRACKING_ON};
  const Object object = filled(handle, path(), 1);
};

TEST_F(ElementStatesOfATrackedPath, are_given_back_when_the_block_cannot_be_had) {
  for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    ASSERT_EQ(read(handle, path(), image_of(path(), ORK_TRACKING_ON, 1), object, 0), 0u);
    ASSERT_NE(entry_of(object).elements, nullptr);
    ork_handle_fail_allocation(handle, 1);
    EXPECT_EQ(read(handle, path(), image_of(path(), writer, 5), object, 0), 12u);
    EXPECT_EQ(array_of(object).count, 5u);
    EXPECT_EQ(array_of(object).block, nullptr);
    EXPECT_EQ(entry_of(object).elements, nullptr);
    EXPECT_EQ(read(handle, path(), image_of(path(), ORK_TRACKING_OFF, 5), object, 0), 0u)
        << "the count is that of the failure";
    expect_states_for_each_element();
  }
}

TEST_F(ElementStatesOfATrackedPath, are_not_too_few_after_a_read_without_tracking) {
  read_without_tracking(handle, path(), object, 5);
  expect_states_for_each_element();
}

// ---- What was read while tracking was off -----------------------------------

struct Without {
  const char* record;
  std::vector<std::string> allocations;
};

class ArrayReadWithoutTracking : public testing::TestWithParam<Without> {};

// An element of the second record has a body of 40 bytes and one state byte.
TEST_P(ArrayReadWithoutTracking, gets_room_for_its_states_once_they_are_sent_even_with_reuse) {
  const Calls& calls = calls_of(GetParam().record);
  SpiedHandle handle(kit::tracked);
  const Object object(handle, calls);
  read_without_tracking(handle, calls, object, 3);
  EXPECT_EQ(array_of(object).count, 3u);
  EXPECT_EQ(entry_of(object).elements, nullptr);
  const Bytes image = image_of(calls, ORK_TRACKING_ON, 3);
  spy::Log log;
  EXPECT_EQ(read(handle, calls, image, object, 1), 0u);
  EXPECT_CALLS(log.calls_of({"alloc_fn"}), GetParam().allocations);
  EXPECT_EQ(marshalled(handle, calls, object.get()), image);
  ASSERT_NE(entry_of(object).elements, nullptr);
  EXPECT_EQ(Bytes(entry_of(object).elements, entry_of(object).elements + 3),
            Bytes(image.end() - 3, image.end()));
  if (&calls == &readable()) {
    const auto* const block = static_cast<const uint8_t*>(array_of(object).block);
    const std::string name = calls.name();
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(block[120 + i],
                state_of(name + "/path_id_str[" + std::to_string(i) + "]/hop_id_str"));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Records, ArrayReadWithoutTracking,
                         testing::Values(Without{path_name, {"alloc_fn(7,3)=new1"}},
                                         Without{readable_name,
                                                 {"alloc_fn(7,123)=new1", "alloc_fn(7,3)=new2"}}),
                         [](const auto& which) { return std::string(which.param.record); });

// ---- What elements own ------------------------------------------------------

// The record, its array and those of its two elements; with tracking each array has a block of
// state bytes as well.
TEST(ArrayStorage, goes_with_all_that_its_elements_own_when_the_image_is_empty) {
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data");
  for (const auto& [tracking, before, after] :
       {std::tuple{ORK_TRACKING_OFF, 4u, 1u}, {ORK_TRACKING_ON, 7u, 2u}}) {
    for (const uint32_t reuse : {0U, 1U}) {
      const Handle handle(tracking);
      const Object object = filled(handle, calls, 2);
      EXPECT_EQ(handle.memory().live_blocks, before);
      EXPECT_EQ(read(handle, calls, image_of(calls, tracking, 0), object, reuse), 0u);
      EXPECT_EQ(handle.memory().live_blocks, after)
          << "the record, and with tracking the state bytes of its own array";
    }
  }
}

// ---- Calls ------------------------------------------------------------------

std::vector<std::string> storage_calls(const spy::Log& log) {
  return log.calls_of({"free_fn", "write_notify_fn", "alloc_fn"});
}

TEST(ArrayStorage, goes_before_the_pointer_is_announced_and_new_storage_comes_last) {
  for (const uint32_t hops : {0U, 2U}) {
    SpiedHandle handle;
    const Bytes image = image_of(path(), ORK_TRACKING_OFF, hops);
    const Object object = filled(handle, path(), 2);
    spy::name(object.get(), 32, "obj");
    spy::name(array_of(object).block, 8, "block");
    spy::Log log;
    EXPECT_EQ(read(handle, path(), image, object, 0), 0u);
    std::vector<std::string> expected = {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)"};
    if (hops != 0) {
      expected.emplace_back("alloc_fn(7,8)=new1");
    }
    EXPECT_CALLS(storage_calls(log), expected);
  }
}

class TrackedArrayStorage : public testing::Test {
 protected:
  TrackedArrayStorage() {
    spy::name(object.get(), 48, "obj");
    spy::name(array_of(object).block, 3 * sizeof(uint32_t), "block");
    spy::name(elements, 3, "elements");
  }

  SpiedHandle handle{kit::tracked};
  const Object object = filled(handle, path(), 3);
  const Bytes image = marshalled(handle, path(), object.get());
  uint8_t* const elements = entry_of(object).elements;
};

TEST_F(TrackedArrayStorage, goes_and_comes_one_block_after_the_other) {
  spy::Log log;
  EXPECT_EQ(read(handle, path(), image, object, 0), 0u);
  EXPECT_CALLS(storage_calls(log),
               {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,12)=new1",
                "free_fn(7,elements)", "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,3)=new2"});
}

TEST_F(TrackedArrayStorage, that_is_kept_is_announced_before_it_is_cleared) {
  std::memset(elements, 0xee, 3);
  Bytes when_announced;
  spy::Log log;
  log.on_announcement = [&](const spy::Announcement& announcement) {
    if (announcement.address == elements) {
      when_announced.assign(elements, elements + 3);
    }
  };
  EXPECT_EQ(read(handle, path(), image, object, 1), 0u);
  EXPECT_CALLS(storage_calls(log),
               {"write_notify_fn(block,12,7,obj)", "write_notify_fn(elements,3,7,null)"});
  EXPECT_EQ(when_announced, Bytes(3, 0xee));
}

TEST(ArrayStorage, holds_elements_whose_headers_are_announced_as_they_are_written) {
  SpiedHandle handle;
  const Object object(handle, readable());
  spy::name(object.get(), 32, "obj");
  const Bytes image = image_of(readable(), ORK_TRACKING_OFF, 1);
  spy::Log log;
  EXPECT_EQ(read(handle, readable(), image, object, 0), 0u);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               {"write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(new1+9,1,7,new1)",
                "write_notify_fn(new1+8,1,7,new1)", "write_notify_fn(new1,8,7,new1)",
                "write_notify_fn(new1+10,1,7,new1)"});
}

// Two elements of 40 bytes each; with tracking the block holds a state byte for each of them as
// well.
TEST(ArrayStorage, that_is_kept_is_announced_when_its_old_elements_are_gone) {
  const std::string destroy =
      "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_hop_id_readable_format_st),?,?)";
  const std::string first_element = "write_notify_fn(block+9,1,7,block)";
  for (const auto& [mode, expected] :
       {std::pair{kit::plain,
                  std::vector<std::string>{destroy, destroy, "write_notify_fn(block,80,7,obj)",
                                           first_element}},
        {kit::tracked,
         {destroy, "ork_hd_mapping_destroy(7,block,?)", destroy,
          "ork_hd_mapping_destroy(7,block+40,?)", "write_notify_fn(block,82,7,obj)",
          "write_notify_fn(elements,2,7,null)", first_element}}}) {
    SpiedHandle handle(mode);
    const Object object = filled(handle, readable(), 2);
    const Bytes image = marshalled(handle, readable(), object.get());
    const bool tracked = handle.tracking();
    spy::name(object.get(), 32, "obj");
    spy::name(array_of(object).block, tracked ? 82 : 80, "block");
    if (tracked) {
      spy::name(entry_of(object).elements, 2, "elements");
    }
    spy::Log log;
    EXPECT_EQ(read(handle, readable(), image, object, 1), 0u);
    auto calls = log.calls_of(
        {"orklib_type_stats_destroy_object", "ork_hd_mapping_destroy", "write_notify_fn"});
    calls.resize(expected.size());
    EXPECT_CALLS(calls, expected);
  }
}

}  // namespace
