// Variable arrays on their way in: what becomes of old storage, of state bytes, and of a record
// when something fails.
#include <array>
#include <span>

#include "behaviour/encoders/arrays.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "support/spied.h"

namespace {

using namespace encoders;

class ArrayFields : public testing::TestWithParam<const char*> {
 protected:
  const Calls& calls() const { return calls_of(GetParam()); }

  Bytes image(ork_tracking tracking, uint32_t elements) const {
    const Handle handle(tracking);
    return marshalled(handle, calls(), filled(handle, calls(), elements).get());
  }

  uint32_t read(ork_handle* handle, const Bytes& bytes, const Object& object, uint32_t reuse = 0) {
    return calls().unmarshal(handle, instance, bytes.data(), object.get(),
                             static_cast<int32_t>(bytes.size()), reuse, &err);
  }

  uint32_t err = 0;
};

TEST_P(ArrayFields, are_given_back_by_an_empty_image) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    for (const uint32_t reuse : {0U, 1U}) {
      const Handle handle(tracking);
      const Object object = filled(handle, calls(), 3);
      const Bytes empty = image(tracking, 0);
      EXPECT_EQ(read(handle, empty, object, reuse), empty.size());
      EXPECT_EQ(err, 0u);
      EXPECT_EQ(array_of(object).count, 0u);
      EXPECT_EQ(array_of(object).block, nullptr);
    }
  }
}

TEST_P(ArrayFields, are_read_without_asking_how_wide_an_element_is) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, calls(), 1);
  const Bytes bytes = image(ORK_TRACKING_OFF, 3);
  spy::Log log;
  EXPECT_EQ(read(handle, bytes, object), bytes.size());
  EXPECT_EQ(log.count("u_int8_sizeof") + log.count("u_int16_sizeof") + log.count("u_int32_sizeof"),
            0u);
  EXPECT_EQ(array_of(object).count, 3u);
}

TEST_P(ArrayFields, keep_their_state_when_the_image_is_empty) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, calls(), 3);
  const ArrayEntry before = entry_of(object);
  read(handle, image(ORK_TRACKING_ON, 0), object);
  EXPECT_EQ(entry_of(object).whole, before.whole)
      << "an array of no elements has no state byte on the wire";
  EXPECT_EQ(entry_of(object).elements, before.elements);
}

TEST_P(ArrayFields, keep_their_block_only_with_reuse_and_the_same_count) {
  const Handle handle(ORK_TRACKING_OFF);
  const Object object = filled(handle, calls(), 3);
  const Bytes same = image(ORK_TRACKING_OFF, 3);
  const void* const block = array_of(object).block;
  const uint64_t allocations = handle.memory().allocations;
  read(handle, same, object, 1);
  EXPECT_EQ(array_of(object).block, block);
  EXPECT_EQ(handle.memory().allocations, allocations);
  read(handle, same, object, 0);
  EXPECT_EQ(handle.memory().allocations, allocations + 1);
  read(handle, image(ORK_TRACKING_OFF, 2), object, 1);
  EXPECT_EQ(handle.memory().allocations, allocations + 2);
  EXPECT_EQ(array_of(object).count, 2u);
  EXPECT_EQ(err, 0u);
}

TEST_P(ArrayFields, keep_the_block_of_states_only_with_reuse_and_the_same_count) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, calls(), 3);
  const Bytes same = image(ORK_TRACKING_ON, 3);
  const uint8_t* const elements = entry_of(object).elements;
  const uint64_t allocations = handle.memory().allocations;
  read(handle, same, object, 1);
  EXPECT_EQ(entry_of(object).elements, elements);
  EXPECT_EQ(handle.memory().allocations, allocations);
  read(handle, same, object, 0);
  EXPECT_EQ(handle.memory().allocations, allocations + 2);
}

TEST_P(ArrayFields, take_the_whole_byte_and_that_of_each_element) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object(handle, calls());
  const Bytes bytes = image(ORK_TRACKING_ON, 3);
  read(handle, bytes, object);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(entry_of(object).whole, bytes[bytes.size() - 4]);
  EXPECT_EQ(Bytes(entry_of(object).elements, entry_of(object).elements + 3),
            Bytes(bytes.end() - 3, bytes.end()));
}

TEST_P(ArrayFields, are_stepped_over_with_their_states_by_a_reader_without_tracking) {
  const Bytes bytes = image(ORK_TRACKING_ON, 3);
  for (const ork_tracking reader : {ORK_TRACKING_ABSENT, ORK_TRACKING_OFF}) {
    const Handle handle(reader);
    const Object object(handle, calls());
    EXPECT_EQ(read(handle, bytes, object), bytes.size());
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(marshalled(handle, calls(), object.get()), image(ORK_TRACKING_OFF, 3));
  }
}

TEST_P(ArrayFields, without_states_on_the_wire_still_get_a_block_that_fits_the_new_count) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object = filled(handle, calls(), 1);
  const uint8_t whole = entry_of(object).whole;
  const uint8_t first = entry_of(object).elements[0];
  EXPECT_EQ(read(handle, image(ORK_TRACKING_OFF, 3), object), image(ORK_TRACKING_OFF, 3).size());
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(entry_of(object).whole, whole);
  ASSERT_NE(entry_of(object).elements, nullptr);
  EXPECT_EQ(Bytes(entry_of(object).elements, entry_of(object).elements + 3), (Bytes{first, 0, 0}));
  const wayfind_field& field = calls().schema->fields[1];
  function<void(ork_handle*, uint32_t, void*, uint32_t, uint8_t, uint32_t*)>(
      field.functions, "_state_flag_set")(handle, instance, object.get(), 2, 9, &err);
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(entry_of(object).elements[2], 9);
}

TEST_P(ArrayFields, without_room_for_states_on_the_wire_or_in_memory_are_12) {
  const Handle handle(ORK_TRACKING_ON);
  const Object object(handle, calls());
  ork_handle_fail_allocation(handle, 2);
  EXPECT_EQ(read(handle, image(ORK_TRACKING_OFF, 3), object), 0u);
  EXPECT_EQ(err, 12u);
  EXPECT_EQ(ork_handle_last_error(handle), 12u);
}

TEST_P(ArrayFields, of_a_count_that_no_memory_holds_are_12) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    for (const uint32_t reuse : {0U, 1U}) {
      for (const char* count : {"7fffffff", "80000000", "ffffffff", "40000001"}) {
        const Handle handle([&](ork_options& options) {
          options.tracking = tracking;
          options.memory_budget = 1 << 16;
        });
        const Object object = filled(handle, calls(), 2);
        Bytes bytes = image(tracking, 2);
        const Bytes hostile = hex(count);
        std::copy(hostile.begin(), hostile.end(), bytes.begin() + 6);
        err = 0;
        EXPECT_EQ(read(handle, bytes, object, reuse), 0u);
        EXPECT_EQ(err, 12u);
        EXPECT_EQ(array_of(object).block, nullptr);
        if (calls().schema->fields[1].cls == WAYFIND_RECORD_ARRAY) {
          EXPECT_EQ(array_of(object).count, 0u);
        }
      }
    }
  }
}

TEST_P(ArrayFields, announce_what_they_rewrite) {
  SpiedHandle handle;
  void* const object = calls().create(handle, instance);
  const Bytes two = image(ORK_TRACKING_OFF, 2);
  const auto run = [&](const Bytes& bytes, uint32_t reuse) {
    spy::Log log;
    calls().unmarshal(handle, instance, bytes.data(), object, static_cast<int32_t>(bytes.size()),
                      reuse, &handle.err);
    std::vector<std::pair<const void*, size_t>> seen;
    for (const spy::Announcement& announcement : log.announcements()) {
      if (announcement.owner == object) {
        seen.emplace_back(announcement.address, announcement.length);
      }
    }
    return seen;
  };
  const auto* const record = static_cast<const ArrayRecord*>(object);
  using Seen = std::vector<std::pair<const void*, size_t>>;
  EXPECT_EQ(run(two, 0), (Seen{{&record->block, 8}})) << "the pointer, with the record as owner";
  const size_t whole = 2 * calls().schema->fields[1].width;
  EXPECT_EQ(run(two, 1), (Seen{{record->block, whole}})) << "the block that is kept";
  EXPECT_EQ(run(hex("00 00 00000008 00000000"), 0), (Seen{{&record->block, 8}}));
  EXPECT_EQ(handle.err, 0u);
  calls().destroy(handle, instance, object);
}

INSTANTIATE_TEST_SUITE_P(Records, ArrayFields,
                         testing::Values("fwe_cl_wayfind_sel_lb_path_st",
                                         "fwe_cl_wayfind_sel_lb_src_intf_st",
                                         "fwe_cl_wayfind_sel_lb_dst_site_st",
                                         "fwe_cl_wayfind_sel_lb_path_human_readable_st",
                                         "fwe_cl_wayfind_select_all_policies"));

// ---- Several arrays in one record -------------------------------------------

// The counts of the four arrays of a path in the order of the fields, and the field that tells a
// count of its own.
using Hops = std::array<uint32_t, 5>;

template <class Visit>
void for_each_array(ork_handle* handle, void* object, Visit visit) {
  const wayfind_record& record = *calls_of("fwe_cl_wayfind_chan_st").schema;
  for (const wayfind_field& field : std::span(record.fields, record.field_count)) {
    if (field.record != nullptr) {
      uint32_t err = 0;
      visit(*field.record, function<void*(ork_handle*, uint32_t, void*, uint32_t*)>(
                               field.functions, "_get")(handle, instance, object, &err));
      EXPECT_EQ(err, 0u) << field.name;
    }
  }
}

Object channel_with(ork_handle* handle, const Hops& hops) {
  Object object(handle, calls_of("fwe_cl_wayfind_chan_st"));
  uint32_t err = 0;
  size_t at = 0;
  for_each_array(handle, object.get(), [&](const wayfind_record& record, void* array) {
    const Bytes elements = bytes_of(record.name, hops[at] * record.fields[1].width);
    if (const uint32_t count = hops[at++]; count != 0) {
      function<void(ork_handle*, uint32_t, void*, const void*, uint32_t, uint32_t*)>(
          record.fields[1].functions, "_set_mem")(handle, instance, array, elements.data(), count,
                                                  &err);
    }
  });
  fwe_cl_wayfind_chan_st_hop_count_set_value(handle, instance,
                                             static_cast<fwe_cl_wayfind_chan_st*>(object.get()),
                                             static_cast<uint8_t>(hops[at]), &err);
  EXPECT_EQ(err, 0u);
  return object;
}

Hops hops_of(ork_handle* handle, void* object) {
  Hops hops{};
  uint32_t err = 0;
  size_t at = 0;
  for_each_array(handle, object, [&](const wayfind_record& record, void* array) {
    hops[at++] = function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>(
        record.fields[0].functions, "_get_value")(handle, instance, array, &err);
  });
  hops[at] = fwe_cl_wayfind_chan_st_hop_count_get_value(
      handle, instance, static_cast<fwe_cl_wayfind_chan_st*>(object), &err);
  EXPECT_EQ(err, 0u);
  return hops;
}

TEST(ArraysOfAPath, keep_their_own_counts_through_every_form) {
  constexpr Hops hops = {3, 0, 1, 5, 9};
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_st");
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const Object object = channel_with(handle, hops);
    const auto expect_same = [&](const char* form, const Object& copy) {
      EXPECT_EQ(hops_of(handle, copy.get()), hops) << form;
      EXPECT_EQ(calls.compare(object.get(), copy.get()), 0) << form;
    };
    expect_same("as set", object);

    uint32_t err = 0;
    const Bytes image = marshalled(handle, calls, object.get());
    const Object read = channel_with(handle, {1, 2, 0, 5, 4});
    EXPECT_EQ(calls.unmarshal(handle, instance, image.data(), read.get(),
                              static_cast<int32_t>(image.size()), 0, &err),
              image.size());
    expect_same("wire", read);

    void* slot = nullptr;
    Bytes workspace(ample);
    calls.clone(handle, instance, object.get(), &slot, workspace.data(), ample, &err);
    expect_same("clone", Object(handle, calls, slot));

    const Document document = parsed(as_xml(handle, calls, object.get()));
    const Object parsed_copy(handle, calls);
    calls.from_xml(handle, instance, "//fwe_cl_wayfind_chan_st", document.get(), parsed_copy.get(),
                   &err, nullptr, 0);
    expect_same("XML", parsed_copy);
    EXPECT_EQ(err, 0u);
  }
}

// ---- Arrays of records ------------------------------------------------------

TEST(RecordArray, whose_image_ends_early_holds_the_elements_that_were_initialised) {
  for (const ork_tracking tracking : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle handle(tracking);
    const Calls& calls = calls_of("fwe_cl_wayfind_select_all_policies");
    const Bytes image = marshalled(handle, calls, filled(handle, calls, 3).get());
    const size_t element = (image.size() - 10 - (tracking == ORK_TRACKING_ON ? 4 : 0)) / 3;
    for (size_t cut = 10; cut < 10 + 3 * element - 8; ++cut) {
      const Object object(handle, calls);
      uint32_t err = 0;
      calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(cut), 0,
                      &err);
      if (err == 0) {
        continue;
      }
      EXPECT_EQ(err, 90u);
      // An element that lacks its last state byte alone is whole.
      const size_t room = cut - 10 + (tracking == ORK_TRACKING_ON ? 1 : 0);
      EXPECT_EQ(array_of(object).count, std::min<size_t>(room / element + 1, 3))
          << "cut at " << cut;
      (void)printed(handle, calls, object.get());
    }
  }
}

TEST(RecordArray, inside_a_failed_message_is_destroyed_with_its_parent) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data");
  const Bytes image = marshalled(handle, calls, filled(handle, calls, 3).get());
  for (size_t cut = 1; cut < image.size(); ++cut) {
    const Object object(handle, calls);
    uint32_t err = 0;
    calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(cut), 1,
                    &err);
    uint32_t again = 0;
    calls.unmarshal(handle, instance, image.data(), object.get(),
                    static_cast<int32_t>(image.size()), 1, &again);
    EXPECT_EQ(again, 0u) << "and read once more, cut at " << cut;
    EXPECT_EQ(marshalled(handle, calls, object.get()), image);
  }
}

TEST(RecordArray, without_reuse_loses_what_old_elements_owned_and_with_reuse_gives_it_back) {
  const Calls& calls = calls_of("fwe_dp_wayfind_debug_data");
  Handle handle(ORK_TRACKING_OFF);
  handle.expect_leaks();
  const Object object = filled(handle, calls, 2);
  const Bytes image = marshalled(handle, calls, object.get());
  uint32_t err = 0;
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  1, &err);
  const uint64_t blocks = handle.memory().live_blocks;
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  1, &err);
  EXPECT_EQ(handle.memory().live_blocks, blocks);
  calls.unmarshal(handle, instance, image.data(), object.get(), static_cast<int32_t>(image.size()),
                  0, &err);
  EXPECT_EQ(handle.memory().live_blocks, blocks + 2) << "the settings of two complexes";
  EXPECT_EQ(err, 0u);
}

TEST(RecordArray, makes_nested_elements_with_their_states_behind_the_last_one) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
    const Handle source(writer);
    const Bytes image = marshalled(source, calls, filled(source, calls, 3).get());
    const Handle handle(ORK_TRACKING_ON);
    const Object object(handle, calls);
    uint32_t err = 0;
    calls.unmarshal(handle, instance, image.data(), object.get(),
                    static_cast<int32_t>(image.size()), 0, &err);
    auto* const block = static_cast<uint8_t*>(array_of(object).block);
    const Bytes bodies(block, block + 3 * 40);
    for (int i = 0; i < 3; ++i) {
      auto* const element = reinterpret_cast<ork_object*>(block + 40 * i);
      EXPECT_EQ(element->obj_flags, OBJ_NESTED | OBJ_STATE_TRACKED | OBJ_STTR_OFFSET);
      EXPECT_EQ(orklib_get_sttr_offset(handle, instance, element), 3 * 40 + i - 40 * i);
      const std::string path = "fwe_cl_wayfind_sel_lb_path_human_readable_st/path_id_str[" +
                               std::to_string(i) + "]/hop_id_str";
      EXPECT_EQ(block[3 * 40 + i], writer == ORK_TRACKING_ON ? state_of(path) : 0);
      fwe_cl_wayfind_hop_id_readable_format_st_hop_id_str_state_flag_set(
          handle, instance, reinterpret_cast<fwe_cl_wayfind_hop_id_readable_format_st*>(element), 9,
          &err);
      EXPECT_EQ(block[3 * 40 + i], 9);
    }
    EXPECT_EQ(Bytes(block, block + 3 * 40), bodies) << "no mark lands in another element";
    EXPECT_EQ(err, 0u);
  }
}

// ---- What is kept -----------------------------------------------------------

TEST(ByteArray, whose_image_ends_early_takes_what_is_there_and_holds_zeros_behind_it) {
  const Handle handle(ORK_TRACKING_OFF);
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_src_intf_st");
  const Bytes image = hex("00 00 0000000d 00000005 0102030405");
  for (const uint32_t reuse : {0U, 1U}) {
    const Object object = filled(handle, calls, reuse * 5);
    const void* const kept = array_of(object).block;
    if (kept != nullptr) {
      std::memset(array_of(object).block, 0xee, 5);
    }
    uint32_t err = 0;
    EXPECT_EQ(calls.unmarshal(handle, instance, image.data(), object.get(), 12, reuse, &err), 15u)
        << "the jump is followed";
    EXPECT_EQ(err, 0u);
    const auto* const block = static_cast<const uint8_t*>(array_of(object).block);
    EXPECT_EQ(Bytes(block, block + 5), hex("01 02 00 00 00"));
    EXPECT_TRUE(kept == nullptr || block == kept);
  }
}

TEST(ElementStates, that_are_kept_are_zero_where_the_image_ends_early) {
  const Handle handle(ORK_TRACKING_ON);
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object object = filled(handle, calls, 3);
  uint8_t* const elements = entry_of(object).elements;
  std::memset(elements, 0xee, 3);
  const Bytes image = hex("00 08 00000018 00000003 0000000a 0000000b 0000000c 05 77");
  uint32_t err = 0;
  EXPECT_EQ(calls.unmarshal(handle, instance, image.data(), object.get(), 24, 1, &err), 26u)
      << "the jump is followed";
  EXPECT_EQ(err, 0u);
  EXPECT_EQ(entry_of(object).elements, elements);
  EXPECT_EQ(entry_of(object).whole, 0x05);
  EXPECT_EQ(Bytes(elements, elements + 3), hex("77 00 00"));
}

}  // namespace
