// Turning zeroed storage into a record, the sizes it takes, and what parents do to the objects
// inside them.
#include "behaviour/frame/objects.h"

namespace frame {

// The bits of obj_flags as the runtime and the wire know them; no other has a meaning.
static_assert(OBJ_OID_MAPPED == 0x01);
static_assert(OBJ_EMBEDDED == 0x02);
static_assert(OBJ_NESTED == 0x04);
static_assert(OBJ_STATE_TRACKED == 0x08);
static_assert(OBJ_RA_DATA == 0x20);
static_assert(OBJ_STTR_OFFSET == 0x40);
static_assert(OBJ_OWNS_SLOT_BLOCK == 0x80);
static_assert(OBJ_WIRE_MASK == 0x28);

// ---- Initialize ----

TEST(Initialize, does_nothing_with_an_error_standing) {
  SpiedHandle h(plain);
  alignas(8) uint8_t block[40] = {};
  const Snapshot before(block, sizeof block);
  h.err = 5;
  spy::Log log;
  fwe_cl_wayfind_mem_st_initialize(h, instance, reinterpret_cast<fwe_cl_wayfind_mem_st*>(block),
                                   &_fwe_cl_wayfind_mem_st_type_info_internal, 1, 0, 0, nullptr,
                                   &h.err);
  EXPECT_CALLS(log, {});
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 5u);
}

TEST(Initialize, without_notify_announces_nothing_and_without_statistics_counts_nothing) {
  SpiedHandle h(tracked);
  alignas(8) uint8_t block[43] = {};
  spy::name(block, 40, "obj");
  spy::Log log;
  fwe_cl_wayfind_mem_st_initialize(h, instance, reinterpret_cast<fwe_cl_wayfind_mem_st*>(block),
                                   &_fwe_cl_wayfind_mem_st_type_info_internal, 0, 1, OBJ_NESTED,
                                   nullptr, &h.err);
  EXPECT_CALLS(log, {"ork_clear_last_error()",
                     "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_mem_st),err)",
                     "ork_get_manifested_type_info_ptr_mem(obj)"});
  EXPECT_EQ(block[10], OBJ_NESTED | OBJ_STATE_TRACKED);
  EXPECT_EQ(h.err, 0u) << "the state base is not asked for without statistics";
}

TEST(Initialize, the_type_goes_where_the_runtime_says_and_that_place_is_announced) {
  SpiedHandle h(plain);
  alignas(8) uint8_t block[40] = {};
  const ork_type_info* slot = nullptr;
  spy::name(block, sizeof block, "obj");
  spy::name(&slot, sizeof slot, "slot");
  const auto elsewhere = spy::answer(ork_get_manifested_type_info_ptr_mem, &slot);
  spy::Log log;
  fwe_cl_wayfind_mem_st_initialize(h, instance, reinterpret_cast<fwe_cl_wayfind_mem_st*>(block),
                                   &_fwe_cl_wayfind_mem_st_type_info_internal, 1, 1, 0, nullptr,
                                   &h.err);
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               {"write_notify_fn(obj+9,1,7,obj)", "write_notify_fn(obj+8,1,7,obj)",
                "write_notify_fn(slot,8,7,obj)", "write_notify_fn(obj+10,1,7,obj)"});
  EXPECT_EQ(slot, &_fwe_cl_wayfind_mem_st_type_info_internal);
  EXPECT_EQ(load<uint64_t>(block), 0u);
}

TEST(Initialize, the_objects_inside_are_neither_announced_nor_counted_when_the_record_is_not) {
  SpiedHandle h(tracked);
  alignas(8) uint8_t block[136 + 9] = {};
  spy::name(block, sizeof block, "obj");
  spy::Log log;
  fwe_cl_wayfind_hop_chan_state_data_initialize(
      h, instance, reinterpret_cast<fwe_cl_wayfind_hop_chan_state_data*>(block),
      &_fwe_cl_wayfind_hop_chan_state_data_type_info_internal, 0, 1, 0, nullptr, &h.err);
  std::vector<std::string> expected = {
      "ork_clear_last_error()",
      "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_hop_chan_state_data),err)",
      "ork_get_manifested_type_info_ptr_mem(obj)"};
  // The booleans; at 32 lies an integer.
  for (const size_t offset : {12u, 16u, 20u, 24u, 28u, 36u}) {
    expected.push_back("ork_boolean_initialize(7," + at("obj", offset) +
                       ",type(ork_boolean),0,1,4,null,err)");
  }
  EXPECT_CALLS(log, expected);

  std::fill(std::begin(block), std::end(block), uint8_t{0});
  const auto& state = _fwe_cl_wayfind_chan_nb_state_e_type_info_internal.varinfo->entries[0];
  const uint64_t created = state.create_count;
  log.clear();
  fwe_cl_wayfind_nb_channel_data_initialize(
      h, instance, reinterpret_cast<fwe_cl_wayfind_nb_channel_data*>(block),
      &_fwe_cl_wayfind_nb_channel_data_type_info_internal, 0, 1, 0, nullptr, &h.err);
  EXPECT_CALLS(
      log.calls_of({"write_notify_fn", "counter_notify_fn", "orklib_type_stats_create_object",
                    "orklib_get_sttr_offset", "orklib_update_sttr_offset"}),
      {});
  EXPECT_EQ(state.create_count, created);
  // chan_nb at 16, with its enum state at 16 inside; mem at 80.
  EXPECT_EQ(load<const ork_type_info*>(block + 32),
            &_fwe_cl_wayfind_chan_nb_state_e_type_info_internal);
  for (const size_t child : {16u, 80u}) {
    EXPECT_EQ(block[child + 10], OBJ_NESTED | OBJ_STATE_TRACKED)
        << "without a base the tracked children are no failure";
  }
  EXPECT_EQ(h.err, 0u);
}

TEST(Initialize, a_nested_object_wants_a_state_base_while_tracking) {
  SpiedHandle h(tracked);
  alignas(8) uint8_t block[600 + 51] = {};
  spy::Log log;
  fwe_cl_wayfind_hop_chan_data_initialize(
      h, instance, reinterpret_cast<fwe_cl_wayfind_hop_chan_data*>(block),
      &_fwe_cl_wayfind_hop_chan_data_type_info_internal, 1, 0, OBJ_NESTED, nullptr, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}),
               {"ork_store_err(22)",
                "trace(error,sttr_base can not be NULL in NESTED case. Please check the parent "
                "object and provide "
                "the correct state tracking base pointer)"});
  EXPECT_EQ(load<uint64_t>(block + 16), 0u) << "the children stay uninitialised";
  EXPECT_EQ(log.count("orklib_type_stats_create_object"), 1u) << "the object itself was counted";
}

TEST(Initialize, a_nested_object_wants_a_state_base_even_without_records_and_with_a_told_distance) {
  for (const uint8_t before : {uint8_t{0}, uint8_t{OBJ_STTR_OFFSET}}) {
    SpiedHandle h(tracked);
    alignas(8) uint8_t block[88 + 4] = {};
    block[10] = before;
    spy::Log log;
    fwe_pal_wayfind_site_prefix_data_initialize(
        h, instance, reinterpret_cast<fwe_pal_wayfind_site_prefix_data*>(block),
        &_fwe_pal_wayfind_site_prefix_data_type_info_internal, 1, 0, OBJ_NESTED, nullptr, &h.err);
    EXPECT_EQ(h.err, 22u);
    EXPECT_CALLS(log.calls_of({"ork_store_err", "orklib_get_sttr_offset", "ip_address_initialize"}),
                 {"ork_store_err(22)"});
  }
}

TEST(Initialize, a_nested_object_wants_no_state_base_without_tracking) {
  SpiedHandle h(untracked);
  alignas(8) uint8_t block[40] = {};
  fwe_cl_wayfind_mem_st_initialize(h, instance, reinterpret_cast<fwe_cl_wayfind_mem_st*>(block),
                                   &_fwe_cl_wayfind_mem_st_type_info_internal, 1, 0, OBJ_NESTED,
                                   nullptr, &h.err);
  EXPECT_EQ(h.err, 0u);
  fwe_cl_wayfind_mem_st_destroy_internal(h, instance,
                                         reinterpret_cast<fwe_cl_wayfind_mem_st*>(block), 0);
}

TEST(Initialize, a_variant_count_below_the_variant_but_not_equal_to_it_is_traced_and_survived) {
  for (const int8_t variants : {int8_t{0}, int8_t{1}}) {
    SpiedHandle h(plain);
    // The cap is the record's own constant, so a descriptor with fewer variants shows the test.
    ork_type_info type = _fwe_cl_wayfind_auto_tunnel_type_info_internal;
    ork_variant_info info = *type.varinfo;
    info.n_variants = variants;
    type.varinfo = &info;
    alignas(8) uint8_t block[104] = {};
    auto* const obj = reinterpret_cast<fwe_cl_wayfind_auto_tunnel*>(block);
    const auto newest = spy::answer(ork_domain_lookup_variant, 1);
    spy::Log log;
    fwe_cl_wayfind_auto_tunnel_initialize(h, instance, obj, &type, 0, 0, 0, nullptr, &h.err);
    fwe_cl_wayfind_auto_tunnel_destroy_internal(h, instance, obj, 0);
    EXPECT_CALLS(
        log.calls_of({"trace"}),
        std::vector<std::string>(variants == 0 ? 2 : 0,
                                 "trace(info,variant 1 requested only 0 variants present)"));
    EXPECT_EQ(log.count("orklib_type_stats_create_object"), 1u);
    EXPECT_EQ(log.count("orklib_type_stats_destroy_object"), 1u);
  }
}

TEST(Initialize, in_shared_storage_the_variants_are_those_of_the_shared_type) {
  SpiedHandle h({.shared = true});
  ork_type_info type = _fwe_cl_wayfind_auto_tunnel_type_info_internal;
  ork_variant_info info = *type.varinfo;
  info.n_variants = 0;
  type.varinfo = &info;
  const auto shared = spy::answer(ork_type_info_ptr_get, &type);
  const auto newest = spy::answer(ork_domain_lookup_variant, 1);
  alignas(8) uint8_t block[104] = {};
  spy::Log log;
  fwe_cl_wayfind_auto_tunnel_initialize(
      h, instance, reinterpret_cast<fwe_cl_wayfind_auto_tunnel*>(block),
      &_fwe_cl_wayfind_auto_tunnel_type_info_internal, 0, 0, 0, nullptr, &h.err);
  EXPECT_CALLS(log.calls_of({"trace"}),
               {"trace(info,variant 1 requested only 0 variants present)"});
}

TEST(Initialize, a_parent_tells_where_its_children_keep_their_state_before_it_makes_them) {
  SpiedHandle h(tracked);
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_nb_channel_data_create(h, instance);
  // Body 136: chan_nb at 16, mem at 80; state bytes: chan_nb 0, its own 1 to 4, mem 5, its own 6
  // to 8.
  EXPECT_CALLS(
      log.calls_of({"alloc_fn", "orklib_update_sttr_offset", "orklib_type_stats_create_object",
                    "orklib_get_sttr_offset"}),
      {"alloc_fn(7,145)=new1",
       "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_nb_channel_data),?,?)",
       "orklib_update_sttr_offset(7,new1+16,121)", "orklib_update_sttr_offset(7,new1+80,62)",
       "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_chan_nb_st),?,?)",
       "orklib_get_sttr_offset(7,new1+16)", /* asked and dropped: no children there */
       "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
       "orklib_get_sttr_offset(7,new1+80)"});
  EXPECT_EQ(bytes(obj)[16 + 10], OBJ_NESTED | OBJ_STATE_TRACKED | OBJ_STTR_OFFSET);
  EXPECT_EQ(bytes(obj)[80 + 10], OBJ_NESTED | OBJ_STATE_TRACKED | OBJ_STTR_OFFSET);
  fwe_cl_wayfind_nb_channel_data_destroy(h, instance, obj);
}

TEST(Initialize, fields_that_are_objects_are_made_in_field_order_whatever_their_variant) {
  SpiedHandle h(plain);
  const auto old = h.domain({{"fwe_cl_wayfind_hop_chan_st", 0}});
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_hop_chan_st_create(h, instance);
  EXPECT_EQ(header(obj).variant, 0);
  EXPECT_EQ(header(obj).variant_cap, 1);
  // flags_show, of variant 1, at 112.
  EXPECT_EQ(load<const ork_type_info*>(bytes(obj) + 112),
            &_fwe_cl_wayfind_hop_chan_flags_type_info_internal);
  EXPECT_EQ(bytes(obj)[112 + 10], OBJ_NESTED);
  fwe_cl_wayfind_hop_chan_st_destroy(h, instance, obj);
}

TEST(Initialize, runtime_objects_get_the_arguments_of_the_record) {
  SpiedHandle h(tracked);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_enforce_hop_create(h, instance);
  // linktype, a link_type at 24; the base is null for a record without embedded records.
  EXPECT_CALLS(log.calls_of({"link_type_initialize"}),
               {"link_type_initialize(7,new1+24,type(link_type),1,0,4,null,?)"});
  fwe_cl_wayfind_enforce_hop_destroy(h, instance, obj);

  log.clear();
  auto* const param = fwe_cl_wayfind_hop_chan_state_data_create(h, instance);
  EXPECT_EQ(log.count("ork_boolean_initialize"), 6u);
  EXPECT_EQ(log.calls_of({"ork_boolean_initialize"})[0],
            "ork_boolean_initialize(7,new2+12,type(ork_boolean),1,0,4,null,?)");
  fwe_cl_wayfind_hop_chan_state_data_destroy(h, instance, param);
}

TEST(Initialize, children_take_the_base_that_their_parent_worked_out) {
  SpiedHandle h(tracked);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_inst_data_create(h, instance);
  // inst at 16 has the ip_address probe_src at 24; the body of inst_data is 200.
  EXPECT_CALLS(log.calls_of({"ip_address_initialize"}),
               {"ip_address_initialize(7,new1+40,type(ip_address),1,0,4,new1+200,?)"});
  fwe_cl_wayfind_inst_data_destroy(h, instance, obj);
}

TEST(Initialize, children_are_told_a_distance_always_and_a_base_unless_their_parent_is_nested) {
  constexpr const char* get_offset = "orklib_get_sttr_offset(7,obj)";
  struct Case {
    uint8_t before, flags; /* set in the header, and given */
    std::vector<std::string> told;
  };
  // chan_nb at 16 has its state bytes from 1 on, mem at 80 from 6 on.
  const std::vector<std::string> from_200 = {"orklib_update_sttr_offset(7,obj+16,185)",
                                             "orklib_update_sttr_offset(7,obj+80,126)"};
  const std::vector<std::string> from_300 = {get_offset, "orklib_update_sttr_offset(7,obj+16,285)",
                                             "orklib_update_sttr_offset(7,obj+80,226)"};
  for (const auto& [before, flags, expected] :
       {Case{0, 0, from_200}, Case{0, OBJ_NESTED, {}}, Case{OBJ_STTR_OFFSET, 0, from_300},
        Case{OBJ_STTR_OFFSET, OBJ_NESTED, from_300}}) {
    SpiedHandle h(tracked);
    alignas(8) uint8_t block[309] = {};
    spy::name(block, sizeof block, "obj");
    block[10] = before;
    const auto distance = spy::answer(orklib_get_sttr_offset, 300);
    const auto unmapped =
        spy::replace(orklib_update_sttr_offset, [](ork_handle*, uint32_t, void*, int32_t) {});
    spy::Log log;
    fwe_cl_wayfind_nb_channel_data_initialize(
        h, instance, reinterpret_cast<fwe_cl_wayfind_nb_channel_data*>(block),
        &_fwe_cl_wayfind_nb_channel_data_type_info_internal, 1, 0, flags, block + 200, &h.err);
    EXPECT_CALLS(log.calls_of({"orklib_get_sttr_offset", "orklib_update_sttr_offset"}), expected)
        << int{before} << " " << int{flags};
    EXPECT_EQ(h.err, 0u);
  }
}

TEST(Initialize, children_take_the_base_that_was_given_also_where_a_distance_was_told) {
  alignas(8) uint8_t block[300 + 13];
  struct Case {
    uint8_t* base;
    const char* taken;
  };
  for (const auto& [base, taken] : {Case{block + 200, "obj+200"}, Case{nullptr, "obj+300"}}) {
    SpiedHandle h(tracked);
    std::memset(block, 0, sizeof block);
    block[10] = OBJ_STTR_OFFSET;
    spy::name(block, sizeof block, "obj");
    const auto distance = spy::answer(orklib_get_sttr_offset, 300);
    const auto unmapped =
        spy::replace(orklib_update_sttr_offset, [](ork_handle*, uint32_t, void*, int32_t) {});
    spy::Log log;
    fwe_cl_wayfind_prefixtosite_data_initialize(
        h, instance, reinterpret_cast<fwe_cl_wayfind_prefixtosite_data*>(block),
        &_fwe_cl_wayfind_prefixtosite_data_type_info_internal, 1, 0, 0, base, &h.err);
    EXPECT_CALLS(log.calls_of({"ip_address_initialize"}),
                 std::vector<std::string>{
                     std::string("ip_address_initialize(7,obj+16,type(ip_address),1,0,4,") + taken +
                     ",err)"});
    EXPECT_EQ(h.err, 0u);
  }
}

// ---- Sizes ----

TEST(Sizeof, mem_st_is_40_and_43_with_tracking) {
  for (const Mode& mode : {plain, untracked}) {
    SpiedHandle h(mode);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof(h), 40u);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 1, 0), 40u);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 0, 1), 0u);
  }
  SpiedHandle h(tracked);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof(h), 43u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 0, 0), 40u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 1, 0), 43u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 0, 1), 3u);
}

// ---- Marking as embedded ----

TEST(Embedded, marks_the_fields_first_and_the_record_last) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_inst_data");
  spy::Log log;
  fwe_cl_wayfind_inst_data_set_instance_embedded(h, instance, obj);
  // inst at 16 with its address at 24 inside, mem at 144.
  EXPECT_CALLS(log,
               {"ip_address_set_instance_embedded(7,obj+40)", "write_notify_fn(obj+26,1,7,obj+16)",
                "write_notify_fn(obj+154,1,7,obj+144)", "write_notify_fn(obj+10,1,7,obj)"});
  EXPECT_EQ(bytes(obj.get())[10], OBJ_EMBEDDED);
  EXPECT_EQ(bytes(obj.get())[26], OBJ_EMBEDDED | OBJ_NESTED);
  EXPECT_EQ(bytes(obj.get())[40 + 10] & OBJ_EMBEDDED, OBJ_EMBEDDED);
  EXPECT_EQ(bytes(obj.get())[154], OBJ_EMBEDDED | OBJ_NESTED);
}

TEST(Embedded, marks_enums_flag_sets_link_types_and_booleans_through_their_own_functions) {
  SpiedHandle h(plain);
  SpiedObject hop(h, "fwe_cl_wayfind_hop_chan_st");
  fwe_cl_wayfind_hop_chan_st_set_instance_embedded(h, instance, hop);
  EXPECT_EQ(hop.field("flags_show")[10], OBJ_NESTED | OBJ_EMBEDDED);

  SpiedObject chan(h, "fwe_cl_wayfind_chan_nb_st");
  fwe_cl_wayfind_chan_nb_st_set_instance_embedded(h, instance, chan);
  EXPECT_EQ(chan.field("state")[10], OBJ_NESTED | OBJ_EMBEDDED);
  EXPECT_EQ(chan.field("tx_state")[10], OBJ_NESTED | OBJ_EMBEDDED);

  SpiedObject enforce(h, "fwe_cl_wayfind_enforce_hop", "enforce");
  SpiedObject state(h, "fwe_cl_wayfind_select_state_data", "select");
  spy::Log log;
  fwe_cl_wayfind_enforce_hop_set_instance_embedded(h, instance, enforce);
  fwe_cl_wayfind_select_state_data_set_instance_embedded(h, instance, state);
  EXPECT_CALLS(
      log.calls_of({"link_type_set_instance_embedded", "ork_boolean_set_instance_embedded"}),
      {"link_type_set_instance_embedded(7,enforce+24)",
       "ork_boolean_set_instance_embedded(7,select+32)",
       "ork_boolean_set_instance_embedded(7,select+36)",
       "ork_boolean_set_instance_embedded(7,select+40)",
       "ork_boolean_set_instance_embedded(7,select+48)"});
}

TEST(Embedded, a_null_object_is_traced_without_an_error) {
  SpiedHandle h(plain);
  spy::Log log;
  fwe_cl_wayfind_mem_st_set_instance_embedded(h, instance, nullptr);
  EXPECT_CALLS(log, {"trace(error,Invalid object pointer passed in to set instance flag)"});
  EXPECT_EQ(h.last_error(), 0u);
}

// ---- References ----

TEST(References, no_record_holds_any) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  void* refs[1] = {&h};
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_get_oid_count(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_mem_st_get_object_references(h, instance, obj, refs, 1, &h.err);
  EXPECT_CALLS(log, {});
  EXPECT_EQ(refs[0], &h);
  EXPECT_EQ(h.err, 0u);
}

TEST(References, an_error_standing_is_traced_and_kept_whether_or_not_there_is_an_object) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  h.err = 5;
  for (fwe_cl_wayfind_mem_st* const at :
       {static_cast<fwe_cl_wayfind_mem_st*>(obj), static_cast<fwe_cl_wayfind_mem_st*>(nullptr)}) {
    spy::Log log;
    EXPECT_EQ(fwe_cl_wayfind_mem_st_get_oid_count(h, instance, at, &h.err), 0u);
    fwe_cl_wayfind_mem_st_get_object_references(h, instance, at, nullptr, 0, &h.err);
    EXPECT_CALLS(log, {"trace(error,Error already present in call to get object oid count)",
                       "trace(error,Error present in call to get table references from object)"});
    EXPECT_EQ(h.err, 5u);
  }
}

TEST(References, a_null_object_gives_22) {
  SpiedHandle h(plain);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_get_oid_count(h, instance, nullptr, &h.err), 0u);
  EXPECT_EQ(h.err, 22u);
  h.err = 0;
  fwe_cl_wayfind_mem_st_get_object_references(h, instance, nullptr, nullptr, 0, &h.err);
  EXPECT_EQ(h.err, 22u);
  EXPECT_CALLS(
      log,
      {"trace(error,Invalid object passed in to get object oid count)", "ork_store_err(22)",
       "trace(error,Cannot get table references. Invalid object passed on)", "ork_store_err(22)"});
}

}  // namespace frame
