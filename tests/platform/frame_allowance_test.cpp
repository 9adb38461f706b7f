// What may be allocated while a frame is read.
#include <cerrno>

#include "support.h"

namespace platform_test {
namespace {

const uint8_t blocks_luid[16] = {1};
const uint8_t control_luid[16] = {2};
const uint8_t unwanted_luid[16] = {3};

constexpr size_t block_size = 100;
constexpr size_t block_cost = 176;  // with 72 bytes in front, in pieces of 16

// Takes blocks for as long as there are any to take, up to wanted, and gives them back.
uint32_t take_blocks(ork_handle* handle, uint32_t wanted) {
  std::vector<void*> blocks;
  while (blocks.size() < wanted) {
    void* block = handle->alloc_fn(handle->mem_pool, 0, block_size);
    if (block == nullptr) {
      break;
    }
    blocks.push_back(block);
  }
  for (void* block : blocks) {
    handle->free_fn(handle->mem_pool, 0, block);
  }
  return static_cast<uint32_t>(blocks.size());
}

// What a dispatch saw.
struct Seen {
  uint32_t while_read = 0;
  uint32_t in_handler = 0;
  std::function<void(ork_handle*)> handle;  // what the handler does first
};

// Reading takes as many blocks as there are; the handler may be null.
uint32_t read_message(ork_handle* handle, uint32_t instance, void* ctx, void** out_msg,
                      const uint8_t*, int32_t length, ork_message_handler handler, uint32_t* err) {
  auto& seen = *static_cast<Seen*>(ctx);
  seen.while_read = take_blocks(handle, 20);
  *out_msg = &seen;
  if (handler != nullptr) {
    handler(handle, instance, ctx, &seen, err);
  } else {
    *err = ENOSYS;
  }
  return static_cast<uint32_t>(length);
}

uint32_t read_control(ork_handle* handle, uint32_t, void* ctx, void**, const uint8_t*,
                      int32_t length, ork_message_handler, uint32_t*) {
  static_cast<Seen*>(ctx)->while_read = take_blocks(handle, 20);
  return static_cast<uint32_t>(length);
}

void handle_message(ork_handle* handle, uint32_t, void* ctx, void* msg, uint32_t*) {
  auto& seen = *static_cast<Seen*>(ctx);
  EXPECT_EQ(msg, &seen);
  if (seen.handle) {
    seen.handle(handle);
  }
  seen.in_handler = take_blocks(handle, 20);
}

void keep_message(ork_handle*, uint32_t, void*) {}

class FrameAllowance : public testing::Test {
 protected:
  FrameAllowance() : dispatcher_(ork_dispatcher_create(&err_)) {
    const ork_dispatch_entry rows[] = {
        {{blocks_luid, "blocks", read_message, handle_message, nullptr}, keep_message},
        {{control_luid, "bundle", read_control, nullptr, nullptr}, nullptr},
        {{unwanted_luid, "unwanted", read_message, nullptr, nullptr}, keep_message}};
    for (const ork_dispatch_entry& row : rows) {
      ork_dispatcher_add(dispatcher_, &row, &err_);
    }
    EXPECT_EQ(err_, 0u);
  }
  ~FrameAllowance() override { ork_dispatcher_free(dispatcher_); }

  static Handle bounded(size_t base, size_t factor, ork_tracking tracking = ORK_TRACKING_OFF) {
    return Handle([&](ork_options& options) {
      options.frame_base = base;
      options.frame_factor = factor;
      options.tracking = tracking;
    });
  }

  void dispatch(ork_handle* handle, const uint8_t* luid, uint32_t length, Seen& seen,
                uint32_t expected = 0) {
    std::vector<uint8_t> frame(length + 1);
    const ork_message_header header{ORK_MESSAGE_MARKER, {}, 0, 0, length};
    uint32_t err = 0;
    _ork_message_header_marshal(handle, 0, frame.data(), &header, 27, &err);
    std::memcpy(frame.data() + 27, luid, 16);
    EXPECT_EQ(ork_dispatch(dispatcher_, handle, 0, &seen, frame.data(), length, &err), length);
    EXPECT_EQ(err, expected);
  }

  // How many blocks reading a frame gets.
  uint32_t blocks_for(const Handle& handle, uint32_t length) {
    Seen seen;
    dispatch(handle.get(), blocks_luid, length, seen);
    EXPECT_EQ(seen.in_handler, 20u);
    return seen.while_read;
  }

  uint32_t err_ = 0;
  ork_dispatcher* dispatcher_;
};

TEST_F(FrameAllowance, is_all_there_is_unless_told_otherwise) {
  EXPECT_EQ(blocks_for(Handle(), 44), 20u);
}

TEST_F(FrameAllowance, is_a_base_and_a_part_for_each_byte) {
  EXPECT_EQ(blocks_for(bounded(3 * block_cost, 0), 44), 3u);
  EXPECT_EQ(blocks_for(bounded(3 * block_cost - 1, 0), 44), 2u);
  EXPECT_EQ(blocks_for(bounded(0, block_cost / 44), 44), 1u);
  EXPECT_EQ(blocks_for(bounded(0, block_cost / 44), 440), 10u);
  EXPECT_EQ(blocks_for(bounded(block_cost, block_cost / 44), 439), 10u);
  EXPECT_EQ(blocks_for(bounded(1, 0), 44), 0u);
  EXPECT_EQ(blocks_for(bounded(1, SIZE_MAX), 44), 20u) << "a sum past all numbers";
}

TEST_F(FrameAllowance, begins_anew_with_each_frame) {
  const Handle handle = bounded(3 * block_cost, 0);
  for (int frame = 0; frame < 3; ++frame) {
    EXPECT_EQ(blocks_for(handle, 44), 3u);
  }
}

TEST_F(FrameAllowance, ends_with_the_frame_whoever_took_it) {
  const Handle handle = bounded(3 * block_cost, 0);
  Seen seen;
  dispatch(handle.get(), unwanted_luid, 44, seen, ENOSYS);
  EXPECT_EQ(seen.while_read, 3u);
  EXPECT_EQ(take_blocks(handle.get(), 20), 20u);
  dispatch(handle.get(), blocks_luid, 44, seen);
  EXPECT_EQ(take_blocks(handle.get(), 20), 20u);
}

TEST_F(FrameAllowance, counts_the_distances_that_a_tracked_block_may_come_to) {
  const size_t tracked = block_cost + block_size / 24 * 64;
  EXPECT_EQ(ork_block_cost(block_size, ORK_TRACKING_OFF), block_cost);
  EXPECT_EQ(ork_block_cost(block_size, ORK_TRACKING_ON), tracked);
  EXPECT_EQ(ork_block_cost(SIZE_MAX, ORK_TRACKING_ON), SIZE_MAX);
  EXPECT_EQ(blocks_for(bounded(3 * tracked, 0, ORK_TRACKING_ON), 44), 3u);
  EXPECT_EQ(blocks_for(bounded(3 * tracked - 1, 0, ORK_TRACKING_ON), 44), 2u);
}

TEST_F(FrameAllowance, leaves_control_frames_alone) {
  const Handle handle = bounded(block_cost, 0);
  Seen seen;
  dispatch(handle.get(), control_luid, 43, seen);
  EXPECT_EQ(seen.while_read, 20u);
}

TEST_F(FrameAllowance, of_a_frame_that_a_handler_dispatches_is_that_frames_own) {
  const Handle handle = bounded(0, block_cost / 44);
  Seen outer, inner;
  outer.handle = [&](ork_handle* h) { dispatch(h, blocks_luid, 132, inner); };
  dispatch(handle.get(), blocks_luid, 44, outer);
  EXPECT_EQ(outer.while_read, 1u);
  EXPECT_EQ(inner.while_read, 3u);
  EXPECT_EQ(outer.in_handler, 20u);
}

TEST_F(FrameAllowance, holds_in_storage_of_several_handles) {
  uint32_t err = 0;
  ork_storage* storage = ork_storage_create(0, &err);
  {
    const auto make = [&](size_t base) {
      return Handle([&](ork_options& options) {
        options.storage = storage;
        options.frame_base = base;
      });
    };
    const Handle free = make(0);
    EXPECT_EQ(blocks_for(make(2 * block_cost), 44), 2u);
    EXPECT_EQ(blocks_for(free, 44), 20u);
  }
  ork_storage_destroy(storage);
}

}  // namespace
}  // namespace platform_test
