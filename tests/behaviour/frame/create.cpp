// Making records: the calls in their order, the sentinel, cr mode, and every way to fail.
#include "behaviour/frame/objects.h"
#include "ork/flight.h"

namespace frame {

namespace {

constexpr const char* trace_start = "flight_module_init_fn('ork_fwe_ui_wayfind',?,?)";

// The statistics block of a variant, in the static descriptor.
void name_statistics(const ork_type_info& type, const std::string& name, int variant = 0) {
  spy::name(&type.varinfo->entries[variant].create_count, 24, name);
}

void* sentinel_of_mem(SpiedHandle& h) {
  h->cr_error = 5;
  void* const sentinel = fwe_cl_wayfind_mem_st_create_cr(h);
  h->cr_error = 0;
  return sentinel;
}

}  // namespace

TEST(Create, calls_the_runtime_in_the_order_told) {
  SpiedHandle h(plain);
  name_statistics(_fwe_cl_wayfind_mem_st_type_info_internal, "statistics");
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_CALLS(log,
               {trace_start, "alloc_fn(7,40)=new1", "ork_clear_last_error()",
                "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_mem_st),?)",
                "write_notify_fn(new1+9,1,7,new1)", "write_notify_fn(new1+8,1,7,new1)",
                "ork_get_manifested_type_info_ptr_mem(new1)", "write_notify_fn(new1,8,7,new1)",
                "write_notify_fn(new1+10,1,7,new1)",
                "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_mem_st),statistics,?)"});
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, tracking_announces_the_flags_once_more_and_adds_the_state_bytes) {
  SpiedHandle h(tracked);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_CALLS(log.calls_of({"alloc_fn", "write_notify_fn"}),
               {"alloc_fn(7,43)=new1", "write_notify_fn(new1+9,1,7,new1)",
                "write_notify_fn(new1+8,1,7,new1)", "write_notify_fn(new1,8,7,new1)",
                "write_notify_fn(new1+10,1,7,new1)", "write_notify_fn(new1+10,1,7,new1)"});
  EXPECT_EQ(header(obj).obj_flags, OBJ_STATE_TRACKED);
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, shared_objects_point_at_the_shared_copy_and_the_hooks_are_told_of_them) {
  SpiedHandle h(shared_and_recorded);
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_CALLS(
      log,
      {trace_start, "alloc_fn(7,40)=new1", "ork_clear_last_error()",
       "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_mem_st),?)",
       "write_notify_fn(new1+9,1,7,new1)", "write_notify_fn(new1+8,1,7,new1)",
       "ork_type_info_ptr_get(7,type(fwe_cl_wayfind_mem_st),fwe_ui_wayfind_typeinfo_initialize)",
       "ork_get_manifested_type_info_ptr_mem(new1)", "write_notify_fn(new1,8,7,new1)",
       "write_notify_fn(new1+10,1,7,new1)",
       "orklib_type_stats_create_object(7,shared(fwe_cl_wayfind_mem_st),?,?)",
       "orkdb_record_containment2(7,new1,null,1)", "orkdb_plat_set_dirty(7,new1)"});
  EXPECT_NE(load<const ork_type_info*>(obj), &_fwe_cl_wayfind_mem_st_type_info_internal);
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, the_platform_hooks_want_an_instance_and_watched_storage) {
  SpiedHandle h(shared_and_recorded);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, ORK_NO_INSTANCE);
  EXPECT_EQ(log.count("orkdb_record_containment2"), 1u);
  EXPECT_EQ(log.count("orkdb_plat_set_dirty"), 0u);
  h->shared_types = 2;
  auto* const other = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_EQ(log.count("orkdb_plat_set_dirty"), 0u);
  fwe_cl_wayfind_mem_st_destroy(h, instance, other);
  EXPECT_EQ(log.count("orkdb_plat_set_destroy"), 0u);
  h->shared_types = 1;
  fwe_cl_wayfind_mem_st_destroy(h, ORK_NO_INSTANCE, obj);
  EXPECT_EQ(log.count("orkdb_plat_set_destroy"), 0u);

  SpiedHandle own(recorded);
  log.clear();
  auto* const unwatched = fwe_cl_wayfind_mem_st_create(own, instance);
  EXPECT_EQ(log.count("orkdb_plat_set_dirty"), 0u);
  fwe_cl_wayfind_mem_st_destroy(own, instance, unwatched);
  EXPECT_EQ(log.count("orkdb_plat_set_destroy"), 0u);
}

TEST(Create, storage_that_is_shared_but_not_watched_leads_to_the_shared_copy_as_well) {
  SpiedHandle h({.shared = true});
  h->shared_types = 2;
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_chan_nb_st_create(h, instance);
  EXPECT_CALLS(log.calls_of({"ork_type_info_ptr_get"}),
               {"ork_type_info_ptr_get(7,type(fwe_cl_wayfind_chan_nb_st),fwe_ui_wayfind_typeinfo_"
                "initialize)",
                "ork_type_info_ptr_get(7,type(fwe_cl_wayfind_chan_nb_state_e),fwe_ui_wayfind_"
                "typeinfo_initialize)",
                "ork_type_info_ptr_get(7,type(fwe_cl_wayfind_chan_tx_state_e),fwe_ui_wayfind_"
                "typeinfo_initialize)"});
  EXPECT_EQ(load<const ork_type_info*>(obj)->shared, 2u);
  fwe_cl_wayfind_chan_nb_st_destroy(h, instance, obj);
  h->shared_types = 1;
}

TEST(Create, the_sentinel_is_told_to_the_hooks_of_shared_storage_like_an_object) {
  SpiedHandle h(shared_and_recorded);
  spy::name_at(sentinel_of_mem(h), "sentinel");
  h->cr_error = 5;
  spy::Log log;
  fwe_cl_wayfind_mem_st_create_cr(h);
  EXPECT_CALLS(log, {trace_start, "orkdb_record_containment2(7,sentinel,null,1)",
                     "orkdb_plat_set_dirty(7,sentinel)"});
  EXPECT_EQ(h->cr_error, 5u);
}

TEST(Create, a_recording_that_the_first_hook_ends_is_over_for_the_second) {
  SpiedHandle h(shared_and_recorded);
  const auto ending = spy::replace(orkdb_record_containment2,
                                   [](ork_handle* handle, uint32_t, const void*, const void*,
                                      uint32_t) { handle->db_recording = 0; });
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_EQ(log.count("orkdb_record_containment2"), 1u);
  EXPECT_EQ(log.count("orkdb_plat_set_dirty"), 0u);
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, tracking_that_ends_during_the_allocation_leaves_the_state_bytes_as_they_came) {
  SpiedHandle h(tracked);
  static ork_handle* handle; /* an allocator gets no handle */
  static ork_alloc_fn before;
  handle = h;
  before = std::exchange(h->alloc_fn, [](void* pool, uint32_t i, size_t size) {
    ork_handle_set_tracking(handle, ORK_TRACKING_OFF);
    return std::memset(before(pool, i, size), 0xA5, size);
  });
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  h->alloc_fn = before;
  EXPECT_EQ(header(obj).obj_flags, 0);
  EXPECT_TRUE(std::all_of(bytes(obj) + ORK_OBJECT_HEADER_SIZE, bytes(obj) + 40,
                          [](uint8_t b) { return b == 0; }));
  EXPECT_TRUE(std::all_of(bytes(obj) + 40, bytes(obj) + 43, [](uint8_t b) { return b == 0xA5; }))
      << "the size is worked out afresh";
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, a_new_record_is_zero_behind_its_header) {
  SpiedHandle h(tracked);
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  EXPECT_EQ(load<const ork_type_info*>(obj), &_fwe_cl_wayfind_mem_st_type_info_internal);
  EXPECT_EQ(header(obj).variant, 0);
  EXPECT_EQ(header(obj).variant_cap, 0);
  auto* const rest = bytes(obj) + ORK_OBJECT_HEADER_SIZE;
  EXPECT_TRUE(std::all_of(rest, bytes(obj) + 43, [](uint8_t b) { return b == 0; }));
  EXPECT_EQ(fwe_cl_wayfind_mem_st_fwe_num_get_value(h, instance, obj, &h.err), 0u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_ppe_addr_get_value(h, instance, obj, &h.err), 0u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_exmem_addr_get_value(h, instance, obj, &h.err), 0u);
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, without_memory_the_plain_form_gives_null_and_stores_nothing) {
  SpiedHandle h(recorded);
  spy::fail_alloc(1);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create(h, instance), nullptr);
  EXPECT_CALLS(log,
               {trace_start, "alloc_fn(7,40)=null", "orkdb_record_containment2(7,null,null,1)"});
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(h->cr_error, 0u);
}

TEST(Create, without_memory_the_hooks_of_shared_storage_are_told_of_null) {
  SpiedHandle h(shared_and_recorded);
  spy::fail_alloc(1);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create(h, instance), nullptr);
  EXPECT_CALLS(log, {trace_start, "alloc_fn(7,40)=null", "orkdb_record_containment2(7,null,null,1)",
                     "orkdb_plat_set_dirty(7,null)"});
}

TEST(Create, without_memory_cr_mode_gives_the_sentinel_and_stores_12) {
  SpiedHandle h(recorded);
  void* const sentinel = sentinel_of_mem(h);
  spy::name(sentinel, 40, "sentinel");
  spy::fail_alloc(1);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create_cr(h), sentinel);
  EXPECT_CALLS(log, {trace_start, "alloc_fn(7,40)=null", "ork_store_err(12)",
                     "orkdb_record_containment2(7,sentinel,null,1)"});
  EXPECT_EQ(h->cr_error, 12u);
  EXPECT_EQ(h->cr_active, 0u);
  EXPECT_TRUE(std::all_of(bytes(sentinel), bytes(sentinel) + 40, [](uint8_t b) { return b == 0; }));
}

TEST(Create, without_memory_cr_mode_keeps_the_error_that_the_allocation_left) {
  SpiedHandle h(plain);
  void* const sentinel = sentinel_of_mem(h);
  static ork_handle* handle;
  handle = h;
  const auto alloc = std::exchange(h->alloc_fn, [](void*, uint32_t, size_t) -> void* {
    handle->cr_error = 5;
    return nullptr;
  });
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create_cr(h), sentinel);
  EXPECT_EQ(log.count("ork_store_err"), 0u);
  EXPECT_EQ(h->cr_error, 5u);
  h->alloc_fn = alloc;
}

TEST(Create, cr_mode_with_an_error_standing_allocates_nothing_and_keeps_the_error) {
  SpiedHandle h(plain);
  h->cr_error = 5;
  spy::Log log;
  void* const sentinel = fwe_cl_wayfind_mem_st_create_cr(h);
  EXPECT_CALLS(log, {trace_start});
  EXPECT_NE(sentinel, nullptr);
  EXPECT_EQ(load<uint64_t>(sentinel), 0u);
  EXPECT_EQ(h->cr_error, 5u);
}

TEST(Create, create_internal_starts_no_trace_and_gives_the_sentinel_only_in_cr_mode) {
  SpiedHandle h(plain);
  h->cr_error = 5;
  void* const sentinel = sentinel_of_mem(h);
  spy::Log log;
  auto* const obj = fwe_cl_wayfind_mem_st_create_internal(h, instance);
  EXPECT_EQ(log.count("flight_module_init_fn"), 0u);
  EXPECT_EQ(log.calls()[0], "alloc_fn(7,40)=new1");
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
  h->cr_active = 1;
  spy::fail_alloc(1);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create_internal(h, instance), sentinel);
  EXPECT_EQ(h->cr_error, 12u);
  h->cr_active = 0;
  h->cr_error = 0;
  spy::fail_alloc(1);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create_internal(h, instance), nullptr);
  EXPECT_EQ(h->cr_error, 0u);
}

TEST(Create, a_plain_create_does_not_look_at_cr_error) {
  SpiedHandle h(plain);
  h->cr_error = 5;
  auto* const obj = fwe_cl_wayfind_mem_st_create(h, instance);
  ASSERT_NE(obj, nullptr);
  EXPECT_EQ(h->cr_error, 5u);
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
}

TEST(Create, cr_mode_is_active_only_while_the_object_is_made) {
  SpiedHandle h({.cr_instance = 9});
  uint32_t at_trace_start = 2;
  uint32_t seen = 2;
  const auto start = spy::replace(flight_module_init_fn, [&](auto... arguments) {
    at_trace_start = h->cr_active;
    return spy::next(flight_module_init_fn)(arguments...);
  });
  const auto watch = spy::replace(
      orklib_type_stats_create_object,
      [&](ork_handle* handle, uint32_t i, const ork_type_info* t, void* s, uint32_t* e) {
        seen = handle->cr_active;
        EXPECT_EQ(i, 9u);
        return spy::next(orklib_type_stats_create_object)(handle, i, t, s, e);
      });
  for (const uint32_t before : {0u, 1u}) {
    h->cr_active = before;
    auto* const obj = fwe_cl_wayfind_mem_st_create_cr(h);
    EXPECT_EQ(at_trace_start, before);
    EXPECT_EQ(seen, 1u);
    EXPECT_EQ(h->cr_active, 0u);
    fwe_cl_wayfind_mem_st_destroy_cr(h, obj);
  }
}

TEST(Create, when_the_start_of_an_object_fails_its_block_goes_back_and_the_hooks_are_not_told) {
  SpiedHandle h(recorded);
  const auto& entry = _fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0];
  const uint64_t created = entry.create_count;
  // The statistics are the last that can fail, and they have counted by then.
  const auto failing = spy::replace(
      orklib_type_stats_create_object,
      [](ork_handle* handle, uint32_t i, const ork_type_info* t, void* s, uint32_t* e) {
        spy::next(orklib_type_stats_create_object)(handle, i, t, s, e);
        *e = 5;
        return 0u;
      });
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create(h, instance), nullptr);
  EXPECT_CALLS(log.calls_of({"trace", "free_fn", "orkdb_record_containment2", "ork_store_err"}),
               {"trace(error,error in fwe_cl_wayfind_mem_st create: Input/output error)",
                "free_fn(7,new1)"});
  EXPECT_EQ(entry.create_count, created + 1);
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create_cr(h), nullptr) << "no sentinel here";
  EXPECT_EQ(h->cr_error, 0u) << "left to what the runtime stored";
  EXPECT_EQ(h->cr_active, 0u);
}

TEST(Create, a_look_up_that_fails_is_looked_at_behind_the_header_and_the_statistics) {
  SpiedHandle h(plain);
  const auto failing = spy::fail(ork_domain_lookup_variant, 5);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_mem_st_create(h, instance), nullptr);
  EXPECT_CALLS(log, {trace_start, "alloc_fn(7,40)=new1", "ork_clear_last_error()",
                     "ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_mem_st),?)",
                     "write_notify_fn(new1+9,1,7,new1)", "write_notify_fn(new1+8,1,7,new1)",
                     "ork_get_manifested_type_info_ptr_mem(new1)", "write_notify_fn(new1,8,7,new1)",
                     "write_notify_fn(new1+10,1,7,new1)",
                     "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
                     "trace(error,error in fwe_cl_wayfind_mem_st create: Input/output error)",
                     "free_fn(7,new1)"});
}

TEST(Create, statistics_that_fail_are_looked_at_behind_the_fields_which_are_told_of_them) {
  struct Case {
    const char *record, *address;
  };
  // The second embeds a record: its state bytes would be at 176, and nobody is told so.
  for (const auto& [record, address] :
       {Case{"fwe_pal_wayfind_site_prefix_data",
             "ip_address_initialize(7,new1+24,type(ip_address),1,0,4,null,?)"},
        Case{"fwe_cl_wayfind_prefixtosite_data",
             "ip_address_initialize(7,new1+16,type(ip_address),1,0,4,new1+176,?)"}}) {
    SpiedHandle h(tracked);
    const auto failing = spy::fail(orklib_type_stats_create_object, 5);
    const std::string name = record;
    spy::Log log;
    EXPECT_EQ(kit::function<void*(ork_handle*, uint32_t)>(kit::record(name).functions, "_create")(
                  h, instance),
              nullptr);
    EXPECT_CALLS(
        log.calls_of({"orklib_type_stats_create_object", "orklib_update_sttr_offset",
                      "ip_address_initialize", "trace", "free_fn"}),
        std::vector<std::string>(
            {"orklib_type_stats_create_object(7,type(" + name + "),?,?)", address,
             "trace(error,error in " + name + " create: Input/output error)", "free_fn(7,new1)"}));
  }
}

TEST(CreateDeathTest, a_corrupted_mode_word_ends_the_process_behind_a_fatal_trace) {
  SpiedHandle h(tracked);
  h->sttr_info->sttr_mode = 0x1234;
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_create(h, instance), "trace\\(fatal,Corrupted ORK Handle\\)");
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_create_cr(h), "trace\\(fatal,Corrupted ORK Handle\\)");
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_sizeof(h), "trace\\(fatal,Corrupted ORK Handle\\)");
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_sizeof_internal(h, nullptr, 0, 0),
               "trace\\(fatal,Corrupted ORK Handle\\)");
  EXPECT_DEATH(fwe_cl_wayfind_chan_st_sizeof_internal(h, nullptr, 0, 0),
               "trace\\(fatal,Corrupted ORK Handle\\)");
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(CreateDeathTest, a_mode_word_that_breaks_during_initialize_ends_the_process) {
  SpiedHandle h(tracked);
  // Both words are read afresh: one at the flags, one at the state base.
  const auto breaking =
      spy::replace(ork_domain_lookup_variant,
                   [](ork_handle* handle, const ork_domain*, const ork_type_info*, uint32_t*) {
                     handle->sttr_info->sttr_mode = 1;
                     return int8_t{0};
                   });
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_create(h, instance), "trace\\(fatal,Corrupted ORK Handle\\)");
  const auto later =
      spy::replace(orklib_type_stats_create_object,
                   [](ork_handle* handle, uint32_t, const ork_type_info*, void*, uint32_t*) {
                     handle->sttr_info->sttr_mode = 1;
                     return 0u;
                   });
  const auto sound = spy::answer(ork_domain_lookup_variant, 0);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_create(h, instance), "trace\\(fatal,Corrupted ORK Handle\\)");
}

TEST(CreateDeathTest, initialize_checks_the_mode_word_before_it_counts_and_where_it_does_not) {
  SpiedHandle h(tracked);
  h->sttr_info->sttr_mode = 7;
  alignas(8) uint8_t block[40] = {};
  auto* const obj = reinterpret_cast<fwe_cl_wayfind_mem_st*>(block);
  const auto counting = spy::replace(
      orklib_type_stats_create_object,
      [](ork_handle*, uint32_t, const ork_type_info*, void*, uint32_t*) -> uint32_t { _exit(0); });
  for (const uint32_t no_stats : {0u, 1u}) {
    EXPECT_DEATH(fwe_cl_wayfind_mem_st_initialize(h, instance, obj,
                                                  &_fwe_cl_wayfind_mem_st_type_info_internal, 1,
                                                  no_stats, 0, nullptr, &h.err),
                 "trace\\(fatal,Corrupted ORK Handle\\)");
  }
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(CreateDeathTest, a_descriptor_without_variants_ends_the_process) {
  SpiedHandle h(plain);
  ork_type_info type = _fwe_cl_wayfind_mem_st_type_info_internal;
  type.varinfo = nullptr;
  alignas(8) uint8_t block[40] = {};
  auto* const obj = reinterpret_cast<fwe_cl_wayfind_mem_st*>(block);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_initialize(h, instance, obj, &type, 1, 0, 0, nullptr, &h.err),
               "trace\\(fatal,varinfo is NULL\\)");
  fwe_cl_wayfind_mem_st_initialize(h, instance, obj, &type, 1, 1, 0, nullptr, &h.err);
  EXPECT_EQ(h.err, 0u) << "no statistics, no question";
}

}  // namespace frame
