// Enums and the flag set as objects of their own.
#include "behaviour/frame/objects.h"

namespace frame {

namespace {

using Enum = fwe_cl_wayfind_chan_tx_state_e; /* three values */
using Flags = fwe_cl_wayfind_hop_chan_flags;

uint32_t& value_of(Enum* obj) { return *reinterpret_cast<uint32_t*>(bytes(obj) + 12); }

uint8_t& flags_of(Flags* obj) { return bytes(obj)[11]; }

struct EnumObject {
  explicit EnumObject(SpiedHandle& handle, const std::string& name = "obj")
      : h(handle), obj(fwe_cl_wayfind_chan_tx_state_e_create(h, instance)) {
    spy::name(obj, 16, name);
  }
  ~EnumObject() { fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, obj); }
  EnumObject(const EnumObject&) = delete;
  EnumObject& operator=(const EnumObject&) = delete;
  operator Enum*() const { return obj; }
  SpiedHandle& h;
  Enum* obj;
};

struct FlagObject {
  explicit FlagObject(SpiedHandle& handle, const std::string& name = "obj")
      : h(handle), obj(fwe_cl_wayfind_hop_chan_flags_create(h, instance)) {
    spy::name(obj, 24, name);
  }
  ~FlagObject() { fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, obj); }
  FlagObject(const FlagObject&) = delete;
  FlagObject& operator=(const FlagObject&) = delete;
  operator Flags*() const { return obj; }
  SpiedHandle& h;
  Flags* obj;
};

}  // namespace

// ---- Lifecycle ----

TEST(Enum, create_counts_by_itself_and_starts_no_trace_module) {
  SpiedHandle h(tracked);
  auto& entry = _fwe_cl_wayfind_chan_tx_state_e_type_info_internal.varinfo->entries[0];
  const uint64_t created = entry.create_count;
  spy::name_at(&entry.create_count, "create_count");
  spy::name_at(&entry.destroy_count, "destroy_count");
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  EXPECT_EQ(log.count("flight_module_init_fn"), 0u);
  EXPECT_EQ(log.count("orklib_type_stats_create_object"), 0u);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "counter_notify_fn"}),
               {"alloc_fn(7,16)=new1", "counter_notify_fn(create_count,1,7)"});
  EXPECT_EQ(entry.create_count, created + 1);
  EXPECT_EQ(header(obj).obj_flags, 0) << "no state of its own, whatever the mode";
  const uint64_t destroyed = entry.destroy_count;
  log.clear();
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, obj);
  EXPECT_EQ(log.count("orklib_type_stats_destroy_object"), 0u);
  EXPECT_EQ(log.count("ork_request_oid_mapping_destroy"), 0u);
  EXPECT_EQ(log.count("ork_hd_mapping_destroy"), 0u);
  EXPECT_CALLS(log.calls_of({"counter_notify_fn", "write_notify_fn", "free_fn"}),
               {"counter_notify_fn(destroy_count,1,7)", "write_notify_fn(new1,8,7,null)",
                "free_fn(7,new1)"});
  EXPECT_EQ(entry.destroy_count, destroyed + 1);
}

TEST(Enum, cr_mode_is_active_while_it_is_made_and_gives_the_sentinel_on_failure) {
  SpiedHandle h({.cr_instance = 9});
  uint32_t seen = 2;
  const auto watch =
      spy::replace(ork_domain_lookup_variant,
                   [&](ork_handle* handle, const ork_domain*, const ork_type_info*, uint32_t*) {
                     seen = handle->cr_active;
                     return int8_t{0};
                   });
  auto* const obj = fwe_cl_wayfind_chan_tx_state_e_create_cr(h);
  EXPECT_EQ(seen, 1u);
  EXPECT_EQ(h->cr_active, 0u);
  fwe_cl_wayfind_chan_tx_state_e_destroy_cr(h, obj);
  spy::fail_alloc(1);
  auto* const sentinel = fwe_cl_wayfind_chan_tx_state_e_create_cr(h);
  EXPECT_EQ(h->cr_error, 12u);
  ASSERT_NE(sentinel, nullptr);
  EXPECT_EQ(load<uint64_t>(sentinel), 0u);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_create_cr(h), sentinel) << "the error stands";
  EXPECT_EQ(log.count("alloc_fn"), 0u);
  log.clear();
  fwe_cl_wayfind_chan_tx_state_e_destroy_cr(h, sentinel);
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, nullptr);
  EXPECT_CALLS(log, {});
  h->cr_error = 0;
}

TEST(SmallTypes, in_cr_style_all_are_made_and_given_back_for_the_instance_of_the_handle) {
  SpiedHandle h({.cr_instance = 9});
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    const wayfind_small_type& type = wayfind_small_types[i];
    const std::string size = std::to_string(told::small(type.name)->size);
    spy::Log log;
    void* const obj = kit::function<void*(ork_handle*)>(type.functions, "_create_cr")(h);
    kit::function<void(ork_handle*, void*)>(type.functions, "_destroy_cr")(h, obj);
    EXPECT_CALLS(log.calls_of({"alloc_fn", "free_fn"}),
                 std::vector<std::string>{"alloc_fn(9," + size + ")=new1", "free_fn(9,new1)"})
        << type.name;
    EXPECT_EQ(log.calls_of({"write_notify_fn"}).back(), "write_notify_fn(new1,8,9,null)")
        << type.name;
  }
}

TEST(Enum, a_start_that_fails_is_traced_in_the_enums_words) {
  SpiedHandle h(plain);
  const auto failing = spy::fail(ork_domain_lookup_variant, 5);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_create(h, instance), nullptr);
  EXPECT_CALLS(log.calls_of({"trace", "free_fn"}),
               {"trace(error,error in fwe_cl_wayfind_chan_tx_state_e create Input/output error)",
                "free_fn(7,new1)"});
}

TEST(Enum, without_memory_the_plain_form_gives_null) {
  SpiedHandle h(plain);
  spy::fail_alloc(1);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_create(h, instance), nullptr);
  EXPECT_EQ(h.last_error(), 0u);
}

TEST(Enum, in_shared_storage_it_points_at_the_shared_copy_and_counts_there) {
  SpiedHandle h({.shared = true});
  auto* const obj = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  const auto* const type = load<const ork_type_info*>(obj);
  EXPECT_NE(type, &_fwe_cl_wayfind_chan_tx_state_e_type_info_internal);
  EXPECT_EQ(type->varinfo->entries[0].create_count, 1u);
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, obj);
  EXPECT_EQ(type->varinfo->entries[0].destroy_count, 1u);
}

TEST(Enum, marks_itself_embedded_and_traces_null_in_words_of_its_own) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  spy::Log log;
  fwe_cl_wayfind_chan_tx_state_e_set_instance_embedded(h, instance, obj);
  fwe_cl_wayfind_chan_tx_state_e_set_instance_embedded(h, instance, nullptr);
  EXPECT_CALLS(log, {"write_notify_fn(obj+10,1,7,obj)",
                     "trace(error,Invalid object handle passed to set embedded flag)"});
  EXPECT_EQ(header(obj).obj_flags, OBJ_EMBEDDED);
}

TEST(Enum, holds_no_references_and_says_so_in_four_texts) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_oid_count(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_chan_tx_state_e_get_object_references(h, instance, obj, nullptr, 0, &h.err);
  EXPECT_CALLS(log, {});
  fwe_cl_wayfind_chan_tx_state_e_get_oid_count(h, instance, nullptr, &h.err);
  EXPECT_EQ(std::exchange(h.err, 0), 22u);
  fwe_cl_wayfind_chan_tx_state_e_get_object_references(h, instance, nullptr, nullptr, 0, &h.err);
  EXPECT_EQ(h.err, 22u);
  fwe_cl_wayfind_chan_tx_state_e_get_oid_count(h, instance, obj, &h.err);
  fwe_cl_wayfind_chan_tx_state_e_get_object_references(h, instance, obj, nullptr, 0, &h.err);
  EXPECT_CALLS(log.calls_of({"trace"}),
               {"trace(error,Invalid object passed in to get object oid count)",
                "trace(error,Cannot get table references. Invalid object passed on)",
                "trace(error,Error already present in call to get object oid count)",
                "trace(error,Error present in call to get table references from object)"});
}

TEST(EnumDeathTest, broken_descriptors_end_the_process) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  const auto* const type = load<const ork_type_info*>(obj.obj);
  ork_type_info wrong = *type;
  wrong.magic = 1;
  store<const ork_type_info*>(obj.obj, &wrong);
  EXPECT_DEATH(fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, obj),
               "trace\\(fatal,tinfo is null or corrupted\\)");
  wrong = *type;
  wrong.varinfo = nullptr;
  store<const ork_type_info*>(obj.obj, &wrong);
  EXPECT_DEATH(fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, obj),
               "trace\\(fatal,varinfo is NULL\\)");
  store(obj.obj, type);
}

// ---- Values ----

TEST(Enum, set_value_adjusts_checks_and_announces_four_bytes) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  spy::Log log;
  fwe_cl_wayfind_chan_tx_state_e_set_value(h, instance, obj, 2, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "orklib_adjust_variant",
                             "ork_get_instance_variant", "write_notify_fn"}),
               {"ork_clear_last_error()",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_tx_state_e),0,err)",
                "ork_get_instance_variant(obj,0,1)", "write_notify_fn(obj+12,4,7,obj)"});
  EXPECT_EQ(value_of(obj), 2u);
}

TEST(Enum, set_copies_all_sixteen_bytes_header_included) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  EnumObject src(h, "src");
  value_of(src) = 1;
  header(src).obj_flags = OBJ_EMBEDDED;
  spy::Log log;
  fwe_cl_wayfind_chan_tx_state_e_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}), {"write_notify_fn(obj,16,7,obj)"});
  EXPECT_EQ(std::memcmp(obj.obj, src.obj, 16), 0);
}

TEST(Enum, refuses_values_out_of_range_without_a_sign) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  EnumObject src(h, "src");
  spy::Log log;
  for (const uint32_t value : {3u, 0xFFFFFFFFu}) {
    fwe_cl_wayfind_chan_tx_state_e_set_value(h, instance, obj, value, &h.err);
    EXPECT_EQ(h.last_error(), 43u);
    ork_clear_last_error(h);
    value_of(src) = value;
    fwe_cl_wayfind_chan_tx_state_e_set(h, instance, obj, src, &h.err);
    EXPECT_EQ(h.last_error(), 43u);
  }
  EXPECT_EQ(log.count("write_notify_fn"), 0u);
  EXPECT_EQ(value_of(obj), 0u);
}

TEST(Enum, an_error_standing_stops_set_and_get) {
  SpiedHandle h(plain);
  EnumObject obj(h);
  EnumObject src(h, "src");
  value_of(obj) = 2;
  h.err = 5;
  spy::Log log;
  fwe_cl_wayfind_chan_tx_state_e_set(h, instance, obj, src, &h.err);
  fwe_cl_wayfind_chan_tx_state_e_set_value(h, instance, obj, 1, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_value(h, instance, obj, &h.err), 0u);
  EXPECT_CALLS(log, {});
  EXPECT_EQ(value_of(obj), 2u);
}

TEST(Enum, get_gives_the_object_back_and_get_value_wants_one) {
  SpiedHandle h(recorded);
  EnumObject obj(h);
  value_of(obj) = 2;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get(h, instance, obj), obj.obj);
  EXPECT_CALLS(log, {"orkdb_record_containment2(7,obj,null,1)"});
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_value(h, instance, obj, &h.err), 2u);
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_value(h, instance, nullptr, &h.err), 0u);
  EXPECT_EQ(h.err, 22u);
  EXPECT_EQ(log.count("ork_store_err"), 1u);
}

TEST(Enum, is_valid_compares_with_a_sign_and_asks_the_domain) {
  SpiedHandle h(plain);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_is_valid_cr(h, 2), 1u);
  EXPECT_CALLS(log,
               {"ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_chan_tx_state_e),cr_error)"});
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_is_valid_cr(h, 3), 0u);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_is_valid_cr(h, -1), 1u);
  EXPECT_EQ(fwe_cl_wayfind_select_tc_type_e_is_valid_cr(h, 5), 0u);
  EXPECT_EQ(fwe_cl_wayfind_select_tc_type_e_is_valid_cr(h, 4), 1u);
}

TEST(Enum, small_answers) {
  SpiedHandle h(tracked);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_sizeof(), 16u);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_len(), 5u);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_len_cr(h), 5u);
  h->cr_error = 5;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_len_cr(h), 0u);
  h->cr_error = 0;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_map_to_user_value(77), 77u);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_map_to_internal_value(77), 77u);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_variant_data_index_cap(5), 0);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_variant_data_index_cap(-3), -3);
  EnumObject a(h, "a");
  EnumObject b(h, "b");
  value_of(a) = 1;
  value_of(b) = 4;
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_compare(a, b), -3);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_compare(nullptr, b), -1);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_compare(a, nullptr), 1);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_compare(nullptr, nullptr), 0);
  EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_hash(nullptr, 99), 99u);
}

// ---- Flags ----

TEST(Flags, single_bits_are_set_cleared_and_read) {
  SpiedHandle h(plain);
  FlagObject obj(h);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, obj, 4, 1, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "orklib_adjust_variant",
                             "ork_get_instance_variant", "write_notify_fn"}),
               {"ork_clear_last_error()",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_flags),0,err)",
                "ork_get_instance_variant(obj,0,1)", "write_notify_fn(obj+11,1,7,obj)"});
  EXPECT_EQ(flags_of(obj), 0x10);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, obj, 0, 77, &h.err);
  EXPECT_EQ(flags_of(obj), 0x11);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, obj, 0, &h.err), 1u);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, obj, 0, 0, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, obj, 0, &h.err), 0u);
  EXPECT_EQ(flags_of(obj), 0x10);
}

TEST(Flags, numbers_out_of_range_and_null_are_refused) {
  SpiedHandle h(plain);
  FlagObject obj(h);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, obj, 5, 1, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(flags_of(obj), 0);
  ork_clear_last_error(h);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, obj, 5, &h.err), 0u);
  EXPECT_EQ(h.last_error(), 43u);
  ork_clear_last_error(h);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, nullptr, 0, &h.err), 0u);
  EXPECT_EQ(h.last_error(), 43u);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, nullptr, 0, 1, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_in_range(4), 1u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_in_range(5), 0u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_is_valid_cr(h, 4), 1u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_is_valid_cr(h, 5), 0u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_is_valid_cr(h, 0xFFFFFFFF), 0u);
  spy::Log log;
  fwe_cl_wayfind_hop_chan_flags_is_valid_cr(h, 4);
  EXPECT_CALLS(log,
               {"ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_hop_chan_flags),cr_error)"});
}

TEST(Flags, set_copies_all_24_bytes_and_get_makes_no_record) {
  SpiedHandle h(recorded);
  FlagObject obj(h);
  FlagObject src(h, "src");
  flags_of(src) = 0x1f;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get(h, instance, obj), obj.obj);
  EXPECT_CALLS(log, {});
  fwe_cl_wayfind_hop_chan_flags_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log.calls_of({"ork_clear_last_error", "orklib_adjust_variant", "write_notify_fn"}),
               {"ork_clear_last_error()",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_hop_chan_flags),0,err)",
                "write_notify_fn(obj,24,7,obj)"});
  EXPECT_EQ(flags_of(obj), 0x1f);
  h.err = 5;
  log.clear();
  fwe_cl_wayfind_hop_chan_flags_set(h, instance, obj, src, &h.err);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, obj, 0, 0, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, obj, 0, &h.err), 0u);
  EXPECT_CALLS(log, {});
}

TEST(Flags, cr_forms_use_the_slot_and_the_instance_of_the_handle) {
  SpiedHandle h({.cr_instance = 11});
  FlagObject obj(h);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_set_cr(h, obj, 2, 1), 0u);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant", "write_notify_fn"}),
               {"orklib_adjust_variant(11,obj,type(fwe_cl_wayfind_hop_chan_flags),0,cr_error)",
                "write_notify_fn(obj+11,1,11,obj)"});
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_cr(h, obj, 2), 1u);
  h->cr_error = 5;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_cr(h, obj, 2), 0u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_set_cr(h, obj, 3, 1), 5u);
  EXPECT_EQ(flags_of(obj), 0x04);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len_cr(h), 0u);
  h->cr_error = 0;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len_cr(h), 6u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_len(), 6u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_sizeof(), 24u);
}

TEST(Flags, compare_subtracts_the_bytes) {
  SpiedHandle h(plain);
  FlagObject a(h, "a");
  FlagObject b(h, "b");
  flags_of(a) = 0x11;
  flags_of(b) = 0x03;
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(a, b), 14);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(b, a), -14);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_compare(nullptr, a), -1);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_hash(nullptr, 3), 3u);
}

TEST(Flags, create_allocates_24_bytes_and_counts_by_itself) {
  SpiedHandle h(plain);
  auto& entry = _fwe_cl_wayfind_hop_chan_flags_type_info_internal.varinfo->entries[0];
  const uint64_t created = entry.create_count;
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  EXPECT_CALLS(
      log.calls_of({"alloc_fn", "flight_module_init_fn", "orklib_type_stats_create_object"}),
      {"alloc_fn(7,24)=new1"});
  EXPECT_EQ(log.count("counter_notify_fn"), 1u);
  EXPECT_EQ(entry.create_count, created + 1);
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, obj);
}

}  // namespace frame
