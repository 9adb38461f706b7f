// Every record written by every release and read by every other, with state bytes or without on
// either side.
#include <algorithm>

#include "laws/encoders/images.h"
#include "laws/encoders/old_storage.h"

namespace {

using namespace encoders;

constexpr uint32_t elements = 2;

unsigned deepest_inside(const wayfind_record& record) {
  unsigned deepest = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    if (record.fields[i].record != nullptr) {
      deepest = std::max(deepest, deepest_variant(*record.fields[i].record));
    }
  }
  return deepest;
}

bool is_embedded(const wayfind_field& field) {
  return field.cls == WAYFIND_OBJECT && field.record != nullptr;
}

unsigned deepest_embedded(const wayfind_record& record) {
  unsigned deepest = 0;
  for (unsigned i = 0; i < record.field_count; ++i) {
    if (is_embedded(record.fields[i])) {
      const wayfind_record& child = *record.fields[i].record;
      deepest = std::max({deepest, child.variants - 1U, deepest_embedded(child)});
    }
  }
  return deepest;
}

// One pair of releases: the record at variant written with what is in it at variant inside, read in
// storage of layout, where no record in the record takes more than variant cap.
struct Pair {
  const Calls* calls;
  unsigned written;
  unsigned inside;
  unsigned layout;
  unsigned cap;
  ork_tracking writer;
  ork_tracking reader;

  unsigned common() const { return std::min(written, layout); }
  unsigned common_inside() const { return std::min(inside, cap); }
};

std::string text(const Pair& pair, const char* tail) {
  return std::string(pair.calls->name()) + " variant " + std::to_string(pair.written) +
         ", inside " + std::to_string(pair.inside) + ", read in layout " +
         std::to_string(pair.layout) + ", inside up to " + std::to_string(pair.cap) +
         ", writer tracks " + std::to_string(pair.writer == ORK_TRACKING_ON) + ", reader tracks " +
         std::to_string(pair.reader == ORK_TRACKING_ON) + ", " + tail;
}

Bytes written_image(const Pair& pair, unsigned variant, unsigned inside, ork_tracking tracking) {
  const TypeList list = release_list(inside, pair.calls->name(), static_cast<int>(variant));
  const Handle handle([&](ork_options& options) {
    options.tracking = tracking;
    options.release = list.get();
  });
  return marshalled(handle, *pair.calls, filled(handle, *pair.calls, elements).get());
}

// What the reader can write again: all that the two share, without states and with them.
struct Shared {
  explicit Shared(const Pair& pair)
      : plain(written_image(pair, pair.common(), pair.common_inside(), ORK_TRACKING_OFF)),
        tracked(written_image(pair, pair.common(), pair.common_inside(), ORK_TRACKING_ON)) {}

  Bytes plain;
  Bytes tracked;
};

// Visits the embedded records that both sides know: visit(record, object, its state bytes).
template <class Visit>
void for_each_inside(const Pair& pair, const wayfind_record& record, uint8_t* object,
                     uint8_t* states, unsigned shared, Visit visit) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (is_embedded(field) && field.variant <= shared) {
      visit(*field.record, object + field.offset, states + field.nested);
      for_each_inside(pair, *field.record, object + field.offset, states + field.nested,
                      pair.common_inside(), visit);
    }
  }
}
template <class Visit>
void for_each_inside(const Pair& pair, void* object, unsigned shared, Visit visit) {
  const wayfind_record& record = *pair.calls->schema;
  auto* const bytes = static_cast<uint8_t*>(object);
  for_each_inside(pair, record, bytes, bytes + record.layouts[pair.layout].body, shared, visit);
}

void add_fields(const Pair& pair, const wayfind_record& record, const uint8_t* object,
                const uint8_t* states, unsigned above, unsigned upto, Bytes& result) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.variant > above && field.variant <= upto) {
      result.insert(result.end(), object + field.offset, object + field.offset + field.width);
      if (pair.reader == ORK_TRACKING_ON) {
        const size_t size = field.kind == WAYFIND_RECORD
                                ? field.nested - field.state +
                                      field.record->layouts[field.record->variants - 1].state
                                : 1;
        result.insert(result.end(), states + field.state, states + field.state + size);
      }
    }
  }
}

// What the reader's storage holds for fields that the two do not share.
Bytes apart(const Pair& pair, void* object) {
  const wayfind_record& record = *pair.calls->schema;
  auto* const bytes = static_cast<uint8_t*>(object);
  Bytes result;
  add_fields(pair, record, bytes, bytes + record.layouts[pair.layout].body, pair.common(),
             pair.layout, result);
  for_each_inside(pair, object, pair.common(),
                  [&](const wayfind_record& child, const uint8_t* at, const uint8_t* states) {
                    add_fields(pair, child, at, states, pair.common_inside(), child.variants - 1U,
                               result);
                  });
  return result;
}

// The records inside as an older release made them, in what they hold as in what they take.
void make_older_inside(const Pair& pair, void* object) {
  for_each_inside(
      pair, object, pair.layout, [&](const wayfind_record& child, uint8_t* at, const uint8_t*) {
        auto& header = *reinterpret_cast<ork_object*>(at);
        header.variant_cap = static_cast<uint8_t>(std::min(pair.cap, child.variants - 1U));
        header.variant = static_cast<int8_t>(header.variant_cap);
      });
}

void expect_headers_inside(const Pair& pair, void* object) {
  for_each_inside(
      pair, object, pair.common(),
      [&](const wayfind_record& child, const uint8_t* at, const uint8_t*) {
        const auto& header = *reinterpret_cast<const ork_object*>(at);
        EXPECT_EQ(header.variant,
                  static_cast<int8_t>(std::min(pair.common_inside(), child.variants - 1U)))
            << child.name;
        EXPECT_EQ(header.variant_cap, std::min(pair.cap, child.variants - 1U)) << child.name;
      });
}

void expect_states(const Pair& pair, const Handle& reader, void* object, const std::string& root) {
  const wayfind_record& record = *pair.calls->schema;
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.variant <= pair.common() &&
        (field.cls == WAYFIND_VALUE || field.cls == WAYFIND_OBJECT || field.cls == WAYFIND_TEXT)) {
      uint32_t err = 0;
      EXPECT_EQ(function<uint8_t(ork_handle*, uint32_t, void*, uint32_t*)>(
                    field.functions, "_state_flag_get")(reader, instance, object, &err),
                state_of(root + "/" + field.name))
          << field.name;
    }
  }
}

// A record that was read down to an older variant keeps its newer arrays when it is destroyed.
void make_newest(const wayfind_record& record, void* object, unsigned variant) {
  auto& header = *static_cast<ork_object*>(object);
  header.variant = static_cast<int8_t>(variant);
  header.variant_cap = static_cast<uint8_t>(variant);
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (is_embedded(field) && field.variant <= variant) {
      make_newest(*field.record, static_cast<uint8_t*>(object) + field.offset,
                  field.record->variants - 1U);
    }
  }
}

void expect_read(const Pair& pair, const Bytes& image, const Shared& shared) {
  const Calls& calls = *pair.calls;
  const TypeList list = release_list(9, calls.name(), static_cast<int>(pair.layout));
  const Handle reader([&](ork_options& options) {
    options.tracking = pair.reader;
    options.release = list.get();
  });
  const Object target = old_record(reader, calls, pair.layout);
  Filler(reader, nests_arrays(*calls.schema) ? 0 : 1).fill(*calls.schema, target.get(), "before");
  make_older_inside(pair, target.get());
  const Bytes before = apart(pair, target.get());

  uint32_t err = 0;
  const std::unique_ptr<uint8_t[]> exact(new uint8_t[image.size()]);
  std::memcpy(exact.get(), image.data(), image.size());
  ASSERT_EQ(calls.unmarshal(reader, instance, exact.get(), target.get(),
                            static_cast<int32_t>(image.size()), 0, &err),
            image.size());
  ASSERT_EQ(err, 0u);

  EXPECT_EQ(target.header().variant, static_cast<int8_t>(pair.common()));
  EXPECT_EQ(target.header().variant_cap, pair.layout);
  EXPECT_EQ(target.header().obj_flags & OBJ_STATE_TRACKED,
            pair.reader == ORK_TRACKING_ON ? OBJ_STATE_TRACKED : 0);
  expect_headers_inside(pair, target.get());
  EXPECT_EQ(apart(pair, target.get()), before) << "fields that the image does not hold";
  if (pair.reader == ORK_TRACKING_ON && pair.writer == ORK_TRACKING_ON) {
    EXPECT_EQ(marshalled(reader, calls, target.get()), shared.tracked);
  } else if (pair.reader == ORK_TRACKING_ON) {
    expect_states(pair, reader, target.get(), "before");
  }
  ork_handle_set_tracking(reader, ORK_TRACKING_OFF);
  EXPECT_EQ(marshalled(reader, calls, target.get()), shared.plain);
  ork_handle_set_tracking(reader, pair.reader);
  make_newest(*calls.schema, target.get(), pair.layout);
}

// The pair with the image as it is, and with 1 to 64 unknown bytes behind each record in it.
unsigned run(const Pair& pair) {
  const Bytes image = written_image(pair, pair.written, pair.inside, pair.writer);
  const Shared shared(pair);
  {
    SCOPED_TRACE(text(pair, "no tail"));
    expect_read(pair, image, shared);
  }
  unsigned combinations = 1;
  const std::vector<Span> spans = ImageWalk(image, *pair.calls->schema).spans();
  for (const Span& span : spans) {
    const std::string seed = text(pair, std::to_string(span.begin).c_str());
    const Bytes tail = bytes_of(seed, 1 + hash_of(seed) % 64);
    const std::string told =
        "tail of " + std::to_string(tail.size()) + " at " + std::to_string(span.end);
    SCOPED_TRACE(text(pair, told.c_str()));
    expect_read(pair, with_tail(image, spans, span, tail), shared);
    ++combinations;
  }
  return combinations;
}

// Every pair of releases that the record's own variants, those of the records in it and the two
// modes make.
template <class Visit>
void for_each_pair(const Calls& calls, Visit visit) {
  const unsigned variants = calls.schema->variants;
  Pair pair{};
  pair.calls = &calls;
  for (pair.written = 0; pair.written < variants; ++pair.written) {
    for (pair.inside = 0; pair.inside <= deepest_inside(*calls.schema); ++pair.inside) {
      for (pair.layout = 0; pair.layout < variants; ++pair.layout) {
        // An element always has storage of the newest layout.
        const unsigned newest = deepest_embedded(*calls.schema);
        for (unsigned below = 0; below <= newest; ++below) {
          pair.cap = below == 0 ? deepest_inside(*calls.schema) : newest - below;
          for (const ork_tracking writer : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
            for (const ork_tracking reader : {ORK_TRACKING_OFF, ORK_TRACKING_ON}) {
              pair.writer = writer;
              pair.reader = reader;
              visit(pair);
            }
          }
        }
      }
    }
  }
}

TEST(ReleaseMatrix, every_reader_takes_what_both_know_and_lands_on_the_jump) {
  unsigned pairs = 0;
  unsigned combinations = 0;
  for (const Calls& calls : all_records()) {
    for_each_pair(calls, [&](const Pair& pair) {
      combinations += run(pair);
      ++pairs;
    });
    if (HasFailure()) {
      return;
    }
  }
  std::printf("release matrix: %u pairs of releases, %u combinations with tails\n", pairs,
              combinations);
  EXPECT_EQ(pairs, 756u);
  EXPECT_EQ(combinations, 4724u);
}

}  // namespace
