// Create and destroy balance: memory, state distances and statistics, for every record, variant and mode.
#include "frame_fields.h"

namespace frame_law {

namespace {

using Counts = std::map<std::pair<std::string, uint32_t>, std::pair<uint64_t, uint64_t>>; /* created, destroyed, by type and variant */

Counts counts(ork_storage *storage) {
    Counts all;
    ork_statistics_each(
        storage,
        [](void *ctx, const char *name, uint32_t variant, uint64_t created, uint64_t destroyed) {
            auto &entry = (*static_cast<Counts *>(ctx))[{name, variant}];
            entry.first += created;
            entry.second += destroyed;
        },
        &all);
    return all;
}

// What making and destroying a record of that variant counts. Enums and the flag set inside are made and never destroyed, and so is every field
// that the variant lacks.
void expect_counts(Counts &delta, const told::Record &record, uint32_t variant, bool destroyed) {
    auto &own = delta[{record.name, variant}];
    own.first += 1;
    own.second += destroyed ? 1u : 0u;
    for (const told::Field &field : record.fields) {
        if (field.cls != Class::object && field.cls != Class::value) {
            continue;
        }
        if (const told::Record *const child = told::record(field.type)) {
            expect_counts(delta, *child, child->newest_variant(), destroyed && field.variant <= variant);
        } else if (told::small(field.type)) {
            delta[{field.type, 0}].first += 1;
        }
    }
}

Counts difference(const Counts &after, const Counts &before) {
    Counts delta;
    for (const auto &[key, value] : after) {
        const auto found = before.find(key);
        const auto was = found == before.end() ? std::pair<uint64_t, uint64_t>() : found->second;
        if (value != was) {
            delta[key] = {value.first - was.first, value.second - was.second};
        }
    }
    return delta;
}

}  // namespace

TEST(FrameLawLifecycle, memory_distances_and_statistics_balance) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            for (unsigned variant = 0; variant < type.told.layouts.size(); ++variant) {
                const auto domain = h.domain({{type.told.name, static_cast<int8_t>(variant)}});
                const Counts before = counts(h.storage());
                void *const obj = type.create(h);
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

TEST(FrameLawLifecycle, cr_mode_makes_and_destroys_the_same) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            const Counts before = counts(h.storage());
            void *const obj = fixture::function<void *(ork_handle *)>(type.schema.functions, "_create_cr")(h);
            ASSERT_NE(obj, nullptr);
            fixture::function<void(ork_handle *, void *)>(type.schema.functions, "_destroy_cr")(h, obj);
            Counts expected;
            expect_counts(expected, type.told, type.told.newest_variant(), true);
            EXPECT_EQ(difference(counts(h.storage()), before), expected) << type.told.name << ", " << mode.text();
            EXPECT_EQ(h->cr_error, 0u);
            EXPECT_EQ(h->cr_active, 0u);
        }
    }
}

TEST(FrameLawLifecycle, each_type_has_a_sentinel_of_its_own_that_nothing_writes) {
    Handle h;
    std::map<void *, std::string> seen;
    for (const Type &type : types()) {
        h->cr_error = 5;
        void *const sentinel = fixture::function<void *(ork_handle *)>(type.schema.functions, "_create_cr")(h);
        ASSERT_NE(sentinel, nullptr);
        EXPECT_TRUE(seen.emplace(sentinel, type.told.name).second) << type.told.name << " shares it with " << seen[sentinel];
        h->cr_error = 0;
        type.destroy(h, sentinel);
        fixture::function<void(ork_handle *, void *)>(type.schema.functions, "_destroy_cr")(h, sentinel);
        for (unsigned i = 0; i < type.told.newest().body; ++i) {
            ASSERT_EQ(bytes(sentinel)[i], 0) << type.told.name;
        }
    }
}

TEST(FrameLawLifecycle, a_new_record_is_zero_but_for_the_headers_inside_it) {
    const std::function<void(const told::Record &, std::vector<bool> &, unsigned)> mark = [&](const told::Record &record,
                                                                                              std::vector<bool> &headers, unsigned at) {
        std::fill_n(headers.begin() + at, ORK_OBJECT_HEADER_SIZE, true);
        for (const told::Field &field : record.fields) {
            if (field.cls == Class::object && told::is_record(field)) {
                mark(*told::record(field.type), headers, at + field.offset);
            } else if (told::small(field.type) || field.type == "ip_address" || field.type == "link_type") {
                std::fill_n(headers.begin() + at + field.offset, ORK_OBJECT_HEADER_SIZE, true);
            }
        }
    };
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            Object obj(h, type);
            std::vector<bool> headers(type.size(h), false);
            mark(type.told, headers, 0);
            for (size_t i = 0; i < headers.size(); ++i) {
                if (!headers[i]) {
                    ASSERT_EQ(bytes(obj.get())[i], 0) << type.told.name << " byte " << i << ", " << mode.text();
                }
            }
        }
    }
}

TEST(FrameLawLifecycle, an_allocation_that_fails_leaves_nothing_behind) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            const Counts before = counts(h.storage());
            spy::fail_alloc(1);
            EXPECT_EQ(type.create(h), nullptr);
            spy::fail_alloc(1);
            void *const sentinel = fixture::function<void *(ork_handle *)>(type.schema.functions, "_create_cr")(h);
            EXPECT_NE(sentinel, nullptr);
            EXPECT_EQ(h->cr_error, 12u);
            h->cr_error = 0;
            EXPECT_EQ(h.memory().live_blocks, 0u);
            EXPECT_TRUE(difference(counts(h.storage()), before).empty()) << type.told.name;
        }
    }
}

TEST(FrameLawSizes, sizeof_gives_the_told_bytes) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            const auto &newest = type.told.newest();
            EXPECT_EQ(type.call("_sizeof", {word(h)}), type.size(h)) << type.told.name;
            const auto sizes = [&](uint64_t with_state, uint64_t state_only) {
                return static_cast<uint32_t>(type.call("_sizeof_internal", {word(h), 0, with_state, state_only}));
            };
            EXPECT_EQ(sizes(0, 0), newest.body) << type.told.name;
            EXPECT_EQ(sizes(1, 0), type.size(h)) << type.told.name;
            EXPECT_EQ(sizes(0, 1), h.tracking() ? newest.state : 0u) << type.told.name;
            EXPECT_EQ(sizes(1, 1), h.tracking() ? newest.state : 0u) << type.told.name;
        }
    }
}

TEST(FrameLawFieldNumbers, are_in_use_from_the_variant_of_their_field_on) {
    Handle h;
    for (const Type &type : types()) {
        for (int variant = -1; variant < static_cast<int>(type.told.layouts.size()) + 1; ++variant) {
            const auto domain = h.domain({{type.told.name, static_cast<int8_t>(variant)}});
            const auto valid = [&](uint64_t number) { return static_cast<uint32_t>(type.call("_is_valid_cr", {word(h), 0, number, 1})); };
            for (const told::Field &field : type.told.fields) {
                const bool expected = field.variant == 0 || static_cast<int>(field.variant) <= variant;
                EXPECT_EQ(valid(field.number), expected ? 1u : 0u) << type.told.name << "." << field.name << " at " << variant;
            }
            EXPECT_EQ(valid(type.told.newest().bound), 0u) << type.told.name;
            EXPECT_EQ(valid(0xFFFFFFFF), 0u);
        }
    }
}

TEST(FrameLawVariantIndex, is_capped_to_the_newest) {
    for (const Type &type : types()) {
        const int newest = static_cast<int>(type.told.newest_variant());
        for (int v = -128; v < 128; ++v) {
            const int expected = v <= newest ? v : newest;
            EXPECT_EQ(static_cast<int8_t>(type.call("_variant_data_index_cap", {static_cast<uint64_t>(static_cast<uint32_t>(v))})),
                      expected)
                << type.told.name;
        }
    }
}

}  // namespace frame_law
