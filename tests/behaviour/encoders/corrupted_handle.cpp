// What the forms do under a handle whose mode word is neither of the two: those that look at it end
// the process.
#include "behaviour/encoders/records.h"

namespace {

using namespace encoders;

const Calls& mem() { return calls_of("fwe_cl_wayfind_mem_st"); }

class CorruptedHandle : public testing::Test {
 protected:
  CorruptedHandle() : handle(ORK_TRACKING_ON), object(handle, mem()) {}

  void corrupt() const { handle->sttr_info->sttr_mode = 0xDEAD; }
  ~CorruptedHandle() override { handle->sttr_info->sttr_mode = ORK_STTR_ON; }

  const Handle handle;
  const Object object;
  Bytes buffer = Bytes(100);
  uint32_t err = 0;
};
using CorruptedHandleDeathTest = CorruptedHandle;

TEST_F(CorruptedHandleDeathTest, ends_marshal) {
  corrupt();
  EXPECT_DEATH(mem().marshal(handle, instance, buffer.data(), object.get(), 90, &err),
               "Corrupted ORK Handle");
}

TEST_F(CorruptedHandleDeathTest, ends_unmarshal) {
  corrupt();
  EXPECT_DEATH(mem().unmarshal(handle, instance, buffer.data(), object.get(), 90, 0, &err),
               "Corrupted ORK Handle");
}

TEST_F(CorruptedHandleDeathTest, ends_length) {
  corrupt();
  EXPECT_DEATH(mem().len(handle, instance, object.get()), "Corrupted ORK Handle");
}

TEST_F(CorruptedHandleDeathTest, is_not_looked_at_for_the_length_of_a_null_record) {
  corrupt();
  EXPECT_EQ(mem().len(handle, instance, nullptr), 26u);
}

TEST_F(CorruptedHandleDeathTest, ends_to_xml) {
  corrupt();
  char text[200];
  EXPECT_DEATH(mem().to_xml(handle, instance, "x", text, object.get(), sizeof text, 0, &err),
               "Corrupted ORK Handle");
}

TEST_F(CorruptedHandleDeathTest, is_not_looked_at_by_to_xml_once_an_error_stands) {
  corrupt();
  char text[200] = "";
  err = 5;
  EXPECT_EQ(mem().to_xml(handle, instance, "x", text, object.get(), sizeof text, 0, &err), 0u);
  EXPECT_EQ(err, 5u);
  EXPECT_STREQ(text, "");
}

TEST_F(CorruptedHandleDeathTest, is_not_looked_at_by_print_and_from_xml) {
  corrupt();
  char text[200] = "";
  mem().print(handle, instance, text, 0, "x", object.get(), sizeof text, &err);
  const Document document =
      parsed("<fwe_cl_wayfind_mem_st><fwe_num>5</fwe_num></fwe_cl_wayfind_mem_st>");
  mem().from_xml(handle, instance, "//fwe_cl_wayfind_mem_st", document.get(), object.get(), &err,
                 nullptr, 0);
  EXPECT_EQ(err, 0u);
}

}  // namespace
