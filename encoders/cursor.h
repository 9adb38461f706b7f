// The only code that walks raw bytes: positions in a caller's buffer that never lead a read or a
// write outside it.
#pragma once

#include "frame/call.h"

namespace encoders {

using std::int64_t;
using std::int8_t;
using std::int32_t;
using std::size_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

// Advances only by what has been written, so it never passes the end.
class Writer {
 public:
  Writer(uint8_t* buffer, int32_t length) : buffer_(buffer), length_(length) {}

  uint8_t* here() const { return buffer_ + position_; }
  int32_t room() const { return length_ - position_; }
  int32_t position() const { return position_; }
  uint8_t* at(int32_t position) const { return buffer_ + position; }
  uint32_t produced() const { return static_cast<uint32_t>(position_); }
  bool inside() const { return position_ < length_; }
  // `count`, clamped to the room that is left.
  size_t within(uint64_t count) const {
    const uint64_t room = inside() ? static_cast<uint64_t>(length_ - position_) : 0;
    return count < room ? count : room;
  }
  void advance(uint32_t bytes) { position_ += static_cast<int32_t>(bytes); }

  // At the end of the buffer the byte is stored but not counted: callers provide one byte past the
  // length that they state.
  void put_state(uint8_t state) {
    buffer_[position_] = state;
    if (position_ != length_) ++position_;
  }
  void copy(const void* from, uint64_t count) {
    const size_t bytes = within(count);
    if (bytes != 0) memcpy(here(), from, bytes);
    advance(static_cast<uint32_t>(bytes));
  }
  void zeros(uint64_t count) {
    const size_t bytes = within(count);
    memset(here(), 0, bytes);
    advance(static_cast<uint32_t>(bytes));
  }

  // Writes `count` items, each by `put`, which returns its bytes. Place and room stay in registers;
  // the position is updated once, at the end.
  template <class Item, class Put>
  void put_each(const Item* item, size_t count, Put put) {
    uint8_t* to = here();
    int32_t left = room();
    for (const Item* end = item + count; item != end; ++item) {
      const uint32_t written = put(to, item, left);
      to += written;
      left -= static_cast<int32_t>(written);
    }
    advance(static_cast<uint32_t>(room() - left));
  }

 private:
  uint8_t* buffer_;
  int32_t length_;
  int32_t position_ = 0;
};

// A jump may lead past the end. position() keeps counting there, but here() is clamped to the end,
// so nothing out of bounds is read.
class Reader {
 public:
  Reader(const uint8_t* buffer, int32_t length)
      : here_(buffer), length_(length < 0 ? 0 : length), room_(length_) {}

  const uint8_t* here() const { return here_; }
  int32_t room() const { return room_ < INT32_MIN ? INT32_MIN : static_cast<int32_t>(room_); }
  int64_t position() const { return length_ - room_; }
  uint32_t consumed() const { return static_cast<uint32_t>(position()); }
  size_t within(uint64_t count) const {
    const uint64_t room = room_ > 0 ? static_cast<uint64_t>(room_) : 0;
    return count < room ? count : room;
  }
  // Past bytes that have been read, and so were there.
  void consume(uint64_t bytes) {
    here_ += bytes;
    room_ -= static_cast<int64_t>(bytes);
  }
  // By a length that an image states, which may lead past the end.
  void jump(uint64_t bytes) {
    here_ += within(bytes);
    room_ -= static_cast<int64_t>(bytes);
  }

  // Reads one byte. At the end: false, and the position stays. Past the end: false, and the
  // position advances by one.
  bool get_state(uint8_t& state) {
    if (room_ > 0) {
      state = *here_;
      consume(1);
      return true;
    }
    skip_state();
    return false;
  }
  void skip_state() {
    if (room_ != 0) jump(1);
  }
  void copy(void* to, uint64_t count) {
    const size_t bytes = within(count);
    if (bytes != 0) memcpy(to, here_, bytes);
    consume(bytes);
  }
  void skip(uint64_t count) { consume(within(count)); }

  // Reads `count` items, each by `get`, which returns its bytes.
  template <class Item, class Get>
  void get_each(Item* item, size_t count, Get get) {
    const uint8_t* from = here();
    int32_t left = room();
    for (const Item* end = item + count; item != end; ++item) {
      const uint32_t read = get(from, item, left);
      from += read;
      left -= static_cast<int32_t>(read);
    }
    consume(static_cast<uint32_t>(room() - left));
  }

 private:
  const uint8_t* here_;
  int64_t length_;
  int64_t room_;
};

}  // namespace encoders
