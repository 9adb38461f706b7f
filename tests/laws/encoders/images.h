// Where the record images inside a record's wire image lie.
#pragma once

#include "behaviour/encoders/values.h"

namespace encoders {

struct Span {
  size_t begin;
  size_t end;
  const wayfind_record* record;
};

// Walks an image that no newer release wrote; a span is told behind those inside it, the whole
// image last.
class ImageWalk {
 public:
  ImageWalk(const Bytes& image, const wayfind_record& record) : image_(image) {
    EXPECT_EQ(walk(record), image.size());
  }

  const std::vector<Span>& spans() const { return spans_; }

 private:
  static constexpr size_t base = 6;

  size_t walk(const wayfind_record& record) {
    const size_t begin = at_;
    const auto variant = static_cast<int8_t>(image_[at_]);
    const bool states = (image_[at_ + 1] & OBJ_STATE_TRACKED) != 0;
    at_ += base;
    uint32_t count = 0;
    for (unsigned i = 0; i < record.field_count && record.fields[i].variant <= variant; ++i) {
      const wayfind_field& field = record.fields[i];
      switch (field.cls) {
        case WAYFIND_COUNTER:
          count = field.kind == WAYFIND_U_INT8 ? image_[at_] : image_[at_ + 3];
          at_ += field.kind == WAYFIND_U_INT8 ? 1 : 4;
          break;
        case WAYFIND_VALUE_ARRAY:
        case WAYFIND_RECORD_ARRAY:
          for (uint32_t element = 0; element < count; ++element) {
            step(field);
          }
          at_ += states && count != 0 ? 1 + count : 0;
          break;
        default: step(field); at_ += states ? 1 : 0;
      }
    }
    spans_.push_back({begin, at_, &record});
    return at_ - begin;
  }

  void step(const wayfind_field& field) {
    switch (field.kind) {
      case WAYFIND_U_INT8:
      case WAYFIND_ORK_BOOLEAN: at_ += 1; break;
      case WAYFIND_U_INT16: at_ += 2; break;
      case WAYFIND_U_INT32: at_ += 4; break;
      case WAYFIND_U_INT64: at_ += 8; break;
      case WAYFIND_ENUM:
      case WAYFIND_LINK_TYPE: at_ += 5; break;
      case WAYFIND_FLAG_SET: at_ += 6; break;
      case WAYFIND_IP_ADDRESS: at_ += 18; break;
      case WAYFIND_CHAR: at_ += field.width; break;
      case WAYFIND_RECORD: walk(*field.record); break;
    }
  }

  const Bytes& image_;
  size_t at_ = 0;
  std::vector<Span> spans_;
};

inline uint32_t jump_at(const Bytes& image, size_t base) {
  return static_cast<uint32_t>(image[base] << 24 | image[base + 1] << 16 | image[base + 2] << 8 |
                               image[base + 3]);
}

inline void set_jump(Bytes& image, size_t base, uint32_t jump) {
  for (int i = 0; i < 4; ++i) {
    image[base + static_cast<size_t>(i)] = static_cast<uint8_t>(jump >> (24 - 8 * i));
  }
}

// The image as a newer release would write it: bytes that this one does not know behind the fields
// of one of the records in it, and its variant one newer if it had all that is known.
inline Bytes with_tail(const Bytes& image, const std::vector<Span>& spans, const Span& grown,
                       const Bytes& tail) {
  Bytes result = image;
  for (const Span& span : spans) {
    if (span.begin <= grown.begin && span.end >= grown.end) {
      set_jump(result, span.begin + 2,
               jump_at(image, span.begin + 2) + static_cast<uint32_t>(tail.size()));
    }
  }
  if (result[grown.begin] + 1 == grown.record->variants) {
    result[grown.begin] = grown.record->variants;
  }
  result.insert(result.begin() + static_cast<ptrdiff_t>(grown.end), tail.begin(), tail.end());
  return result;
}

}  // namespace encoders
