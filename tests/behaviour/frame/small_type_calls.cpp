// What every enum and the flag set do alike, call for call: hooks, counters, the block that a slot
// owns, upgrade, and the header from the wire.
#include "behaviour/frame/objects.h"

namespace frame {

namespace {

class SmallTypeCalls : public testing::TestWithParam<unsigned> {
 protected:
  template <class F>
  F* function(const char* suffix) const {
    return kit::function<F>(schema.functions, suffix);
  }
  void* create(SpiedHandle& h, uint32_t in = instance) const {
    void* const obj = function<void*(ork_handle*, uint32_t)>("_create")(h, in);
    if (obj) {
      spy::name(obj, small.size, "obj");
    }
    return obj;
  }
  void destroy(SpiedHandle& h, void* obj, uint32_t in = instance) const {
    function<void(ork_handle*, uint32_t, void*)>("_destroy")(h, in, obj);
  }
  // Of the newest layout but for its variant.
  std::vector<uint8_t> image(uint8_t variant) const {
    return small.flags ? std::vector<uint8_t>{variant, 0, 0, 0, 5, 1}
                       : std::vector<uint8_t>{variant, 0, 0, 0, 1};
  }
  uint32_t unmarshal(SpiedHandle& h, const std::vector<uint8_t>& from, size_t length,
                     void* obj) const {
    return function<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                             uint32_t*)>("_unmarshal")(h, instance, from.data(), obj,
                                                       static_cast<int32_t>(length), 0, &h.err);
  }
  uint32_t unmarshal(SpiedHandle& h, const std::vector<uint8_t>& from, void* obj) const {
    return unmarshal(h, from, from.size(), obj);
  }
  void set(SpiedHandle& h, void* obj, const void* from) const {
    function<void(ork_handle*, uint32_t, void*, const void*, uint32_t*)>("_set")(h, instance, obj,
                                                                                 from, &h.err);
  }
  // Value 1, or flag 1.
  void set_value(SpiedHandle& h, void* obj) const {
    if (small.flags) {
      function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t, uint32_t*)>("_set_value")(
          h, instance, obj, 1, 1, &h.err);
    } else {
      function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>("_set_value")(
          h, instance, obj, 1, &h.err);
    }
  }
  uint8_t& value_of(void* obj) const { return bytes(obj)[small.flags ? 11 : 12]; }
  std::string type() const { return "type(" + small.name + ")"; }
  // In private and in shared storage: an object without a type, and the type that a read has to
  // put there.
  template <class Use>
  void with_unread(Use&& use) const {
    ork_type_info copy = *schema.type;
    const auto table = spy::answer(ork_type_info_ptr_get, &copy);
    for (const bool shared : {false, true}) {
      SpiedHandle h({.shared = shared});
      void* const obj = create(h);
      store<void*>(obj, nullptr);
      use(h, obj, shared ? &copy : schema.type, shared ? 1u : 0u);
      destroy(h, obj);
    }
  }

  const wayfind_small_type& schema = wayfind_small_types[GetParam()];
  const told::Small& small = *told::small(schema.name);
  const ork_variant_entry& statistics = schema.type->varinfo->entries[0];
};

std::vector<std::string> hooks(const spy::Log& log) {
  return log.calls_of(
      {"orkdb_record_containment2", "orkdb_plat_set_dirty", "orkdb_plat_set_destroy"});
}

}  // namespace

// ---- Lifecycle ----

TEST_P(SmallTypeCalls, create_tells_the_hooks_of_the_object_of_null_and_of_the_sentinel) {
  SpiedHandle h(shared_and_recorded);
  spy::Log log;
  void* const obj = create(h);
  EXPECT_CALLS(hooks(log),
               {"orkdb_record_containment2(7,new1,null,1)", "orkdb_plat_set_dirty(7,new1)"});
  log.clear();
  spy::fail_alloc(1);
  EXPECT_EQ(create(h), nullptr);
  EXPECT_CALLS(hooks(log),
               {"orkdb_record_containment2(7,null,null,1)", "orkdb_plat_set_dirty(7,null)"});
  const auto create_cr = function<void*(ork_handle*)>("_create_cr");
  spy::fail_alloc(1);
  spy::name_at(create_cr(h), "sentinel");
  log.clear();
  create_cr(h);
  EXPECT_CALLS(hooks(log), {"orkdb_record_containment2(7,sentinel,null,1)",
                            "orkdb_plat_set_dirty(7,sentinel)"});
  h->cr_error = 0;
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, destroy_tells_the_hook_of_shared_storage_before_the_storage_goes) {
  SpiedHandle h(shared_and_recorded);
  void* const obj = create(h);
  spy::Log log;
  destroy(h, obj);
  EXPECT_CALLS(
      log.calls_of({"orkdb_plat_set_destroy", "write_notify_fn", "free_fn"}),
      {"orkdb_plat_set_destroy(7,obj)", "write_notify_fn(obj,8,7,null)", "free_fn(7,obj)"});
}

TEST_P(SmallTypeCalls, the_platform_hooks_want_recording_an_instance_and_watched_storage) {
  const struct {
    Mode mode;
    uint32_t in, shared_types;
    size_t contained;
  } cases[] = {{shared_and_recorded, ORK_NO_INSTANCE, 1, 1},
               {shared_and_recorded, instance, 2, 1},
               {recorded, instance, 0, 1},
               {{.shared = true}, instance, 1, 0}};
  for (const auto& each : cases) {
    SpiedHandle h(each.mode);
    h->shared_types = each.shared_types;
    spy::Log log;
    destroy(h, create(h, each.in), each.in);
    EXPECT_EQ(log.count("orkdb_record_containment2"), each.contained);
    EXPECT_EQ(hooks(log).size(), each.contained);
  }
}

TEST_P(SmallTypeCalls, destroy_counts_announces_the_slot_and_frees_the_block_whatever_the_mode) {
  for (const Mode& mode : {plain, tracked}) {
    SpiedHandle h(mode);
    void* const obj = create(h);
    const uint64_t destroyed = statistics.destroy_count;
    spy::name_at(&statistics.destroy_count, "destroy_count");
    spy::Log log;
    destroy(h, obj);
    auto calls = log.calls();
    std::erase_if(calls, [](const std::string& call) {
      return call.find("ork_get_") == 0;
    }); /* its variant and its type */
    EXPECT_CALLS(calls, {"counter_notify_fn(destroy_count,1,7)", "write_notify_fn(obj,8,7,null)",
                         "free_fn(7,obj)"});
    EXPECT_EQ(statistics.destroy_count, destroyed + 1);
  }
}

TEST_P(SmallTypeCalls, destroy_in_place_counts_and_leaves_the_storage_to_its_owner) {
  SpiedHandle h(shared_and_recorded);
  void* const obj = create(h);
  auto* const type = load<const ork_type_info*>(obj);
  ork_variant_entry& shared = type->varinfo->entries[0];
  const uint64_t destroyed = shared.destroy_count;
  spy::name_at(&shared.destroy_count, "destroy_count");
  spy::Log log;
  function<void(ork_handle*, uint32_t, void*, uint32_t)>("_destroy_internal")(h, instance, obj, 0);
  EXPECT_CALLS(
      log.calls_of({"counter_notify_fn", "orkdb_plat_set_destroy", "write_notify_fn", "free_fn"}),
      {"counter_notify_fn(destroy_count,1,7)"});
  EXPECT_EQ(shared.destroy_count, destroyed + 1);
  EXPECT_EQ(load<const ork_type_info*>(obj), type);
  h->free_fn(h->mem_pool, instance, obj);
}

TEST_P(SmallTypeCalls, a_negative_variant_counts_neither_birth_nor_death) {
  SpiedHandle h(plain);
  const auto none = h.domain({{small.name, int8_t{-1}}});
  const uint64_t created = statistics.create_count;
  const uint64_t destroyed = statistics.destroy_count;
  spy::Log log;
  void* const obj = create(h);
  EXPECT_EQ(header(obj).variant, -1);
  destroy(h, obj);
  EXPECT_EQ(log.count("counter_notify_fn"), 0u);
  EXPECT_EQ(statistics.create_count, created);
  EXPECT_EQ(statistics.destroy_count, destroyed);
}

TEST_P(SmallTypeCalls, a_create_whose_look_up_fails_stays_counted) {
  SpiedHandle h(plain);
  const auto failing = spy::fail(ork_domain_lookup_variant, 5);
  const uint64_t created = statistics.create_count;
  EXPECT_EQ(create(h), nullptr);
  EXPECT_EQ(statistics.create_count, created + 1);
}

TEST_P(SmallTypeCalls, without_statistics_initialize_writes_only_the_header_and_wants_no_variants) {
  SpiedHandle h(plain);
  ork_type_info bare = *schema.type;
  bare.varinfo = nullptr;
  const std::vector<uint64_t> untouched(small.size / sizeof(uint64_t));
  const auto initialize =
      function<void(ork_handle*, uint32_t, void*, const ork_type_info*, uint32_t, uint32_t,
                    uint32_t, uint8_t*, uint32_t*)>("_initialize");
  for (const ork_type_info* each : {schema.type, static_cast<const ork_type_info*>(&bare)}) {
    auto block = untouched;
    block[1] = 0xFFFF; /* variant and the newest one */
    const uint64_t created = statistics.create_count;
    spy::Log log;
    initialize(h, instance, block.data(), each, 0, 1, OBJ_NESTED, nullptr, &h.err);
    EXPECT_EQ(log.count("counter_notify_fn"), 0u);
    EXPECT_EQ(statistics.create_count, created);
    auto expected = untouched;
    store(expected.data(), each);
    header(expected.data()).obj_flags = OBJ_NESTED;
    EXPECT_EQ(block, expected);
    EXPECT_EQ(h.err, 0u);
  }
}

TEST_P(SmallTypeCalls, a_block_that_the_slot_owns_goes_first) {
  for (const bool owned : {true, false}) {
    SpiedHandle h(plain);
    void* const obj = create(h);
    void* const block = owned ? h->alloc_fn(h->mem_pool, instance, 16) : nullptr;
    spy::name(block, 16, "block");
    const auto manifested = spy::answer(ork_get_manifested_type_info, schema.type);
    header(obj).obj_flags = OBJ_OWNS_SLOT_BLOCK;
    store(obj, block);
    spy::Log log;
    destroy(h, obj);
    std::vector<std::string> expected = {"free_fn(7,block)", "write_notify_fn(obj,8,7,null)",
                                         "free_fn(7,obj)"};
    expected.erase(expected.begin(), expected.begin() + (owned ? 0 : 1));
    EXPECT_CALLS(log.calls_of({"free_fn", "write_notify_fn"}), expected);
  }
}

// ---- Upgrade and values ----

TEST_P(SmallTypeCalls, adjust_variant_hands_on_whatever_stands_in_the_slot) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  const auto adjust =
      function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>("_adjust_variant");
  const auto runtime = spy::answer(orklib_adjust_variant, 77);
  for (const uint32_t standing : {0u, 5u}) {
    h.err = standing;
    spy::Log log;
    EXPECT_EQ(adjust(h, instance, obj, &h.err), 77u);
    EXPECT_EQ(adjust(h, instance, nullptr, &h.err), 77u);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
                 std::vector<std::string>({"orklib_adjust_variant(7,obj," + type() + ",0,err)",
                                           "orklib_adjust_variant(7,null,null,0,err)"}));
    EXPECT_EQ(h.err, standing);
  }
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, adjust_variant_hands_on_the_manifested_type_and_not_the_word_in_the_slot) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  {
    const wayfind_small_type& other = wayfind_small_types[(GetParam() + 1) % 12];
    const auto manifested = spy::answer(ork_get_manifested_type_info, other.type);
    const auto runtime = spy::answer(orklib_adjust_variant, 0);
    spy::Log log;
    function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>("_adjust_variant")(h, instance, obj,
                                                                                   &h.err);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
                 std::vector<std::string>(1, "orklib_adjust_variant(7,obj,type(" +
                                                 std::string(other.name) + "),0,err)"));
  }
  destroy(h, obj);
}

// Enums hand the runtime what stands in the slot, the flag set what the runtime says that stands
// there.
TEST_P(SmallTypeCalls, writes_upgrade_by_the_word_in_the_slot_or_by_the_manifested_type) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  {
    const wayfind_small_type& other = wayfind_small_types[(GetParam() + 1) % 12];
    const auto manifested = spy::answer(ork_get_manifested_type_info, other.type);
    const auto runtime = spy::answer(orklib_adjust_variant, 0);
    const std::string given = small.flags ? "type(" + std::string(other.name) + ")" : type();
    spy::Log log;
    set(h, obj, obj);
    set_value(h, obj);
    EXPECT_CALLS(log.calls_of({"orklib_adjust_variant"}),
                 std::vector<std::string>(2, "orklib_adjust_variant(7,obj," + given + ",0,err)"));
  }
  EXPECT_EQ(h.err, 0u);
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, writes_go_on_behind_an_upgrade_that_fails) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  void* const src = create(h);
  spy::name(src, small.size, "src");
  value_of(src) = small.flags ? 4 : 2;
  const auto runtime =
      spy::replace(orklib_adjust_variant, [](ork_handle*, uint32_t, void*, const ork_type_info*,
                                             int32_t, uint32_t* slot) { return *slot = 5; });
  spy::Log log;
  set(h, obj, src);
  EXPECT_EQ(std::exchange(h.err, 0), 5u);
  EXPECT_EQ(value_of(obj), small.flags ? 4 : 2);
  set_value(h, obj);
  EXPECT_EQ(h.err, 5u);
  EXPECT_EQ(value_of(obj), small.flags ? 4 | 2 : 1);
  const std::string whole = "write_notify_fn(obj," + std::to_string(small.size) + ",7,obj)";
  EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
               std::vector<std::string>({whole, small.flags ? "write_notify_fn(obj+11,1,7,obj)"
                                                            : "write_notify_fn(obj+12,4,7,obj)"}));
  destroy(h, src);
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, get_value_calls_nothing) {
  SpiedHandle h(recorded);
  void* const obj = create(h);
  value_of(obj) = 2;
  spy::Log log;
  const uint32_t value =
      small.flags ? function<uint32_t(ork_handle*, uint32_t, const void*, uint32_t, uint32_t*)>(
                        "_get_value")(h, instance, obj, 1, &h.err)
                  : function<uint32_t(ork_handle*, uint32_t, const void*, uint32_t*)>("_get_value")(
                        h, instance, obj, &h.err);
  EXPECT_EQ(value, small.flags ? 1u : 2u);
  EXPECT_CALLS(log, {});
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, is_valid_answers_with_an_error_standing) {
  SpiedHandle h(plain);
  h->cr_error = 5;
  const auto is_valid = function<uint32_t(ork_handle*, uint32_t)>("_is_valid_cr");
  const auto count = static_cast<uint32_t>(small.values.size());
  spy::Log log;
  EXPECT_EQ(is_valid(h, count - 1), 1u);
  EXPECT_EQ(is_valid(h, count), 0u);
  EXPECT_CALLS(log, std::vector<std::string>(
                        2, "ork_domain_lookup_variant(domain," + type() + ",cr_error)"));
  EXPECT_EQ(std::exchange(h->cr_error, 0), 5u);
}

// ---- Wire ----

TEST_P(SmallTypeCalls, with_an_error_standing_nothing_is_written_or_read) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  const Snapshot before(obj, small.size);
  std::vector<uint8_t> buffer(6, 0xA5);
  h.err = 5;
  spy::Log log;
  EXPECT_EQ((function<uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
                "_marshal")(h, instance, buffer.data(), obj, 6, &h.err)),
            0u);
  EXPECT_EQ(unmarshal(h, image(0xFF), obj), 0u);
  EXPECT_CALLS(log, {});
  EXPECT_EQ(buffer, std::vector<uint8_t>(6, 0xA5));
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(h.err, 5u);
  destroy(h, obj);
}

TEST_P(SmallTypeCalls, a_read_object_points_at_its_type_or_at_the_shared_copy) {
  with_unread([&](SpiedHandle& h, void* obj, const ork_type_info* expected, size_t asked) {
    spy::Log log;
    unmarshal(h, image(0), obj);
    EXPECT_EQ(h.err, 0u);
    EXPECT_EQ(load<const ork_type_info*>(obj), expected);
    EXPECT_CALLS(log.calls_of({"ork_type_info_ptr_get"}),
                 std::vector<std::string>(asked, "ork_type_info_ptr_get(7," + type() +
                                                     ",fwe_ui_wayfind_typeinfo_initialize)"));
  });
}

// The flag set's byte is read where the image ended, behind the one that the image has.
TEST_P(SmallTypeCalls, a_header_from_the_wire_is_stored_even_if_what_follows_fails) {
  with_unread([&](SpiedHandle& h, void* obj, const ork_type_info* expected, size_t asked) {
    header(obj).variant_cap = 2;
    spy::Log log;
    EXPECT_EQ(unmarshal(h, {1, 0x1B}, 1, obj), small.flags ? 2u : 1u);
    EXPECT_EQ(h.err, 90u);
    EXPECT_EQ(header(obj).variant, 1);
    EXPECT_EQ(load<const ork_type_info*>(obj), expected);
    EXPECT_EQ(value_of(obj), small.flags ? 0x1B : 0);
    auto calls =
        log.calls_of({"_ork_variant_jump_unmarshal", "ork_type_info_ptr_get", "u_int32_unmarshal"});
    for (std::string& call : calls) {
      call.resize(call.find('('));
    }
    std::vector<std::string> order(asked, "ork_type_info_ptr_get");
    order.insert(small.flags ? order.begin() : order.end(),
                 small.flags ? "_ork_variant_jump_unmarshal" : "u_int32_unmarshal");
    EXPECT_EQ(calls, order);
    store<const ork_type_info*>(obj, expected);
    header(obj).variant = 0;
  });
}

TEST_P(SmallTypeCalls, a_variant_from_the_wire_is_lowered_to_the_newest_of_the_object) {
  SpiedHandle h(plain);
  void* const obj = create(h);
  header(obj).variant_cap = 2;
  for (const auto& [sent, kept] : {std::pair{5, 2}, {2, 2}, {1, 1}}) {
    EXPECT_EQ(unmarshal(h, image(static_cast<uint8_t>(sent)), obj), image(0).size());
    EXPECT_EQ(header(obj).variant, kept) << sent;
  }
  EXPECT_EQ(h.err, 0u);
  header(obj).variant = 0;
  destroy(h, obj);
}

INSTANTIATE_TEST_SUITE_P(Types, SmallTypeCalls, testing::Range(0u, 12u), [](const auto& which) {
  return std::string(wayfind_small_types[which.param].name);
});

}  // namespace frame
