// All enums and the flag set: sizes, counts, the range of their values, and that each store is
// announced.
#include "behaviour/encoders/records.h"
#include "laws/frame/announce_watch.h"

namespace frame {

namespace {

struct Small {
  const told::Small& told;
  const wayfind_small_type& schema;

  template <class F>
  F* function(const std::string& suffix) const {
    return kit::function<F>(schema.functions, suffix);
  }
  void* create(SpiedHandle& h) const {
    return function<void*(ork_handle*, uint32_t)>("_create")(h, instance);
  }
  void destroy(SpiedHandle& h, void* obj) const {
    function<void(ork_handle*, uint32_t, void*)>("_destroy")(h, instance, obj);
  }
};

void for_each_small(const std::function<void(const Small&)>& visit) {
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    visit({*told::small(wayfind_small_types[i].name), wayfind_small_types[i]});
  }
}

}  // namespace

TEST(SmallTypes, create_and_destroy_balance_in_every_mode) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_small([&](const Small& small) {
      void* const obj = small.create(h);
      ASSERT_NE(obj, nullptr);
      const auto* const type = load<const ork_type_info*>(obj);
      const ork_variant_entry& entry = type->varinfo->entries[0];
      const uint64_t alive = entry.create_count - entry.destroy_count;
      EXPECT_EQ(type == small.schema.type, !mode.shared);
      EXPECT_EQ(h.memory().live_bytes, small.told.size) << small.told.name;
      EXPECT_EQ(header(obj).obj_flags, 0);
      for (unsigned i = ORK_OBJECT_HEADER_SIZE; i < small.told.size; ++i) {
        EXPECT_EQ(bytes(obj)[i], 0);
      }
      small.destroy(h, obj);
      EXPECT_EQ(entry.create_count - entry.destroy_count, alive - 1)
          << small.told.name << ", " << mode.text();
      EXPECT_EQ(h.memory().live_blocks, 0u);
    });
  }
}

TEST(SmallTypes, every_value_is_taken_and_none_above) {
  SpiedHandle h;
  for_each_small([&](const Small& small) {
    if (small.told.flags) {
      return;
    }
    void* const obj = small.create(h);
    const auto set =
        small.function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>("_set_value");
    const auto get =
        small.function<uint32_t(ork_handle*, uint32_t, void*, uint32_t*)>("_get_value");
    const auto valid = small.function<uint32_t(ork_handle*, int32_t)>("_is_valid_cr");
    const auto n = static_cast<uint32_t>(small.told.values.size());
    for (uint32_t value = 0; value < n; ++value) {
      set(h, instance, obj, value, &h.err);
      EXPECT_EQ(h.last_error(), 0u);
      EXPECT_EQ(get(h, instance, obj, &h.err), value) << small.told.name;
      EXPECT_EQ(valid(h, static_cast<int32_t>(value)), 1u);
    }
    for (const uint32_t value : {n, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
      set(h, instance, obj, value, &h.err);
      EXPECT_EQ(h.last_error(), 43u) << small.told.name;
      EXPECT_EQ(get(h, instance, obj, &h.err), n - 1) << small.told.name;
      EXPECT_EQ(valid(h, static_cast<int32_t>(value)), value >> 31)
          << small.told.name << " " << value;
    }
    EXPECT_EQ(small.function<uint32_t()>("_sizeof")(), 16u);
    small.destroy(h, obj);
  });
}

TEST(SmallTypes, an_error_standing_stops_them) {
  SpiedHandle h({.recording = true});
  for_each_small([&](const Small& small) {
    void* const obj = small.create(h);
    void* const src = small.create(h);
    bytes(src)[small.told.flags ? 11 : 12] = 1;
    const Snapshot before(obj, small.told.size);
    ork_store_err(h, 77);
    h.err = 5;
    {
      spy::Log log;
      small.function<void(ork_handle*, uint32_t, void*, const ork_type_info*, uint32_t, uint32_t,
                          uint32_t, uint8_t*, uint32_t*)>("_initialize")(
          h, instance, obj, small.schema.type, 1, 0, OBJ_NESTED, nullptr, &h.err);
      small.function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>("_set")(h, instance, obj,
                                                                                   src, &h.err);
      if (small.told.flags) {
        small.function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t, uint32_t*)>(
            "_set_value")(h, instance, obj, 1, 1, &h.err);
      } else {
        small.function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>("_set_value")(
            h, instance, obj, 1, &h.err);
      }
      EXPECT_CALLS(log, {}) << small.told.name;
    }
    EXPECT_TRUE(before.unchanged()) << small.told.name;
    EXPECT_EQ(h.err, 5u);
    EXPECT_EQ(h.last_error(), 77u);
    h.err = 0;
    small.destroy(h, obj);
    small.destroy(h, src);
  });
}

TEST(SmallTypes, each_type_has_a_sentinel_of_its_own_that_nothing_writes) {
  SpiedHandle h;
  std::set<void*> seen;
  for_each_small([&](const Small& small) {
    h->cr_error = 5;
    void* const sentinel = small.function<void*(ork_handle*)>("_create_cr")(h);
    ASSERT_NE(sentinel, nullptr);
    EXPECT_TRUE(seen.insert(sentinel).second) << small.told.name;
    h->cr_error = 0;
    spy::Log log;
    small.destroy(h, sentinel);
    small.function<void(ork_handle*, void*)>("_destroy_cr")(h, sentinel);
    small.function<void(ork_handle*, uint32_t, void*, uint32_t)>("_destroy_internal")(h, instance,
                                                                                      sentinel, 1);
    EXPECT_CALLS(log, {}) << small.told.name;
    EXPECT_TRUE(std::all_of(bytes(sentinel), bytes(sentinel) + small.told.size, [](uint8_t b) {
      return b == 0;
    })) << small.told.name;
  });
}

TEST(SmallTypes, set_copies_the_object_whole_and_announced) {
  SpiedHandle h;
  for_each_small([&](const Small& small) {
    void* const obj = small.create(h);
    void* const src = small.create(h);
    spy::name(obj, small.told.size, "obj");
    bytes(src)[small.told.flags ? 11 : 12] = 1;
    {
      spy::Log log;
      small.function<void(ork_handle*, uint32_t, void*, void*, uint32_t*)>("_set")(h, instance, obj,
                                                                                   src, &h.err);
      EXPECT_CALLS(log.calls_of({"write_notify_fn"}),
                   std::vector<std::string>{"write_notify_fn(obj," +
                                            std::to_string(small.told.size) + ",7,obj)"})
          << small.told.name;
    }
    EXPECT_EQ(std::memcmp(obj, src, small.told.size), 0);
    small.destroy(h, obj);
    small.destroy(h, src);
  });
}

// What is stored without a word: all that comes off the wire, and an enum's value out of a
// document. A flag out of a document is announced.
TEST(SmallTypes, store_nothing_that_was_not_announced_but_what_is_told_to_be_silent) {
  struct Store {
    std::string suffix;
    std::vector<uint64_t> words; /* behind the handle */
    size_t silent_from, silent_size;
    bool changes;
  };
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_small([&](const Small& small) {
      const bool flags = small.told.flags;
      const size_t value = flags ? 11 : 12;
      const size_t width = flags ? 1 : 4;
      std::vector<uint8_t> image = {0, 0, 0, 0, 0};
      if (flags) {
        image = {0, 0, 0, 0, 5, 2};
      }
      const encoders::Document document =
          encoders::parsed("<e><" + small.told.values[2] + "/></e>");
      alignas(8) uint8_t block[24] = {};
      void* const src = small.create(h);
      bytes(src)[value] = 1;
      const uint64_t i = instance;
      const uint64_t o = word(block);
      const uint64_t e = word(&h.err);
      const Store stores[] = {
          {"_initialize", {i, o, word(small.schema.type), 1, 0, 0, 0, e}, 0, 0, true},
          {"_adjust_variant", {i, o, e}, 0, 0, false},
          {"_set_instance_embedded", {i, o}, 0, 0, true},
          {"_set", {i, o, word(src), e}, 0, 0, true},
          {"_set_value",
           flags ? std::vector<uint64_t>{i, o, 1, 1, e} : std::vector<uint64_t>{i, o, 2, e}, 0, 0,
           true},
          {"_set_cr", {o, 2, 1}, 0, 0, true},
          {"_unmarshal", {i, word(image.data()), o, image.size(), 0, e}, 0, value + width, true},
          {"_from_xml",
           {i, word("//e"), word(document.get()), o, e, 0, 0},
           value,
           flags ? 0 : width,
           true},
          {"_compare", {o, word(src)}, 0, 0, false},
          {"_hash", {o, 0}, 0, 0, false},
          {"_destroy_internal", {i, o, 0}, 0, 0, false},
      };
      for (const Store& call : stores) {
        if (!kit::has_function(small.schema.functions, call.suffix)) {
          EXPECT_EQ(call.suffix, "_set_cr"); /* the flag set's alone */
          EXPECT_FALSE(flags);
          continue;
        }
        const bool has_handle = call.suffix != "_compare" && call.suffix != "_hash";
        std::vector<uint64_t> words = call.words;
        if (has_handle) {
          words.insert(words.begin(), word(h));
        }
        if (call.suffix == "_from_xml") {
          bytes(block)[value] = 0;
        }
        const Snapshot before(block, sizeof block);
        spy::name(block, sizeof block, "obj");
        spy::Log log;
        Watch watch(log);
        watch.region(block, sizeof block);
        watch.allow(block + call.silent_from, call.silent_size);
        kit::call_words(kit::function<void()>(small.schema.functions, call.suffix), words);
        watch.check();
        EXPECT_EQ(h.err, 0u);
        EXPECT_EQ(!before.unchanged(), call.changes) << small.told.name << call.suffix;
        EXPECT_TRUE(watch.unannounced().empty()) << small.told.name << call.suffix << ", "
                                                 << mode.text() << ":" << list(watch.unannounced());
      }
      small.destroy(h, src);
    });
  }
}

}  // namespace frame
