// An error that stands stops every function that looks at it: no call, no byte, no number changes.
#include "laws/frame/calls.h"

namespace frame {

TEST(Sticky, no_accessor_does_anything_with_an_error_standing) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h({.shared = mode.shared, .tracking = mode.tracking, .recording = true});
    for_each_field([&](const Field& f) {
      SpiedObject obj(h, f.type);
      Source src(h, f);
      Outputs out;
      if (f.is_array()) {
        f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
        ASSERT_EQ(h.err, 0u);
      }
      ork_store_err(h, 77);
      for (const FieldCall& call : accessors(f, h, obj.get(), src, 0, out)) {
        h.err = 5;
        h->cr_error = 5;
        const Snapshot before = obj.snapshot();
        spy::Log log;
        const uint64_t result = f.call(call.suffix, call.words);
        EXPECT_CALLS(log, {}) << f.name() << call.suffix;
        EXPECT_TRUE(before.unchanged()) << f.name() << call.suffix << ", " << mode.text();
        EXPECT_EQ(h.err, 5u);
        EXPECT_EQ(h->cr_error, 5u);
        EXPECT_EQ(h.last_error(), 77u) << f.name() << call.suffix;
        EXPECT_TRUE(std::all_of(std::begin(out.bytes), std::end(out.bytes),
                                [](uint8_t b) { return b == 0; }))
            << f.name() << call.suffix;
        if (call.cr) {
          EXPECT_EQ(static_cast<uint32_t>(result), 5u) << f.name() << call.suffix;
        }
      }
      h.err = 0;
      h->cr_error = 0;
    });
  }
}

TEST(Sticky, no_function_of_the_whole_record_does_that_is_to_look_at_it) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h({.shared = mode.shared, .tracking = mode.tracking, .recording = true});
    for (const Type& type : types()) {
      SpiedObject obj(h, type);
      SpiedObject src(h, type, "src");
      h.err = 5;
      const Snapshot before = obj.snapshot();
      const Snapshot src_before = src.snapshot();
      std::vector<uint64_t> out(type.told.fields.size() + 1, 7);
      std::vector<uint64_t> get_all = {word(h), instance, obj.word()};
      std::vector<uint64_t> set_all = get_all;
      for (size_t i = 0; i < type.told.fields.size(); ++i) {
        const Class cls = type.told.fields[i].cls;
        if (cls == Class::value || cls == Class::counter) {
          get_all.push_back(word(&out[i]));
        }
        if (cls == Class::value) {
          set_all.push_back(1);
        }
      }
      get_all.push_back(word(&h.err));
      set_all.push_back(word(&h.err));
      spy::Log log;
      type.call("_initialize",
                {word(h), instance, obj.word(), word(type.schema.type), 1, 0, 0, 0, word(&h.err)});
      type.call("_get_all", get_all);
      type.call("_set_all", set_all);
      type.call("_offset_update", {word(h), instance, obj.word(), word(obj.state()), word(&h.err)});
      type.call("_offset_remove", {word(h), instance, obj.word(), word(&h.err)});
      type.call("_post_copyout_cleanup", {word(h), instance, obj.word(), src.word(), word(&h.err)});
      EXPECT_CALLS(log, {}) << type.told.name;
      EXPECT_TRUE(before.unchanged()) << type.told.name;
      EXPECT_TRUE(src_before.unchanged()) << type.told.name;
      EXPECT_EQ(h.err, 5u);
      EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](uint64_t v) { return v == 7; }));
      EXPECT_EQ(
          type.call("_get_oid_count", {word(h), instance, obj.word(), word(&h.err)}) & 0xFFFFFFFF,
          0u);
      h.err = 0;
    }
  }
}

TEST(Untouched, with_tracking_off_or_untracked_every_state_accessor_refuses_with_22) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF});
  for_each_field([&](const Field& f) {
    SpiedObject obj(h, f.type);
    Source src(h, f);
    Outputs out;
    for (const bool off : {true, false}) {
      ork_handle_set_tracking(h, off ? ORK_TRACKING_OFF : ORK_TRACKING_ON);
      for (const FieldCall& call : accessors(f, h, obj.get(), src, 0, out)) {
        if (call.suffix.find("_state_flag") != 0) {
          continue;
        }
        const Snapshot before(obj.get(), f.type.told.newest().body);
        spy::Log log;
        f.call(call.suffix, call.words);
        EXPECT_EQ(std::exchange(h.err, 0), 22u) << f.name() << call.suffix;
        EXPECT_TRUE(before.unchanged());
        const bool setter = call.suffix.find("_set") != std::string::npos;
        const std::string words = setter ? "trace(error,The object is not state tracked)"
                                         : "trace(error,The object is non state tracked)";
        const std::vector<std::string> expected =
            off      ? std::vector<std::string>{"ork_store_err(22)"}
            : setter ? std::vector<std::string>{words, "ork_store_err(22)"}
                     : std::vector<std::string>{"ork_store_err(22)", words};
        EXPECT_CALLS(log, expected) << f.name() << call.suffix;
      }
      ork_handle_set_tracking(h, ORK_TRACKING_OFF);
    }
  });
}

}  // namespace frame
