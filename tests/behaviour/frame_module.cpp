// Descriptors, the shared type table, the module list and the variant dump.
#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "frame_objects.h"
#include "ork/flight.h"

namespace frame {

namespace {

std::vector<std::string> dumped;

int collect(const char *format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    dumped.emplace_back(line);
    return 0;
}

// The names of all types in the order of registration, messages without the word.
std::vector<std::string> registration_order() {
    std::vector<std::string> names;
    for (const auto &record : told::tables().records) {
        names.push_back(record.name);
    }
    for (const auto &small : told::tables().smalls) {
        names.push_back(small.name);
    }
    for (const auto &message : told::tables().messages) {
        names.push_back(message.name);
    }
    return names;
}

ork_module *module_record() {
    for (ork_module *module = ork_module_tot_root.head; module; module = module->next) {
        if (std::strcmp(module->name, "fwe_ui_wayfind") == 0) {
            return module;
        }
    }
    return nullptr;
}

// The only entry of the library's initialisation or termination array.
void (*load_time_function(ElfW(Sxword) array, ElfW(Sxword) array_size))() {
    Dl_info info{};
    link_map *map = nullptr;
    dladdr1(reinterpret_cast<const void *>(&fwe_ui_wayfind_typeinfo_initialize), &info, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP);
    // The address of the function may be the spy's or the program's stub: find the library by name.
    void *const library = dlopen("libfwe_ui_wayfind.so.1", RTLD_NOLOAD | RTLD_LAZY);
    if (library) {
        dlinfo(library, RTLD_DI_LINKMAP, &map);
    }
    void (**functions)() = nullptr;
    size_t count = 0;
    for (const ElfW(Dyn) *entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == array) {
            functions = reinterpret_cast<void (**)()>(map->l_addr + entry->d_un.d_ptr);
        } else if (entry->d_tag == array_size) {
            count = entry->d_un.d_val / sizeof(void *);
        }
    }
    return count >= 1 ? functions[count - 1] : nullptr;
}

// Runs the load-time functions again, in a process that ends with 0 when all is as it should be.
[[noreturn]] void link_and_unlink() {
    void (*const constructor)() = load_time_function(DT_INIT_ARRAY, DT_INIT_ARRAYSZ);
    void (*const destructor)() = load_time_function(DT_FINI_ARRAY, DT_FINI_ARRAYSZ);
    const auto demand = [](bool held, const char *what) {
        if (!held) {
            std::fprintf(stderr, "not so: %s\n", what);
            std::_Exit(1);
        }
    };
    demand(constructor && destructor, "the library has both");
    const uint32_t count = ork_module_tot_root.count;
    ork_module *const module = module_record();
    constructor();
    demand(ork_module_tot_root.count == count && module_record() == module, "linked once");

    // A module behind it learns of its new place.
    ork_module behind{"behind", module->descriptors, nullptr, ork_module_tot_root.tail};
    *ork_module_tot_root.tail = &behind;
    ork_module_tot_root.tail = &behind.next;
    ork_module **const link = module->prev_link;
    destructor();
    demand(ork_module_tot_root.count == count - 1 && !module_record(), "unlinked");
    demand(behind.prev_link == link && *link == &behind && ork_module_tot_root.tail == &behind.next, "the next one is linked in its place");
    demand(!module->next && !module->prev_link, "both links are 0");
    destructor();
    demand(ork_module_tot_root.count == count - 1, "a second unlink does nothing");
    constructor();
    demand(ork_module_tot_root.count == count - 1 && !module_record(), "never linked again");
    std::_Exit(0);
}

// Dumps with one descriptor robbed of its variants.
[[noreturn]] void dump_without_variants() {
    auto *const type = const_cast<ork_type_info *>(&_fwe_cl_wayfind_chan_st_type_info_internal);
    const auto page = reinterpret_cast<uintptr_t>(&type->varinfo) & ~uintptr_t{4095};
    mprotect(reinterpret_cast<void *>(page), 8192, PROT_READ | PROT_WRITE);
    type->varinfo = nullptr;
    spy::Log log;
    fwe_ui_wayfind_type_variant_dump(collect);
    for (const auto &trace : log.calls_of({"trace"})) {
        std::fprintf(stderr, "%s\n", trace.c_str());
    }
    const auto blocks = std::count_if(dumped.begin(), dumped.end(), [](const std::string &l) { return l.starts_with("n_variants"); });
    std::_Exit(blocks == 95 ? 0 : 1);
}

struct DumpGuard {
    DumpGuard() { dumped.clear(); }
    ~DumpGuard() { dumped.clear(); }
};

}  // namespace

// ---- The shared type table ----

TEST(FrameTypeTable, takes_all_96_types_in_order_with_their_look_up_copy_and_update) {
    Handle h({.shared = true});
    const auto names = registration_order();
    ASSERT_EQ(names.size(), 96u);
    spy::Log log;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    EXPECT_EQ(h.err, 0u);
    std::vector<std::string> expected;
    std::vector<std::string> luids;
    for (const auto &record : told::tables().records) {
        luids.push_back(record.luid);
    }
    for (const auto &small : told::tables().smalls) {
        luids.push_back(small.luid);
    }
    for (const auto &message : told::tables().messages) {
        luids.push_back(message.luid);
    }
    auto calls = log.calls();
    for (auto &call : calls) { /* blocks are numbered through, the runtime's own in between */
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
        expected.push_back("ork_update_variant_info(7,shared(" + names[i] + "),type(" + names[i] + "),1)");
    }
    EXPECT_CALLS(calls, expected);
}

TEST(FrameTypeTable, a_copy_is_the_descriptor_with_its_storage_noted_and_two_words_of_zero) {
    Handle h({.shared = true});
    const auto quiet = spy::answer(ork_update_variant_info, 0u);
    const auto add = h->type_table_add_fn;
    h->type_table_add_fn = [](void *, uint32_t, const char *luid_text, ork_type_info *entry) {
        const ork_module *const module = module_record();
        const auto *const *const type = std::find_if(module->descriptors, module->descriptors + 96,
                                                     [&](const ork_type_info *t) { return std::strcmp(t->luid_text, luid_text) == 0; });
        ork_type_info wanted = **type;
        wanted.shared = 1;
        EXPECT_EQ(std::memcmp(entry, &wanted, sizeof wanted), 0) << entry->name << ": the variants are the static ones until the update";
        EXPECT_EQ(load<uint64_t>(entry + 1), 0u);
        EXPECT_EQ(load<uint64_t>(reinterpret_cast<uint8_t *>(entry + 1) + 8), 0u);
        EXPECT_EQ(luid_text, entry->luid_text) << "the key lies inside the copy";
        return 0u;
    };
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    h->type_table_add_fn = add;
    EXPECT_EQ(h.err, 0u);
}

TEST(FrameTypeTable, a_second_run_allocates_nothing_and_updates_96_times) {
    Handle h({.shared = true});
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    spy::Log log;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    EXPECT_EQ(log.count("shared_alloc_fn"), 0u);
    EXPECT_EQ(log.count("type_table_add_fn"), 0u);
    const auto updates = log.calls_of({"ork_update_variant_info"});
    EXPECT_EQ(updates.size(), 96u);
    EXPECT_TRUE(std::all_of(updates.begin(), updates.end(), [](const std::string &u) { return u.ends_with(",0)"); }));
}

TEST(FrameTypeTable, memory_that_ends_at_the_third_type_leaves_two_and_12) {
    Handle h({.shared = true});
    // The runtime takes a block of its own for each type's variants: let it have those from elsewhere.
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

TEST(FrameTypeTable, an_error_standing_is_not_looked_at) {
    Handle h({.shared = true});
    h.err = 5;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    EXPECT_EQ(h.err, 5u);
    spy::Log log;
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    EXPECT_EQ(log.count("ork_update_variant_info"), 96u);
}

TEST(FrameTypeTable, a_type_table_that_refuses_is_not_heard) {
    Handle h({.shared = true});
    const auto before = h->type_table_add_fn;
    h->type_table_add_fn = [](void *, uint32_t, const char *, ork_type_info *) { return 5u; };
    const auto quiet = spy::answer(ork_update_variant_info, 5u);
    fwe_ui_wayfind_typeinfo_initialize(h, instance, &h.err);
    h->type_table_add_fn = before;
    EXPECT_EQ(h.err, 0u);
}

// ---- Small functions ----

TEST(FrameDescriptor, index_cap_keeps_what_is_below_the_count_and_the_bits_above_the_byte) {
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(5), 3);
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(3), 3);
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(2), 2);
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(-1), -1);
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(200), 200) << "a byte of 200 is -56";
    EXPECT_EQ(fwe_cl_wayfind_chan_st_variant_data_index_cap(0x12345605), 0x12345603);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_variant_data_index_cap(5), 0);
    EXPECT_EQ(fwe_cl_wayfind_mem_st_variant_data_index_cap(-1), -1);
}

TEST(FrameDescriptor, get_luid_hands_everything_on) {
    Handle h(plain);
    const uint8_t luid[16] = {};
    const auto given = spy::answer(ork_get_luid, luid);
    const int anything = 0;
    spy::name_at(&anything, "anything");
    spy::Log log;
    EXPECT_EQ(fwe_cl_wayfind_mem_st_get_luid(h, 3, &anything, &h.err), luid);
    EXPECT_EQ(fwe_cl_wayfind_chan_tx_state_e_get_luid(h, 3, &anything, &h.err), luid);
    EXPECT_EQ(fwe_cl_wayfind_hop_chan_flags_get_luid(h, 3, &anything, &h.err), luid);
    EXPECT_CALLS(log, std::vector<std::string>(3, "ork_get_luid(3,anything,err)"));
}

TEST(FrameDescriptor, the_trace_channel_starts_with_the_modules_name_and_keeps_its_number) {
    Handle h(plain);
    spy::name_at(&g_ork_fwe_ui_wayfind_trace_module_id, "id");
    spy::Log log;
    EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 0);
    const uint16_t id = g_ork_fwe_ui_wayfind_trace_module_id;
    EXPECT_NE(id, 0);
    EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 0);
    EXPECT_EQ(g_ork_fwe_ui_wayfind_trace_module_id, id);
    EXPECT_CALLS(log, std::vector<std::string>(2, "flight_module_init_fn('ork_fwe_ui_wayfind',id,?)"));
    const auto eight = spy::answer(flight_module_init_fn, 8);
    EXPECT_EQ(ork_fwe_ui_wayfind_trace_init(), 8);
}

TEST(FrameDescriptor, every_descriptor_is_the_image_told) {
    const auto names = registration_order();
    const ork_module *const module = module_record();
    ASSERT_NE(module, nullptr);
    const auto check = [&](const ork_type_info &type, const std::string &name, const std::string &luid, const std::string &kind) {
        EXPECT_EQ(type.magic, 0xbeeff00du);
        char text[33];
        for (size_t i = 0; i < 16; ++i) {
            std::snprintf(text + 2 * i, 3, "%02x", type.luid[i]);
        }
        EXPECT_EQ(luid, text) << name;
        EXPECT_EQ(luid, type.luid_text) << name;
        const auto padded = [&](const char(&field)[64], const std::string &expected) {
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
    for (const auto &record : told::tables().records) {
        const ork_type_info &type = *module->descriptors[at++];
        check(type, record.name, record.luid, "type");
        ASSERT_EQ(size_t(type.varinfo->n_variants), record.layouts.size());
        for (unsigned v = 0; v < record.layouts.size(); ++v) {
            const ork_variant_entry &entry = type.varinfo->entries[v];
            EXPECT_EQ(entry.variant, v);
            EXPECT_EQ(entry.used_length, record.layouts[v].used) << record.name;
            EXPECT_EQ(entry.alloc_slop, record.layouts[v].slop) << record.name;
            EXPECT_EQ(entry.reserved, 0u);
        }
    }
    for (const auto &small : told::tables().smalls) {
        const ork_type_info &type = *module->descriptors[at++];
        check(type, small.name, small.luid, small.flags ? "flag" : "enum");
        ASSERT_EQ(type.varinfo->n_variants, 1);
        EXPECT_EQ(type.varinfo->entries[0].used_length, small.used);
        EXPECT_EQ(type.varinfo->entries[0].alloc_slop, small.slop);
    }
    for (const auto &message : told::tables().messages) {
        const ork_type_info &type = *module->descriptors[at++];
        check(type, message.name, message.luid, "message");
        ASSERT_EQ(type.varinfo->n_variants, 1);
        EXPECT_EQ(type.varinfo->entries[0].used_length, message.used);
        EXPECT_EQ(type.varinfo->entries[0].alloc_slop, message.slop);
    }
    EXPECT_EQ(at, 96u);
    EXPECT_EQ(module->descriptors[at], nullptr);
}

// ---- The dump ----

TEST(FrameDump, prints_a_block_for_each_descriptor_in_order) {
    const DumpGuard guard;
    fwe_ui_wayfind_type_variant_dump(collect);
    std::vector<std::string> expected;
    const auto line = [](size_t number, unsigned used, unsigned slop) {
        return "variant " + std::to_string(number) + " used length " + std::to_string(used) + " alloc slop " + std::to_string(slop) + "\n";
    };
    for (const auto &record : told::tables().records) {
        expected.push_back("n_variants " + std::to_string(record.layouts.size()) + "\n");
        for (size_t v = 0; v < record.layouts.size(); ++v) {
            expected.push_back(line(v, record.layouts[v].used, record.layouts[v].slop));
        }
    }
    for (const auto &small : told::tables().smalls) {
        expected.insert(expected.end(), {"n_variants 1\n", line(0, small.used, small.slop)});
    }
    for (const auto &message : told::tables().messages) {
        expected.insert(expected.end(), {"n_variants 1\n", line(0, message.used, message.slop)});
    }
    EXPECT_CALLS(dumped, expected);
    EXPECT_EQ(std::count_if(dumped.begin(), dumped.end(), [](const std::string &l) { return l.starts_with("n_variants"); }), 96);
}

TEST(FrameDump, numbers_the_lines_itself) {
    const DumpGuard guard;
    auto &entry = _fwe_cl_wayfind_mem_st_type_info_internal.varinfo->entries[0];
    const uint32_t before = std::exchange(entry.variant, 9);
    fwe_ui_wayfind_type_variant_dump(collect);
    entry.variant = before;
    EXPECT_EQ(dumped.at(1), "variant 0 used length 32 alloc slop 8\n");
}

TEST(FrameDumpDeathTest, goes_on_behind_a_descriptor_without_variants) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(dump_without_variants(), testing::ExitedWithCode(0),
                "^trace\\(error,type variant cached info is NULL during usage dump\\)\n$");
}

// ---- The module list ----

TEST(FrameModule, is_linked_at_load_and_holds_the_96_descriptors) {
    const ork_module *const module = module_record();
    ASSERT_NE(module, nullptr);
    EXPECT_NE(module->prev_link, nullptr);
    EXPECT_EQ(*module->prev_link, module);
}

TEST(FrameModuleDeathTest, links_once_and_unlinks_harmlessly_twice) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(link_and_unlink(), testing::ExitedWithCode(0), "");
}

TEST(FrameModuleDeathTest, the_last_module_hands_its_tail_back) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ork_module *const module = module_record();
            ork_module **const link = module->prev_link;
            load_time_function(DT_FINI_ARRAY, DT_FINI_ARRAYSZ)();
            std::_Exit(ork_module_tot_root.tail == link && *link == nullptr ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace frame
