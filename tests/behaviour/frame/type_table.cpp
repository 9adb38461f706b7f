// The shared type table: what the module enters there, and when.
#include <cstdio>
#include <cstdlib>

#include "behaviour/frame/module.h"

namespace frame {

namespace {

// Two runs against one table that add a type without variants and never update it.
[[noreturn]] void initialize_without_variants() {
  rob_a_descriptor();
  SpiedHandle h({.shared = true});
  for (const char* const is_new : {",1)", ",0)"}) {
    spy::Log log;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    const auto updates = log.calls_of({"ork_update_variant_info"});
    const auto right = std::count_if(updates.begin(), updates.end(), [&](const std::string& u) {
      return u.ends_with(is_new) && u.find("(fwe_cl_wayfind_chan_st)") == std::string::npos;
    });
    std::fprintf(stderr, "%zu adds, %zu updates, %td right\n", log.count("type_table_add_fn"),
                 updates.size(), right);
  }
  std::_Exit(0);
}

}  // namespace

TEST(TypeTable, takes_all_96_types_in_order_with_their_look_up_copy_and_update) {
  SpiedHandle h({.shared = true});
  const auto names = registration_order();
  ASSERT_EQ(names.size(), 96u);
  spy::Log log;
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  EXPECT_EQ(h.err, 0u);
  std::vector<std::string> expected;
  std::vector<std::string> luids;
  for (const auto& record : told::tables().records) {
    luids.push_back(record.luid);
  }
  for (const auto& small : told::tables().smalls) {
    luids.push_back(small.luid);
  }
  for (const auto& message : told::tables().messages) {
    luids.push_back(message.luid);
  }
  auto calls = log.calls();
  for (auto& call : calls) { /* blocks are numbered through, the runtime's own in between */
    if (const size_t place = call.find("=new"); place != std::string::npos) {
      call.resize(place);
    }
    if (const size_t place = call.find("(7,new"); place != std::string::npos) {
      const size_t end = call.find('+', place);
      call.replace(place + 3, end - place - 3, "copy");
    }
  }
  for (size_t i = 0; i < names.size(); ++i) {
    expected.push_back("type_table_find_fn(7,'" + luids[i] + "')");
    expected.push_back("shared_alloc_fn(4294967295,288)");
    expected.push_back("type_table_add_fn(7,copy+20,shared(" + names[i] + "))");
    expected.push_back("ork_update_variant_info(7,shared(" + names[i] + "),type(" + names[i] +
                       "),1)");
  }
  EXPECT_CALLS(calls, expected);
}

TEST(TypeTable, a_copy_is_the_descriptor_with_its_storage_noted_and_two_words_of_zero) {
  SpiedHandle h({.shared = true});
  const auto quiet = spy::answer(ork_update_variant_info, 0u);
  static uint32_t kind; /* of storage */
  const auto add = h->type_table_add_fn;
  h->type_table_add_fn = [](void*, uint32_t, const char* luid_text, ork_type_info* entry) {
    const ork_module* const module = module_record();
    const auto* const* const type = std::find_if(
        module->descriptors, module->descriptors + 96,
        [&](const ork_type_info* t) { return std::strcmp(t->luid_text, luid_text) == 0; });
    ork_type_info wanted = **type;
    wanted.shared = kind;
    EXPECT_EQ(std::memcmp(entry, &wanted, sizeof wanted), 0)
        << entry->name << ": the variants are the static ones until the update";
    EXPECT_EQ(load<uint64_t>(entry + 1), 0u);
    EXPECT_EQ(load<uint64_t>(reinterpret_cast<uint8_t*>(entry + 1) + 8), 0u);
    EXPECT_EQ(luid_text, entry->luid_text) << "the key lies inside the copy";
    return 0u;
  };
  spy::Log log;
  for (const uint32_t shared : {1u, 2u}) {
    h->shared_types = kind = shared;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  }
  h->type_table_add_fn = add;
  EXPECT_EQ(log.count("shared_alloc_fn"), 192u);
  EXPECT_EQ(h.err, 0u);
}

TEST(TypeTable, a_second_run_allocates_nothing_and_updates_96_times) {
  SpiedHandle h({.shared = true});
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  spy::Log log;
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  EXPECT_EQ(log.count("shared_alloc_fn"), 0u);
  EXPECT_EQ(log.count("type_table_add_fn"), 0u);
  const auto updates = log.calls_of({"ork_update_variant_info"});
  EXPECT_EQ(updates.size(), 96u);
  EXPECT_TRUE(std::all_of(updates.begin(), updates.end(),
                          [](const std::string& u) { return u.ends_with(",0)"); }));
}

TEST(TypeTable, memory_that_ends_at_the_third_type_leaves_two_and_12) {
  SpiedHandle h({.shared = true});
  // The runtime takes a block of its own for each type's variants: let it have those from
  // elsewhere.
  const auto quiet = spy::answer(ork_update_variant_info, 0u);
  spy::fail_shared_alloc(3);
  h.err = 0;
  spy::Log log;
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  EXPECT_EQ(h.err, 12u);
  EXPECT_EQ(log.count("type_table_add_fn"), 2u);
  EXPECT_EQ(log.count("type_table_find_fn"), 3u);
  EXPECT_CALLS(log.calls_of({"ork_store_err", "trace"}), {"ork_store_err(12)"});
}

TEST(TypeTable, an_error_standing_is_not_looked_at) {
  SpiedHandle h({.shared = true});
  h.err = 5;
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  EXPECT_EQ(h.err, 5u);
  spy::Log log;
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  EXPECT_EQ(log.count("ork_update_variant_info"), 96u);
}

TEST(TypeTable, a_type_table_that_refuses_is_not_heard) {
  SpiedHandle h({.shared = true});
  const auto before = h->type_table_add_fn;
  h->type_table_add_fn = [](void*, uint32_t, const char*, ork_type_info*) { return 5u; };
  const auto quiet = spy::answer(ork_update_variant_info, 5u);
  fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
  h->type_table_add_fn = before;
  EXPECT_EQ(h.err, 0u);
}

TEST(TypeTableDeathTest, a_type_without_variants_is_added_and_not_updated) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(initialize_without_variants(), testing::ExitedWithCode(0),
              "^96 adds, 95 updates, 95 right\n0 adds, 95 updates, 95 right\n$");
}

}  // namespace frame
