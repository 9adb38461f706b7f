// Giving records back that others refer to, or that refer to others.
#include "behaviour/frame/objects.h"

namespace frame {

namespace {

// A reference list of one that the runtime's address type claims to hold, and what becomes of it.
struct OneReference {
  void* oid = reinterpret_cast<void*>(0x1230);
  uint32_t list_error = 0;
  uint32_t lower_error = 0;
  spy::Replacement count = spy::answer(ip_address_get_oid_count, 1);
  spy::Replacement list = spy::replace(
      ip_address_get_object_references,
      [this](ork_handle*, uint32_t, const ork_ip_address*, void** refs, uint32_t n, uint32_t* err) {
        EXPECT_EQ(n, 1u);
        refs[0] = oid;
        *err = list_error;
      });
  spy::Replacement lower = spy::replace(
      orklib_lookup_and_update_oid_ref_count,
      [this](ork_handle*, uint32_t, void*, uint32_t, uint32_t* err) { *err = lower_error; });
};

}  // namespace

// ---- OIDs ----

TEST(DestroyOid, a_mapping_that_goes_lets_the_object_go) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  ork_oid_map(h, instance, obj.get(), nullptr, &h.err);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log, {"ork_request_oid_mapping_destroy(7,obj,?)",
                     "trace(debug,fwe_cl_wayfind_mem_st destroy: Successfully removed OID mapping)",
                     "ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)",
                     "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST(DestroyOid, open_references_keep_the_object_and_its_statistics) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  const auto destroy = [](ork_handle* handle, uint32_t i, void* o) {
    fwe_cl_wayfind_mem_st_destroy(handle, i, static_cast<fwe_cl_wayfind_mem_st*>(o));
  };
  void* const oid = ork_oid_map(h, instance, obj.get(), destroy, &h.err);
  ork_oid_hold(h, oid, &h.err);
  const uint64_t destroyed =
      _fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0].destroy_count;
  const Snapshot before = obj.snapshot();
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log, {"ork_request_oid_mapping_destroy(7,obj,?)",
                     "trace(info,fwe_cl_wayfind_mem_st destroy: Object has references and will be "
                     "cleaned up when all of them are released)"});
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(_fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0].destroy_count, destroyed);
  orklib_lookup_and_update_oid_ref_count(h, instance, oid, 0, &h.err);
  EXPECT_EQ(h.err, 0u);
  EXPECT_EQ(h.memory().live_blocks, 0u) << "the runtime destroyed it behind the last reference";
}

TEST(DestroyOid, any_answer_but_0_lets_the_object_go) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags |= OBJ_OID_MAPPED;
  const auto gone = spy::answer(ork_request_oid_mapping_destroy, 2);
  spy::Log log;
  fwe_cl_wayfind_mem_st_destroy(h, instance, static_cast<fwe_cl_wayfind_mem_st*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"trace", "free_fn"}),
               {"trace(debug,fwe_cl_wayfind_mem_st destroy: Successfully removed OID mapping)",
                "free_fn(7,obj)"});
}

TEST(DestroyOid, an_object_inside_another_is_asked_about_as_well) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags |= OBJ_OID_MAPPED;
  const Snapshot before = obj.snapshot();
  spy::Log log;
  {
    const auto kept = spy::answer(ork_request_oid_mapping_destroy, 0);
    fwe_cl_wayfind_mem_st_destroy_internal(h, instance, obj, 0);
  }
  EXPECT_CALLS(log, {"ork_request_oid_mapping_destroy(7,obj,?)",
                     "trace(info,fwe_cl_wayfind_mem_st destroy: Object has references and will be "
                     "cleaned up when all of them are released)"});
  EXPECT_TRUE(before.unchanged());

  const auto gone = spy::answer(ork_request_oid_mapping_destroy, 1);
  const auto uncounted =
      spy::answer(orklib_type_stats_destroy_object, 0); /* it is destroyed once more at its end */
  log.clear();
  fwe_cl_wayfind_mem_st_destroy_internal(h, instance, obj, 0);
  EXPECT_CALLS(log, {"ork_request_oid_mapping_destroy(7,obj,?)",
                     "trace(debug,fwe_cl_wayfind_mem_st destroy: Successfully removed OID mapping)",
                     "ork_get_instance_variant(obj,1,0)", "ork_get_manifested_type_info(obj)",
                     "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_mem_st),?,?)"});
  obj.header().obj_flags = 0;
}

TEST(DestroyOid, a_removal_that_fails_is_stored_and_the_object_stays_whatever_the_answer) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_mem_st");
  obj.header().obj_flags |= OBJ_OID_MAPPED;
  const Snapshot before = obj.snapshot();
  for (const uint32_t answer : {0u, 1u}) {
    const auto failing = spy::replace(ork_request_oid_mapping_destroy,
                                      [answer](ork_handle*, uint32_t, void*, uint32_t* err) {
                                        *err = 5;
                                        return answer;
                                      });
    spy::Log log;
    fwe_cl_wayfind_mem_st_destroy(h, instance, obj);
    EXPECT_CALLS(log, {"ork_request_oid_mapping_destroy(7,obj,?)",
                       "trace(error,fwe_cl_wayfind_mem_st destroy: Failed to remove oid mapping "
                       "for object. Error Input/output error)",
                       "ork_store_err(5)"});
    EXPECT_TRUE(before.unchanged());
  }
  obj.header().obj_flags = 0;
}

// ---- References of fields ----

TEST(DestroyReferences, are_released_one_by_one_before_the_field_is_destroyed) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  OneReference reference;
  spy::name_at(reference.oid, "oid");
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(
      h, instance, static_cast<fwe_pal_wayfind_site_prefix_data*>(obj.release()));
  EXPECT_CALLS(
      log.calls_of({"ip_address_get_oid_count", "ip_address_get_object_references",
                    "orklib_lookup_and_update_oid_ref_count", "ip_address_destroy_internal",
                    "free_fn"}),
      {"ip_address_get_oid_count(7,obj+24,?)", "ip_address_get_object_references(7,obj+24,?,1,?)",
       "orklib_lookup_and_update_oid_ref_count(7,oid,0,?)",
       "ip_address_destroy_internal(7,obj+24,0)", "free_fn(7,obj)"});
}

TEST(DestroyReferences, a_list_that_fails_leaves_the_object_half_destroyed) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_multi_nh_map");
  {
    OneReference reference;
    reference.list_error = 5;
    spy::Log log;
    fwe_cl_wayfind_multi_nh_map_destroy(h, instance, obj);
    EXPECT_CALLS(log.calls_of({"ip_address_destroy_internal", "ork_store_err", "trace",
                               "orklib_type_stats_destroy_object", "free_fn"}),
                 {"trace(error,fwe_cl_wayfind_multi_nh_map destroy: Failed to get oid references "
                  "from object. Error Input/output error)"});
  }
  // The first field's list comes through, the second's fails: what came before is gone.
  {
    OneReference reference;
    unsigned lists = 0;
    const auto second = spy::replace(
        ip_address_get_object_references,
        [&](ork_handle*, uint32_t, const ork_ip_address*, void** refs, uint32_t, uint32_t* err) {
          refs[0] = nullptr;
          *err = ++lists == 2 ? 5 : 0;
        });
    spy::Log log;
    fwe_cl_wayfind_multi_nh_map_destroy(h, instance, obj);
    EXPECT_CALLS(log.calls_of({"ip_address_destroy_internal"}),
                 {"ip_address_destroy_internal(7,obj+16,0)"});
    EXPECT_EQ(log.count("free_fn"), 0u);
  }
}

TEST(DestroyReferences, a_count_that_cannot_be_lowered_is_traced_and_passed_over) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  OneReference reference;
  reference.lower_error = 5;
  spy::name_at(reference.oid, "oid");
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(
      h, instance, static_cast<fwe_pal_wayfind_site_prefix_data*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"trace", "ork_store_err", "free_fn"}),
               {"trace(error,fwe_pal_wayfind_site_prefix_data destroy: Failed to decrement ref "
                "count of oid oid. Error Input/output error)",
                "free_fn(7,obj)"});
}

TEST(DestroyReferences, after_one_that_cannot_be_lowered_the_next_is_lowered_without_an_error) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  uint8_t oids[2] = {};
  spy::name(oids, sizeof oids, "oid");
  const auto two = spy::answer(ip_address_get_oid_count, 2);
  const auto list = spy::replace(
      ip_address_get_object_references,
      [&](ork_handle*, uint32_t, const ork_ip_address*, void** refs, uint32_t, uint32_t*) {
        refs[0] = &oids[0];
        refs[1] = &oids[1];
      });
  std::vector<uint32_t> found;
  const auto lower = spy::replace(orklib_lookup_and_update_oid_ref_count,
                                  [&](ork_handle*, uint32_t, void*, uint32_t, uint32_t* err) {
                                    found.push_back(*err);
                                    *err = found.size() == 1 ? 5 : 0;
                                  });
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(
      h, instance, static_cast<fwe_pal_wayfind_site_prefix_data*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"orklib_lookup_and_update_oid_ref_count", "trace",
                             "ip_address_destroy_internal", "free_fn"}),
               {"orklib_lookup_and_update_oid_ref_count(7,oid,0,?)",
                "trace(error,fwe_pal_wayfind_site_prefix_data destroy: Failed to decrement ref "
                "count of oid oid. Error Input/output error)",
                "orklib_lookup_and_update_oid_ref_count(7,oid+1,0,?)",
                "ip_address_destroy_internal(7,obj+24,0)", "free_fn(7,obj)"});
  EXPECT_EQ(found, (std::vector<uint32_t>{0, 0}));
}

TEST(DestroyReferences, the_last_field_is_asked_for_its_count_as_well) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(
      h, instance, static_cast<fwe_pal_wayfind_site_prefix_data*>(obj.release()));
  EXPECT_CALLS(log.calls_of({"ip_address_get_oid_count", "ip_address_destroy_internal"}),
               {"ip_address_get_oid_count(7,obj+24,?)", "ip_address_destroy_internal(7,obj+24,0)"});
}

TEST(DestroyReferences, a_count_that_fails_leaves_its_error_to_the_fields_behind_it) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_prefixtosite_data");
  const auto failing = spy::fail(ip_address_get_oid_count, 5);
  spy::Log log;
  fwe_cl_wayfind_prefixtosite_data_destroy(
      h, instance, static_cast<fwe_cl_wayfind_prefixtosite_data*>(obj.release()));
  // pfx at 16, stats at 88; a record that is destroyed has a slot of its own.
  EXPECT_CALLS(
      log.calls_of({"ip_address_get_oid_count", "ip_address_get_object_references",
                    "ip_address_destroy_internal", "trace", "ork_store_err",
                    "orklib_type_stats_destroy_object", "free_fn"}),
      {"ip_address_get_oid_count(7,obj+16,?)", "ip_address_destroy_internal(7,obj+16,0)",
       "trace(error,Error already present in call to get object oid count)",
       "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_prefixtosite_stats_st),?,?)",
       "orklib_type_stats_destroy_object(7,type(fwe_cl_wayfind_prefixtosite_data),?,?)",
       "free_fn(7,obj)"});
}

TEST(DestroyReferences, a_count_that_fails_and_is_not_0_fails_the_list_too) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_pal_wayfind_site_prefix_data");
  const auto failing = spy::replace(
      ip_address_get_oid_count, [](ork_handle*, uint32_t, const ork_ip_address*, uint32_t* err) {
        *err = 5;
        return 1u;
      });
  const auto list = spy::replace(
      ip_address_get_object_references,
      [](ork_handle*, uint32_t, const ork_ip_address*, void**, uint32_t, uint32_t*) {});
  spy::Log log;
  fwe_pal_wayfind_site_prefix_data_destroy(h, instance, obj);
  EXPECT_CALLS(
      log.calls_of({"ip_address_get_object_references", "orklib_lookup_and_update_oid_ref_count",
                    "ip_address_destroy_internal", "trace", "free_fn"}),
      {"ip_address_get_object_references(7,obj+24,?,1,?)",
       "trace(error,fwe_pal_wayfind_site_prefix_data destroy: Failed to get oid references from "
       "object. Error Input/output error)"});
}

}  // namespace frame
