// Images that end early or hold wrong bytes: an error or a told result, never a byte outside the
// buffer, and a record that can be looked at and destroyed. Buffers are of the exact size, so that
// the address sanitizer sees every slip.
#include <functional>

#include "behaviour/encoders/values.h"

namespace {

using namespace encoders;

// Bytes from the heap without any to spare, but for the one that a flag set at the end may be read
// from.
class Exact {
 public:
  Exact(const Bytes& image, size_t length, size_t spare) : bytes_(new uint8_t[length + spare]()) {
    std::memcpy(bytes_.get(), image.data(), length);
  }
  const uint8_t* get() const { return bytes_.get(); }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
};

bool holds_flag_set(const wayfind_record& record) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.kind == WAYFIND_FLAG_SET ||
        (field.record != nullptr && holds_flag_set(*field.record))) {
      return true;
    }
  }
  return false;
}

bool holds_byte_array(const wayfind_record& record) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    const bool here = field.cls == WAYFIND_VALUE_ARRAY && field.kind == WAYFIND_U_INT8;
    if (here || (field.record != nullptr && holds_byte_array(*field.record))) {
      return true;
    }
  }
  return false;
}

const wayfind_field& last_field(const wayfind_record& record) {
  return record.fields[record.field_count - 1];
}

// All that a caller may do with a record after a failed unmarshal.
void expect_usable(const Handle& handle, const Calls& calls, void* object) {
  static Bytes buffer(ample + 1);
  static std::string text(ample, '\0');
  text[0] = '\0';
  uint32_t err = 0;
  calls.marshal(handle, instance, buffer.data(), object, ample, &err);
  err = 0;
  calls.print(handle, instance, text.data(), 0, "x", object, static_cast<uint32_t>(ample), &err);
  err = 0;
  calls.to_xml(handle, instance, "x", text.data(), object, static_cast<uint32_t>(ample), 0, &err);
  calls.len(handle, instance, object);
  calls.hash(object, 0);
  EXPECT_EQ(calls.compare(object, object), 0);
}

// Runs a check on each image of the record: written by each release, with arrays, with state bytes
// and without.
void for_all_images(const Calls& calls,
                    const std::function<void(const Bytes&, ork_tracking)>& check) {
  for (unsigned release = 0; release <= deepest_variant(*calls.schema); ++release) {
    const TypeList list = release_list(release);
    for (const uint32_t elements : {0U, 1U, 3U}) {
      if (elements == 0 || holds_arrays(*calls.schema)) {
        for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
          const Handle handle([&](ork_options& options) {
            options.tracking = writer;
            options.release = list.get();
          });
          check(marshalled(handle, calls, filled(handle, calls, elements).get()), writer);
        }
      }
    }
  }
}

class DamagedImages : public testing::TestWithParam<unsigned> {
 protected:
  const Calls& calls() const { return all_records()[GetParam()]; }
  size_t spare() const { return holds_flag_set(*calls().schema) ? 1 : 0; }
};

TEST_P(DamagedImages, cut_at_any_byte_gives_an_error_or_a_told_result) {
  for_all_images(calls(), [&](const Bytes& image, ork_tracking writer) {
    for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle reader(tracking);
      for (size_t length = 0; length < image.size(); ++length) {
        const Exact cut(image, length, spare());
        const Object object(reader, calls());
        uint32_t err = 0;
        const uint32_t read = calls().unmarshal(reader, instance, cut.get(), object.get(),
                                                static_cast<int32_t>(length), 0, &err);
        // Without an error only state bytes, the end of a block of bytes or the byte of a
        // flag set were missing, and the jump still leads to the told end.
        const bool lacks_flags =
            last_field(*calls().schema).kind == WAYFIND_FLAG_SET && length + 1 == image.size();
        if (writer == ORK_TRACKING_OFF && !holds_byte_array(*calls().schema) && !lacks_flags) {
          EXPECT_EQ(err, 90u) << "cut at " << length;
        }
        EXPECT_TRUE(err == 90 || (err == 0 && read == image.size()))
            << "cut at " << length << ", error " << err;
        EXPECT_EQ(ork_handle_last_error(reader), err) << "cut at " << length;
        expect_usable(reader, calls(), object.get());
      }
    }
  });
}

TEST_P(DamagedImages, with_any_byte_wrong_is_read_within_its_buffer) {
  for_all_images(calls(), [&](const Bytes& image, ork_tracking) {
    for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
      const Handle reader([&](ork_options& options) {
        options.tracking = tracking;
        options.memory_budget = 1 << 16;
      });
      const size_t step = 1 + image.size() / 200;
      for (size_t at = 0; at < image.size(); at += step) {
        for (const int wrong : {0x00, 0x28, 0x7f, 0x80, 0xff}) {
          Bytes damaged = image;
          damaged[at] = static_cast<uint8_t>(wrong);
          const Exact bytes(damaged, damaged.size(), spare());
          const Object object(reader, calls());
          uint32_t err = 0;
          calls().unmarshal(reader, instance, bytes.get(), object.get(),
                            static_cast<int32_t>(image.size()), 0, &err);
          EXPECT_TRUE(err == 0 || err == 90 || err == 12) << "byte " << at << ", error " << err;
          EXPECT_EQ(object.header().obj_flags & ~OBJ_WIRE_MASK, 0) << "byte " << at;
          if (object.header().variant < calls().schema->variants) {
            expect_usable(reader, calls(), object.get());
          }
        }
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Records, DamagedImages, testing::Range(0U, wayfind_record_count),
                         short_name);

}  // namespace
