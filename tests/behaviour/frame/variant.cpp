// Variants: what an object of an older one lacks, how a write raises it, and layouts made by older
// releases.
#include "behaviour/frame/old_objects.h"

namespace frame {

namespace {

uint32_t sizeof_internal(const std::string& record, SpiedHandle& h, const void* obj,
                         uint32_t with_state, uint32_t state_only) {
  return kit::function<uint32_t(ork_handle*, const void*, uint32_t, uint32_t)>(
      kit::record(record).functions, "_sizeof_internal")(h, obj, with_state, state_only);
}

}  // namespace

// ---- Variant of a new object ----

TEST(Variant, a_look_up_above_the_newest_is_capped) {
  SpiedHandle h(plain);
  const auto nine = h.domain({{"fwe_cl_wayfind_hop_chan_data", 9}});
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  EXPECT_EQ(obj.header().variant, 1);
  EXPECT_EQ(obj.header().variant_cap, 1);
}

TEST(Variant, a_type_that_the_domain_lacks_gives_an_object_without_fields) {
  SpiedHandle h(plain);
  const auto none = h.domain({{"fwe_cl_wayfind_hop_chan_data", -1}});
  // The index of the statistics is handed on as it is: 40 bytes in front of the first entry.
  auto* const statistics = reinterpret_cast<uint8_t*>(
                               _fwe_cl_wayfind_hop_chan_data_type_info_internal.varinfo->entries) +
                           16 - 40;
  spy::name_at(statistics, "in front");
  spy::Log log;
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  EXPECT_EQ(log.calls_of({"orklib_type_stats_create_object"})[0],
            "orklib_type_stats_create_object(7,type(fwe_cl_wayfind_hop_chan_data),in front,?)");
  EXPECT_EQ(obj.header().variant, -1);
  for (const auto* const get : {"_hop_chan", "_stats", "_mem", "_probe", "_serv"}) {
    const std::string suffix = "_get";
    const auto& fields = told::record("fwe_cl_wayfind_hop_chan_data")->fields;
    const auto index =
        static_cast<size_t>(std::find_if(fields.begin(), fields.end(),
                                         [&](const auto& f) { return "_" + f.name == get; }) -
                            fields.begin());
    ork_clear_last_error(h);
    EXPECT_EQ(kit::function<void*(ork_handle*, uint32_t, void*, uint32_t*)>(
                  record("fwe_cl_wayfind_hop_chan_data").fields[index].functions, suffix)(
                  h, instance, obj.get(), &h.err),
              nullptr);
    EXPECT_EQ(h.last_error(), 43u);
  }
  EXPECT_EQ(load<const void*>(obj.field("serv")),
            &_fwe_cl_wayfind_hop_chan_serv_st_type_info_internal)
      << "initialised all the same";
  // A destroy visits no field of it: bring the children's balance home by hand.
  const auto uncounted = spy::answer(orklib_type_stats_destroy_object, 0);
  obj.header().variant = 1;
}

TEST(Variant, a_field_of_a_later_variant_gives_43_and_null) {
  SpiedHandle h(plain);
  const auto old = h.domain({{"fwe_cl_wayfind_hop_chan_data", 0}});
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_serv_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.last_error(), 43u);
  EXPECT_NE(fwe_cl_wayfind_hop_chan_data_probe_get(h, instance, obj, &h.err), nullptr);
}

TEST(Variant, a_child_has_its_own_variant) {
  SpiedHandle h(plain);
  const auto old = h.domain({{"fwe_cl_wayfind_hop_chan_st", 0}});
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_data");
  EXPECT_EQ(obj.header().variant, 1);
  EXPECT_EQ(header(obj.field("hop_chan")).variant, 0);
}

// ---- Raising in place ----

TEST(Upgrade, a_write_raises_the_object_when_the_domain_has_moved_on) {
  SpiedHandle h(plain);
  auto domain = std::make_unique<spy::Replacement>(h.domain({{"fwe_cl_wayfind_chan_st", 2}}));
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  EXPECT_EQ(obj.header().variant, 2);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_hop_count_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.last_error(), 43u);
  domain.reset();
  EXPECT_EQ(fwe_cl_wayfind_chan_st_hop_count_get(h, instance, obj, &h.err), nullptr)
      << "a read does not raise";
  fwe_cl_wayfind_chan_st_hop_count_set_value(h, instance, obj, 4, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_hop_count_get_value(h, instance, obj, &h.err), 4u);
  EXPECT_EQ(obj.header().variant, 3);
}

TEST(Upgrade, a_flag_set_is_an_object_whose_set_raises_the_record) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_hop_chan_st");
  obj.header().variant = 0;
  auto* const src = fwe_cl_wayfind_hop_chan_flags_create(h, instance);
  fwe_cl_wayfind_hop_chan_flags_set_value(h, instance, src, 2, 1, &h.err);
  fwe_cl_wayfind_hop_chan_st_flags_show_set(h, instance, obj, src, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(obj.header().variant, 1);
  auto* const shown = fwe_cl_wayfind_hop_chan_st_flags_show_get(h, instance, obj, &h.err);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, shown, 2, &h.err), 1u);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_value(h, instance, shown, 1, &h.err), 0u);
  EXPECT_EQ(load<uint32_t>(obj.field("flags")), 0u) << "another field";
  fwe_cl_wayfind_hop_chan_flags_destroy(h, instance, src);
}

TEST(Upgrade, setting_an_embedded_record_raises_its_parent_straight_to_the_newest) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  SpiedObject hops(h, "fwe_cl_wayfind_sel_lb_path_st", "hops");
  fwe_cl_wayfind_sel_lb_path_st_path_id_set_value(h, instance, hops, 2, 9, &h.err);
  obj.header().variant = 1;
  EXPECT_NE(fwe_cl_wayfind_chan_st_in_burst_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_path_get(h, instance, obj, &h.err), nullptr);
  EXPECT_EQ(h.last_error(), 43u);
  fwe_cl_wayfind_chan_st_path_set(h, instance, obj, hops, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(obj.header().variant, 3);
  auto* const path = fwe_cl_wayfind_chan_st_path_get(h, instance, obj, &h.err);
  ASSERT_NE(path, nullptr);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_num_hops_get_value(h, instance, path, &h.err), 3u);
  EXPECT_EQ(fwe_cl_wayfind_sel_lb_path_st_path_id_get_value(h, instance, path, 2, &h.err), 9u);
}

TEST(Upgrade, every_set_asks_for_the_newest_variant_whatever_its_own) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  spy::Log log;
  fwe_cl_wayfind_chan_st_chan_id_set_value(h, instance, obj, 4, &h.err);
  fwe_cl_wayfind_chan_st_if_name_set(h, instance, obj, "x", 1, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
               {"orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_st),3,err)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_st),3,err)"});
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_chan_st_adjust_variant(h, instance, nullptr, &h.err), 0u);
  h.err = 5;
  fwe_cl_wayfind_chan_st_adjust_variant(h, instance, obj, &h.err);
  EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
               {"orklib_adjust_variant(7,null,null,3,err)",
                "orklib_adjust_variant(7,obj,type(fwe_cl_wayfind_chan_st),3,err)"});
}

TEST(Upgrade, the_runtimes_answer_comes_back) {
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  const auto five = spy::answer(orklib_adjust_variant, 5u);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_adjust_variant(h, instance, obj, &h.err), 5u);
}

// ---- Field numbers ----

TEST(FieldNumber, runs_through_the_variants_with_one_number_between_them) {
  struct Case {
    int8_t domain;
    uint32_t number;
    uint32_t valid;
  };
  const Case cases[] = {{0, 0, 1},  {0, 19, 1}, {0, 20, 0}, {0, 22, 0}, {1, 22, 1}, {1, 23, 0},
                        {1, 28, 0}, {2, 28, 1}, {2, 29, 0}, {3, 30, 1}, {3, 31, 0}, {9, 30, 1},
                        {0, 31, 0}, {1, 31, 0}, {2, 31, 0}, {-1, 0, 1}, {-1, 20, 0}};
  SpiedHandle h(plain);
  for (const Case& c : cases) {
    const auto domain = h.domain({{"fwe_cl_wayfind_chan_st", c.domain}});
    EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, nullptr, c.number, 1), c.valid)
        << int(c.domain) << ", " << c.number;
  }
  EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, nullptr, 0xFFFFFFFF, 1), 0u)
      << "numbers have no sign";
}

TEST(FieldNumber, takes_the_object_in_unless_told_not_to) {
  SpiedHandle h({.shared = true});
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  obj.header().variant = 0;
  spy::Log log;
  EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, obj, 22, 0), 0u);
  EXPECT_CALLS(log, {"ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_chan_st),cr_error)",
                     "ork_get_instance_variant(obj,1,0)"});
  log.clear();
  EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, obj, 22, 1), 1u);
  EXPECT_CALLS(log, {"ork_domain_lookup_variant(domain,type(fwe_cl_wayfind_chan_st),cr_error)"});
  EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, obj, 22, 2), 0u) << "bit 0 alone counts";
  obj.header().variant = 3;
}

TEST(FieldNumber, the_lower_of_domain_and_object_decides) {
  struct Case {
    int8_t domain, object;
    uint32_t number, valid;
  };
  const Case cases[] = {{0, 3, 22, 0}, {0, 3, 19, 1}, {3, -1, 19, 1}, {3, -1, 20, 0},
                        {2, 3, 24, 1}, {3, 2, 24, 1}, {2, 2, 30, 0}};
  SpiedHandle h(plain);
  SpiedObject obj(h, "fwe_cl_wayfind_chan_st");
  for (const Case& c : cases) {
    const auto domain = h.domain({{"fwe_cl_wayfind_chan_st", c.domain}});
    obj.header().variant = c.object;
    EXPECT_EQ(fwe_cl_wayfind_chan_st_is_valid_cr(h, obj, c.number, 0), c.valid)
        << "domain " << int(c.domain) << ", object " << int(c.object) << ", " << c.number;
  }
  obj.header().variant = 3;
}

TEST(FieldNumber, of_a_single_variant_is_below_the_field_count_even_if_the_domain_lacks_the_type) {
  SpiedHandle h(plain);
  const auto none = h.domain({{"fwe_cl_wayfind_mem_st", -1}});
  EXPECT_EQ(fwe_cl_wayfind_mem_st_is_valid_cr(h, nullptr, 2, 1), 1u);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_is_valid_cr(h, nullptr, 3, 1), 0u);
}

// ---- Layouts of older releases ----

TEST(Layout, sizes_follow_the_layout_of_the_object_but_without_a_mode_the_newest) {
  for (const told::Record& record : told::tables().records) {
    for (unsigned cap = 0; cap < record.layouts.size(); ++cap) {
      const told::Layout& layout = record.layouts[cap];
      uint8_t head[11] = {};
      head[9] = static_cast<uint8_t>(cap);
      SpiedHandle on(tracked);
      EXPECT_EQ(sizeof_internal(record.name, on, head, 0, 0), layout.body)
          << record.name << " " << cap;
      EXPECT_EQ(sizeof_internal(record.name, on, head, 1, 0), layout.body + layout.state)
          << record.name << " " << cap;
      EXPECT_EQ(sizeof_internal(record.name, on, head, 0, 1), layout.state)
          << record.name << " " << cap;
      SpiedHandle off(untracked);
      EXPECT_EQ(sizeof_internal(record.name, off, head, 1, 0), layout.body)
          << record.name << " " << cap;
      EXPECT_EQ(sizeof_internal(record.name, off, head, 1, 1), 0u);
      SpiedHandle absent(plain);
      EXPECT_EQ(sizeof_internal(record.name, absent, head, 1, 0), record.newest().body)
          << record.name << " " << cap;
      EXPECT_EQ(sizeof_internal(record.name, absent, head, 1, 1), 0u);
    }
  }
}

TEST(Layout, hop_chan_data_of_layout_0_is_416_long_and_454_with_state) {
  uint8_t head[11] = {};
  SpiedHandle off(untracked);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_sizeof_internal(
                off, reinterpret_cast<fwe_cl_wayfind_hop_chan_data*>(head), 0, 0),
            416u);
  SpiedHandle on(tracked);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_sizeof_internal(
                on, reinterpret_cast<fwe_cl_wayfind_hop_chan_data*>(head), 1, 0),
            454u);
  SpiedHandle absent(plain);
  EXPECT_EQ(fwe_cl_wayfind_hop_chan_data_sizeof_internal(
                absent, reinterpret_cast<fwe_cl_wayfind_hop_chan_data*>(head), 1, 0),
            600u);
}

TEST(Layout, a_cap_beyond_the_known_means_the_newest) {
  SpiedHandle on(tracked);
  uint8_t head[11] = {};
  for (const told::Record& record : told::tables().records) {
    for (const int cap : {int(record.layouts.size()), 77, 127, 128, 255}) {
      head[9] = static_cast<uint8_t>(cap);
      EXPECT_EQ(sizeof_internal(record.name, on, head, 1, 0),
                record.newest().body + record.newest().state)
          << record.name << " " << cap;
    }
  }
}

TEST(Layout, the_state_block_lies_behind_the_body_of_the_objects_own_layout) {
  struct Place {
    unsigned cap, body, state;
  };
  for (const Place place :
       {Place{0, 272, 20}, Place{1, 272, 22}, Place{2, 400, 112}, Place{3, 408, 120}}) {
    SpiedHandle h(tracked);
    OldObject obj(h, "fwe_cl_wayfind_chan_st", place.cap);
    const auto stay = spy::answer(orklib_adjust_variant, 0);
    spy::Log log;
    fwe_cl_wayfind_chan_st_chan_id_set_value(h, instance, obj, 5, &h.err);
    EXPECT_EQ(log.calls_of({"write_notify_fn"}).back(), "write_notify_fn(old_state,1,7,null)");
    EXPECT_EQ(obj.get()[place.body], 2);
    obj.get()[place.body] = 9;
    EXPECT_EQ(fwe_cl_wayfind_chan_st_chan_id_state_flag_get(h, instance, obj, &h.err), 9u);
    fwe_cl_wayfind_chan_st_chan_id_state_flag_set(h, instance, obj, 5, &h.err);
    EXPECT_EQ(obj.get()[place.body], 5);
    EXPECT_EQ(h.err, 0u);
    if (place.cap < 2) { /* no array, so the fill is safe */
      fwe_cl_wayfind_chan_st_set_all_state_tracking_flag(h, instance, obj, 3);
      EXPECT_TRUE(
          std::all_of(obj.state(), obj.state() + place.state, [](uint8_t b) { return b == 3; }));
    }
  }
}

TEST(Layout, every_older_layout_of_every_record_can_be_filled_copied_and_destroyed) {
  for (const Mode& mode : {untracked, tracked}) {
    for (const told::Record& record : told::tables().records) {
      for (unsigned cap = 0; cap + 1 < record.layouts.size(); ++cap) {
        SpiedHandle h(mode);
        const told::Layout& layout = record.layouts[cap];
        OldObject dst(h, record.name, cap, "dst");
        OldObject src(h, record.name, cap, "src");
        const auto stay = spy::answer(orklib_adjust_variant, 0);
        std::vector<std::pair<const told::Field*, uint64_t>> written;
        for (size_t i = 0; i < record.fields.size(); ++i) {
          const told::Field& field = record.fields[i];
          const bool scalar = field.cls == told::Class::value && field.type.rfind("fwe_", 0) != 0 &&
                              field.type != "link_type";
          if (!scalar) {
            continue;
          }
          ork_clear_last_error(h);
          kit::call_words(
              kit::function<void()>(kit::record(record.name).fields[i].functions, "_set_value"),
              {kit::word(h), instance, kit::word(src.get()), 1, kit::word(&h.err)});
          EXPECT_EQ(h.last_error(), field.variant <= cap ? 0u : 43u)
              << record.name << "." << field.name << " in layout " << cap;
          if (field.variant <= cap && h.tracking()) {
            EXPECT_EQ(src.state()[field.state], 2) << record.name << "." << field.name;
          }
        }
        spy::Log log;
        kit::function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(
            kit::record(record.name).functions, "_set")(h, instance, dst.get(), src.get(), &h.err);
        EXPECT_EQ(h.err, 0u) << record.name << " in layout " << cap;
        EXPECT_EQ(log.calls_of({"write_notify_fn"})[0],
                  "write_notify_fn(dst," + std::to_string(layout.body) + ",7,dst)")
            << record.name << " in layout " << cap;
        EXPECT_EQ(std::memcmp(dst.get(), src.get(), layout.used), 0);
      }
    }
  }
}

TEST(Layout, nothing_that_walks_the_children_reaches_beyond_the_layout) {
  for (const Mode& mode : {untracked, tracked}) {
    for (const told::Record& record : told::tables().records) {
      for (unsigned cap = 0; cap + 1 < record.layouts.size(); ++cap) {
        SpiedHandle h(mode);
        OldObject dst(h, record.name, cap, "dst");
        OldObject src(h, record.name, cap, "src");
        const auto* const functions = kit::record(record.name).functions;
        kit::function<void(ork_handle*, uint32_t, void*)>(functions, "_set_instance_embedded")(
            h, instance, dst.get());
        kit::function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>(
            functions, "_post_copyout_cleanup")(h, instance, dst.get(), src.get(), &h.err);
        if (h.tracking()) {
          kit::function<void(ork_handle*, uint32_t, void*, uint8_t*, uint32_t*)>(
              functions, "_offset_update")(h, instance, dst.get(), dst.state(), &h.err);
        }
        EXPECT_EQ(h.err, 0u) << record.name;
      }
    }
  }
}

TEST(Upgrade, rises_in_an_older_layout_as_far_as_there_is_room) {
  // For each record with an older layout: the newest variant whose fields fit into its body.
  for (const told::Record& record : told::tables().records) {
    for (unsigned cap = 0; cap + 1 < record.layouts.size(); ++cap) {
      SpiedHandle h(untracked);
      OldObject obj(h, record.name, cap);
      unsigned fits = cap;
      while (fits + 1 < record.layouts.size() &&
             record.layouts[fits + 1].used <= record.layouts[cap].body) {
        ++fits;
      }
      kit::function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>(
          kit::record(record.name).functions, "_adjust_variant")(h, instance, obj.get(), &h.err);
      EXPECT_EQ(obj.header().variant, static_cast<int>(fits))
          << record.name << " in layout " << cap;
      EXPECT_EQ(obj.header().variant_cap, cap);
      obj.header().variant = static_cast<int8_t>(cap);
    }
  }
}

TEST(Upgrade, the_layouts_with_room_are_the_six_told) {
  struct Rise {
    const char* record;
    unsigned cap, variant;
  };
  const Rise rises[] = {
      {"fwe_cl_wayfind_chan_st", 0, 1},           {"fwe_cl_wayfind_chan_st", 2, 3},
      {"fwe_cl_wayfind_global_info_data", 0, 1},  {"fwe_cl_wayfind_chan_stats_st", 0, 1},
      {"fwe_cl_wayfind_select_state_data", 0, 1}, {"fwe_cl_wayfind_global_state_data", 0, 1},
      {"fwe_cl_wayfind_global_state_data", 1, 2}};
  size_t found = 0;
  for (const told::Record& record : told::tables().records) {
    for (unsigned cap = 0; cap + 1 < record.layouts.size(); ++cap) {
      found += record.layouts[cap + 1].used <= record.layouts[cap].body ? 1u : 0u;
    }
  }
  EXPECT_EQ(found, std::size(rises));
  for (const Rise& rise : rises) {
    SpiedHandle h(untracked);
    OldObject obj(h, rise.record, rise.cap);
    kit::function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>(
        kit::record(rise.record).functions, "_adjust_variant")(h, instance, obj.get(), &h.err);
    EXPECT_EQ(obj.header().variant, static_cast<int>(rise.variant)) << rise.record;
    obj.header().variant = static_cast<int8_t>(rise.cap);
  }
}

TEST(Upgrade, a_field_that_had_room_works_in_the_older_layout) {
  SpiedHandle h(untracked);
  OldObject obj(h, "fwe_cl_wayfind_chan_st", 0);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_in_burst_get(h, instance, obj, &h.err), nullptr);
  fwe_cl_wayfind_chan_st_in_burst_set_value(h, instance, obj, 6, &h.err);
  EXPECT_EQ(h.last_error(), 0u);
  EXPECT_EQ(obj.header().variant, 1);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_in_burst_get_value(h, instance, obj, &h.err), 6u);
  fwe_cl_wayfind_chan_st_ext_int_id_set_value(h, instance, obj, 6, &h.err);
  EXPECT_EQ(h.last_error(), 43u) << "no room for variant 2";
  obj.header().variant = 0;
}

}  // namespace frame
