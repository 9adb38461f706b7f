// Every record written by every release and read by every other, with state bytes or without on either side.
#include <functional>

#include "encoders_images.h"
#include "encoders_old_storage.h"

namespace {

using namespace forms;

constexpr uint32_t elements = 2;

unsigned deepest_inside(const wayfind_record &record) {
    unsigned deepest = 0;
    for (unsigned i = 0; i < record.field_count; ++i) {
        if (record.fields[i].record != nullptr) {
            deepest = std::max(deepest, deepest_variant(*record.fields[i].record));
        }
    }
    return deepest;
}

// One pair of releases: the record at variant written with what is in it at variant inside, read in storage of layout.
struct Pair {
    const Calls *calls;
    unsigned written;
    unsigned inside;
    unsigned layout;
    ork_tracking writer;
    ork_tracking reader;

    unsigned common() const { return std::min(written, layout); }
};

std::string text(const Pair &pair, const char *tail) {
    return std::string(pair.calls->name()) + " variant " + std::to_string(pair.written) + ", inside " + std::to_string(pair.inside) +
           ", read in layout " + std::to_string(pair.layout) + ", writer tracks " + std::to_string(pair.writer == ORK_TRACKING_ON) +
           ", reader tracks " + std::to_string(pair.reader == ORK_TRACKING_ON) + ", " + tail;
}

Bytes written_image(const Pair &pair, unsigned variant, ork_tracking tracking) {
    const TypeList list = release_list(pair.inside, pair.calls->name(), static_cast<int>(variant));
    const Handle handle(Handle::Options{.tracking = tracking, .release = list.get()});
    return marshalled(handle, *pair.calls, filled(handle, *pair.calls, elements).get());
}

// What the reader's storage holds for fields that the two do not share.
Bytes apart(const Pair &pair, const void *object) {
    const wayfind_record &record = *pair.calls->schema;
    const wayfind_layout &sizes = record.layouts[pair.layout];
    const auto *const bytes = static_cast<const uint8_t *>(object);
    Bytes result;
    for (unsigned i = 0; i < record.field_count; ++i) {
        const wayfind_field &field = record.fields[i];
        if (field.variant > pair.common() && field.variant <= pair.layout) {
            result.insert(result.end(), bytes + field.offset, bytes + field.offset + field.width);
            if (pair.reader == ORK_TRACKING_ON) {
                const size_t size =
                    field.kind == WAYFIND_RECORD ? field.nested - field.state + field.record->layouts[field.record->variants - 1].state : 1;
                const uint8_t *const state = bytes + sizes.body + field.state;
                result.insert(result.end(), state, state + size);
            }
        }
    }
    return result;
}

void expect_states(const Pair &pair, const Handle &reader, void *object, const std::string &root) {
    const wayfind_record &record = *pair.calls->schema;
    for (unsigned i = 0; i < record.field_count; ++i) {
        const wayfind_field &field = record.fields[i];
        if (field.variant <= pair.common() && (field.cls == WAYFIND_VALUE || field.cls == WAYFIND_OBJECT || field.cls == WAYFIND_TEXT)) {
            uint32_t err = 0;
            EXPECT_EQ(find<uint8_t(ork_handle *, uint32_t, void *, uint32_t *)>(field.functions, "_state_flag_get")(reader, instance,
                                                                                                                    object, &err),
                      state_of(root + "/" + field.name))
                << field.name;
        }
    }
}

// A record that was read down to an older variant keeps its newer arrays when it is destroyed.
void make_newest(const wayfind_record &record, void *object, unsigned variant) {
    static_cast<ork_object *>(object)->variant = static_cast<int8_t>(variant);
    for (unsigned i = 0; i < record.field_count; ++i) {
        const wayfind_field &field = record.fields[i];
        if (field.cls == WAYFIND_OBJECT && field.record != nullptr && field.variant <= variant) {
            make_newest(*field.record, static_cast<uint8_t *>(object) + field.offset, field.record->variants - 1U);
        }
    }
}

void expect_read(const Pair &pair, const Bytes &image) {
    const Calls &calls = *pair.calls;
    const TypeList list = release_list(9, calls.name(), static_cast<int>(pair.layout));
    const Handle reader(Handle::Options{.tracking = pair.reader, .release = list.get()});
    const Object target = old_record(reader, calls, pair.layout);
    Filler(reader, nests_arrays(*calls.schema) ? 0 : 1).fill(*calls.schema, target.get(), "before");
    const Bytes before = apart(pair, target.get());

    uint32_t err = 0;
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[image.size()]);
    std::memcpy(exact.get(), image.data(), image.size());
    ASSERT_EQ(calls.unmarshal(reader, instance, exact.get(), target.get(), static_cast<int32_t>(image.size()), 0, &err), image.size());
    ASSERT_EQ(err, 0u);

    EXPECT_EQ(target.header().variant, static_cast<int8_t>(pair.common()));
    EXPECT_EQ(target.header().variant_cap, pair.layout);
    EXPECT_EQ(target.header().obj_flags & OBJ_STATE_TRACKED, pair.reader == ORK_TRACKING_ON ? OBJ_STATE_TRACKED : 0);
    EXPECT_EQ(apart(pair, target.get()), before) << "fields that the image does not hold";
    if (pair.reader == ORK_TRACKING_ON && pair.writer == ORK_TRACKING_ON) {
        EXPECT_EQ(marshalled(reader, calls, target.get()), written_image(pair, pair.common(), ORK_TRACKING_ON));
    } else if (pair.reader == ORK_TRACKING_ON) {
        expect_states(pair, reader, target.get(), "before");
    }
    ork_handle_set_tracking(reader, ORK_TRACKING_OFF);
    EXPECT_EQ(marshalled(reader, calls, target.get()), written_image(pair, pair.common(), ORK_TRACKING_OFF));
    ork_handle_set_tracking(reader, pair.reader);
    make_newest(*calls.schema, target.get(), pair.layout);
}

// The pair with the image as it is, and with 1 to 64 unknown bytes behind each record in it.
unsigned run(const Pair &pair) {
    const Bytes image = written_image(pair, pair.written, pair.writer);
    {
        SCOPED_TRACE(text(pair, "no tail"));
        expect_read(pair, image);
    }
    unsigned combinations = 1;
    const std::vector<Span> spans = ImageWalk(image, *pair.calls->schema).spans();
    for (const Span &span : spans) {
        const std::string seed = text(pair, std::to_string(span.begin).c_str());
        const Bytes tail = bytes_of(seed, 1 + hash_of(seed) % 64);
        const std::string told = "tail of " + std::to_string(tail.size()) + " at " + std::to_string(span.end);
        SCOPED_TRACE(text(pair, told.c_str()));
        expect_read(pair, with_tail(image, spans, span, tail));
        ++combinations;
    }
    return combinations;
}

TEST(ReleaseMatrix, EveryReaderTakesWhatBothKnowAndLandsOnTheJump) {
    unsigned pairs = 0;
    unsigned combinations = 0;
    for (const Calls &calls : all_records()) {
        for (unsigned written = 0; written < calls.schema->variants; ++written) {
            for (unsigned inside = 0; inside <= deepest_inside(*calls.schema); ++inside) {
                for (unsigned layout = 0; layout < calls.schema->variants; ++layout) {
                    for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
                        for (const ork_tracking reader : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
                            combinations += run({&calls, written, inside, layout, writer, reader});
                            ++pairs;
                            if (HasFatalFailure()) {
                                return;
                            }
                        }
                    }
                }
            }
        }
    }
    std::printf("release matrix: %u pairs of releases, %u combinations with tails\n", pairs, combinations);
    EXPECT_EQ(pairs, 532u);
    EXPECT_EQ(combinations, 3172u);
}

}  // namespace
