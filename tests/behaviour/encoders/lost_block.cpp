// An array whose block could not be had: its counter stays, and no form of its record has an
// element.
#include "behaviour/encoders/records.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"

namespace {

using namespace encoders;

class LostBlock : public testing::TestWithParam<const char*> {
 protected:
  const Calls& calls() const { return calls_of(GetParam()); }
  const wayfind_field& array() const { return calls().schema->fields[1]; }
  std::string name() const { return GetParam(); }

  Object of_elements(ork_handle* handle, uint32_t count) {
    Object object(handle, calls());
    set_mem(handle, object, count);
    EXPECT_EQ(err, 0u);
    return object;
  }
  // Five elements whose replacement failed.
  Object lost(ork_handle* handle) {
    Object object = of_elements(handle, 5);
    ork_handle_fail_allocation(handle, 1);
    set_mem(handle, object, 3);
    EXPECT_EQ(std::exchange(err, 0), 12u);
    return object;
  }
  void set_mem(ork_handle* handle, const Object& object, uint32_t count) {
    const Bytes values(6 * sizeof(uint32_t), 1);
    function<void(ork_handle*, uint32_t, void*, const void*, uint32_t, uint32_t*)>(
        array().functions, "_set_mem")(handle, instance, object.get(), values.data(), count, &err);
  }

  const Handle untracking{ORK_TRACKING_OFF};
  const Handle tracking{ORK_TRACKING_ON};
  uint32_t err = 0;
};

TEST_P(LostBlock, goes_out_as_no_elements) {
  const Object plain = lost(untracking);
  EXPECT_EQ(marshalled(untracking, calls(), plain.get()), hex("00 00 00000008 00000000"));
  EXPECT_EQ(calls().len(untracking, instance, plain.get()), 10u);
  const Object tracked = lost(tracking);
  EXPECT_EQ(marshalled(tracking, calls(), tracked.get()), hex("00 08 00000008 00000000"));
  EXPECT_EQ(calls().len(tracking, instance, tracked.get()), 11u) << "one state byte for the array";
}

TEST_P(LostBlock, shows_its_count_and_no_element) {
  for (const Handle* each : {&untracking, &tracking}) {
    const Object object = lost(*each);
    EXPECT_EQ(printed(*each, calls(), object.get()),
              name() + "@" + name() + ": {\n  num_hops: 5\n}\n");
    EXPECT_EQ(as_xml(*each, calls(), object.get()),
              "<" + name() + ">\n<num_hops>5</num_hops>\n</" + name() + ">\n");
  }
}

TEST_P(LostBlock, hashes_and_compares_by_its_count_alone) {
  const Object object = lost(untracking);
  const uint32_t count = 5;
  EXPECT_EQ(calls().hash(object.get(), 9), u_int32_hash(&count, u_int32_hash(&count, 9)))
      << "the count goes in twice";
  for (const uint32_t other : {4U, 5U, 6U}) {
    const Object whole = of_elements(untracking, other);
    const int32_t order = static_cast<int32_t>(count) - static_cast<int32_t>(other);
    EXPECT_EQ(calls().compare(object.get(), whole.get()), order) << other;
    EXPECT_EQ(calls().compare(whole.get(), object.get()), -order) << other;
  }
}

TEST_P(LostBlock, is_moved_as_it_is) {
  for (const Handle* each : {&untracking, &tracking}) {
    const Object source = lost(*each);
    const Object target(*each, calls());
    function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(
        calls().schema->functions, "_set")(*each, instance, target.get(), source.get(), &err);
    EXPECT_EQ(err, 0u);
    const auto word = [&](const Object& object, unsigned field) {
      uint32_t value;
      std::memcpy(&value,
                  static_cast<const uint8_t*>(object.get()) + calls().schema->fields[field].offset,
                  sizeof value);
      return value;
    };
    EXPECT_EQ(word(target, 0), 5u);
    EXPECT_EQ(word(target, 1), 0u) << "of the pointer";
    EXPECT_EQ(word(source, 0), 0u);
    EXPECT_EQ(marshalled(*each, calls(), target.get()), marshalled(*each, calls(), source.get()));
  }
}

INSTANTIATE_TEST_SUITE_P(Records, LostBlock,
                         testing::Values("fwe_cl_wayfind_sel_lb_path_st",
                                         "fwe_cl_wayfind_sel_lb_src_intf_st",
                                         "fwe_cl_wayfind_sel_lb_dst_site_st",
                                         "fwe_cl_wayfind_sel_lb_dst_intf_st"),
                         [](const auto& which) { return std::string(which.param); });

}  // namespace
