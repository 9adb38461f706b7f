#include "support.h"

namespace platform_test {
namespace {

const uint8_t state_luid[16] = {1};
const uint8_t item_luid[16] = {2};
const uint8_t other_luid[16] = {3};
const ork_bundle_message_row table[] = {
    {state_luid, "message state", 0}, {item_luid, "message item", 1}, {nullptr, nullptr, 0}};

// What a start marshal does.
Handle open_bundle() {
  Handle handle;
  handle->bundle_ctx = 1;
  handle->bundle_table = table;
  return handle;
}

uint32_t add(const Handle& handle, const uint8_t* luid) {
  uint32_t err = 0;
  bundle_message_validate_add(handle.get(), 0, luid, "message", &err);
  return err;
}

uint32_t count(const Handle& handle, const uint8_t* luid) {
  uint32_t err = 0;
  bundle_message_increment_count(handle.get(), luid, &err);
  return err;
}

TEST(Bundle, table_decides_what_is_taken) {
  const Handle handle = open_bundle();
  EXPECT_EQ(add(handle, other_luid), 2u);
  EXPECT_EQ(count(handle, other_luid), 2u);
  EXPECT_EQ(add(handle, state_luid), 0u);
  EXPECT_EQ(count(handle, state_luid), 0u);
}

TEST(Bundle, only_a_repeatable_message_comes_twice) {
  const Handle handle = open_bundle();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(add(handle, item_luid), 0u);
    EXPECT_EQ(count(handle, item_luid), 0u);
  }
  EXPECT_EQ(add(handle, state_luid), 0u);
  EXPECT_EQ(add(handle, state_luid), 0u) << "its frame failed, so it may be tried again";
  EXPECT_EQ(count(handle, state_luid), 0u);
  EXPECT_EQ(add(handle, state_luid), 17u);
}

TEST(Bundle, destroy_closes_and_forgets) {
  const Handle handle = open_bundle();
  add(handle, state_luid);
  count(handle, state_luid);
  uint32_t err = 90;
  bundle_send_message_list_destroy(handle.get(), 0, &err);
  EXPECT_EQ(err, 90u);
  EXPECT_EQ(handle->bundle_ctx, 0u);
  EXPECT_EQ(handle->bundle_send_list.next, &handle->bundle_send_list);
  handle->bundle_table = table;
  EXPECT_EQ(add(handle, state_luid), 0u);
}

TEST(Recorder, switch_and_stream_are_the_process) {
  EXPECT_EQ(orklib_msg_recorder_get_state(), 0u);
  ork_recorder_switch(7);
  EXPECT_NE(orklib_msg_recorder_get_state(), 0u);
  EXPECT_EQ(orklib_msg_recorder_get_handle(), nullptr);
  const std::string path = testing::TempDir() + "recorder_test.xml";
  uint32_t err = 0;
  ork_recorder_open(path.c_str(), &err);
  EXPECT_NE(orklib_msg_recorder_get_handle(), nullptr);
  ork_recorder_close(&err);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(orklib_msg_recorder_get_handle(), nullptr);
  EXPECT_EQ(orklib_msg_recorder_get_state(), 0u);
  std::remove(path.c_str());
  ork_recorder_open("/nonexistent/recording", &err);
  EXPECT_EQ(err, 2u);
}

TEST(Recorder, tells_at_the_end_that_the_file_took_not_all) {
  uint32_t err = 0;
  ork_recorder_open("/dev/full", &err);
  std::fputs("a message", orklib_msg_recorder_get_handle());
  ork_recorder_close(&err);
  EXPECT_EQ(err, 28u);
  err = 0;
  ork_recorder_open("/dev/full", &err);
  std::fputs("a message", orklib_msg_recorder_get_handle());
  std::fflush(orklib_msg_recorder_get_handle());
  ork_recorder_open("/dev/null", &err);
  EXPECT_NE(err, 0u) << "of the file before";
  EXPECT_NE(orklib_msg_recorder_get_handle(), nullptr);
  err = 7;
  ork_recorder_close(&err);
  EXPECT_EQ(err, 7u);
  EXPECT_EQ(orklib_msg_recorder_get_handle(), nullptr);
}

TEST(Suppress, is_an_option) {
  EXPECT_EQ(orklib_suppress_messages_enabled(Handle().get()), 0u);
  const Handle quiet([](ork_options& options) { options.suppress_messages = 1; });
  EXPECT_NE(orklib_suppress_messages_enabled(quiet.get()), 0u);
}

}  // namespace
}  // namespace platform_test
