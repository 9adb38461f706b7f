// What is set can be got, for boundary values of every field; a field that the variant lacks gives
// 43 and touches nothing.
#include "laws/frame/fields.h"

namespace frame {

namespace {

// The bytes of obj that differ from before, apart from [from, from + length).
ptrdiff_t change_outside(const Snapshot& before, size_t from, size_t length) {
  for (size_t i = 0; i < before.before().size(); ++i) {
    if ((i < from || i >= from + length) && before.address()[i] != before.before()[i]) {
      return static_cast<ptrdiff_t>(i);
    }
  }
  return -1;
}

}  // namespace

TEST(Values, a_value_set_is_the_value_got_and_nothing_else_changes) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::value) {
        return;
      }
      SpiedObject obj(h, f.type);
      for (const uint64_t value : f.boundary_values()) {
        const Snapshot body(obj.get(), f.type.told.newest().body);
        f.call("_set_value", {word(h), instance, obj.word(), value, word(&h.err)});
        EXPECT_EQ(h.err, 0u) << f.name();
        EXPECT_EQ(change_outside(body, f.value_offset(), f.value_width()), -1) << f.name();
        EXPECT_EQ(f.call("_get_value", {word(h), instance, obj.word(), word(&h.err)}) & f.mask(),
                  value)
            << f.name();
        uint64_t raw = 0;
        std::memcpy(&raw, bytes(obj.get()) + f.value_offset(), f.value_width());
        EXPECT_EQ(raw, value) << f.name() << ", " << mode.text();
      }
      EXPECT_EQ(f.call("_get", {word(h), instance, obj.word(), word(&h.err)}),
                obj.word() + f.told.offset)
          << f.name();
      if (h.tracking()) {
        for (unsigned i = 0; i < f.type.told.newest().state; ++i) {
          EXPECT_EQ(obj.state()[i], static_cast<int>(i) == f.told.state ? 2 : 0)
              << f.name() << " state byte " << i;
        }
      }
    });
  }
}

TEST(Values, a_set_from_a_source_copies_it) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::value && f.told.cls != Class::object) {
        return;
      }
      SpiedObject obj(h, f.type);
      Source src(h, f);
      const Snapshot body(obj.get(), f.type.told.newest().body);
      f.call("_set", {word(h), instance, obj.word(), src.word(), word(&h.err)});
      EXPECT_EQ(h.err, 0u) << f.name();
      EXPECT_EQ(change_outside(body, f.told.offset, f.told.width), -1) << f.name();
      if (f.primitive().starts_with("u_int")) {
        EXPECT_EQ(std::memcmp(bytes(obj.get()) + f.told.offset, src.get(), f.told.width), 0)
            << f.name();
      }
      if (h.tracking()) {
        EXPECT_EQ(obj.state()[f.told.state], 2) << f.name();
      }
    });
  }
}

TEST(Values, a_text_of_any_length_comes_back_up_to_its_end) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::text) {
        return;
      }
      SpiedObject obj(h, f.type);
      for (const unsigned length : {f.told.width, f.told.width - 1, 1u, 0u}) {
        const std::string text(length, 'x');
        const Snapshot body(obj.get(), f.type.told.newest().body);
        f.call("_set", {word(h), instance, obj.word(), word(text.data()), length, word(&h.err)});
        EXPECT_EQ(h.err, 0u) << f.name();
        EXPECT_EQ(change_outside(body, f.told.offset, f.told.width), -1) << f.name();
        std::string out(f.told.width + 2, '#');
        f.call("_get",
               {word(h), instance, obj.word(), word(out.data()), f.told.width + 1, word(&h.err)});
        EXPECT_EQ(h.err, 0u) << f.name();
        EXPECT_EQ(std::string(out.c_str()), text) << f.name();
        EXPECT_EQ(out[f.told.width + 1], '#') << f.name();
      }
      const Snapshot before = obj.snapshot();
      f.call("_set", {word(h), instance, obj.word(), word("x"), f.told.width + 1, word(&h.err)});
      EXPECT_EQ(std::exchange(h.err, 0), 22u) << f.name();
      EXPECT_TRUE(before.unchanged());
    });
  }
}

TEST(Values, a_full_text_is_cut_to_any_room_with_28_and_refused_with_22_where_there_is_none) {
  SpiedHandle h;
  unsigned texts = 0;
  for_each_field([&](const Field& f) {
    if (f.told.cls != Class::text) {
      return;
    }
    ++texts;
    SpiedObject obj(h, f.type);
    std::string text;
    for (unsigned i = 0; i < f.told.width; ++i) {
      text += static_cast<char>('a' + i % 26);
    }
    f.call("_set", {word(h), instance, obj.word(), word(text.data()), text.size(), word(&h.err)});
    for (unsigned room = 0; room <= f.told.width; ++room) {
      std::string out(room + 1, '#');
      f.call("_get", {word(h), instance, obj.word(), word(out.data()), room, word(&h.err)});
      EXPECT_EQ(std::exchange(h.err, 0), room == 0 ? 22u : 28u) << f.name() << " into " << room;
      EXPECT_EQ(out, room == 0 ? "#" : text.substr(0, room - 1) + '\0' + '#')
          << f.name() << " into " << room;
    }
  });
  EXPECT_EQ(texts, 28u);
}

TEST(Values, an_array_holds_what_was_written_at_each_index) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_array([&](const Field& f) {
      SpiedObject obj(h, f.type);
      Source src(h, f);
      // Written from the end, from the middle and behind the end.
      for (const uint64_t index : {2u, 0u, 4u, 1u}) {
        f.call("_set", {word(h), instance, obj.word(), index, src.word(), word(&h.err)});
        EXPECT_EQ(h.err, 0u) << f.name() << ", " << mode.text();
      }
      const Field count = field(f.type, f.type.told.fields[0].name);
      EXPECT_EQ(
          count.call("_get_value", {word(h), instance, obj.word(), word(&h.err)}) & count.mask(),
          5u)
          << f.name();
      for (uint64_t index = 0; index < 5; ++index) {
        const auto at = f.call("_get", {word(h), instance, obj.word(), index, word(&h.err)});
        EXPECT_EQ(at, word(load<uint8_t*>(bytes(obj.get()) + f.told.offset) + index * f.told.width))
            << f.name();
        if (f.told.cls == Class::value_array) {
          EXPECT_EQ(
              f.call("_get_value", {word(h), instance, obj.word(), index, word(&h.err)}) & f.mask(),
              index == 3 ? 0u : 1u)
              << f.name();
        }
        if (h.tracking()) {
          EXPECT_EQ(static_cast<uint8_t>(f.call(
                        "_state_flag_get", {word(h), instance, obj.word(), index, word(&h.err)})),
                    index == 3 ? 0 : 2)
              << f.name();
        }
      }
      EXPECT_EQ(h.err, 0u);
      EXPECT_EQ(f.call("_get", {word(h), instance, obj.word(), 5, word(&h.err)}), 0u);
      EXPECT_EQ(std::exchange(h.err, 0), 2u) << f.name();
    });
  }
}

TEST(Values, set_all_is_read_back_by_get_all_and_marks_nothing) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      for (unsigned variant = 0; variant < type.told.layouts.size(); ++variant) {
        const auto domain = h.domain({{type.told.name, static_cast<int8_t>(variant)}});
        const auto stay = spy::answer(orklib_adjust_variant, 0);
        SpiedObject obj(h, type);
        std::vector<uint64_t> values;
        std::vector<uint64_t> expected;
        std::vector<unsigned> widths;
        std::vector<uint64_t> out(type.told.fields.size() + 1, 0x7777777777777777);
        std::vector<uint64_t> pointers;
        for (const told::Field& told : type.told.fields) {
          const Field f = field(type, told.name);
          const bool value = told.cls == Class::value;
          if (value) {
            values.push_back(f.boundary_values().front());
          }
          if (value || told.cls == Class::counter) {
            pointers.push_back(word(&out[expected.size()]));
            const uint64_t untouched = out[expected.size()];
            const uint64_t got = value ? values.back() : 0;
            expected.push_back(told.variant <= variant ? (untouched & ~f.mask()) | got : untouched);
          }
        }
        std::vector<uint64_t> words = {word(h), instance, obj.word()};
        words.insert(words.end(), values.begin(), values.end());
        words.push_back(word(&h.err));
        type.call("_set_all", words);
        EXPECT_EQ(h.err, 0u) << type.told.name;
        EXPECT_EQ(h.last_error(), 0u) << type.told.name;
        words = {word(h), instance, obj.word()};
        words.insert(words.end(), pointers.begin(), pointers.end());
        words.push_back(word(&h.err));
        type.call("_get_all", words);
        EXPECT_EQ(h.err, 0u) << type.told.name;
        out.resize(expected.size());
        EXPECT_EQ(out, expected) << type.told.name << " variant " << variant << ", " << mode.text();
        if (h.tracking()) {
          EXPECT_TRUE(std::all_of(obj.state(), obj.state() + type.told.newest().state,
                                  [](uint8_t b) { return b == 0; }));
        }
      }
    }
  }
}

// ---- Beyond the variant ----

TEST(Gate, a_getter_beyond_the_variant_gives_43_and_touches_nothing) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      for (int variant = -1; variant < static_cast<int>(f.told.variant); ++variant) {
        SpiedObject obj(h, f.type);
        const int8_t before_variant = header(obj.get()).variant;
        header(obj.get()).variant = static_cast<int8_t>(variant);
        const Snapshot before = obj.snapshot();
        char out[64] = "#";
        const bool text = f.told.cls == Class::text;
        std::vector<uint64_t> words = {word(h), instance, obj.word()};
        if (text) {
          words.insert(words.end(), {word(out), sizeof out});
        } else if (f.is_array()) {
          words.push_back(0);
        }
        words.push_back(word(&h.err));
        for (const char* const suffix : {"_get", "_get_value"}) {
          if (f.has(suffix)) {
            ork_clear_last_error(h);
            const uint64_t result = f.call(suffix, words);
            EXPECT_TRUE(text || (result & f.mask()) == 0) << f.name() << suffix;
            EXPECT_EQ(h.last_error(), 43u) << f.name() << suffix << " at " << variant;
          }
        }
        EXPECT_TRUE(before.unchanged()) << f.name() << " at " << variant << ", " << mode.text();
        EXPECT_EQ(out[0], '#');
        header(obj.get()).variant = before_variant;
      }
    });
  }
}

TEST(Gate, a_setter_beyond_the_variant_gives_43_and_touches_nothing_when_the_object_cannot_rise) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    const auto stay = spy::answer(orklib_adjust_variant, 0);
    for_each_field([&](const Field& f) {
      if (f.told.cls == Class::counter) {
        return;
      }
      for (int variant = -1; variant < static_cast<int>(f.told.variant); ++variant) {
        SpiedObject obj(h, f.type);
        Source src(h, f);
        const int8_t before_variant = header(obj.get()).variant;
        header(obj.get()).variant = static_cast<int8_t>(variant);
        const Snapshot before = obj.snapshot();
        const uint64_t o = obj.word();
        const uint64_t e = word(&h.err);
        std::map<std::string, std::vector<uint64_t>> calls;
        if (f.told.cls == Class::text) {
          calls["_set"] = {word(h), instance, o, src.word(), 1, e};
        } else if (f.is_array()) {
          calls["_set"] = {word(h), instance, o, 0, src.word(), e};
          if (f.told.cls == Class::value_array) {
            calls["_set_value"] = {word(h), instance, o, 0, 1, e};
            calls["_set_mem"] = {word(h), instance, o, src.word(), 1, e};
          }
          if (h.tracking()) {
            calls["_state_flag_whole_set"] = {word(h), instance, o, 1, e};
            calls["_state_flag_set_arr"] = {word(h), instance, o, src.word(), 0, e};
          }
        } else {
          calls["_set"] = {word(h), instance, o, src.word(), e};
          if (f.told.cls == Class::value) {
            calls["_set_value"] = {word(h), instance, o, 1, e};
          }
        }
        if (h.tracking() && !f.is_array()) {
          calls["_state_flag_set"] = {word(h), instance, o, 1, e};
        }
        for (const auto& [suffix, words] : calls) {
          ork_clear_last_error(h);
          f.call(suffix, words);
          EXPECT_EQ(h.last_error(), 43u) << f.name() << suffix << " at " << variant;
          EXPECT_EQ(h.err, 0u);
          EXPECT_TRUE(before.unchanged())
              << f.name() << suffix << " at " << variant << ", " << mode.text();
        }
        header(obj.get()).variant = before_variant;
      }
    });
  }
}

TEST(Gate, a_setter_raises_an_object_of_an_older_variant_and_writes) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      for (unsigned variant = 0; variant < f.told.variant; ++variant) {
        SpiedObject obj(h, f.type);
        Source src(h, f);
        unsigned seen = f.value_offset() - f.told.offset;
        if (f.is_record()) {
          seen = touch(h, type(f.told.type), src.get());
        } else if (f.told.cls == Class::object) { /* the flag set */
          seen = 11;
        }
        header(obj.get()).variant = static_cast<int8_t>(variant);
        std::vector<uint64_t> words = {word(h), instance, obj.word(), src.word()};
        if (f.told.cls == Class::text) {
          words.push_back(f.told.width);
        }
        words.push_back(word(&h.err));
        f.call("_set", words);
        EXPECT_EQ(h.err, 0u);
        EXPECT_EQ(h.last_error(), 0u) << f.name() << " from " << variant;
        EXPECT_EQ(header(obj.get()).variant, static_cast<int>(f.type.told.newest_variant()))
            << f.name() << " from " << variant;
        EXPECT_NE(bytes(obj.get())[f.told.offset + seen], 0)
            << f.name() << " from " << variant << ", " << mode.text();
        if (f.told.cls == Class::value) {
          header(obj.get()).variant = static_cast<int8_t>(variant);
          f.call("_set_value", {word(h), instance, obj.word(), 0, word(&h.err)});
          EXPECT_EQ(header(obj.get()).variant, static_cast<int>(f.type.told.newest_variant()))
              << f.name();
          EXPECT_EQ(bytes(obj.get())[f.told.offset + seen], 0) << f.name();
        }
      }
    });
  }
}

}  // namespace frame
