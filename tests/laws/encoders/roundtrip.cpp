// What holds for the forms of every record: there and back changes nothing, and equal records look
// equal everywhere.
#include <span>

#include "behaviour/encoders/values.h"
#include "support/spied.h"

namespace {

using namespace encoders;

constexpr uint32_t seeds[] = {0, 0x9e3779b9};

// Runs a check for each release, array length and tracking mode that make a difference for the
// record.
template <class Check>
void for_all_shapes(const Calls& calls, Check check) {
  for (unsigned release = 0; release <= deepest_variant(*calls.schema); ++release) {
    const TypeList list = release_list(release);
    for (const uint32_t elements : {0U, 1U, 3U}) {
      for (const ork_tracking tracking : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
        if (elements == 0 || holds_arrays(*calls.schema)) {
          const Handle handle([&](ork_options& options) {
            options.tracking = tracking;
            options.release = list.get();
          });
          check(handle, filled(handle, calls, elements));
        }
      }
    }
  }
}

// State bytes that the length counts and the image lacks: one for each character of a text besides
// that of the field, and one for an empty array. The elements of an array are of one length here.
uint32_t unsent_states(const wayfind_record& record, const uint8_t* object) {
  const int8_t variant = ork_get_instance_variant(object, 1, 0);
  uint32_t count = 1;
  uint32_t result = 0;
  for (const wayfind_field& field : std::span(record.fields, record.field_count)) {
    const uint8_t* const at = object + field.offset;
    if (field.variant > variant) {
      continue;
    }
    if (field.cls == WAYFIND_COUNTER) {
      count = field.width == 1 ? *at : kit::load<uint32_t>(at);
      continue;
    }
    if (field.cls == WAYFIND_TEXT) {
      result += field.width;
    } else if (count == 0) {
      ++result;
    } else if (field.record != nullptr) {
      const bool array = field.cls == WAYFIND_RECORD_ARRAY;
      result += count * unsent_states(*field.record, array ? kit::load<const uint8_t*>(at) : at);
    }
    count = 1;
  }
  return result;
}

void expect_equal(const Calls& calls, const void* a, const void* b) {
  EXPECT_EQ(calls.compare(a, b), 0);
  EXPECT_EQ(calls.compare(b, a), 0);
  for (const uint32_t seed : seeds) {
    EXPECT_EQ(calls.hash(a, seed), calls.hash(b, seed));
  }
}

class Roundtrip : public testing::TestWithParam<unsigned> {
 protected:
  const Calls& calls() const { return all_records()[GetParam()]; }
};

TEST_P(Roundtrip, every_record_comes_back_from_the_wire_and_goes_out_the_same) {
  for_all_shapes(calls(), [&](const Handle& handle, const Object& object) {
    const Bytes image = marshalled(handle, calls(), object.get());
    for (const uint32_t reuse : {0U, 1U}) {
      const Object copy(handle, calls());
      for (int pass = 0; pass < (reuse != 0 || !nests_arrays(*calls().schema) ? 2 : 1); ++pass) {
        uint32_t err = 0;
        EXPECT_EQ(calls().unmarshal(handle, instance, image.data(), copy.get(),
                                    static_cast<int32_t>(image.size()), reuse, &err),
                  image.size());
        EXPECT_EQ(err, 0u);
        EXPECT_EQ(marshalled(handle, calls(), copy.get()), image);
        expect_equal(calls(), object.get(), copy.get());
      }
    }
  });
}

TEST_P(Roundtrip, every_record_is_as_long_on_the_wire_as_its_length_but_for_states_not_sent) {
  for_all_shapes(calls(), [&](const Handle& handle, const Object& object) {
    const uint32_t length = calls().len(handle, instance, object.get());
    const Bytes image = marshalled(handle, calls(), object.get());
    const bool tracking =
        handle->sttr_info != nullptr && handle->sttr_info->sttr_mode == ORK_STTR_ON;
    EXPECT_EQ(length, image.size() + (tracking ? unsent_states(*calls().schema,
                                                               static_cast<uint8_t*>(object.get()))
                                               : 0));
    EXPECT_EQ(calls().len_cr(handle, object.get()), length);
  });
}

TEST_P(Roundtrip, every_record_equals_its_clones_in_all_four_ways) {
  for_all_shapes(calls(), [&](const Handle& handle, const Object& object) {
    Bytes workspace(ample + 1);
    const std::string xml = as_xml(handle, calls(), object.get());
    const auto expect_clone = [&](void* clone) {
      ASSERT_NE(clone, nullptr);
      const Object owned(handle, calls(), clone);
      expect_equal(calls(), object.get(), clone);
      EXPECT_EQ(as_xml(handle, calls(), clone), xml) << "state bytes included";
    };
    uint32_t err = 0;
    void* slot = nullptr;
    calls().clone(handle, instance, object.get(), &slot, workspace.data(), ample, &err);
    expect_clone(slot);
    slot = nullptr;
    calls().clone_internal(handle, instance, object.get(), &slot, workspace.data(), ample, &err);
    expect_clone(slot);
    slot = filled(handle, calls(), nests_arrays(*calls().schema) ? 0 : 1).release();
    void* const target = slot;
    calls().clone_internal(handle, instance, object.get(), &slot, workspace.data(), ample, &err);
    EXPECT_EQ(slot, target) << "filled in place";
    expect_clone(slot);
    expect_clone(calls().clone_cr(handle, object.get()));
    EXPECT_EQ(err, 0u);
    Bytes image(ample + 1);
    image.resize(
        calls().marshal_for_clone(handle, instance, image.data(), object.get(), ample, &err));
    EXPECT_EQ(image, marshalled(handle, calls(), object.get()));
  });
}

TEST_P(Roundtrip, every_record_comes_back_from_xml) {
  for_all_shapes(calls(), [&](const Handle& handle, const Object& object) {
    const Document document = parsed(as_xml(handle, calls(), object.get()));
    const Object copy(handle, calls());
    uint32_t err = 0;
    const std::string path = std::string("//") + calls().name();
    calls().from_xml(handle, instance, path.c_str(), document.get(), copy.get(), &err, nullptr, 0);
    EXPECT_EQ(err, 0u);
    expect_equal(calls(), object.get(), copy.get());
  });
}

TEST_P(Roundtrip, every_record_prints_the_same_in_both_styles) {
  for_all_shapes(calls(), [&](const Handle& handle, const Object& object) {
    std::string text(ample, '\0');
    text.resize(calls().print_cr(handle, object.get(), text.data(), static_cast<uint32_t>(ample)));
    EXPECT_EQ(text, printed(handle, calls(), object.get()));
    std::string xml(ample, '\0');
    xml.resize(calls().toxml_cr(handle, object.get(), xml.data(), static_cast<uint32_t>(ample)));
    EXPECT_EQ(xml, as_xml(handle, calls(), object.get()));
  });
}

TEST_P(Roundtrip, every_record_differs_by_each_field_alone_the_same_way_in_compare_and_hash) {
  const Handle handle(ORK_TRACKING_OFF);
  const wayfind_record& schema = *calls().schema;
  for (unsigned i = 0; i < schema.field_count; ++i) {
    if (schema.fields[i].cls == WAYFIND_COUNTER) {
      continue;
    }
    const Object a = filled(handle, calls(), 3);
    const Object b = filled(handle, calls(), 3);
    expect_equal(calls(), a.get(), b.get());
    // Another path may give the same value by chance, a boolean most of all; a few cannot all
    // do so.
    bool differed = false;
    for (const char* root : {"one", "two", "three", "four", "five", "six", "seven", "eight"}) {
      Filler(handle, 3).fill_one(schema.fields[i], b.get(), root);
      const int32_t forth = calls().compare(a.get(), b.get());
      const int32_t back = calls().compare(b.get(), a.get());
      EXPECT_EQ(forth<0, back> 0) << schema.fields[i].name;
      EXPECT_EQ(forth > 0, back < 0) << schema.fields[i].name;
      for (const uint32_t seed : seeds) {
        EXPECT_EQ(forth == 0, calls().hash(a.get(), seed) == calls().hash(b.get(), seed))
            << schema.fields[i].name;
      }
      differed = differed || forth != 0;
    }
    EXPECT_TRUE(differed) << schema.fields[i].name << " takes no part";
  }
}

TEST_P(Roundtrip, every_record_sorts_null_first_and_hashes_it_to_the_seed) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object(handle, calls());
  EXPECT_EQ(calls().compare(nullptr, nullptr), 0);
  EXPECT_EQ(calls().compare(nullptr, object.get()), -1);
  EXPECT_EQ(calls().compare(object.get(), nullptr), 1);
  for (const uint32_t seed : seeds) {
    EXPECT_EQ(calls().hash(nullptr, seed), seed);
  }
}

TEST_P(Roundtrip, every_record_does_nothing_once_an_error_stands) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, calls(), 1);
  const Bytes image = marshalled(handle, calls(), object.get());
  const Document document = parsed(as_xml(handle, calls(), object.get()));
  const uint32_t before = calls().hash(object.get(), 0);
  ork_store_err(handle, 5);
  Bytes buffer(ample + 1, 0xa5);
  char text[64] = "";
  uint32_t err = 33;
  EXPECT_EQ(calls().marshal(handle, instance, buffer.data(), object.get(), ample, &err), 0u);
  EXPECT_EQ(calls().marshal_for_clone(handle, instance, buffer.data(), object.get(), ample, &err),
            0u);
  EXPECT_EQ(calls().unmarshal(handle, instance, image.data(), object.get(), ample, 0, &err), 0u);
  EXPECT_EQ(calls().print(handle, instance, text, 0, "x", object.get(), sizeof text, &err), 0u);
  EXPECT_EQ(calls().to_xml(handle, instance, "x", text, object.get(), sizeof text, 0, &err), 0u);
  const std::string path = std::string("//") + calls().name();
  calls().from_xml(handle, instance, path.c_str(), document.get(), object.get(), &err, nullptr, 0);
  void* slot = nullptr;
  calls().clone_internal(handle, instance, object.get(), &slot, buffer.data(), ample, &err);
  EXPECT_EQ(slot, nullptr);
  EXPECT_EQ(err, 33u);
  EXPECT_EQ(buffer, Bytes(ample + 1, 0xa5));
  EXPECT_STREQ(text, "");
  EXPECT_EQ(calls().hash(object.get(), 0), before);
  EXPECT_EQ(ork_handle_last_error(handle), 5u) << "the last error is not cleared either";
  handle->cr_error = 33;
  EXPECT_EQ(calls().len_cr(handle, object.get()), 0u);
  EXPECT_EQ(calls().print_cr(handle, object.get(), text, sizeof text), 0xFFFFFFFFu);
  EXPECT_EQ(calls().toxml_cr(handle, object.get(), text, sizeof text), 0xFFFFFFFFu);
  EXPECT_EQ(calls().clone_cr(handle, object.get()), nullptr);
  EXPECT_STREQ(text, "");
}

INSTANTIATE_TEST_SUITE_P(Records, Roundtrip, testing::Range(0U, wayfind_record_count), short_name);

}  // namespace
