#include <sys/socket.h>
#include <unistd.h>

#include "support.h"

namespace platform_test {
namespace {

const uint8_t item_luid[16] = {1};
const uint8_t start_luid[16] = {2};
const uint8_t commit_luid[16] = {3};

// A message of one byte of payload, read the way a module reads one. Payload 'b' is a record that
// cannot be read, 'n' a message that nobody takes.
struct Item {
  uint8_t payload;
};

uint32_t unmarshal_item(ork_handle* handle, uint32_t instance, void* ctx, void** out_msg,
                        const uint8_t* buffer, int32_t length, ork_message_handler handler,
                        uint32_t* err) {
  *out_msg = nullptr;
  auto* item = static_cast<Item*>(handle->alloc_fn(handle->mem_pool, instance, sizeof(Item)));
  if (item == nullptr) {
    *err = 12;
    return 0;
  }
  if (length < 44 || buffer[43] == 'b') {
    *err = 90;
    return 43;
  }
  item->payload = buffer[43];
  *out_msg = item;
  if (handler != nullptr) {
    handler(handle, instance, ctx, item, err);
  } else {
    *err = 38;
  }
  return 44;
}

void destroy_item(ork_handle* handle, uint32_t instance, void* msg) {
  handle->free_fn(handle->mem_pool, instance, msg);
}

uint32_t unmarshal_start(ork_handle* handle, uint32_t, void*, void**, const uint8_t*, int32_t,
                         ork_message_handler, uint32_t*) {
  handle->bundle_rx_active = 1;
  handle->bundle_rx_dispatch = orklib_in_dispatch_message_info(handle, &handle->bundle_rx_lut);
  return 43;
}

uint32_t unmarshal_commit(ork_handle* handle, uint32_t instance, void* ctx, void**, const uint8_t*,
                          int32_t, ork_message_handler, uint32_t* err) {
  const ork_bundle_dispatch_info* info = orklib_in_dispatch_message_info(handle, nullptr);
  if (info->bundle_handler != nullptr) {
    info->bundle_handler(handle, instance, ctx, err);
  }
  bundle_receive_message_list_destroy(handle, instance, err);
  return 43;
}

struct Received {
  std::string payloads;
  std::vector<void*> kept;
};

void take_item(ork_handle* handle, uint32_t instance, void* ctx, void* msg, uint32_t* err) {
  auto* received = static_cast<Received*>(ctx);
  const uint8_t payload = static_cast<Item*>(msg)->payload;
  received->payloads.push_back(static_cast<char>(payload));
  destroy_item(handle, instance, msg);
  if (payload == 'e') {
    *err = 5;
  }
}

void take_bundle(ork_handle* handle, uint32_t, void* ctx, uint32_t*) {
  auto* received = static_cast<Received*>(ctx);
  for (ork_bundle_member* member = ork_bundle_next(handle, nullptr); member != nullptr;
       member = ork_bundle_next(handle, member)) {
    received->payloads += ork_bundle_member_info(member)->name;
    received->payloads.push_back(
        static_cast<char>(static_cast<Item*>(ork_bundle_member_message(member))->payload));
    if (received->kept.empty()) {
      received->kept.push_back(ork_bundle_member_take(member));
    }
  }
}

std::vector<uint8_t> frame(const uint8_t* luid, std::string_view payload) {
  std::vector<uint8_t> bytes(27);
  const ork_message_header header{0xBC, {}, 0, 0, static_cast<uint32_t>(43 + payload.size())};
  const Handle handle;
  uint32_t err = 0;
  _ork_message_header_marshal(handle.get(), 0, bytes.data(), &header, 27, &err);
  bytes.insert(bytes.end(), luid, luid + 16);
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  return bytes;
}

class Dispatch : public testing::Test {
 protected:
  explicit Dispatch(Handle handle = Handle())
      : dispatcher_(ork_dispatcher_create(&err_)), handle_(std::move(handle)) {}
  ~Dispatch() override { ork_dispatcher_free(dispatcher_); }

  void add_rows(ork_message_handler item_handler) {
    const ork_dispatch_entry rows[] = {
        {{item_luid, "item", unmarshal_item, item_handler, nullptr}, destroy_item},
        {{start_luid, "bundle", unmarshal_start, nullptr, nullptr}, nullptr},
        {{commit_luid, "bundle", unmarshal_commit, nullptr, take_bundle}, nullptr},
    };
    for (const ork_dispatch_entry& row : rows) {
      ork_dispatcher_add(dispatcher_, &row, &err_);
    }
    EXPECT_EQ(err_, 0u);
    ork_dispatcher_add(dispatcher_, &rows[0], &err_);
    EXPECT_EQ(err_, 17u) << "the LUID is there already";
  }

  uint32_t dispatch(const std::vector<uint8_t>& bytes) {
    uint32_t err = 0;
    ork_dispatch(dispatcher_, handle_.get(), 0, &received_, bytes.data(),
                 static_cast<uint32_t>(bytes.size()), &err);
    return err;
  }

  uint32_t err_ = 0;
  ork_dispatcher* dispatcher_;
  Handle handle_;
  Received received_;
};

TEST_F(Dispatch, message_outside_a_bundle_goes_to_its_handler) {
  add_rows(take_item);
  EXPECT_EQ(dispatch(frame(item_luid, "x")), 0u);
  EXPECT_EQ(dispatch(frame(item_luid, "e")), 5u);
  EXPECT_EQ(received_.payloads, "xe");
  EXPECT_EQ(handle_.memory().live_blocks, 0u);
}

TEST_F(Dispatch, bundle_keeps_its_members_until_commit) {
  add_rows(take_item);
  EXPECT_EQ(dispatch(frame(start_luid, "")), 0u);
  EXPECT_EQ(handle_->bundle_rx_lut, dispatcher_);
  EXPECT_STREQ(handle_->bundle_rx_dispatch->name, "bundle");
  EXPECT_EQ(dispatch(frame(item_luid, "1")), 0u);
  EXPECT_EQ(dispatch(frame(item_luid, "2")), 0u);
  EXPECT_EQ(handle_.memory().live_blocks, 2u);
  EXPECT_EQ(dispatch(frame(commit_luid, "")), 0u);
  EXPECT_EQ(received_.payloads, "item1item2");
  EXPECT_EQ(handle_.memory().live_blocks, 1u) << "the one that was taken";
  destroy_item(handle_.get(), 0, received_.kept.at(0));
  EXPECT_EQ(orklib_is_accumulating_bundle(handle_.get()), 0u);
}

class DispatchInBudget : public Dispatch {
 protected:
  DispatchInBudget()
      : Dispatch(Handle([](ork_options& options) { options.memory_budget = size_t{1} << 16; })) {}
};

TEST_F(DispatchInBudget, holds_what_the_members_of_an_open_bundle_take) {
  add_rows(nullptr);
  dispatch(frame(start_luid, ""));
  uint64_t kept = 0;
  while (dispatch(frame(item_luid, "1")) == 0) {
    kept += 1;
  }
  // a block of one byte takes 80 bytes, a member of 72 as many
  EXPECT_EQ(kept, (size_t{1} << 16) / 160);
  EXPECT_EQ(handle_.memory().live_blocks, kept) << "the message without a member goes";
  EXPECT_EQ(handle_.memory().held_bytes, kept * 160);
  EXPECT_EQ(dispatch(frame(commit_luid, "")), 0u);
  EXPECT_EQ(handle_.memory().live_blocks, 1u) << "the one that was taken";
  EXPECT_EQ(handle_.memory().held_bytes, 80u);
  destroy_item(handle_.get(), 0, received_.kept.at(0));
}

TEST_F(Dispatch, nothing_is_in_dispatch_before_one_nor_after_it) {
  add_rows(take_item);
  const auto expect_nothing = [&] {
    void* lut = this;
    EXPECT_EQ(orklib_in_dispatch_message_info(handle_.get(), &lut), nullptr);
    EXPECT_EQ(lut, nullptr) << "written all the same";
    EXPECT_EQ(orklib_in_dispatch_message_info(handle_.get(), nullptr), nullptr);
  };
  expect_nothing();
  for (const auto& [luid, payload, answer] : {std::tuple(item_luid, "x", 0u),
                                              {item_luid, "b", 90u},
                                              {start_luid, "", 0u},
                                              {commit_luid, "", 0u}}) {
    EXPECT_EQ(dispatch(frame(luid, payload)), answer);
    expect_nothing();
  }
}

TEST_F(Dispatch, handle_destroy_takes_the_members_of_an_open_bundle) {
  add_rows(take_item);
  dispatch(frame(start_luid, ""));
  dispatch(frame(item_luid, "1"));
  ork_memory_report report;
  ork_handle_destroy(handle_.release(), &report);
  EXPECT_EQ(report.live_blocks, 0u);
}

TEST_F(Dispatch, frames_that_are_none_are_refused) {
  add_rows(take_item);
  const uint8_t unknown[16] = {9};
  EXPECT_EQ(dispatch(frame(unknown, "x")), 2u);
  std::vector<uint8_t> bytes = frame(item_luid, "x");
  for (size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_EQ(dispatch({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)}), 90u);
  }
  bytes[0] = 0;
  EXPECT_EQ(dispatch(bytes), 74u);
  bytes = frame(item_luid, "x");
  bytes[12] = 0x80;
  EXPECT_EQ(dispatch(bytes), 74u) << "longer than any frame";
  bytes = frame(item_luid, "x");
  bytes[15] = 42;
  EXPECT_EQ(dispatch(bytes), 74u) << "shorter than header and LUID";
  EXPECT_EQ(received_.payloads, "");
}

TEST_F(Dispatch, memory_stays_flat_over_a_million_bad_frames) {
  add_rows(nullptr);
  const auto unreadable = frame(item_luid, "b");
  const auto unwanted = frame(item_luid, "n");
  for (int i = 0; i < 500'000; ++i) {
    EXPECT_EQ(dispatch(unreadable), 90u);
    EXPECT_EQ(dispatch(unwanted), 38u);
  }
  EXPECT_EQ(handle_.memory().live_blocks, 0u);
  EXPECT_EQ(handle_.memory().allocations, 1'000'000u);
}

TEST_F(Dispatch, bad_member_leaves_the_others_alone) {
  add_rows(nullptr);
  dispatch(frame(start_luid, ""));
  EXPECT_EQ(dispatch(frame(item_luid, "1")), 0u);
  EXPECT_EQ(dispatch(frame(item_luid, "b")), 90u);
  ork_handle_fail_allocation(handle_.get(), 1);
  EXPECT_EQ(dispatch(frame(item_luid, "2")), 12u);
  EXPECT_EQ(handle_.memory().live_blocks, 1u);
}

TEST(FrameLength, cuts_a_stream) {
  const std::vector<uint8_t> bytes = frame(item_luid, "abc");
  uint32_t err = 0;
  EXPECT_EQ(ork_frame_length(bytes.data(), 42, 100, &err), 0u);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(ork_frame_length(bytes.data(), 43, 100, &err), 46u);
  EXPECT_EQ(ork_frame_length(bytes.data(), 43, 45, &err), 0u);
  EXPECT_EQ(err, 74u);
}

TEST(Send, advances_the_sequence_behind_each_frame) {
  const Handle handle;
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const uint8_t bytes[5] = {1, 2, 3, 4, 5};
  uint32_t err = 0;
  ork_send_frame(handle.get(), bytes, 5, ork_write_to_fd, &ends[0], &err);
  EXPECT_EQ(handle->send_sequence, 1u);
  uint8_t back[5] = {};
  EXPECT_EQ(read(ends[1], back, 5), 5);
  EXPECT_EQ(std::memcmp(back, bytes, 5), 0);
  close(ends[1]);
  ork_send_frame(handle.get(), bytes, 5, ork_write_to_fd, &ends[0], &err);
  EXPECT_EQ(err, 32u);
  EXPECT_EQ(handle->send_sequence, 1u);
  close(ends[0]);
}

}  // namespace
}  // namespace platform_test
