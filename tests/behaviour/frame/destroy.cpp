// Giving records back: the calls in their order, and every way to stay.
#include "behaviour/frame/objects.h"

namespace frame {

TEST(Destroy, calls_the_runtime_in_the_order_told) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::name(&_fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0].create_count, 24,
            "statistics");
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log, {"ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),statistics,?)",
                     "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(Destroy, tells_the_hooks_before_the_storage_goes) {
  SpiedHandle h(shared_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(
      log, {"ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
            "orklib_type_stats_destroy_object(7,shared(fwe_cl_wayfind_mem_st),?,?)",
            "orkdb_plat_set_destroy(7,obj)", "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(Destroy, the_hook_of_shared_storage_is_not_told_of_objects_that_lie_inside_another) {
  SpiedHandle h(shared_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_destroy(
      h, instance, static_cast<fwe_cl_wayfind_nb_channel_data*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"orkdb_plat_set_destroy"}), {"orkdb_plat_set_destroy(7,obj)"});
}

TEST(Destroy, a_tracked_parent_drops_the_distances_of_its_children) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  spy::Log log;
  fwe_cl_wayfind_nb_channel_data_destroy(
      h, instance, static_cast<fwe_cl_wayfind_nb_channel_data*>(obj.release()));
  EXPECT_CALLS(log, {"ork_get_instance_variant(obj,1,0)", "ork_get_instance_variant(obj+16,1,0)",
                     "orklib_get_sttr_offset(7,obj+16)", "ork_get_manifested_type_info(obj+16)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_chan_nb_st),?,?)",
                     "ork_hd_mapping_destroy(7,obj+16,?)", "ork_get_instance_variant(obj+80,1,0)",
                     "orklib_get_sttr_offset(7,obj+80)", "ork_get_manifested_type_info(obj+80)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
                     "ork_hd_mapping_destroy(7,obj+80,?)", "ork_get_manifested_type_info(obj)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_nb_channel_data),?,?)",
                     "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(Destroy, without_a_map_of_distances_none_is_dropped) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags = OBJ_RA_DATA;
  void* const map = h->hd_mapping;
  spy::Log log;
  h->hd_mapping = nullptr;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  h->hd_mapping = map;
  EXPECT_EQ(log.count("ork_hd_mapping_destroy"), 0u);
}

TEST(Destroy, ra_data_alone_has_an_entry_that_goes) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags = OBJ_RA_DATA;
  int map = 0;
  void* const before = h->hd_mapping;
  if (!before) {
    h->hd_mapping = &map;
  }
  const auto answer = spy::answer(ork_hd_mapping_destroy, 0);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  h->hd_mapping = before;
  EXPECT_EQ(log.count("ork_hd_mapping_destroy"), 1u);
}

TEST(Destroy, null_and_the_sentinel_are_left_alone) {
  SpiedHandle h(recorded);
  h->cr_error = 5;
  auto* const sentinel = fwe_cl_wayfind_mem_st_create_cr(h);
  const uint64_t destroyed =
      _fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0].destroy_count;
  spy::Log log;
  for (auto* const nothing : {sentinel, static_cast<fwe_cl_wayfind_mem_st*>(nullptr)}) {
    fwe_cl_wayfind_mem_st_destroy(h, instance, nothing);
    fwe_cl_wayfind_mem_st_destroy_cr(h, nothing);
    fwe_cl_wayfind_mem_st_destroy_internal(h, instance, nothing, 1);
    fwe_cl_wayfind_mem_st_destroy_internal(h, instance, nothing, 0);
  }
  EXPECT_CALLS(log, {});
  EXPECT_EQ(_fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0].destroy_count, destroyed);
  EXPECT_EQ(h->cr_error, 5u);
}

TEST(Destroy, in_cr_mode_the_instance_comes_from_the_handle) {
  SpiedHandle h({.cr_instance = 11});
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy_cr(h, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"free_fn"}), {"free_fn(11,obj)"});
}

TEST(Destroy, without_free_storage_the_block_and_its_header_stay) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy_internal(h, instance, obj, 0);
  EXPECT_CALLS(log, {"ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)"});
  EXPECT_TRUE(before.unchanged());
}

TEST(Destroy, a_slot_block_of_its_own_goes_back_before_the_object_and_behind_the_hook) {
  for (const Mode& mode : {plain, shared_and_recorded}) {
    SpiedHandle h(mode);
    SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
    void* const block = h->alloc_fn(h->mem_pool, instance, 16);
    spy::name(block, 16, "block");
    const auto manifested =
        spy::answer(ork_get_manifested_type_info, &_fwe_cl_wayfind_mem_st_type_info_internal);
    obj.header().obj_flags = OBJ_OWNS_SLOT_BLOCK;
    store(obj.get(), block);
    std::vector<std::string> expected = {"free_fn(7,block)", "write_notify_fn(obj,8,7,null)",
                                         "free_fn(7,obj)"};
    if (mode.shared) {
      expected.insert(expected.begin(), "orkdb_plat_set_destroy(7,obj)");
    }
    spy::Log log;
    fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
    EXPECT_CALLS(log.calls_of({"orkdb_plat_set_destroy", "free_fn", "write_notify_fn"}), expected);
  }
}

TEST(Destroy, a_slot_block_of_its_own_stays_with_storage_that_is_not_freed) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto* const type = load<const ork_type_info*>(obj.get());
  alignas(8) uint8_t block[16] = {};
  const auto manifested = spy::answer(ork_get_manifested_type_info, type);
  obj.header().obj_flags = OBJ_OWNS_SLOT_BLOCK;
  store<void*>(obj.get(), block);
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy_internal(h, instance, obj, 0);
  EXPECT_CALLS(log.calls_of({"free_fn", "write_notify_fn"}), {});
  EXPECT_TRUE(before.unchanged());
  obj.header().obj_flags = 0;
  store(obj.get(), type);
}

TEST(Destroy, an_empty_slot_block_is_not_given_back) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto manifested =
      spy::answer(ork_get_manifested_type_info, &_fwe_cl_wayfind_mem_st_type_info_internal);
  obj.header().obj_flags = OBJ_OWNS_SLOT_BLOCK;
  store(obj.get(), uint64_t{0});
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"free_fn"}), {"free_fn(7,obj)"});
}

TEST(Destroy, fields_beyond_the_variant_are_not_visited) {
  SpiedHandle h(plain);
  const auto old = h.domain({{"fwe_cl_wayfind_hop_chan_data", 0}});
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  const auto& serv = _fwe_cl_wayfind_hop_chan_serv_st_type_info_internal.varinfo->entries[0];
  const uint64_t destroyed = serv.destroy_count;
  fwe_cl_wayfind_hop_chan_data_destroy(h, instance,
                                       static_cast<fwe_cl_wayfind_hop_chan_data*>(obj.release()));
  EXPECT_EQ(serv.destroy_count, destroyed);
}

TEST(Destroy, enums_flag_sets_booleans_and_link_types_are_not_destroyed) {
  SpiedHandle h(plain);
  const auto& type = _fwe_cl_wayfind_chan_tx_state_e_type_info_internal.varinfo->entries[0];
  const uint64_t created = type.create_count;
  const uint64_t destroyed = type.destroy_count;
  { SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st"); }
  EXPECT_EQ(type.create_count, created + 1);
  EXPECT_EQ(type.destroy_count, destroyed);
}

TEST(Destroy, an_untracked_object_drops_the_distance_that_it_was_told_without_asking_for_it) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags = OBJ_STTR_OFFSET;
  const auto dropped = spy::answer(ork_hd_mapping_destroy, 0);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(
      log, {"ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
            "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
            "ork_hd_mapping_destroy(7,obj,?)", "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(Destroy, statistics_that_fail_keep_the_storage_only_where_a_distance_was_to_go) {
  SpiedHandle h(tracked);
  const auto& type = _fwe_cl_wayfind_mem_st_type_info_internal;
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags |= OBJ_RA_DATA;
  const auto failing = spy::replace(
      orklib_type_stats_destroy_object,
      [](ork_handle*, uint32_t, const ork_type_info*, void*, uint32_t* err) { return *err = 5; });
  const auto dropped = spy::answer(ork_hd_mapping_destroy, 0);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
  EXPECT_CALLS(log.calls_of({"ork_hd_mapping_destroy", "trace", "ork_store_err", "free_fn"}),
               {"ork_hd_mapping_destroy(7,obj,?)",
                "trace(error,fwe_cl_wayfind_mem_st destroy: Failed to remove oid mapping for "
                "object. Error Input/output error)",
                "ork_store_err(5)"});
  EXPECT_EQ(load<const ork_type_info*>(obj.get()), &type);
  obj.header().obj_flags = OBJ_STATE_TRACKED;
  log.clear();
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"ork_hd_mapping_destroy", "trace", "ork_store_err", "free_fn"}),
               {"free_fn(7,obj)"});
}

TEST(Destroy, the_type_word_is_whole_when_it_is_announced_and_cleared_when_the_block_goes) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const void* const block = obj.get();
  std::vector<const void*> found;
  spy::Log log;
  log.on_announcement = [&](const spy::Announcement& a) {
    if (a.address == block) { /* the statistics are announced as well */
      found.push_back(load<const void*>(block));
    }
  };
  log.on_free = [&](const void*) { found.push_back(load<const void*>(block)); };
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_EQ(found, (std::vector<const void*>{&_fwe_cl_wayfind_mem_st_type_info_internal, nullptr}));
}

TEST(Destroy, a_distance_that_cannot_go_is_stored_and_the_storage_stays) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags |= OBJ_RA_DATA;
  const auto failing = spy::fail(ork_hd_mapping_destroy, 5);
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
  EXPECT_CALLS(log.calls_of({"ork_hd_mapping_destroy", "trace", "ork_store_err", "write_notify_fn",
                             "free_fn"}),
               {"ork_hd_mapping_destroy(7,obj,?)",
                "trace(error,fwe_cl_wayfind_mem_st destroy: Failed to remove oid mapping for "
                "object. Error Input/output error)",
                "ork_store_err(5)"});
  EXPECT_TRUE(before.unchanged());
  obj.header().obj_flags = OBJ_STATE_TRACKED;
}

TEST(Destroy, a_variant_above_what_the_type_has_is_traced_and_counted_as_the_newest) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_auto_tunnel");
  obj.header().variant = 5;
  const auto& newest = _fwe_cl_wayfind_auto_tunnel_type_info_internal.varinfo->entries[1];
  const uint64_t destroyed = newest.destroy_count;
  spy::Log log;
  fwe_cl_wayfind_auto_tunnel_destroy(h, instance,
                                     static_cast<fwe_cl_wayfind_auto_tunnel*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"trace"}),
               {"trace(info,variant 5 requested only 2 variants present)"});
  EXPECT_EQ(newest.destroy_count, destroyed + 1);
}

TEST(Destroy, a_negative_variant_is_counted_in_front_of_the_entries) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_auto_tunnel");
  obj.header().variant = -1;
  auto* const entries = reinterpret_cast<const uint8_t*>(
      _fwe_cl_wayfind_auto_tunnel_type_info_internal.varinfo->entries);
  spy::name_at(entries + 16 - 40, "in front");
  spy::Log log;
  fwe_cl_wayfind_auto_tunnel_destroy(h, instance,
                                     static_cast<fwe_cl_wayfind_auto_tunnel*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"orklib_type_stats_destroy_object", "trace"}),
               {"orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_auto_tunnel),in front,?)"});
}

TEST(Destroy, at_a_negative_variant_no_field_is_visited) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_prefixtosite_data");
  obj.header().variant = -1;
  auto* const entries = reinterpret_cast<const uint8_t*>(
      _fwe_cl_wayfind_prefixtosite_data_type_info_internal.varinfo->entries);
  spy::name_at(entries + 16 - 40, "in front");
  const auto& stats = _fwe_cl_wayfind_prefixtosite_stats_st_type_info_internal.varinfo->entries[0];
  const uint64_t destroyed = stats.destroy_count;
  spy::Log log;
  fwe_cl_wayfind_prefixtosite_data_destroy(
      h, instance, static_cast<fwe_cl_wayfind_prefixtosite_data*>(obj.release()));
  EXPECT_CALLS(
      log, {"ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
            "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_prefixtosite_data),in front,?)",
            "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
  EXPECT_EQ(stats.destroy_count, destroyed);
}

TEST(Destroy, a_negative_variant_prints_sign_extended) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_type_info type = _fwe_cl_wayfind_mem_st_type_info_internal;
  ork_variant_info info = *type.varinfo;
  info.n_variants = -5;
  type.varinfo = &info;
  store<const ork_type_info*>(obj.get(), &type);
  obj.header().variant = -2;
  const auto uncounted = spy::answer(orklib_type_stats_destroy_object, 0);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"trace"}),
               {"trace(info,variant 4294967294 requested only 4294967291 variants present)"});
}

TEST(Destroy, an_object_whose_state_lies_elsewhere_does_not_look_at_the_mode_word) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_nb_channel_data");
  auto* const mem = fwe_cl_wayfind_nb_channel_data_mem_get(h, instance, obj, &h.err);
  // Its parent destroys it once more.
  const auto uncounted = spy::answer(orklib_type_stats_destroy_object, 0);
  const auto kept = spy::answer(ork_hd_mapping_destroy, 0);
  h->sttr_info->sttr_mode = 3;
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy_internal(h, instance, mem, 0);
  EXPECT_CALLS(log, {"ork_get_instance_variant(obj+80,1,0)", "orklib_get_sttr_offset(7,obj+80)",
                     "ork_get_manifested_type_info(obj+80)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
                     "ork_hd_mapping_destroy(7,obj+80,?)"});
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

TEST(DestroyDeathTest, a_corrupted_descriptor_ends_the_process) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto* const type = load<const ork_type_info*>(obj.get());
  ork_type_info wrong = *type;
  wrong.magic = 0xdeadf00d;
  store<const ork_type_info*>(obj.get(), &wrong);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_destroy(h, instance, obj),
               "trace\\(fatal,tinfo is null or corrupted\\)");
  store(obj.get(), uint64_t{0});
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_destroy(h, instance, obj),
               "trace\\(fatal,tinfo is null or corrupted\\)");
  wrong = *type;
  wrong.varinfo = nullptr;
  store<const ork_type_info*>(obj.get(), &wrong);
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_destroy(h, instance, obj), "trace\\(fatal,varinfo is NULL\\)");
  store(obj.get(), type);
}

TEST(DestroyDeathTest, a_corrupted_mode_word_ends_the_process_for_a_tracked_object) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  h->sttr_info->sttr_mode = 3;
  EXPECT_DEATH(fwe_cl_wayfind_mem_st_destroy(h, instance, obj),
               "trace\\(fatal,Corrupted ORK Handle\\)");
  obj.header().obj_flags = 0;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  h->sttr_info->sttr_mode = ORK_STTR_ON;
}

}  // namespace frame
