// Order and hash of records: values by kind, what takes part and what does not.
#include <span>

#include "behaviour/encoders/arrays.h"
#include "fwe_ui_wayfind/fwe_ui_wayfind.h"
#include "ork/superfasthash.h"
#include "support/spy.h"
#include "tests/support/told_tables.h"

namespace {

using namespace encoders;

class CompareHash : public testing::Test {
 protected:
  const Handle handle{ORK_TRACKING_OFF};
  uint32_t err = 0;
};

TEST_F(CompareHash, numbers_and_counts_differ_by_one_whatever_their_distance) {
  for (const Calls& calls : all_records()) {
    for (const wayfind_field& field : std::span(calls.schema->fields, calls.schema->field_count)) {
      if ((field.cls != WAYFIND_VALUE && field.cls != WAYFIND_COUNTER) ||
          field.kind > WAYFIND_U_INT64) {
        continue;
      }
      const Object a(handle, calls);
      const Object b(handle, calls);
      const auto put = [&](const Object& object, uint64_t value) {
        std::memcpy(static_cast<uint8_t*>(object.get()) + field.offset, &value, field.width);
      };
      const uint64_t highest_bit = uint64_t{1} << (8 * field.width - 1);
      put(a, 1);
      for (const uint64_t greater : {uint64_t{3}, highest_bit + 1}) {
        put(b, greater);
        EXPECT_EQ(calls.compare(a.get(), b.get()), -1)
            << calls.name() << "." << field.name << " 1 and " << greater;
        EXPECT_EQ(calls.compare(b.get(), a.get()), 1)
            << calls.name() << "." << field.name << " " << greater << " and 1";
      }
      put(a, 0);
      put(b, 0);
    }
  }
}

// Swaps the function for one whose answer for the first argument is no mirror image of that for the
// second.
template <class Value>
void expect_own_answers(ork_handle* handle, wayfind_kind kind,
                        int32_t (*compare)(const Value*, const Value*)) {
  const void* first = nullptr;
  const void* second = nullptr;
  const auto scripted = spy::replace(compare, [&](const Value* a, const Value* b) {
    return a == first && b == second ? 7 : (a == second && b == first ? -9 : 0);
  });
  size_t tried = 0;
  for (const Calls& calls : all_records()) {
    for (const wayfind_field& field : std::span(calls.schema->fields, calls.schema->field_count)) {
      if (field.kind != kind) {
        continue;
      }
      ++tried;
      const Object a(handle, calls);
      const Object b(handle, calls);
      first = static_cast<const uint8_t*>(a.get()) + field.offset;
      second = static_cast<const uint8_t*>(b.get()) + field.offset;
      EXPECT_EQ(calls.compare(a.get(), b.get()), 7) << calls.name() << "." << field.name;
      EXPECT_EQ(calls.compare(b.get(), a.get()), -9) << calls.name() << "." << field.name;
    }
  }
  EXPECT_GT(tried, 0u);
}

TEST_F(CompareHash, primitives_that_compare_themselves_differ_by_what_they_answer) {
  expect_own_answers(handle, WAYFIND_ORK_BOOLEAN, ork_boolean_compare);
  expect_own_answers(handle, WAYFIND_IP_ADDRESS, ip_address_compare);
  expect_own_answers(handle, WAYFIND_LINK_TYPE, link_type_compare);
}

TEST_F(CompareHash, the_first_field_that_differs_decides) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(handle, instance,
                                           static_cast<fwe_cl_wayfind_mem_st*>(a.get()), 1, &err);
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(handle, instance,
                                             static_cast<fwe_cl_wayfind_mem_st*>(b.get()), 9, &err);
  EXPECT_EQ(calls.compare(a.get(), b.get()), 1);
}

TEST_F(CompareHash, enums_differ_by_their_distance) {
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  fwe_cl_wayfind_chan_st_state_set_value(handle, instance,
                                         static_cast<fwe_cl_wayfind_chan_st*>(b.get()), 3, &err);
  EXPECT_EQ(calls.compare(a.get(), b.get()), -3);
  EXPECT_EQ(calls.compare(b.get(), a.get()), 3);
}

TEST_F(CompareHash, records_inside_differ_by_their_own_result) {
  const Calls& calls = calls_of("fwe_cl_wayfind_channel_data");
  const Object a(handle, calls);
  const Object b(handle, calls);
  auto* const inside = fwe_cl_wayfind_channel_data_chan_get(
      handle, instance, static_cast<fwe_cl_wayfind_channel_data*>(b.get()), &err);
  fwe_cl_wayfind_chan_st_state_set_value(handle, instance, inside, 3, &err);
  EXPECT_EQ(calls.compare(a.get(), b.get()), -3);
  EXPECT_EQ(calls.compare(b.get(), a.get()), 3);
}

TEST_F(CompareHash, flag_sets_differ_by_their_bytes) {
  const Calls& calls = calls_of("fwe_cl_wayfind_hop_chan_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  auto* const flags = fwe_cl_wayfind_hop_chan_st_flags_show_get(
      handle, instance, static_cast<fwe_cl_wayfind_hop_chan_st*>(b.get()), &err);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 4, 1, &err);
  EXPECT_EQ(calls.compare(a.get(), b.get()), -16);
  EXPECT_EQ(calls.compare(b.get(), a.get()), 16);
}

TEST_F(CompareHash, arrays_of_different_count_differ_by_that_alone) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  auto* const shorter = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(a.get());
  auto* const longer = static_cast<fwe_cl_wayfind_sel_lb_path_st*>(b.get());
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(handle, instance, shorter, 0, 0xffffffff, &err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(handle, instance, longer, 1, 0, &err);
  EXPECT_EQ(calls.compare(a.get(), b.get()), -1);
  EXPECT_EQ(calls.compare(b.get(), a.get()), 1);
}

TEST_F(CompareHash, arrays_of_numbers_differ_as_their_bytes_in_memory_do) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(a.get()), 0, 0x0100, &err);
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_st*>(b.get()), 0, 0x0001, &err);
  EXPECT_LT(calls.compare(a.get(), b.get()), 0) << "the lower byte comes first in memory";
  EXPECT_GT(calls.compare(b.get(), a.get()), 0);
}

TEST_F(CompareHash, arrays_of_records_differ_by_the_result_of_the_first_element_that_does) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_human_readable_st");
  const Calls& hop = calls_of("fwe_cl_wayfind_hop_id_readable_format_st");
  const Object a = filled(handle, calls, 3);
  const Object b = filled(handle, calls, 3);
  const auto named = [&](const Object& object, uint32_t index, const char* name) {
    auto* const element = fwe_cl_wayfind_sel_lb_path_human_readable_st_path_id_str_get(
        handle, instance, static_cast<fwe_cl_wayfind_sel_lb_path_human_readable_st*>(object.get()),
        index, &err);
    fwe_cl_wayfind_hop_id_readable_format_st_hop_id_str_set(handle, instance, element, name, 1,
                                                            &err);
    return element;
  };
  const void* const second_of_a = named(a, 1, "h");
  const void* const second_of_b = named(b, 1, "a");
  named(a, 2, "a");
  named(b, 2, "z");
  EXPECT_GT(calls.compare(a.get(), b.get()), 0);
  EXPECT_LT(calls.compare(b.get(), a.get()), 0);
  EXPECT_EQ(calls.compare(a.get(), b.get()), hop.compare(second_of_a, second_of_b));
  EXPECT_EQ(calls.compare(b.get(), a.get()), hop.compare(second_of_b, second_of_a));
}

TEST_F(CompareHash, empty_arrays_are_equal_and_hash_as_nothing) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_path_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  EXPECT_EQ(calls.compare(a.get(), b.get()), 0);
  const uint32_t zero = 0;
  const uint32_t once = u_int32_hash(&zero, 5);
  const uint32_t twice = u_int32_hash(&zero, once);
  spy::name(a.get(), 32, "obj");
  {
    const spy::Log log;
    EXPECT_EQ(calls.hash(a.get(), 5), twice);
    EXPECT_CALLS(log,
                 std::vector<std::string>{"u_int32_hash(obj+12,5)",
                                          "u_int32_hash(obj+12," + std::to_string(once) + ")",
                                          "SuperFastHash(null,0," + std::to_string(twice) + ")"});
  }
  spy::forget_names();
}

TEST_F(CompareHash, texts_differ_behind_their_terminator_as_well) {
  const Calls& calls = calls_of("fwe_cl_wayfind_auto_tunnel_misc");
  const Object a(handle, calls);
  const Object b(handle, calls);
  auto* const left = static_cast<fwe_cl_wayfind_auto_tunnel_misc*>(a.get());
  auto* const right = static_cast<fwe_cl_wayfind_auto_tunnel_misc*>(b.get());
  const wayfind_field& field = calls.schema->fields[0];
  const auto set = [&](void* object, const char* text) {
    function<void(ork_handle*, uint32_t, void*, const char*, uint32_t, uint32_t*)>(
        field.functions, "_set")(handle, instance, object, text,
                                 static_cast<uint32_t>(std::strlen(text)), &err);
  };
  set(left, "abcdef");
  set(left, "ab");
  set(right, "ab");
  EXPECT_EQ(printed(handle, calls, a.get()), printed(handle, calls, b.get()));
  EXPECT_GT(calls.compare(a.get(), b.get()), 0);
  EXPECT_NE(calls.hash(a.get(), 0), calls.hash(b.get(), 0));
}

TEST_F(CompareHash, texts_and_arrays_of_numbers_differ_in_their_last_byte_as_well) {
  size_t tried = 0;
  for (const Calls& calls : all_records()) {
    for (const wayfind_field& field : std::span(calls.schema->fields, calls.schema->field_count)) {
      const bool array = field.cls == WAYFIND_VALUE_ARRAY;
      if (!array && field.cls != WAYFIND_TEXT) {
        continue;
      }
      ++tried;
      const Object a = filled(handle, calls, 2);
      const Object b = filled(handle, calls, 2);
      const auto put = [&](const Object& object, uint8_t value) {
        auto* const end = array ? static_cast<uint8_t*>(array_of(object).block) + 2 * field.width
                                : static_cast<uint8_t*>(object.get()) + field.offset + field.width;
        end[-1] = value;
      };
      put(a, 0);
      put(b, 1);
      EXPECT_LT(calls.compare(a.get(), b.get()), 0) << calls.name() << "." << field.name;
      EXPECT_GT(calls.compare(b.get(), a.get()), 0) << calls.name() << "." << field.name;
      EXPECT_NE(calls.hash(a.get(), 0), calls.hash(b.get(), 0))
          << calls.name() << "." << field.name;
    }
  }
  EXPECT_EQ(tried, 32u) << "28 texts and 4 arrays";
}

TEST_F(CompareHash, headers_and_states_take_no_part) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Handle tracking(ORK_TRACKING_ON);
  const Object a = filled(tracking, calls, 0);
  const Object b = filled(handle, calls, 0);
  b.header().variant = -5;
  b.header().variant_cap = 77;
  EXPECT_EQ(calls.compare(a.get(), b.get()), 0);
  EXPECT_EQ(calls.hash(a.get(), 1), calls.hash(b.get(), 1));
  b.header().variant = 0;
  b.header().variant_cap = 0;
}

TEST_F(CompareHash, later_fields_count_whatever_the_variant) {
  const Calls& calls = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Object newer = filled(handle, calls, 0);
  const Object older = filled(handle, calls, 0);
  older.header().variant = 0;
  EXPECT_EQ(calls.compare(newer.get(), older.get()), 0) << "they hold the same bytes";
  std::memset(static_cast<uint8_t*>(older.get()) + 24, 0, 64);
  EXPECT_NE(calls.compare(newer.get(), older.get()), 0);
  newer.header().variant = 0;
  EXPECT_NE(calls.compare(newer.get(), older.get()), 0) << "also when neither has reached them";
  EXPECT_NE(calls.hash(newer.get(), 0), calls.hash(older.get(), 0));
}

TEST_F(CompareHash, an_older_record_equals_a_newer_one_whose_later_fields_are_zero) {
  const Calls& calls = calls_of("fwe_cl_wayfind_auto_tunnel");
  const Object newer(handle, calls);
  const TypeList list = release_list(0);
  const Handle old_handle([&](ork_options& options) { options.release = list.get(); });
  const Object older(old_handle, calls);
  fwe_cl_wayfind_auto_tunnel_table_id_set_value(
      handle, instance, static_cast<fwe_cl_wayfind_auto_tunnel*>(newer.get()), 4, &err);
  fwe_cl_wayfind_auto_tunnel_table_id_set_value(
      old_handle, instance, static_cast<fwe_cl_wayfind_auto_tunnel*>(older.get()), 4, &err);
  EXPECT_EQ(older.header().variant, 0);
  EXPECT_EQ(newer.header().variant, 1);
  EXPECT_EQ(calls.compare(newer.get(), older.get()), 0);
  EXPECT_EQ(calls.hash(newer.get(), 0), calls.hash(older.get(), 0));
}

TEST_F(CompareHash, fields_that_an_older_layout_has_room_for_count) {
  const Calls& calls = calls_of("fwe_cl_wayfind_chan_st");
  const Object a(handle, calls);
  const Object b(handle, calls);
  for (const Object* const object : {&a, &b}) {
    object->header().variant = 0;
    object->header().variant_cap = 0;
    auto* const channel = static_cast<fwe_cl_wayfind_chan_st*>(object->get());
    fwe_cl_wayfind_chan_st_in_burst_set_value(handle, instance, channel, object == &b ? 1 : 0,
                                              &err);
    EXPECT_EQ(object->header().variant, 1) << "risen in place";
  }
  EXPECT_EQ(calls.compare(a.get(), b.get()), -1);
  EXPECT_EQ(calls.compare(b.get(), a.get()), 1);
  EXPECT_NE(calls.hash(a.get(), 0), calls.hash(b.get(), 0));
  for (const Object* const object : {&a, &b}) {
    object->header().variant = 3;
    object->header().variant_cap = 3;
  }
}

TEST_F(CompareHash, fields_behind_the_body_of_an_older_layout_take_no_part) {
  for (const told::Record& record : told::tables().records) {
    for (unsigned cap = 0; cap + 1 < record.layouts.size(); ++cap) {
      const Calls& calls = calls_of(record.name);
      // Blocks that end with the body, so that a sanitizer sees every read behind it; and one
      // with somebody else's bytes there.
      const size_t body = record.layouts[cap].body;
      Bytes one(body);
      Bytes another(record.newest().body, 0xA5);
      std::fill_n(another.begin(), body, uint8_t{0});
      one[offsetof(ork_object, variant_cap)] = another[offsetof(ork_object, variant_cap)] =
          static_cast<uint8_t>(cap);
      EXPECT_EQ(calls.compare(one.data(), another.data()), 0) << record.name << " " << cap;
      EXPECT_EQ(calls.compare(another.data(), one.data()), 0) << record.name << " " << cap;
      EXPECT_EQ(calls.hash(one.data(), 3), calls.hash(another.data(), 3))
          << record.name << " " << cap;
      for (const told::Field& field : record.fields) {
        const bool plain =
            field.cls == told::Class::text || (field.cls == told::Class::value && field.width < 16);
        if (!plain || field.offset + field.width > body) {
          continue;
        }
        one[field.offset] = 1;
        EXPECT_NE(calls.compare(one.data(), another.data()), 0)
            << record.name << "." << field.name << " in layout " << cap;
        EXPECT_NE(calls.hash(one.data(), 3), calls.hash(another.data(), 3))
            << record.name << "." << field.name;
        one[field.offset] = 0;
      }
    }
  }
}

TEST_F(CompareHash, hash_of_mem_st_chains_its_fields_in_order) {
  const Calls& calls = calls_of("fwe_cl_wayfind_mem_st");
  const Object object(handle, calls);
  auto* const mem = static_cast<fwe_cl_wayfind_mem_st*>(object.get());
  const uint32_t number = 0x01020304;
  const uint64_t ppe = 0x1112131415161718;
  const uint64_t exmem = 0x2122232425262728;
  fwe_cl_wayfind_mem_st_fwe_num_set_value(handle, instance, mem, number, &err);
  fwe_cl_wayfind_mem_st_ppe_addr_set_value(handle, instance, mem, ppe, &err);
  fwe_cl_wayfind_mem_st_exmem_addr_set_value(handle, instance, mem, exmem, &err);
  EXPECT_EQ(calls.hash(mem, 77),
            u_int64_hash(&exmem, u_int64_hash(&ppe, u_int32_hash(&number, 77))));
}

TEST_F(CompareHash, hash_takes_the_count_of_an_array_twice) {
  const Calls& calls = calls_of("fwe_cl_wayfind_sel_lb_dst_site_st");
  const Object object(handle, calls);
  const uint16_t sites[] = {1, 2, 0xffff};
  const uint32_t count = 3;
  fwe_cl_wayfind_sel_lb_dst_site_st_dst_site_id_set_mem(
      handle, instance, static_cast<fwe_cl_wayfind_sel_lb_dst_site_st*>(object.get()), sites, count,
      &err);
  EXPECT_EQ(calls.hash(object.get(), 77),
            SuperFastHash(sites, sizeof sites, u_int32_hash(&count, u_int32_hash(&count, 77))));
}

TEST_F(CompareHash, hash_of_enum_and_flag_set_covers_value_and_byte_alone) {
  auto* const state = fwe_cl_wayfind_chan_state_e_create(handle, instance);
  fwe_cl_wayfind_chan_state_e_set_value(handle, instance, state, 2, &err);
  const uint32_t value = 2;
  EXPECT_EQ(fwe_cl_wayfind_chan_state_e_hash(state, 9), SuperFastHash(&value, 4, 9));
  EXPECT_EQ(fwe_cl_wayfind_chan_state_e_hash(nullptr, 9), 9u);
  fwe_cl_wayfind_chan_state_e_destroy(handle, instance, state);
  auto* const flags = fwe_cl_wayfind_hop_chan_flags_create(handle, instance);
  fwe_cl_wayfind_hop_chan_flags_set_value(handle, instance, flags, 3, 1, &err);
  const uint8_t byte = 8;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_hash(flags, 9), SuperFastHash(&byte, 1, 9));
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_hash(nullptr, 9), 9u);
  fwe_cl_wayfind_hop_chan_flags_destroy(handle, instance, flags);
}

}  // namespace
