// Enum fields: scalars that are objects, with a variant and a range of their own.
#include "behaviour/frame/objects.h"

namespace frame {

TEST(EnumField, get_records_the_field_as_entry_point_and_in_the_record) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  spy::Log log;
  EXPECT_EQ(static_cast<void*>(fwe_cl_wayfind_chan_nb_st_tx_state_get(h, instance, obj, &h.err)),
            obj.field("tx_state"));
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,1)",
                     "orkdb_record_containment2(7,obj+32,null,1)",
                     "orkdb_record_containment2(7,obj+32,obj,1)"});
}

TEST(EnumField, get_value_records_it_once_and_reads_it_directly) {
  SpiedHandle h(recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  store<uint32_t>(obj.field("tx_state") + 12, 2);
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_tx_state_get_value(h, instance, obj, &h.err), 2u);
  EXPECT_CALLS(log, {"ork_clear_last_error()", "ork_get_instance_variant(obj,1,1)",
                     "orkdb_record_containment2(7,obj+32,obj,1)", "ork_clear_last_error()"});
}

TEST(EnumField, set_copies_the_whole_enum_and_records_the_source) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  auto* const src = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  spy::name(src, 16, "src");
  fwe_cl_wayfind_chan_tx_state_e_set_value(h, instance, src, 1, &h.err);
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_tx_state_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log,
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                "ork_get_instance_variant(obj,1,1)", "ork_clear_last_error()",
                "orklib_adjust_variant(7,obj+32,type(fwe_cl_wayfind_chan_tx_state_e),0,err)",
                "ork_get_instance_variant(obj+32,0,1)", "write_notify_fn(obj+32,16,7,obj+32)",
                "write_notify_fn(state+2,1,7,null)", "orkdb_record_containment2(7,src,obj,1)"});
  EXPECT_EQ(std::memcmp(obj.field("tx_state"), src, 16), 0) << "header included";
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, src);
}

TEST(EnumField, set_value_adjusts_and_checks_the_enum_behind_both_records) {
  SpiedHandle h(tracked_and_recorded);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 2, &h.err);
  EXPECT_CALLS(log,
               {"ork_clear_last_error()", "ork_get_manifested_type_info(obj)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_nb_st),0,err)",
                "ork_get_instance_variant(obj,1,1)", "ork_clear_last_error()",
                "ork_get_instance_variant(obj,1,1)", "orkdb_record_containment2(7,obj+32,obj,1)",
                "orkdb_record_containment2(7,obj+32,obj,1)", "ork_clear_last_error()",
                "orklib_adjust_variant(7,obj+32,type(fwe_cl_wayfind_chan_tx_state_e),0,err)",
                "ork_get_instance_variant(obj+32,0,1)", "write_notify_fn(obj+44,4,7,obj+32)",
                "write_notify_fn(state+2,1,7,null)"});
  EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_tx_state_get_value(h, instance, obj, &h.err), 2u);
}

TEST(EnumField, a_value_out_of_range_is_refused_and_the_state_byte_marked) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  fwe_cl_wayfind_chan_st_tx_state_set_value(h, instance, obj, 1, &h.err);
  fwe_cl_wayfind_chan_st_tx_state_state_flag_set(h, instance, obj, 0, &h.err);
  spy::Log log;
  fwe_cl_wayfind_chan_st_tx_state_set_value(h, instance, obj, 3, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(log.count("ork_store_epoch_err"), 1u);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_tx_state_get_value(h, instance, obj, &h.err), 1u);
  EXPECT_EQ(obj.state_of("tx_state"), 2);
  // The same bits as a negative number are refused too: the comparison has no sign.
  fwe_cl_wayfind_chan_st_tx_state_set_value(h, instance, obj, 0xFFFFFFFF, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
}

TEST(EnumField, a_refused_value_leaves_the_field_but_is_marked_and_recorded_whatever_the_slot) {
  for (const uint32_t slot : {0u, 43u}) {
    SpiedHandle h(tracked_and_recorded);
    SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
    auto* const src = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
    spy::name(src, 16, "src");
    store<uint32_t>(bytes(src) + 12, 3);
    store<uint32_t>(obj.field("tx_state") + 12, 1);
    const Snapshot before(obj.get(), 64);
    const auto runtime = slot_becomes(slot);
    spy::Log log;
    fwe_cl_wayfind_chan_nb_st_tx_state_set(h, instance, obj, src, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), slot);
    EXPECT_CALLS(
        log.calls_of({"ork_store_epoch_err", "write_notify_fn", "orkdb_record_containment2"}),
        {"ork_store_epoch_err(43,err)", "write_notify_fn(state+2,1,7,null)",
         "orkdb_record_containment2(7,src,obj,1)"});
    EXPECT_TRUE(before.unchanged());
    EXPECT_EQ(std::exchange(obj.state_of("tx_state"), 0), 2);
    log.clear();
    fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 3, &h.err);
    EXPECT_EQ(std::exchange(h.err, 0), slot);
    EXPECT_CALLS(log.calls_of({"ork_store_epoch_err", "write_notify_fn"}),
                 {"ork_store_epoch_err(43,err)", "write_notify_fn(state+2,1,7,null)"});
    EXPECT_TRUE(before.unchanged());
    EXPECT_EQ(obj.state_of("tx_state"), 2);
    fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, src);
  }
}

TEST(EnumField, in_shared_storage_record_and_enum_are_adjusted_by_their_shared_types) {
  SpiedHandle h({.shared = true});
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  auto* const src = fwe_cl_wayfind_chan_tx_state_e_create(h, instance);
  const std::vector<std::string> expected = {
      "orklib_adjust_variant(7,obj,shared(fwe_cl_wayfind_chan_nb_st),0,err)",
      "orklib_adjust_variant(7,obj+32,shared(fwe_cl_wayfind_chan_tx_state_e),0,err)"};
  spy::Log log;
  fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 1, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}), expected);
  log.clear();
  fwe_cl_wayfind_chan_nb_st_tx_state_set(h, instance, obj, src, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}), expected);
  fwe_cl_wayfind_chan_tx_state_e_destroy(h, instance, src);
}

TEST(EnumField, a_later_variant_of_the_enum_itself_takes_any_value) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  obj.field("tx_state")[8] = 1;
  fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 77, &h.err);
  EXPECT_EQ(fwe_cl_wayfind_chan_nb_st_tx_state_get_value(h, instance, obj, &h.err), 77u);
}

TEST(EnumField, a_negative_variant_of_the_enum_itself_has_the_range_of_the_first) {
  SpiedHandle h(tracked);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_nb_st");
  obj.field("tx_state")[8] = 0xFF;
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  fwe_cl_wayfind_chan_nb_st_tx_state_set_value(h, instance, obj, 3, &h.err);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_EQ(load<uint32_t>(obj.field("tx_state") + 12), 0u);
  EXPECT_EQ(obj.state_of("tx_state"), 2);
}

}  // namespace frame
