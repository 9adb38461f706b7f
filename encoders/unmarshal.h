// Wire image to record; encoders/marshal.h has the format. The record exists already. What a newer
// writer added to the image is skipped by its jump, and an older image ends before the record's
// later fields, which stay as they are.
//
// Nothing in an image is trusted: lengths are clamped to the buffer, flags masked, and a count is
// only used once its block has been allocated.
#pragma once

#include "encoders/cursor.h"
#include "encoders/primitives.h"
#include "encoders/small_wire.h"
#include "frame/array_storage.h"

namespace encoders {

// What happens to the state bytes in an image: there are none, they are copied, or they are
// skipped.
enum class States : uint8_t { none, copy, skip };

// The fixed bytes of an image, and what follows from them and the handle.
struct Image {
  int8_t variant = 0;  // lowered to the variant_cap of the record
  uint8_t flags = 0;
  uint32_t jump = 0;
  int64_t jump_base = 0;  // the position that the jump counts from
  States states = States::none;
  bool tracked = false;      // the handle tracks
  uint8_t* block = nullptr;  // the record's state block, when bytes are copied to it
  uint32_t reuse = 0;        // nonzero keeps storage that fits
};

void unmarshal_base(const Call& call, Reader& in, Image& image, void* object,
                    const RecordRow& record);
// Skips what a newer writer added, then writes the header.
void unmarshal_end(const Call& call, Reader& in, const Image& image, void* object,
                   const RecordRow& record);

void read_state(Reader& in, const Image& image, const FieldRow& field);
inline void unmarshal_state(Reader& in, const Image& image, const FieldRow& field) {
  if (image.states != States::none) read_state(in, image, field);
}
void unmarshal_array_states(Reader& in, const Image& image, uint32_t count, const FieldRow& field);

// Initializes an element before it is filled, and registers its state block.
void begin_element(const Call& call, const Image& image, void* object, uint64_t index,
                   uint64_t count, const FieldRow& field);

template <const Record& R>
uint32_t unmarshal_body(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                        uint32_t reuse);

// After a failure the count ends with the last element that was initialized completely: an element
// without a type in its header, or in that of one of its fields, could not be destroyed.
template <const Record& R, size_t N>
void unmarshal_records(const Call& call, Reader& in, const Image& image, void* object,
                       uint32_t count) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  for (uint32_t i = 0; i < count; ++i) {
    if (!call.failed()) begin_element(call, image, object, i, count, field);
    if (call.failed()) {
      const auto block = frame::record_block(frame::block_of(object, field), count, field);
      return frame::keep_records(call, object, block, i, field);
    }
    in.jump(unmarshal_body<*model::records[field.type]>(
        call, in.here(), frame::element_at(object, field, i), in.room(), image.reuse));
  }
}

// The counter has been read by now; `old_count` is what it said before.
template <const Record& R, size_t N>
[[gnu::always_inline]] inline bool unmarshal_array(const Call& call, Reader& in, const Image& image,
                                                   void* object, uint32_t old_count) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  const uint32_t count = frame::stored_count(object, field);
  const frame::Refit refit{old_count, image.reuse != 0, image.tracked, image.block};
  if (!frame::refit_array(call, object, refit, field)) return false;
  if (count == 0) return true;
  if constexpr (field.kind == Kind::record) {
    unmarshal_records<R, N>(call, in, image, object, count);
  } else if constexpr (field.kind == Kind::u_int8) {
    in.copy(frame::block_of(object, field), count);
  } else {
    for (uint32_t i = 0; i < count && !call.failed(); ++i) {
      in.consume(Coded<field.kind>::unmarshal(call, in.here(), frame::element_at(object, field, i),
                                              in.room(), image.reuse));
    }
  }
  unmarshal_array_states(in, image, count, field);
  return true;
}

inline void unmarshal_text(const Call& call, Reader& in, char* text, size_t size, uint32_t reuse) {
  in.get_each(text, size, [&](const uint8_t* from, char* character, int32_t room) {
    return char_unmarshal(call.handle, call.instance, from, character, room, reuse, call.err);
  });
}

template <const Record& R, size_t N>
[[gnu::always_inline]] inline void unmarshal_field(const Call& call, Reader& in, const Image& image,
                                                   void* object) {
  constexpr const FieldRow& field = model::field_at<R, N>;
  void* at = frame::field_of(object, field);
  if constexpr (field.kind == Kind::character) {
    unmarshal_text(call, in, static_cast<char*>(at), field.width, image.reuse);
  } else if constexpr (field.kind == Kind::record) {
    in.jump(
        unmarshal_body<*model::records[field.type]>(call, in.here(), at, in.room(), image.reuse));
  } else if constexpr (field.kind == Kind::enumeration) {
    in.jump(
        enum_unmarshal(call, in.here(), at, in.room(), image.reuse, model::small_rows[field.type]));
  } else if constexpr (field.kind == Kind::flag_set) {
    in.jump(flag_set_unmarshal(call, in.here(), at, in.room(), image.reuse,
                               model::small_rows[field.type]));
  } else {
    in.consume(Coded<field.kind>::unmarshal(call, in.here(), at, in.room(), image.reuse));
  }
}

template <const Record& R>
uint32_t unmarshal_body(const Call& call, const uint8_t* buffer, void* object, int32_t length,
                        uint32_t reuse) {
  constexpr const RecordRow& record = model::row<R>;
  if (!call.start()) return 0;
  if (length < 1) {
    call.fail(EMSGSIZE);
    return 0;
  }
  Reader in(buffer, length);
  Image image{.reuse = reuse};
  unmarshal_base(call, in, image, object, record);
  uint32_t old_count = 0;

  const bool whole = walk<R>(
      image.variant, [&]<size_t N>() __attribute__((always_inline)) {
        constexpr const FieldRow& field = model::field_at<R, N>;
        constexpr Shape shape = shape_of(field);
        if constexpr (shape == Shape::counter) {
          old_count = frame::stored_count(object, model::field_at<R, N + 1>);
          in.consume(Coded<field.kind>::unmarshal(call, in.here(), frame::field_of(object, field),
                                                  in.room(), reuse));
          return true;
        } else if constexpr (shape == Shape::array) {
          return unmarshal_array<R, N>(call, in, image, object, old_count);
        } else {
          static_assert(shape == Shape::single);
          unmarshal_field<R, N>(call, in, image, object);
          unmarshal_state(in, image, field);
          return true;
        }
      });
  if (!whole) return 0;
  unmarshal_end(call, in, image, object, record);
  return in.consumed();
}

template <const Record& R>
uint32_t unmarshal(ork_handle* handle, uint32_t instance, const uint8_t* buffer, void* object,
                   int32_t length, uint32_t reuse, uint32_t* err) {
  return unmarshal_body<R>({handle, instance, err}, buffer, object, length, reuse);
}

}  // namespace encoders
