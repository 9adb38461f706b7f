// Marshal into buffers of every length that is not enough, and one more: what does not fit is an
// error, and no byte is written but the one behind the buffer that a state byte may take.
#include "behaviour/encoders/values.h"

namespace {

using namespace encoders;

constexpr uint8_t guard = 0xa5;
constexpr size_t guards = 64;

// How many bytes at the end of an image are state bytes; those may be missing without an error.
int32_t states_at_end(const wayfind_record& record, uint32_t elements) {
  const wayfind_field& last = record.fields[record.field_count - 1];
  const auto count = static_cast<int32_t>(elements);
  switch (last.cls) {
    case WAYFIND_VALUE_ARRAY: return count == 0 ? 0 : 1 + count;
    case WAYFIND_RECORD_ARRAY:
      return count == 0 ? 0 : 1 + count + states_at_end(*last.record, elements);
    default: return 1 + (last.record != nullptr ? states_at_end(*last.record, elements) : 0);
  }
}

bool ends_in_array(const wayfind_record& record) {
  const wayfind_class cls = record.fields[record.field_count - 1].cls;
  return cls == WAYFIND_VALUE_ARRAY || cls == WAYFIND_RECORD_ARRAY;
}

class ShortBuffers : public testing::TestWithParam<unsigned> {
 protected:
  const Calls& calls() const { return all_records()[GetParam()]; }
};

void expect_guarded(const Bytes& bytes, int32_t length, bool tracking, const std::string& where) {
  const size_t end =
      guards + static_cast<size_t>(std::max(length, 0)) + (tracking && length > 0 ? 1 : 0);
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i < guards || i >= end) {
      ASSERT_EQ(bytes[i], guard) << where << ", byte "
                                 << static_cast<long>(i) - static_cast<long>(guards);
    }
  }
}

TEST_P(ShortBuffers, is_filled_as_far_as_it_goes_and_never_left) {
  for (const uint32_t elements : {0U, 3U}) {
    if (elements != 0 && !holds_arrays(*calls().schema)) {
      continue;
    }
    // The last is a record without states, which are written as zeros.
    for (const auto& [made, tracking] : {std::pair{ORK_TRACKING_OFF, ORK_TRACKING_OFF},
                                         {ORK_TRACKING_ON, ORK_TRACKING_ON},
                                         {ORK_TRACKING_OFF, ORK_TRACKING_ON}}) {
      const Handle handle(made);
      const Object object = filled(handle, calls(), elements);
      ork_handle_set_tracking(handle, tracking);
      const Bytes image = marshalled(handle, calls(), object.get());
      const auto needed = static_cast<int32_t>(image.size());
      const int32_t enough =
          needed - (tracking == ORK_TRACKING_ON ? states_at_end(*calls().schema, elements) : 0);
      // At the end of the buffer each state byte is stored over the one before, but those of
      // an array's elements are not.
      const int32_t last =
          needed - 1 - (ends_in_array(*calls().schema) ? static_cast<int32_t>(elements) : 0);
      for (int32_t length = -1; length <= needed + 1; ++length) {
        Bytes bytes(image.size() + 2 * guards + 1, guard);
        uint32_t err = 0;
        const uint32_t written =
            calls().marshal(handle, instance, bytes.data() + guards, object.get(), length, &err);
        const std::string where =
            "length " + std::to_string(length) + " of " + std::to_string(needed);
        ASSERT_NO_FATAL_FAILURE(expect_guarded(bytes, length, tracking == ORK_TRACKING_ON, where));
        if (length >= needed) {
          EXPECT_EQ(err, 0u) << where;
          EXPECT_EQ(written, image.size()) << where;
          EXPECT_EQ(Bytes(bytes.begin() + guards, bytes.begin() + guards + needed), image) << where;
        } else if (length >= enough) {
          EXPECT_EQ(err, 0u) << where;
          EXPECT_EQ(static_cast<int32_t>(written), length) << where;
          EXPECT_TRUE(std::equal(image.begin() + enough, image.begin() + length,
                                 bytes.begin() + guards + enough))
              << where;
          EXPECT_EQ(bytes[guards + static_cast<size_t>(length)],
                    length <= last ? image[static_cast<size_t>(last)] : guard)
              << "behind the buffer, " << where;
        } else {
          EXPECT_EQ(err, 90u) << where;
          EXPECT_EQ(ork_handle_last_error(handle), 90u) << where;
        }
      }
    }
  }
}

TEST_P(ShortBuffers, of_text_or_xml_ends_in_a_nul_and_is_never_left) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, calls(), 2);
  const std::string text = printed(handle, calls(), object.get());
  const std::string xml = as_xml(handle, calls(), object.get());
  const size_t longest = std::max(text.size(), xml.size());
  const size_t step = longest > 2000 ? 7 : 1;
  for (size_t length = 1; length <= longest + 2; length += step) {
    for (const bool print : {true, false}) {
      const std::unique_ptr<char[]> exact(new char[length]());
      uint32_t err = 0;
      const uint32_t written =
          print ? calls().print(handle, instance, exact.get(), 0, calls().name(), object.get(),
                                static_cast<uint32_t>(length), &err)
                : calls().to_xml(handle, instance, calls().name(), exact.get(), object.get(),
                                 static_cast<uint32_t>(length), 0, &err);
      const std::string& whole = print ? text : xml;
      EXPECT_LT(written, length);
      EXPECT_EQ(err, whole.size() < length ? 0u : 90u)
          << "length " << length << " of " << whole.size();
      EXPECT_NE(std::memchr(exact.get(), 0, length), nullptr) << "length " << length;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Records, ShortBuffers, testing::Range(0U, wayfind_record_count),
                         short_name);

}  // namespace
