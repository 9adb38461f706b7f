// Announce before store: whatever changes in a live object lies in a range that was announced before it changed.
#include <set>

#include "frame_calls.h"

namespace frame_law {

namespace {

// Stores that are made without a word, by the end of the function's name. Not in the list because only half of it: an array's _set_cr with use_set
// 0 reads the element from a wire image, and there the primitives store silently.
const std::set<std::string> silent = {
    "_set_all_state_tracking_flag", /* the whole state block in one fill */
    "_state_flag_set_arr",          /* the bytes at the start of an array's entry */
};

// Memory that is somebody's, watched while a function runs.
class Watch {
public:
    explicit Watch(spy::Log &log) {
        log.on_announcement = [this](const spy::Announcement &a) {
            check();
            announced_.push_back(a);
        };
        log.on_free = [this](const void *block) {
            check();
            std::erase_if(regions_, [&](const Snapshot &region) { return region.address() == block; });
        };
    }

    void region(const void *address, size_t size) {
        if (address) {
            regions_.emplace_back(address, size);
        }
    }

    // Bytes that may change without a word here.
    void allow(const void *address, size_t size) { announced_.push_back({static_cast<const uint8_t *>(address), size, nullptr}); }

    void check() {
        for (const Snapshot &region : regions_) {
            for (size_t i = 0; i < region.before().size(); ++i) {
                const uint8_t *const at = region.address() + i;
                if (*at != region.before()[i] && !covered(at)) {
                    unannounced_.insert(spy::symbol(at));
                }
            }
        }
    }

    const std::set<std::string> &unannounced() const { return unannounced_; }

private:
    bool covered(const uint8_t *at) const {
        return std::any_of(announced_.begin(), announced_.end(),
                           [&](const spy::Announcement &a) { return at >= a.address && at < a.address + a.length; });
    }

    std::vector<Snapshot> regions_;
    std::vector<spy::Announcement> announced_;
    std::set<std::string> unannounced_;
};

// An array's two blocks; elements are those of the entry's pointer.
void watch_arrays(Watch &watch, const Handle &h, const told::Record &record, uint8_t *obj, uint8_t *state) {
    uint32_t count = 0;
    for (const told::Field &field : record.fields) {
        if (field.cls == Class::counter) {
            count = field.width == 1 ? obj[field.offset] : load<uint32_t>(obj + field.offset);
        } else if (field.cls == Class::value_array || field.cls == Class::record_array) {
            const told::Record *const element = told::record(field.type);
            const size_t each = field.width + (h.tracking() && element ? element->newest().state : 0u);
            auto *const block = load<uint8_t *>(obj + field.offset);
            watch.region(block, block ? count * each : 0);
            if (block) {
                spy::name(block, count * each, "array");
            }
            if (h.tracking()) {
                auto *const elements = load<uint8_t *>(state + field.state + 8);
                watch.region(elements, count);
                if (elements) {
                    spy::name(elements, count, "elements");
                }
            }
        } else if (field.cls == Class::object && told::is_record(field)) {
            watch_arrays(watch, h, *told::record(field.type), obj + field.offset, state + field.nested);
        }
    }
}

void watch_object(Watch &watch, Handle &h, const Type &type, void *obj) {
    watch.region(obj, type.size(h));
    watch_arrays(watch, h, type.told, bytes(obj), bytes(obj) + type.told.newest().body);
}

std::string list(const std::set<std::string> &places) {
    std::string text;
    for (const std::string &place : places) {
        text += " " + place;
    }
    return text;
}

// Two elements in every array that the record has, its embedded records' too.
void fill_arrays(Handle &h, const Type &type, uint64_t obj) {
    for (const told::Field &told : type.told.fields) {
        const Field f = field(type, told.name);
        if (f.is_array()) {
            Source src(h, f, "element");
            f.call("_set", {word(h), instance, obj, 1, src.word(), word(&h.err)});
        } else if (f.told.cls == Class::object && f.is_record()) {
            fill_arrays(h, frame_law::type(f.told.type), obj + f.told.offset);
        }
    }
}

}  // namespace

TEST(FrameLawAnnounce, accessors_store_nothing_that_was_not_announced) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for_each_field([&](const Field &f) {
            for (const uint64_t index : {0u, 4u}) {
                if (index != 0 && !f.is_array()) {
                    continue;
                }
                Outputs out;
                // One call for each fresh object, so that what one leaves is not in another's way.
                size_t count = 1;
                for (size_t i = 0; i < count; ++i) {
                    Object obj(h, f.type);
                    Source src(h, f);
                    if (f.is_array()) {
                        f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
                        if (f.told.cls == Class::record_array) {
                            fill_arrays(h, type(f.told.type), src.word());
                        }
                    } else if (f.is_record()) {
                        fill_arrays(h, type(f.told.type), src.word());
                    }
                    ASSERT_EQ(h.err, 0u) << f.name();
                    const auto calls = accessors(f, h, obj.get(), src, index, out);
                    count = calls.size();
                    const bool by_clone = f.told.cls == Class::record_array && calls[i].cr && calls[i].words.back() == 0;
                    if (silent.contains(calls[i].suffix) || by_clone) {
                        continue;
                    }
                    {
                        spy::Log log;
                        Watch watch(log);
                        watch_object(watch, h, f.type, obj.get());
                        if (f.is_record()) {
                            watch_object(watch, h, type(f.told.type), reinterpret_cast<void *>(src.word()));
                        }
                        if (f.told.cls == Class::text && calls[i].suffix.starts_with("_set")) {
                            // The end of a shorter text comes behind the mark without a word.
                            watch.allow(bytes(obj.get()) + f.told.offset + (calls[i].cr ? 4 : 3), 1);
                        }
                        f.call(calls[i].suffix, calls[i].words);
                        watch.check();
                        EXPECT_TRUE(watch.unannounced().empty())
                            << f.name() << calls[i].suffix << " (" << index << "), " << mode.text() << ":" << list(watch.unannounced());
                    }
                    h.err = 0;
                    h->cr_error = 0;
                }
            }
        });
    }
}

TEST(FrameLawAnnounce, functions_of_the_whole_record_store_nothing_that_was_not_announced) {
    for (const Mode &mode : fixture::all_modes()) {
        for (const Type &type : types()) {
            for (const char *const suffix : {"_set", "_post_copyout_cleanup", "_set_all", "_set_instance_embedded", "_adjust_variant"}) {
                Handle h(mode);
                h.expect_leaks(); /* cleanup without the copy before it lets arrays go */
                Object obj(h, type);
                Object src(h, type, "src");
                fill_arrays(h, type, src.word());
                ASSERT_EQ(h.err, 0u);
                std::vector<uint64_t> words = {word(h), instance, obj.word()};
                const std::string name = suffix;
                if (name == "_set" || name == "_post_copyout_cleanup") {
                    words.push_back(src.word());
                } else if (name == "_set_all") {
                    for (const told::Field &field : type.told.fields) {
                        if (field.cls == Class::value) {
                            words.push_back(1);
                        }
                    }
                } else if (name == "_adjust_variant") {
                    header(obj.get()).variant = 0;
                }
                if (name != "_set_instance_embedded") {
                    words.push_back(word(&h.err));
                }
                spy::Log log;
                Watch watch(log);
                watch_object(watch, h, type, obj.get());
                watch_object(watch, h, type, src.get());
                type.call(suffix, words);
                watch.check();
                EXPECT_EQ(h.err, 0u) << type.told.name << suffix;
                EXPECT_TRUE(watch.unannounced().empty())
                    << type.told.name << suffix << ", " << mode.text() << ":" << list(watch.unannounced());
            }
        }
    }
}

TEST(FrameLawAnnounce, initialize_with_notify_stores_nothing_that_was_not_announced) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        fixture::function<void *(ork_handle *, uint32_t)>(types()[0].schema.functions,
                                                          "_create"); /* the table is filled by the first object */
        for (const Type &type : types()) {
            std::vector<uint64_t> block(type.told.newest().body / 8 + type.told.newest().state / 8 + 2, 0);
            void *const obj = block.data();
            spy::name(obj, block.size() * 8, "obj");
            {
                spy::Log log;
                Watch watch(log);
                watch.region(obj, block.size() * 8);
                type.call("_initialize", {word(h), instance, word(obj), word(type.schema.type), 1, 0, 0, 0, word(&h.err)});
                watch.check();
                EXPECT_EQ(h.err, 0u) << type.told.name;
                EXPECT_TRUE(watch.unannounced().empty()) << type.told.name << ", " << mode.text() << ":" << list(watch.unannounced());
            }
            fixture::function<void(ork_handle *, uint32_t, void *, uint32_t)>(type.schema.functions, "_destroy_internal")(h, instance, obj,
                                                                                                                          0);
        }
    }
}

TEST(FrameLawAnnounce, destroy_in_place_and_removal_clear_nothing_silently_but_the_element_bytes_pointer) {
    for (const Mode &mode : fixture::all_modes()) {
        Handle h(mode);
        for (const Type &type : types()) {
            void *const obj = type.create(h);
            spy::name(obj, type.size(h), "obj");
            fill_arrays(h, type, word(obj));
            {
                spy::Log log;
                Watch watch(log);
                watch.region(obj, type.size(h));
                const std::function<void(const told::Record &, uint8_t *)> allow_entries = [&](const told::Record &record, uint8_t *state) {
                    for (const told::Field &field : record.fields) {
                        if (field.cls == Class::value_array || field.cls == Class::record_array) {
                            watch.allow(state + field.state + 8, 8);
                        } else if (field.nested >= 0) {
                            allow_entries(*told::record(field.type), state + field.nested);
                        }
                    }
                };
                if (h.tracking()) {
                    allow_entries(type.told, bytes(obj) + type.told.newest().body);
                }
                fixture::function<void(ork_handle *, uint32_t, void *, uint32_t)>(type.schema.functions, "_destroy_internal")(h, instance,
                                                                                                                              obj, 0);
                watch.check();
                EXPECT_TRUE(watch.unannounced().empty()) << type.told.name << ", " << mode.text() << ":" << list(watch.unannounced());
            }
            h->free_fn(h->mem_pool, instance, obj);
        }
    }
}

TEST(FrameLawAnnounce, the_silent_stores_are_silent) {
    Handle h(fixture::tracked);
    for (const Type &type : types()) {
        Object obj(h, type);
        spy::Log log;
        type.call("_set_all_state_tracking_flag", {word(h), instance, obj.word(), 3});
        EXPECT_EQ(log.announcements().size(), 0u) << type.told.name;
        EXPECT_TRUE(std::all_of(obj.state(), obj.state() + type.told.newest().state, [](uint8_t b) { return b == 3; })) << type.told.name;
        type.call("_set_all_state_tracking_flag", {word(h), instance, obj.word(), 0});
    }
}

}  // namespace frame_law
