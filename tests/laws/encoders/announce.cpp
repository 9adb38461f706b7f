// Announce before store, for what fills a live object from another form of it, and for the small
// types. What the primitives store silently, and what is told to go unannounced, is listed here by
// name.
#include "behaviour/encoders/values.h"
#include "laws/frame/announce_watch.h"

namespace frame {

namespace {

// Stores into an object that is there that nobody hears of.
struct Silent {
  bool values;   /* of scalars, objects, enums and texts in the record's own block */
  bool bits;     /* of the flag set */
  bool counters; /* of arrays */
  bool headers;  /* type, variant and flags, of the record and of what is embedded in it */
  bool states;   /* the fields' own state bytes, and `whole` of an array */
};
// The primitives read off the wire in silence, and state bytes and header follow them. A document
// has values alone: a bit is set in the flag set by its own function, and an array by its own set.
constexpr Silent off_the_wire = {true, true, true, true, true};
constexpr Silent from_a_document = {true, false, false, false, false};

using Visit = std::function<void(const void*, size_t)>;

void for_each_silent(const Silent& silent, const told::Record& record, uint8_t* obj, uint8_t* state,
                     const Visit& visit) {
  const auto bytes_at = [&](bool is_silent, uint8_t* at, size_t size) {
    if (is_silent) {
      visit(at, size);
    }
  };
  bytes_at(silent.headers, obj, ORK_OBJECT_HEADER_SIZE);
  for (const told::Field& field : record.fields) {
    uint8_t* const at = obj + field.offset;
    const told::Small* const small = told::small(field.type);
    if (state && field.state >= 0) {
      bytes_at(silent.states, state + field.state, 1);
    }
    if (field.cls == Class::object && told::is_record(field)) {
      for_each_silent(silent, *told::record(field.type), at, state ? state + field.nested : nullptr,
                      visit);
    } else if (small) {
      bytes_at(silent.headers, at, ORK_OBJECT_HEADER_SIZE);
      bytes_at(small->flags ? silent.bits : silent.values, at + (small->flags ? 11 : 12),
               small->flags ? 1 : 4);
    } else if (field.cls == Class::counter) {
      bytes_at(silent.counters, at, field.width);
    } else if (field.cls != Class::value_array && field.cls != Class::record_array) {
      bytes_at(silent.values, at, field.width);
    }
  }
}

// Old elements let their blocks of element bytes go before the block that they lie in is announced.
void allow_old_elements(Watch& watch, const told::Record& record, uint8_t* obj) {
  uint32_t count = 0;
  for (const told::Field& field : record.fields) {
    if (field.cls == Class::counter) {
      count = field.width == 1 ? obj[field.offset] : load<uint32_t>(obj + field.offset);
    } else if (field.cls == Class::record_array && count != 0) {
      const told::Record& element = *told::record(field.type);
      auto* const states = load<uint8_t*>(obj + field.offset) + count * field.width;
      for (uint32_t i = 0; i < count; ++i) {
        allow_element_pointers(watch, element, states + i * element.newest().state);
      }
    } else if (field.cls == Class::object && told::is_record(field)) {
      allow_old_elements(watch, *told::record(field.type), obj + field.offset);
    }
  }
}

void fill(SpiedHandle& h, const Type& type, void* obj, uint32_t elements, const std::string& path) {
  encoders::Filler filler(h, elements);
  filler.fill(type.schema, obj, path);
  ASSERT_EQ(filler.err, 0u);
}

const encoders::Calls& calls(const Type& type) { return encoders::calls_of(type.told.name); }

class Announce : public testing::TestWithParam<unsigned> {
 protected:
  const Type& type() const { return frame::type(wayfind_records[GetParam()].name); }

  // Makes a filled object another one, with every change of the arrays' lengths, by the call that
  // `prepare` gives for handle, source and object.
  template <class Prepare>
  void expect_announced(const Silent& silent, bool reuse, Prepare prepare) const {
    for (const Mode& mode : kit::all_modes()) {
      for (const auto& [had, gets] : {std::pair{2u, 2u}, {2u, 3u}, {3u, 2u}, {2u, 0u}, {0u, 2u}}) {
        if (had != gets && !encoders::holds_arrays(type().schema)) {
          continue;
        }
        SpiedHandle h(mode);
        if (!reuse && encoders::nests_arrays(type().schema)) {
          h.expect_leaks(); /* the elements' own arrays are not destroyed */
        }
        const SpiedObject obj(h, type());
        const SpiedObject src(h, type(), "src");
        fill(h, type(), obj.get(), had, "old");
        fill(h, type(), src.get(), gets, "new one");
        const std::function<void()> call = prepare(h, src.get(), obj.get());
        const std::string where = type().told.name + ", " + std::to_string(had) + " to " +
                                  std::to_string(gets) + ", " + mode.text();
        uint8_t* const state = h.tracking() ? obj.state() : nullptr;
        spy::Log log;
        Watch watch(log);
        watch_object(watch, h, type(), obj.get());
        watch_object(watch, h, type(), src.get());
        const auto allow = [&](const void* at, size_t size) { watch.allow(at, size); };
        for_each_silent(silent, type().told, bytes(obj.get()), state, allow);
        if (state && silent.states) {
          allow_old_elements(watch, type().told, bytes(obj.get()));
        }
        call();
        watch.check();
        EXPECT_EQ(h.err, 0u) << where;
        EXPECT_TRUE(watch.changed() || gets == 0 || !log.announcements().empty()) << where;
        EXPECT_TRUE(watch.unannounced().empty()) << where << ":" << list(watch.unannounced());
        EXPECT_EQ(told_of(log, silent, bytes(obj.get()), state), "") << where;
      }
    }
  }

 private:
  // Announcements of what is silent. An enum's value is announced when it is there, and stored
  // once more.
  std::string told_of(const spy::Log& log, Silent silent, uint8_t* obj, uint8_t* state) const {
    std::string found;
    silent.values = silent.values && !silent.headers;
    for_each_silent(silent, type().told, obj, state, [&](const void* at, size_t size) {
      const auto* const begin = static_cast<const uint8_t*>(at);
      for (const spy::Announcement& a : log.announcements()) {
        if (a.address < begin + size && begin < a.address + a.length) {
          found += " " + spy::symbol(a.address);
        }
      }
    });
    return found;
  }
};

TEST_P(Announce, unmarshal_stores_no_pointer_and_into_no_block_unannounced) {
  for (const bool reuse : {false, true}) {
    expect_announced(off_the_wire, reuse, [&](SpiedHandle& h, void* src, void* obj) {
      return [&h, obj, reuse, this, image = encoders::marshalled(h, calls(type()), src)] {
        const auto length = static_cast<int32_t>(image.size());
        EXPECT_EQ(calls(type()).unmarshal(h, instance, image.data(), obj, length, reuse, &h.err),
                  image.size());
      };
    });
  }
}

TEST_P(Announce, clone_into_a_filled_slot_stores_no_pointer_unannounced) {
  expect_announced(off_the_wire, false, [&](SpiedHandle& h, void* src, void* obj) {
    return [&h, src, obj, this] {
      encoders::Bytes workspace(encoders::ample + 1);
      void* slot = obj;
      calls(type()).clone_internal(h, instance, src, &slot, workspace.data(), encoders::ample,
                                   &h.err);
      EXPECT_EQ(slot, obj);
    };
  });
}

TEST_P(Announce, from_xml_stores_values_in_silence_and_nothing_else) {
  expect_announced(from_a_document, false, [&](SpiedHandle& h, void* src, void* obj) {
    return [&h, obj, this,
            document = std::shared_ptr<ork_xml>(
                encoders::parsed(encoders::as_xml(h, calls(type()), src)))] {
      const std::string path = "//" + type().told.name;
      calls(type()).from_xml(h, instance, path.c_str(), document.get(), obj, &h.err, nullptr, 0);
    };
  });
}

TEST_P(Announce, offset_update_and_remove_store_nothing_unannounced) {
  for (const bool shared : {false, true}) {
    SpiedHandle h({.shared = shared, .tracking = ORK_TRACKING_ON});
    const SpiedObject obj(h, type());
    fill(h, type(), obj.get(), 2, "had");
    bool embeds = false;
    for (const told::Field& field : type().told.fields) {
      if (field.cls == Class::object && told::is_record(field)) {
        embeds = true;
        header(bytes(obj.get()) + field.offset).obj_flags &= static_cast<uint8_t>(~OBJ_STTR_OFFSET);
      }
    }
    const Snapshot before = obj.snapshot();
    spy::Log log;
    Watch watch(log);
    watch_object(watch, h, type(), obj.get());
    type().call("_offset_remove", {word(h), instance, obj.word(), word(&h.err)});
    watch.check();
    EXPECT_TRUE(before.unchanged()) << type().told.name;
    type().call("_offset_update", {word(h), instance, obj.word(), word(obj.state()), word(&h.err)});
    watch.check();
    EXPECT_EQ(before.unchanged(), !embeds) << type().told.name;
    EXPECT_TRUE(watch.unannounced().empty())
        << type().told.name << ":" << list(watch.unannounced());
    EXPECT_EQ(h.err, 0u);
  }
}

TEST_P(Announce, what_reads_a_record_stores_nothing_in_it) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    const SpiedObject obj(h, type());
    fill(h, type(), obj.get(), 2, "had");
    encoders::Bytes workspace(encoders::ample + 1);
    void* slot = nullptr;
    spy::Log log;
    Watch watch(log);
    watch_object(watch, h, type(), obj.get());
    encoders::marshalled(h, calls(type()), obj.get());
    encoders::printed(h, calls(type()), obj.get());
    encoders::as_xml(h, calls(type()), obj.get());
    calls(type()).len(h, instance, obj.get());
    calls(type()).compare(obj.get(), obj.get());
    calls(type()).hash(obj.get(), 0);
    EXPECT_TRUE(log.announcements().empty()) << type().told.name;
    calls(type()).clone(h, instance, obj.get(), &slot, workspace.data(), encoders::ample, &h.err);
    watch.check();
    EXPECT_TRUE(watch.unannounced().empty())
        << type().told.name << ", " << mode.text() << ":" << list(watch.unannounced());
    const encoders::Object clone(h, calls(type()), slot);
  }
}

INSTANTIATE_TEST_SUITE_P(Records, Announce, testing::Range(0U, wayfind_record_count),
                         encoders::short_name);

// An element that is there is filled by a clone as any target of one; all that makes place for it
// is announced.
TEST(AnnouncedElement, filled_by_a_clone_is_marked_and_placed_announced) {
  for (const Mode& mode : kit::all_modes()) {
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::record_array) {
        return;
      }
      const Type& element = type(f.told.type);
      for (const uint32_t index : {0u, 3u}) {
        SpiedHandle h(mode);
        h.expect_leaks(); /* the arrays inside the element that is filled */
        const SpiedObject obj(h, f.type);
        const SpiedObject src(h, element, "src");
        fill(h, f.type, obj.get(), 2, "had");
        fill(h, element, src.get(), 1, "gets");
        auto* const block = load<uint8_t*>(bytes(obj.get()) + f.told.offset);
        uint8_t* const states = h.tracking() ? block + 2 * f.told.width : nullptr;
        spy::Log log;
        Watch watch(log);
        watch_object(watch, h, f.type, obj.get());
        watch_object(watch, h, element, src.get());
        for_each_silent(off_the_wire, element.told, block, states,
                        [&](const void* at, size_t size) { watch.allow(at, size); });
        f.call("_set_cr", {word(h), obj.word(), index, src.word(), 0});
        watch.check();
        EXPECT_EQ(h->cr_error, 0u);
        EXPECT_TRUE(watch.unannounced().empty()) << f.name() << " (" << index << "), "
                                                 << mode.text() << ":" << list(watch.unannounced());
      }
    });
  }
}

}  // namespace

}  // namespace frame
