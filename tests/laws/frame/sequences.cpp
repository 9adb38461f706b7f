// The calls of every accessor of every field, in order: what one field of a kind does, all do.
#include "laws/frame/calls.h"

namespace frame {

namespace {

using Calls = std::vector<std::string>;

void append(Calls& calls, const Calls& more) {
  calls.insert(calls.end(), more.begin(), more.end());
}

// The sequences that are to be seen for one field on an object named obj with its state bytes named
// state.
class Told {
 public:
  Told(const SpiedHandle& h, const Field& f) : h_(h), f_(f) {}

  Calls get() const {
    Calls calls = gate();
    if (!f_.primitive().empty() && f_.told.cls != Class::object) {
      calls.push_back(f_.primitive() + "_get(7," + at() + ",err)");
      append(calls, record(at(), "obj"));
    } else if (f_.told.cls != Class::text) {
      append(calls, record(at(), "null"));
      append(calls, record(at(), "obj"));
    }
    return calls;
  }

  Calls get_value() const {
    Calls calls = gate();
    if (f_.is_enum()) {
      append(calls, record(at(), "obj"));
      calls.push_back("ork_clear_last_error()");
    } else {
      calls.push_back(f_.primitive() + "_get(7," + at() + ",err)");
      append(calls, record(at(), "obj"));
      calls.push_back(f_.primitive() + "_get_value(7," + at() + ",err)");
    }
    return calls;
  }

  Calls set() const {
    Calls calls = begin_set();
    if (f_.is_enum()) {
      append(calls, enum_range());
      calls.push_back(announce(f_.told.offset, 16));
    } else if (f_.primitive().empty() && f_.told.cls == Class::object && !f_.is_record()) {
      append(calls, {"ork_clear_last_error()",
                     "orklib_adjust_variant(7," + at() + ",type(" + f_.told.type + "),0,err)",
                     announce(f_.told.offset, 24)});
    } else if (!f_.is_record()) {
      calls.push_back(f_.primitive() + "_set(7," + at() + ",src,err)");
    }
    append(calls, mark());
    append(calls, record("src", "obj"));
    return calls;
  }

  Calls set_value() const {
    Calls calls = begin_set();
    append(calls, gate());
    if (!f_.is_enum()) {
      calls.push_back(f_.primitive() + "_get(7," + at() + ",err)");
    }
    append(calls, record(at(), "obj"));
    append(calls, record(at(), "obj"));
    if (f_.is_enum()) {
      append(calls, enum_range());
      calls.push_back(announce(f_.told.offset + 12, 4));
    } else {
      calls.push_back(f_.primitive() + "_set_value(7," + at() + ",1,err)");
    }
    append(calls, mark());
    return calls;
  }

  Calls text_set(unsigned length) const {
    Calls calls = begin_set();
    calls.push_back("write_notify_fn(" + at() + "," + std::to_string(length) + ",7,obj)");
    append(calls, mark());
    return calls;
  }

  // With tracking off there is no word; without a mode at all it is the object that lacks state
  // bytes.
  Calls state_get() const {
    switch (h_.mode().tracking) {
      case ORK_TRACKING_ON: return {};
      case ORK_TRACKING_OFF: return {"ork_store_err(22)"};
      case ORK_TRACKING_ABSENT: break;
    }
    return {"ork_store_err(22)", "trace(error,The object is non state tracked)"};
  }

  Calls state_set() const {
    if (h_.mode().tracking == ORK_TRACKING_OFF) {
      return {"ork_store_err(22)"};
    }
    if (h_.mode().tracking == ORK_TRACKING_ABSENT) {
      return {"trace(error,The object is not state tracked)", "ork_store_err(22)"};
    }
    Calls calls = {manifested(), adjust(), variant()};
    append(calls, mark());
    return calls;
  }

  Calls begin_set() const { return {"ork_clear_last_error()", manifested(), adjust(), variant()}; }
  Calls gate() const { return {"ork_clear_last_error()", variant()}; }
  Calls mark() const {
    return h_.tracking()
               ? Calls{"write_notify_fn(" +
                       offset_text("state", static_cast<size_t>(f_.told.state)) + ",1,7,null)"}
               : Calls{};
  }
  Calls record(const std::string& child, const std::string& parent) const {
    return h_.mode().recording
               ? Calls{"orkdb_record_containment2(7," + child + "," + parent + ",1)"}
               : Calls{};
  }

 private:
  std::string at() const { return offset_text("obj", f_.told.offset); }
  std::string manifested() const { return "ork_get_manifested_type_info(obj)"; }
  std::string adjust() const {
    return "orklib_adjust_variant(7,obj,type(" + f_.type.told.name + ")," +
           std::to_string(f_.type.told.newest_variant()) + ",err)";
  }
  std::string variant() const {
    return f_.is_enum() ? "ork_get_instance_variant(obj,1,1)" : "ork_get_instance_variant(obj,1,0)";
  }
  std::string announce(size_t offset, size_t length) const {
    return "write_notify_fn(" + offset_text("obj", offset) + "," + std::to_string(length) + ",7," +
           at() + ")";
  }
  Calls enum_range() const {
    return {"ork_clear_last_error()",
            "orklib_adjust_variant(7," + at() + ",type(" + f_.told.type + "),0,err)",
            "ork_get_instance_variant(" + at() + ",0,1)"};
  }

  const SpiedHandle& h_;
  const Field& f_;
};

const std::vector<Mode>& modes() {
  static const std::vector<Mode> all = {{},
                                        {.recording = true},
                                        {.tracking = ORK_TRACKING_OFF},
                                        {.tracking = ORK_TRACKING_ON},
                                        {.tracking = ORK_TRACKING_ON, .recording = true}};
  return all;
}

// Where an embedded record or a flag set is set by its own function, the calls in the middle are
// that function's: the law compares what stands around them.
testing::AssertionResult begins_and_ends(const Calls& got, const Calls& begin, const Calls& end) {
  if (got.size() < begin.size() + end.size()) {
    return spy::same_calls(got, begin);
  }
  Calls outer(got.begin(), got.begin() + static_cast<ptrdiff_t>(begin.size()));
  outer.insert(outer.end(), got.end() - static_cast<ptrdiff_t>(end.size()), got.end());
  Calls expected = begin;
  append(expected, end);
  return spy::same_calls(outer, expected);
}

}  // namespace

TEST(Sequences, of_values) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::value) {
        return;
      }
      SpiedObject obj(h, f.type);
      Source src(h, f);
      Outputs out;
      const Told told(h, f);
      const std::map<std::string, Calls> expected = {{"_get", told.get()},
                                                     {"_get_value", told.get_value()},
                                                     {"_set", told.set()},
                                                     {"_set_value", told.set_value()},
                                                     {"_state_flag_get", told.state_get()},
                                                     {"_state_flag_set", told.state_set()}};
      for (const FieldCall& call : accessors(f, h, obj.get(), src, 0, out)) {
        spy::Log log;
        f.call(call.suffix, call.words);
        Calls calls = log.calls();
        if (call.suffix ==
            "_state_flag_set") { /* whether it forgets the last error first is not told */
          std::erase(calls, "ork_clear_last_error()");
        }
        EXPECT_CALLS(calls, expected.at(call.suffix))
            << f.name() << call.suffix << ", " << mode.text();
        h.err = 0;
      }
    });
  }
}

TEST(Sequences, of_counts) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::counter) {
        return;
      }
      SpiedObject obj(h, f.type);
      const Told told(h, f);
      spy::Log log;
      f.call("_get", {word(h), instance, obj.word(), word(&h.err)});
      EXPECT_CALLS(log, told.get()) << f.name();
      log.clear();
      f.call("_get_value", {word(h), instance, obj.word(), word(&h.err)});
      EXPECT_CALLS(log, told.get_value()) << f.name();
    });
  }
}

TEST(Sequences, of_objects) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::object) {
        return;
      }
      SpiedObject obj(h, f.type);
      Source src(h, f);
      const Told told(h, f);
      spy::Log log;
      f.call("_get", {word(h), instance, obj.word(), word(&h.err)});
      EXPECT_CALLS(log, told.get()) << f.name();
      log.clear();
      f.call("_set", {word(h), instance, obj.word(), src.word(), word(&h.err)});
      EXPECT_EQ(h.err, 0u) << f.name();
      if (f.is_record()) {
        Calls end = told.mark();
        append(end, told.record("src", "obj"));
        Calls begin = told.begin_set();
        const std::string child = offset_text("obj", f.told.offset);
        append(begin, {"ork_get_manifested_type_info(" + child + ")",
                       "orklib_adjust_variant(7," + child + ",type(" + f.told.type + ")," +
                           std::to_string(told::record(f.told.type)->newest_variant()) + ",err)"});
        EXPECT_TRUE(begins_and_ends(log.calls(), begin, end)) << f.name() << ", " << mode.text();
      } else {
        Calls calls = log.calls();
        std::erase_if(calls,
                      [&](const std::string&
                              call) { /* how the flag set finds its descriptor is its own affair */
                                      return call == "ork_get_manifested_type_info(" +
                                                         offset_text("obj", f.told.offset) + ")";
                      });
        EXPECT_CALLS(calls, told.set()) << f.name() << ", " << mode.text();
      }
      log.clear();
      f.call("_state_flag_get", {word(h), instance, obj.word(), word(&h.err)});
      EXPECT_CALLS(log, told.state_get()) << f.name();
      h.err = 0;
    });
  }
}

TEST(Sequences, of_texts) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::text) {
        return;
      }
      SpiedObject obj(h, f.type);
      char out[64] = "";
      const Told told(h, f);
      spy::Log log;
      f.call("_get", {word(h), instance, obj.word(), word(out), sizeof out, word(&h.err)});
      EXPECT_CALLS(log, told.gate()) << f.name();
      log.clear();
      f.call("_set", {word(h), instance, obj.word(), word("abcdefgh"), 5, word(&h.err)});
      EXPECT_CALLS(log, told.text_set(5)) << f.name() << ", " << mode.text();
    });
  }
}

TEST(Sequences, of_values_arrays_that_grow_from_nothing) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::value_array) {
        return;
      }
      SpiedObject obj(h, f.type);
      Source src(h, f);
      const Told told(h, f);
      const std::string width = std::to_string(f.told.width);
      const std::string last = offset_text("new1", 2 * f.told.width);
      Calls expected = told.begin_set();
      append(expected, {"alloc_fn(7," + std::to_string(3 * f.told.width) + ")=new1",
                        "write_notify_fn(obj+16,8,7,obj)", "write_notify_fn(obj+12,4,7,obj)"});
      if (h.tracking()) {
        append(expected, {"write_notify_fn(state+8,8,7,null)", "alloc_fn(7,3)=new2"});
      }
      append(expected, told.record(last, "obj"));
      expected.push_back(f.told.type + "_set(7," + last + ",src,err)");
      append(expected, told.mark());
      if (h.tracking()) {
        expected.push_back("write_notify_fn(new2+2,1,7,null)");
      }
      spy::Log log;
      f.call("_set", {word(h), instance, obj.word(), 2, src.word(), word(&h.err)});
      Calls calls = log.calls();
      const std::string sizeof_call = f.told.type + "_sizeof()";
      EXPECT_EQ(calls.at(4), sizeof_call);
      std::erase(calls, sizeof_call);
      EXPECT_CALLS(calls, expected) << f.name() << ", " << mode.text();
      log.clear();
      Calls inside = told.gate();
      append(inside, told.record("new1", "obj"));
      f.call("_get", {word(h), instance, obj.word(), 0, word(&h.err)});
      EXPECT_CALLS(log, inside) << f.name();
      log.clear();
      f.call("_remove_elements", {word(h), instance, obj.word()});
      EXPECT_CALLS(log, {"free_fn(7,new1)", "write_notify_fn(obj+16,8,7,obj)",
                         "write_notify_fn(obj+12,4,7,obj)"})
          << f.name();
    });
  }
}

TEST(Sequences, of_record_arrays_that_grow_from_nothing) {
  for (const Mode& mode : modes()) {
    SpiedHandle h(mode);
    for_each_field([&](const Field& f) {
      if (f.told.cls != Class::record_array) {
        return;
      }
      SpiedObject obj(h, f.type);
      Source src(h, f);
      const Told told(h, f);
      const told::Record& element = *told::record(f.told.type);
      const told::Field& count = f.type.told.fields[0];
      const unsigned each = element.newest().body + (h.tracking() ? element.newest().state : 0);
      Calls begin = told.begin_set();
      append(begin, {"alloc_fn(7," + std::to_string(2 * each) + ")=new1",
                     "write_notify_fn(obj+16,8,7,obj)",
                     "write_notify_fn(" + offset_text("obj", count.offset) + "," +
                         std::to_string(count.width) + ",7,obj)"});
      if (h.tracking()) {
        const unsigned states = 2 * element.newest().body;
        append(begin,
               {"orklib_update_sttr_offset(7,new1," + std::to_string(states) + ")",
                "orklib_update_sttr_offset(7," + offset_text("new1", element.newest().body) + "," +
                    std::to_string(states + element.newest().state - element.newest().body) + ")"});
      }
      append(begin, {"ork_clear_last_error()",
                     "ork_domain_lookup_variant(domain,type(" + f.told.type + "),err)"});
      Calls end = told.mark();
      if (h.tracking()) {
        end.push_back("write_notify_fn(new2+1,1,7,null)");
      }
      spy::Log log;
      f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
      EXPECT_EQ(h.err, 0u) << f.name();
      Calls calls = log.calls();
      std::erase_if(calls, [](const std::string& call) {
        return call.find("ork_get_instance_obj_flag") == 0;
      });
      EXPECT_TRUE(begins_and_ends(calls, begin, end)) << f.name() << ", " << mode.text();
      log.clear();
      f.call("_get", {word(h), instance, obj.word(), 0, word(&h.err)});
      Calls inside = told.gate();
      append(inside, told.record("new1", "null"));
      append(inside, told.record("new1", "obj"));
      EXPECT_CALLS(log, inside) << f.name();
    });
  }
}

}  // namespace frame
