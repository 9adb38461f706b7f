// Create and destroy balance, and go over the fields in their order: for every record, variant and
// mode.
#include "laws/frame/fields.h"

namespace frame {

namespace {

using Counts =
    std::map<std::pair<std::string, uint32_t>,
             std::pair<uint64_t, uint64_t>>; /* created, destroyed, by type and variant */

Counts counts(ork_storage* storage) {
  Counts all;
  ork_statistics_each(
      storage,
      [](void* ctx, const char* name, uint32_t variant, uint64_t created, uint64_t destroyed) {
        auto& entry = (*static_cast<Counts*>(ctx))[{name, variant}];
        entry.first += created;
        entry.second += destroyed;
      },
      &all);
  return all;
}

// What making and destroying a record of that variant counts. Enums and the flag set inside are
// made and never destroyed, and so is every field that the variant lacks.
void expect_counts(Counts& delta, const told::Record& record, uint32_t variant, bool destroyed) {
  auto& own = delta[{record.name, variant}];
  own.first += 1;
  own.second += destroyed ? 1u : 0u;
  for (const told::Field& field : record.fields) {
    if (field.cls != Class::object && field.cls != Class::value) {
      continue;
    }
    if (const told::Record* const child = told::record(field.type)) {
      expect_counts(delta, *child, child->newest_variant(), destroyed && field.variant <= variant);
    } else if (told::small(field.type)) {
      delta[{field.type, 0}].first += 1;
    }
  }
}

Counts difference(const Counts& after, const Counts& before) {
  Counts delta;
  for (const auto& [key, value] : after) {
    const auto found = before.find(key);
    const auto was = found == before.end() ? std::pair<uint64_t, uint64_t>() : found->second;
    if (value != was) {
      delta[key] = {value.first - was.first, value.second - was.second};
    }
  }
  return delta;
}

constexpr const char* trace_start = "flight_module_init_fn('ork_fwe_ui_wayfind',?,?)";

// What a walk over the objects inside a record meets, each with its place in the outermost.
struct Visitor {
  std::function<void(const told::Record&, unsigned at)> begin = [](const told::Record&, unsigned) {
  };
  std::function<void(const told::Field&, unsigned at)> object; /* that is no record */
  std::function<void(const told::Record&, unsigned at)> end = [](const told::Record&, unsigned) {};
};

// Visits a record and, in field order, the objects inside it that end within its first body bytes.
void walk(const told::Record& record, const Visitor& visit, unsigned body, unsigned at = 0) {
  visit.begin(record, at);
  for (const told::Field& field : record.fields) {
    if ((field.cls != Class::object && field.cls != Class::value) ||
        field.offset + field.width > body) {
      continue;
    }
    if (const told::Record* const child = told::record(field.type)) {
      walk(*child, visit, child->newest().body, at + field.offset);
    } else if (told::small(field.type) || field.type == "ip_address" ||
               field.type == "ork_boolean" || field.type == "link_type") {
      visit.object(field, at + field.offset);
    }
  }
  visit.end(record, at);
}

bool embeds(const told::Record& record) {
  return std::any_of(record.fields.begin(), record.fields.end(), [](const told::Field& f) {
    return f.cls == Class::object && told::is_record(f);
  });
}

}  // namespace

TEST(Lifecycle, memory_distances_and_statistics_balance) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      for (unsigned variant = 0; variant < type.told.layouts.size(); ++variant) {
        const auto domain = h.domain({{type.told.name, static_cast<int8_t>(variant)}});
        const Counts before = counts(h.storage());
        void* const obj = type.create(h);
        ASSERT_NE(obj, nullptr);
        EXPECT_EQ(header(obj).variant, static_cast<int>(variant));
        EXPECT_EQ(header(obj).variant_cap, type.told.newest_variant());
        EXPECT_EQ(header(obj).obj_flags, h.tracking() ? OBJ_STATE_TRACKED : 0);
        EXPECT_EQ(h.memory().live_bytes, type.size(h)) << type.told.name;
        type.destroy(h, obj);
        EXPECT_EQ(h.memory().live_blocks, 0u) << type.told.name;
        EXPECT_EQ(h.memory().live_distances, 0u) << type.told.name;
        Counts expected;
        expect_counts(expected, type.told, variant, true);
        EXPECT_EQ(difference(counts(h.storage()), before), expected)
            << type.told.name << " variant " << variant << ", " << mode.text();
      }
    }
  }
}

TEST(Lifecycle, cr_mode_makes_the_same_and_destroys_it_whatever_error_stands) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      for (const uint32_t error : {0u, 5u}) {
        const Counts before = counts(h.storage());
        void* const obj = kit::function<void*(ork_handle*)>(type.schema.functions, "_create_cr")(h);
        ASSERT_NE(obj, nullptr);
        EXPECT_EQ(h->cr_error, 0u);
        EXPECT_EQ(h->cr_active, 0u);
        h->cr_error = error; /* of a call in between */
        kit::function<void(ork_handle*, void*)>(type.schema.functions, "_destroy_cr")(h, obj);
        EXPECT_EQ(std::exchange(h->cr_error, 0), error) << type.told.name;
        EXPECT_EQ(h->cr_active, 0u);
        EXPECT_EQ(h.memory().live_blocks, 0u) << type.told.name;
        Counts expected;
        expect_counts(expected, type.told, type.told.newest_variant(), true);
        EXPECT_EQ(difference(counts(h.storage()), before), expected)
            << type.told.name << ", " << mode.text();
      }
    }
  }
}

TEST(Lifecycle, each_type_has_a_sentinel_of_its_own_that_nothing_writes) {
  SpiedHandle h;
  std::map<void*, std::string> seen;
  for (const Type& type : types()) {
    h->cr_error = 5;
    void* const sentinel =
        kit::function<void*(ork_handle*)>(type.schema.functions, "_create_cr")(h);
    ASSERT_NE(sentinel, nullptr);
    EXPECT_TRUE(seen.emplace(sentinel, type.told.name).second)
        << type.told.name << " shares it with " << seen[sentinel];
    h->cr_error = 0;
    type.destroy(h, sentinel);
    kit::function<void(ork_handle*, void*)>(type.schema.functions, "_destroy_cr")(h, sentinel);
    for (unsigned i = 0; i < type.told.newest().body; ++i) {
      ASSERT_EQ(bytes(sentinel)[i], 0) << type.told.name;
    }
  }
}

TEST(Lifecycle, a_new_record_is_zero_but_for_the_headers_inside_it) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      SpiedObject obj(h, type);
      std::vector<bool> headers(type.size(h), false);
      const auto mark = [&](const std::string& name, unsigned at) {
        std::fill_n(headers.begin() + at, name == "ork_boolean" ? 0 : ORK_OBJECT_HEADER_SIZE, true);
      };
      walk(type.told,
           {.begin = [&](const told::Record& record, unsigned at) { mark(record.name, at); },
            .object = [&](const told::Field& field, unsigned at) { mark(field.type, at); }},
           type.told.newest().body);
      for (size_t i = 0; i < headers.size(); ++i) {
        if (!headers[i]) {
          ASSERT_EQ(bytes(obj.get())[i], 0)
              << type.told.name << " byte " << i << ", " << mode.text();
        }
      }
    }
  }
}

TEST(Lifecycle, an_allocation_that_fails_leaves_nothing_behind) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      const Counts before = counts(h.storage());
      spy::fail_alloc(1);
      EXPECT_EQ(type.create(h), nullptr);
      spy::fail_alloc(1);
      void* const sentinel =
          kit::function<void*(ork_handle*)>(type.schema.functions, "_create_cr")(h);
      EXPECT_NE(sentinel, nullptr);
      EXPECT_EQ(h->cr_error, 12u);
      h->cr_error = 0;
      EXPECT_EQ(h.memory().live_blocks, 0u);
      EXPECT_TRUE(difference(counts(h.storage()), before).empty()) << type.told.name;
    }
  }
}

TEST(Lifecycle, the_objects_inside_are_made_in_field_order) {
  for (const Mode& mode : {kit::plain, kit::tracked}) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      // A record writes its header before its fields begin. The base of a record without
      // embedded ones stays the one that was given.
      const std::string base = h.tracking() && embeds(type.told)
                                   ? "new1+" + std::to_string(type.told.newest().body)
                                   : "null";
      std::vector<std::string> expected;
      const auto header_at = [&](unsigned at) {
        expected.push_back("ork_get_manifested_type_info_ptr_mem(" + offset_text("new1", at) + ")");
      };
      walk(type.told,
           {.begin = [&](const told::Record&, unsigned at) { header_at(at); },
            .object =
                [&](const told::Field& field, unsigned at) {
                  if (told::small(field.type)) {
                    header_at(at);
                  } else {
                    expected.push_back(field.type + "_initialize(7," + offset_text("new1", at) +
                                       ",type(" + field.type + "),1,0,4," + base + ",?)");
                  }
                }},
           type.told.newest().body);
      spy::Log log;
      void* const obj = type.create(h);
      EXPECT_CALLS(log.calls_of({"ork_get_manifested_type_info_ptr_mem", "ip_address_initialize",
                                 "ork_boolean_initialize", "link_type_initialize"}),
                   expected)
          << type.told.name << ", " << mode.text();
      type.destroy(h, obj);
      spy::forget_names();
    }
  }
}

TEST(Lifecycle, the_fields_that_own_something_are_destroyed_in_field_order_before_their_record) {
  for (const Mode& mode : {kit::plain, kit::tracked}) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      std::vector<std::string> expected;
      walk(
          type.told,
          {.object =
               [&](const told::Field& field, unsigned at) {
                 if (field.type == "ip_address") {
                   expected.push_back("ip_address_get_oid_count(7," + offset_text("obj", at) +
                                      ",?)");
                   expected.push_back("ip_address_destroy_internal(7," + offset_text("obj", at) +
                                      ",0)");
                 }
               },
           .end =
               [&](const told::Record& record, unsigned at) {
                 expected.push_back("ork_get_manifested_type_info(" + offset_text("obj", at) + ")");
                 expected.push_back("orklib_type_stats_destroy_object(7,type(" + record.name +
                                    "),?,?)");
               }},
          type.told.newest().body);
      void* const obj = type.create(h);
      spy::name(obj, type.size(h), "obj");
      spy::Log log;
      type.destroy(h, obj);
      EXPECT_CALLS(
          log.calls_of({"ip_address_get_oid_count", "ip_address_destroy_internal",
                        "ork_get_manifested_type_info", "orklib_type_stats_destroy_object"}),
          expected)
          << type.told.name << ", " << mode.text();
      spy::forget_names();
    }
  }
}

TEST(Lifecycle, the_mark_of_the_embedded_goes_over_every_object_inside_the_body_in_field_order) {
  SpiedHandle h;
  for (const Type& type : types()) {
    SpiedObject obj(h, type);
    for (unsigned cap = 0; cap < type.told.layouts.size(); ++cap) {
      std::vector<std::string> expected;
      const auto mark = [&](unsigned at) {
        expected.push_back("write_notify_fn(" + offset_text("obj", at + 10) + ",1,7," +
                           offset_text("obj", at) + ")");
      };
      walk(type.told,
           {.object =
                [&](const told::Field& field, unsigned at) {
                  if (told::small(field.type)) {
                    mark(at);
                  } else {
                    expected.push_back(field.type + "_set_instance_embedded(7," +
                                       offset_text("obj", at) + ")");
                  }
                },
            .end = [&](const told::Record&, unsigned at) { mark(at); }},
           type.told.layouts[cap].body);
      header(obj.get()).variant_cap = static_cast<uint8_t>(cap);
      spy::Log log;
      type.call("_set_instance_embedded", {word(h), instance, obj.word()});
      EXPECT_CALLS(log, expected) << type.told.name << " laid out for " << cap;
    }
  }
}

TEST(Lifecycle, whatever_makes_a_record_starts_the_trace_channel_first) {
  SpiedHandle h;
  for (const Type& type : types()) {
    const auto starts = [&](const char* suffix, const std::vector<uint64_t>& words) {
      spy::Log log;
      auto* const obj = reinterpret_cast<void*>(type.call(suffix, words));
      EXPECT_EQ(log.calls().at(0), trace_start) << type.told.name << suffix;
      EXPECT_EQ(log.count("flight_module_init_fn"), 1u) << type.told.name << suffix;
      return obj;
    };
    type.destroy(h, starts("_create_cr", {word(h)}));
    void* const obj = starts("_create", {word(h), instance});

    std::vector<uint8_t> workspace(4096);
    void* slot = nullptr;
    const std::vector<uint64_t> clone = {
        word(h),          instance,    word(obj), word(&slot), word(workspace.data()),
        workspace.size(), word(&h.err)};
    spy::Log log;
    type.call("_clone_internal", clone);
    EXPECT_CALLS(log.calls_of({"flight_module_init_fn", "alloc_fn"}),
                 std::vector<std::string>(
                     {trace_start, "alloc_fn(7," + std::to_string(type.size(h)) + ")=new1"}))
        << type.told.name;
    log.clear();
    type.call("_clone_internal", clone);
    EXPECT_EQ(log.count("flight_module_init_fn"), 0u) << type.told.name << ": the object is there";
    EXPECT_EQ(h.err, 0u);
    type.destroy(h, slot);
    type.destroy(h, obj);
  }
}

TEST(Sizes, sizeof_gives_the_told_bytes) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      const auto& newest = type.told.newest();
      EXPECT_EQ(type.call("_sizeof", {word(h)}), type.size(h)) << type.told.name;
      const auto sizes = [&](uint64_t with_state, uint64_t state_only) {
        return static_cast<uint32_t>(
            type.call("_sizeof_internal", {word(h), 0, with_state, state_only}));
      };
      EXPECT_EQ(sizes(0, 0), newest.body) << type.told.name;
      EXPECT_EQ(sizes(1, 0), type.size(h)) << type.told.name;
      EXPECT_EQ(sizes(0, 1), h.tracking() ? newest.state : 0u) << type.told.name;
      EXPECT_EQ(sizes(1, 1), h.tracking() ? newest.state : 0u) << type.told.name;
    }
  }
}

TEST(VariantIndex, is_capped_to_the_newest) {
  for (const Type& type : types()) {
    const int newest = static_cast<int>(type.told.newest_variant());
    for (int v = -128; v < 128; ++v) {
      const int expected = v <= newest ? v : newest;
      EXPECT_EQ(static_cast<int8_t>(type.call("_variant_data_index_cap",
                                              {static_cast<uint64_t>(static_cast<uint32_t>(v))})),
                expected)
          << type.told.name;
    }
  }
}

}  // namespace frame
