// What unmarshal does behind the jump of a record inside that leads out of the buffer.
#include "behaviour/encoders/arrays.h"

namespace {

using namespace encoders;

TEST(WireJumps, out_of_the_buffer_read_no_more_states) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_cl_wayfind_color_data");
  const Object object = filled(handle, calls, 0);
  const Object source = filled(handle, calls, 0);
  Bytes image = marshalled(handle, calls, source.get());
  // The embedded colour's own jump leads far outside; its parent's fields behind it find no room.
  image[6 + 2] = 0x00;
  image[6 + 3] = 0x7f;
  uint32_t err = 0;
  const std::unique_ptr<uint8_t[]> exact(new uint8_t[image.size()]);
  std::memcpy(exact.get(), image.data(), image.size());
  const uint32_t read = calls.unmarshal(handle, instance, exact.get(), object.get(),
                                        static_cast<int32_t>(image.size()), 0, &err);
  EXPECT_EQ(err, 90u);
  EXPECT_GT(read, image.size());
}

// The jump of the record inside leads 258 bytes on from that record's begin.
TEST(WireJumps, out_of_the_buffer_count_the_byte_of_each_field_and_take_none) {
  struct Case {
    const char* record;
    ork_tracking writer;
    size_t size, inside; /* of the image, and where the record inside begins */
    uint32_t read, err;
  };
  for (const auto& [record, writer, size, inside, read, expected_err] :
       {Case{"fwe_cl_wayfind_select_policy", ORK_TRACKING_ON, 59, 11, 11 + 258 + 3, 90},
        Case{"fwe_cl_wayfind_select_policy", ORK_TRACKING_OFF, 52, 10, 10 + 258, 90},
        Case{"fwe_cl_wayfind_select_all_policies", ORK_TRACKING_ON, 71, 10, 10 + 258 + 1, 0}}) {
    const Calls& calls = calls_of(record);
    const Handle source(writer);
    Bytes image = marshalled(source, calls, filled(source, calls, 1).get());
    ASSERT_EQ(image.size(), size);
    const Bytes jump = hex("00000100");
    std::copy(jump.begin(), jump.end(), image.begin() + static_cast<ptrdiff_t>(inside) + 2);
    image.resize(400, 0x77);
    for (const ork_tracking reader : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle handle(reader);
      const Object object(handle, calls);
      uint32_t err = 0;
      EXPECT_EQ(calls.unmarshal(handle, instance, image.data(), object.get(),
                                static_cast<int32_t>(size), 0, &err),
                read);
      EXPECT_EQ(err, expected_err) << record;
      for (unsigned i = 1; reader == ORK_TRACKING_ON && i < calls.schema->field_count; ++i) {
        const size_t state = calls.schema->layouts[0].body + size_t{calls.schema->fields[i].state};
        EXPECT_EQ(static_cast<const uint8_t*>(object.get())[state], 0) << record << " field " << i;
      }
      if (reader == ORK_TRACKING_ON && calls.schema->fields[1].cls == WAYFIND_RECORD_ARRAY) {
        ASSERT_NE(entry_of(object).elements, nullptr);
        EXPECT_EQ(entry_of(object).elements[0], 0);
      }
    }
  }
}

}  // namespace
