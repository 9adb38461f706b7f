// The state bytes of an array's elements when there is no memory for them, and when an image
// without any makes the array shorter.
#include "behaviour/encoders/arrays.h"
#include "support/guarded_blocks.h"
#include "support/spied.h"

namespace {

using namespace encoders;

constexpr const char* path_name = "fwe_cl_wayfind_sel_lb_path_st";
constexpr const char* readable_name = "fwe_cl_wayfind_sel_lb_path_human_readable_st";

Bytes image_of(const Calls& calls, ork_tracking tracking, uint32_t elements) {
  const Handle writer(tracking);
  return marshalled(writer, calls, filled(writer, calls, elements).get());
}

uint32_t read(ork_handle* handle, const Calls& calls, const Bytes& image, const Object& object,
              uint32_t reuse) {
  uint32_t err = 0;
  const uint32_t consumed = calls.unmarshal(handle, instance, image.data(), object.get(),
                                            static_cast<int32_t>(image.size()), reuse, &err);
  EXPECT_EQ(consumed, err == 0 ? image.size() : 0u);
  return err;
}

// A tracked array of three elements. Its record has a body of 32 bytes, the count at 12, the
// pointer at 16; the array's state entry follows, with the pointer to the element bytes at 40.
class ElementStatesWithoutMemory : public testing::Test {
 protected:
  explicit ElementStatesWithoutMemory(const char* record = path_name)
      : calls(calls_of(record)), object(filled(handle, calls, 3)) {
    spy::name(object.get(), 48, "obj");
    spy::name_at(array_of(object).block, "block");
    spy::name_at(entry_of(object).elements, "elements");
  }

  // What a read of that image does with memory, when the second allocation from now on fails: that
  // of the element bytes.
  std::vector<std::string> calls_of_failed_read(const Bytes& image, uint32_t reuse) {
    uint32_t count = 99;
    const void* elements = this;
    const auto stored = spy::replace(ork_store_err, [&](ork_handle* h, uint32_t number) {
      count = array_of(object).count;
      elements = entry_of(object).elements;
      spy::next(ork_store_err)(h, number);
    });
    spy::fail_alloc(2);
    spy::Log log;
    EXPECT_EQ(read(handle, calls, image, object, reuse), 12u);
    spy::fail_alloc(0);
    EXPECT_EQ(handle.last_error(), 12u);
    EXPECT_EQ(elements, nullptr) << "dropped before the error is stored";
    EXPECT_EQ(count, array_of(object).count) << "stored before the error";
    return log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "ork_store_err"});
  }

  SpiedHandle handle{kit::tracked};
  const Calls& calls;
  const Object object;
};

TEST_F(ElementStatesWithoutMemory, are_dropped_before_the_error_is_stored_once) {
  EXPECT_CALLS(calls_of_failed_read(image_of(calls, ORK_TRACKING_ON, 2), 0),
               {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,8)=new1",
                "free_fn(7,elements)", "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,2)=null",
                "ork_store_err(12)"});
  EXPECT_EQ(array_of(object).count, 2u) << "values need no state bytes";
}

TEST_F(ElementStatesWithoutMemory, are_dropped_before_the_error_also_where_the_image_has_none) {
  EXPECT_CALLS(calls_of_failed_read(image_of(calls, ORK_TRACKING_OFF, 2), 1),
               {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,8)=new1",
                "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,2)=null", "free_fn(7,elements)",
                "ork_store_err(12)"});
  EXPECT_EQ(array_of(object).count, 2u);
}

// Elements of 40 bytes with a state byte each.
class ElementStatesOfRecordsWithoutMemory : public ElementStatesWithoutMemory {
 protected:
  ElementStatesOfRecordsWithoutMemory() : ElementStatesWithoutMemory(readable_name) {}
};

TEST_F(ElementStatesOfRecordsWithoutMemory, go_before_the_count_and_the_error_is_stored_once) {
  for (const uint32_t reuse : {0U, 1U}) {
    EXPECT_CALLS(calls_of_failed_read(image_of(calls, ORK_TRACKING_ON, 2), reuse),
                 {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,82)=new1",
                  "free_fn(7,elements)", "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,2)=null",
                  "write_notify_fn(obj+12,4,7,obj)", "ork_store_err(12)"})
        << reuse;
    EXPECT_EQ(array_of(object).count, 0u) << "elements that were never initialized are none";
    EXPECT_EQ(read(handle, calls, image_of(calls, ORK_TRACKING_ON, 3), object, 0), 0u);
    spy::name_at(array_of(object).block, "block");
    spy::name_at(entry_of(object).elements, "elements");
  }
}

TEST_F(ElementStatesOfRecordsWithoutMemory, go_before_the_count_even_where_the_image_has_none) {
  EXPECT_CALLS(calls_of_failed_read(image_of(calls, ORK_TRACKING_OFF, 2), 0),
               {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,82)=new1",
                "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,2)=null", "free_fn(7,elements)",
                "write_notify_fn(obj+12,4,7,obj)", "ork_store_err(12)"});
  EXPECT_EQ(array_of(object).count, 0u);
}

// ---- Growth and the whole array ---------------------------------------------

TEST_F(ElementStatesWithoutMemory, end_growth_behind_the_count) {
  const uint32_t value = 5;
  uint32_t err = 0;
  spy::fail_alloc(2);
  spy::Log log;
  function<void(ork_handle*, uint32_t, void*, uint32_t, const void*, uint32_t*)>(
      calls.schema->fields[1].functions, "_set")(handle, instance, object.get(), 4, &value, &err);
  EXPECT_EQ(err, 12u);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "ork_store_err"}),
               {"alloc_fn(7,20)=new1", "write_notify_fn(obj+16,8,7,obj)", "free_fn(7,block)",
                "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(obj+40,8,7,null)",
                "alloc_fn(7,5)=null", "free_fn(7,elements)", "ork_store_err(12)"});
  EXPECT_EQ(array_of(object).count, 5u);
}

TEST_F(ElementStatesOfRecordsWithoutMemory, end_growth_behind_the_new_elements) {
  const Object element(handle, calls_of("fwe_cl_wayfind_hop_id_readable_format_st"));
  uint32_t err = 0;
  spy::fail_alloc(2);
  spy::Log log;
  function<void(ork_handle*, uint32_t, void*, uint32_t, const void*, uint32_t*)>(
      calls.schema->fields[1].functions, "_set")(handle, instance, object.get(), 3, element.get(),
                                                 &err);
  EXPECT_EQ(err, 12u);
  EXPECT_CALLS(
      log.calls_of({"alloc_fn", "free_fn", "orklib_type_stats_create_object", "ork_store_err"}),
      {"alloc_fn(7,164)=new1", "free_fn(7,block)",
       "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_hop_id_readable_format_st),"
       "?,?)",
       "alloc_fn(7,4)=null", "free_fn(7,elements)", "ork_store_err(12)"});
  EXPECT_EQ(array_of(object).count, 4u);
}

TEST_F(ElementStatesWithoutMemory, end_a_set_of_the_whole_array_behind_its_mark) {
  const uint32_t values[] = {1, 2};
  uint32_t err = 0;
  spy::fail_alloc(2);
  spy::Log log;
  function<void(ork_handle*, uint32_t, void*, const void*, uint32_t, uint32_t*)>(
      calls.schema->fields[1].functions, "_set_mem")(handle, instance, object.get(), values, 2,
                                                     &err);
  EXPECT_EQ(err, 12u);
  EXPECT_CALLS(
      log.calls_of({"alloc_fn", "free_fn", "write_notify_fn", "ork_store_err"}),
      {"free_fn(7,block)", "write_notify_fn(obj+16,8,7,obj)", "alloc_fn(7,8)=new1",
       "write_notify_fn(obj+12,4,7,obj)", "write_notify_fn(obj+32,1,7,null)", "free_fn(7,elements)",
       "write_notify_fn(obj+40,8,7,null)", "alloc_fn(7,2)=null", "ork_store_err(12)"});
}

// ---- Fewer elements ---------------------------------------------------------

TEST(ElementStatesOfAShrunkArray, are_kept_where_the_image_has_no_states) {
  for (const char* const name : {path_name, readable_name}) {
    const Calls& calls = calls_of(name);
    for (const uint32_t left : {1U, 2U}) {
      const Handle handle(ORK_TRACKING_ON);
      const kit::GuardedBlocks blocks(handle);
      const Object object = filled(handle, calls, 3);
      const Bytes states = hex("070809");
      std::copy(states.begin(), states.end(), entry_of(object).elements);
      EXPECT_EQ(read(handle, calls, image_of(calls, ORK_TRACKING_OFF, left), object, 0), 0u);
      EXPECT_EQ(array_of(object).count, left);
      const uint8_t* const elements = entry_of(object).elements;
      ASSERT_NE(elements, nullptr);
      EXPECT_EQ(Bytes(elements, elements + left), Bytes(states.begin(), states.begin() + left));
      EXPECT_TRUE(blocks.whole()) << name << " of " << left;
    }
  }
}

}  // namespace
