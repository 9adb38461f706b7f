// Descriptors, the module list and the variant dump.
#include "behaviour/frame/module.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "ork/flight.h"

namespace frame {

namespace {

std::vector<std::string> dumped;

int collect(const char* format, ...) {
  char line[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  dumped.emplace_back(line);
  return 0;
}

// The only entry of the library's initialisation or termination array.
void (*load_time_function(ElfW(Sxword) array, ElfW(Sxword) array_size))() {
  Dl_info info{};
  link_map* map = nullptr;
  dladdr1(reinterpret_cast<const void*>(&fwe_ui_wayfind_typeinfo_initialize), &info,
          reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
  // The address of the function may be the spy's or the program's stub: find the library by name.
  void* const library = dlopen("libfwe_ui_wayfind.so.1", RTLD_NOLOAD | RTLD_LAZY);
  if (library) {
    dlinfo(library, RTLD_DI_LINKMAP, &map);
  }
  void (**functions)() = nullptr;
  size_t count = 0;
  for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == array) {
      functions = reinterpret_cast<void (**)()>(map->l_addr + entry->d_un.d_ptr);
    } else if (entry->d_tag == array_size) {
      count = entry->d_un.d_val / sizeof(void*);
    }
  }
  return count >= 1 ? functions[count - 1] : nullptr;
}

// Runs the load-time functions again, in a process that ends with 0 when all is as it should be.
[[noreturn]] void link_and_unlink() {
  void (*const constructor)() = load_time_function(DT_INIT_ARRAY, DT_INIT_ARRAYSZ);
  void (*const destructor)() = load_time_function(DT_FINI_ARRAY, DT_FINI_ARRAYSZ);
  const auto demand = [](bool held, const char* what) {
    if (!held) {
      std::fprintf(stderr, "not so: %s\n", what);
      std::_Exit(1);
    }
  };
  demand(constructor && destructor, "the library has both");
  const uint32_t count = ork_module_tot_root.count;
  ork_module* const module = module_record();
  constructor();
  demand(ork_module_tot_root.count == count && module_record() == module, "linked once");

  // A module behind it learns of its new place.
  ork_module behind{"behind", module->descriptors, nullptr, ork_module_tot_root.tail};
  *ork_module_tot_root.tail = &behind;
  ork_module_tot_root.tail = &behind.next;
  ork_module** const link = module->prev_link;
  destructor();
  demand(ork_module_tot_root.count == count - 1 && !module_record(), "unlinked");
  demand(behind.prev_link == link && *link == &behind && ork_module_tot_root.tail == &behind.next,
         "the next one is linked in its place");
  demand(!module->next && !module->prev_link, "both links are 0");
  destructor();
  demand(ork_module_tot_root.count == count - 1, "a second unlink does nothing");
  constructor();
  demand(ork_module_tot_root.count == count - 1 && !module_record(), "never linked again");
  std::_Exit(0);
}

// Dumps with one descriptor robbed of its variants.
[[noreturn]] void dump_without_variants() {
  rob_a_descriptor();
  spy::Log log;
  fwe_ui_wayfind_type_variant_dump(collect);
  for (const auto& trace : log.calls_of({"trace"})) {
    std::fprintf(stderr, "%s\n", trace.c_str());
  }
  const auto blocks = std::count_if(dumped.begin(), dumped.end(), [](const std::string& l) {
    return l.starts_with("n_variants");
  });
  std::_Exit(blocks == 95 ? 0 : 1);
}

struct DumpGuard {
  DumpGuard() { dumped.clear(); }
  ~DumpGuard() { dumped.clear(); }
};

}  // namespace

// ---- Small functions ----

TEST(Descriptor, index_cap_keeps_what_is_below_the_count_and_the_bits_above_the_byte) {
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(5), 3);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(3), 3);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(2), 2);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(-1), -1);
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(200), 200) << "a byte of 200 is -56";
  EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(0x12345605), 0x12345603);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_variant_data_index_cap(5), 0);
  EXPECT_EQ(fwe_cl_wayfind_mem_st_variant_data_index_cap(-1), -1);
}

TEST(Descriptor, the_trace_channel_starts_with_the_modules_name_and_keeps_its_number) {
  SpiedHandle h(plain);
  spy::name_at(&g_ork_fwe_ui_wayfind_trace_module_id, "id");
  spy::Log log;
  EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 0);
  const uint16_t id = g_ork_fwe_ui_wayfind_trace_module_id;
  EXPECT_NE(id, 0);
  EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 0);
  EXPECT_EQ(g_ork_fwe_ui_wayfind_trace_module_id, id);
  EXPECT_CALLS(log,
               std::vector<std::string>(2, "flight_module_init_fn('ork_fwe_ui_wayfind',id,?)"));
  const auto eight = spy::answer(flight_module_init_fn, 8);
  EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 8);
}

TEST(Descriptor, every_descriptor_is_the_image_told) {
  const auto names = registration_order();
  const ork_module* const module = module_record();
  ASSERT_NE(module, nullptr);
  const auto check = [&](const ork_type_info& type, const std::string& name,
                         const std::string& luid, const std::string& kind) {
    EXPECT_EQ(type.magic, 0xbeeff00du);
    char text[33];
    for (size_t i = 0; i < 16; ++i) {
      std::snprintf(text + 2 * i, 3, "%02x", type.luid[i]);
    }
    EXPECT_EQ(luid, text) << name;
    EXPECT_EQ(luid, type.luid_text) << name;
    const auto padded = [&](const char(&field)[64], const std::string& expected) {
      char whole[64] = {};
      std::memcpy(whole, expected.data(), expected.size());
      EXPECT_EQ(std::memcmp(field, whole, sizeof whole), 0) << name;
    };
    padded(type.name, name);
    padded(type.module, "fwe_ui_wayfind");
    padded(type.kind, kind);
    const uint8_t zero[8] = {};
    EXPECT_EQ(std::memcmp(type.reserved_0, zero, 3), 0);
    EXPECT_EQ(type.unassigned_id, -1);
    EXPECT_EQ(type.reserved_1, 0u);
    EXPECT_EQ(type.shared, 0u);
    EXPECT_EQ(type.reserved_2, 0u);
    ASSERT_NE(type.varinfo, nullptr);
    EXPECT_EQ(std::memcmp(type.varinfo->reserved, zero, 7), 0);
  };
  size_t at = 0;
  for (const auto& record : told::tables().records) {
    const ork_type_info& type = *module->descriptors[at++];
    check(type, record.name, record.luid, "type");
    ASSERT_EQ(size_t(type.varinfo->n_variants), record.layouts.size());
    for (unsigned v = 0; v < record.layouts.size(); ++v) {
      const ork_variant_entry& entry = type.varinfo->entries[v];
      EXPECT_EQ(entry.variant, v);
      EXPECT_EQ(entry.used_length, record.layouts[v].used) << record.name;
      EXPECT_EQ(entry.alloc_slop, record.layouts[v].slop) << record.name;
      EXPECT_EQ(entry.reserved, 0u);
    }
  }
  for (const auto& small : told::tables().smalls) {
    const ork_type_info& type = *module->descriptors[at++];
    check(type, small.name, small.luid, small.flags ? "flag" : "enum");
    ASSERT_EQ(type.varinfo->n_variants, 1);
    EXPECT_EQ(type.varinfo->entries[0].used_length, small.used);
    EXPECT_EQ(type.varinfo->entries[0].alloc_slop, small.slop);
  }
  for (const auto& message : told::tables().messages) {
    const ork_type_info& type = *module->descriptors[at++];
    check(type, message.name, message.luid, "message");
    ASSERT_EQ(type.varinfo->n_variants, 1);
    EXPECT_EQ(type.varinfo->entries[0].used_length, message.used);
    EXPECT_EQ(type.varinfo->entries[0].alloc_slop, message.slop);
  }
  EXPECT_EQ(at, 96u);
  EXPECT_EQ(module->descriptors[at], nullptr);
}

// ---- The dump ----

TEST(Dump, prints_a_block_for_each_descriptor_in_order) {
  const DumpGuard guard;
  fwe_ui_wayfind_type_variant_dump(collect);
  std::vector<std::string> expected;
  const auto line = [](size_t number, unsigned used, unsigned slop) {
    return "variant " + std::to_string(number) + " used length " + std::to_string(used) +
           " alloc slop " + std::to_string(slop) + "\n";
  };
  for (const auto& record : told::tables().records) {
    expected.push_back("n_variants " + std::to_string(record.layouts.size()) + "\n");
    for (size_t v = 0; v < record.layouts.size(); ++v) {
      expected.push_back(line(v, record.layouts[v].used, record.layouts[v].slop));
    }
  }
  for (const auto& small : told::tables().smalls) {
    expected.insert(expected.end(), {"n_variants 1\n", line(0, small.used, small.slop)});
  }
  for (const auto& message : told::tables().messages) {
    expected.insert(expected.end(), {"n_variants 1\n", line(0, message.used, message.slop)});
  }
  EXPECT_CALLS(dumped, expected);
  EXPECT_EQ(std::count_if(dumped.begin(), dumped.end(),
                          [](const std::string& l) { return l.starts_with("n_variants"); }),
            96);
}

TEST(Dump, numbers_the_lines_itself) {
  const DumpGuard guard;
  auto& entry = _fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0];
  const uint32_t before = std::exchange(entry.variant, 9);
  fwe_ui_wayfind_type_variant_dump(collect);
  entry.variant = before;
  EXPECT_EQ(dumped.at(1), "variant 0 used length 32 alloc slop 8\n");
}

TEST(DumpDeathTest, goes_on_behind_a_descriptor_without_variants) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(dump_without_variants(), testing::ExitedWithCode(0),
              "^trace\\(error,type variant cached info is NULL during usage dump\\)\n$");
}

// ---- The module list ----

TEST(Module, is_linked_at_load_and_holds_the_96_descriptors) {
  const ork_module* const module = module_record();
  ASSERT_NE(module, nullptr);
  EXPECT_NE(module->prev_link, nullptr);
  EXPECT_EQ(*module->prev_link, module);
}

TEST(ModuleDeathTest, links_once_and_unlinks_harmlessly_twice) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(link_and_unlink(), testing::ExitedWithCode(0), "");
}

TEST(ModuleDeathTest, the_last_module_hands_its_tail_back) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        ork_module* const module = module_record();
        ork_module** const link = module->prev_link;
        load_time_function(DT_FINI_ARRAY, DT_FINI_ARRAYSZ)();
        std::_Exit(ork_module_tot_root.tail == link && *link == nullptr ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace frame
