// State bytes of every field: where they lie, who may read and write them, and what a failed mark
// leaves.
#include "laws/frame/fields.h"

namespace frame {

namespace {

// What tells the runtime of the state bytes of all records inside one, in order; at and state are
// the record's own places.
void append_children(const told::Record& record, unsigned at, int state,
                     std::vector<std::pair<unsigned, int>>& children) {
  for (const told::Field& field : record.fields) {
    if (field.nested >= 0) {
      children.push_back({at + field.offset, state + field.nested});
      append_children(*told::record(field.type), children.back().first, children.back().second,
                      children);
    }
  }
}

}  // namespace

TEST(State, every_byte_can_be_set_and_read_on_its_own) {
  SpiedHandle h(kit::tracked);
  for_each_field([&](const Field& f) {
    if (f.told.cls == Class::counter) {
      return;
    }
    SpiedObject obj(h, f.type);
    const std::string infix = f.is_array() ? "_state_flag_whole" : "_state_flag";
    f.call(infix + "_set", {word(h), instance, obj.word(), 0xA5, word(&h.err)});
    EXPECT_EQ(
        static_cast<uint8_t>(f.call(infix + "_get", {word(h), instance, obj.word(), word(&h.err)})),
        0xA5)
        << f.name();
    EXPECT_EQ(h.err, 0u) << f.name();
    for (unsigned i = 0; i < f.type.told.newest().state; ++i) {
      EXPECT_EQ(obj.state()[i], static_cast<int>(i) == f.told.state ? 0xA5 : 0)
          << f.name() << " byte " << i;
    }
    obj.state()[f.told.state] = 0;
  });
}

TEST(State, a_nested_records_bytes_lie_in_its_parents_block) {
  SpiedHandle h(kit::tracked);
  for_each_field([&](const Field& f) {
    if (f.told.cls != Class::object || !f.is_record()) {
      return;
    }
    const Type& child = type(f.told.type);
    SpiedObject obj(h, f.type);
    const uint64_t inside = f.call("_get", {word(h), instance, obj.word(), word(&h.err)});
    const auto first_scalar = std::find_if(
        child.told.fields.begin(), child.told.fields.end(),
        [](const told::Field& c) { return c.cls == Class::value && c.type != "link_type"; });
    if (first_scalar == child.told.fields.end()) {
      return;
    }
    field(child, first_scalar->name)
        .call("_set_value", {word(h), instance, inside, 1, word(&h.err)});
    EXPECT_EQ(h.err, 0u);
    for (unsigned i = 0; i < f.type.told.newest().state; ++i) {
      EXPECT_EQ(obj.state()[i], static_cast<int>(i) == f.told.nested + first_scalar->state ? 2 : 0)
          << f.name() << " byte " << i;
    }
  });
}

TEST(State, a_getter_reads_the_byte_whatever_the_variant) {
  SpiedHandle h(kit::tracked);
  for_each_field([&](const Field& f) {
    if (f.told.cls == Class::counter) {
      return;
    }
    SpiedObject obj(h, f.type);
    uint8_t* const entry = obj.state() + f.told.state;
    if (f.is_array()) {
      Source src(h, f);
      f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
      load<uint8_t*>(entry + 8)[1] = 0x5A;
    }
    *entry = 0xA5;
    for (const int variant : {static_cast<int>(f.told.variant) - 1, -1}) {
      const int8_t before = std::exchange(header(obj.get()).variant, static_cast<int8_t>(variant));
      const auto byte = [&](const char* suffix, std::vector<uint64_t> arguments) {
        arguments.insert(arguments.begin(), {word(h), instance, obj.word()});
        arguments.push_back(word(&h.err));
        return static_cast<uint8_t>(f.call(suffix, arguments));
      };
      spy::Log log;
      if (f.is_array()) {
        const uint8_t* elements = nullptr;
        EXPECT_EQ(byte("_state_flag_whole_get", {}), 0xA5) << f.name();
        EXPECT_EQ(byte("_state_flag_get", {1}), 0x5A) << f.name();
        byte("_state_flag_get_arr", {word(&elements)});
        EXPECT_EQ(elements, load<uint8_t*>(entry + 8)) << f.name();
      } else {
        EXPECT_EQ(byte("_state_flag_get", {}), 0xA5) << f.name() << " at " << variant;
      }
      EXPECT_CALLS(log, {}) << f.name() << " at " << variant;
      EXPECT_EQ(h.err, 0u) << f.name();
      header(obj.get()).variant = before;
    }
  });
}

TEST(State, the_byte_of_an_element_is_not_set_in_an_object_without_the_array) {
  SpiedHandle h(kit::tracked);
  const auto stay = spy::answer(orklib_adjust_variant, 0);
  unsigned arrays = 0;
  for_each_field([&](const Field& f) {
    if (!f.is_array()) {
      return;
    }
    ++arrays;
    SpiedObject obj(h, f.type);
    Source src(h, f);
    f.call("_set", {word(h), instance, obj.word(), 1, src.word(), word(&h.err)});
    header(obj.get()).variant = -1;
    const Snapshot before = obj.snapshot();
    const Snapshot elements(load<uint8_t*>(obj.state() + f.told.state + 8), 2);
    spy::Log log;
    f.call("_state_flag_set", {word(h), instance, obj.word(), 1, 0x5A, word(&h.err)});
    EXPECT_EQ(h.last_error(), 43u) << f.name();
    EXPECT_EQ(log.count("write_notify_fn"), 0u) << f.name();
    EXPECT_TRUE(before.unchanged() && elements.unchanged()) << f.name();
    header(obj.get()).variant = 0;
  });
  EXPECT_EQ(arrays, 9u);
}

TEST(Offsets, go_down_the_embedded_records_in_field_order_where_there_are_any) {
  SpiedHandle h(kit::tracked);
  unsigned parents = 0;
  for (const Type& type : types()) {
    std::vector<std::pair<unsigned, int>> children;
    append_children(type.told, 0, 0, children);
    parents += children.empty() ? 0u : 1u;
    std::vector<std::string> told;
    std::vector<std::string> dropped;
    for (const auto& [at, state] : children) {
      const int distance = static_cast<int>(type.told.newest().body) + state - static_cast<int>(at);
      told.push_back("orklib_update_sttr_offset(7,obj+" + std::to_string(at) + "," +
                     std::to_string(distance) + ")");
      dropped.push_back("ork_hd_mapping_destroy(7,obj+" + std::to_string(at) + ",err)");
    }
    SpiedObject obj(h, type);
    const auto not_told =
        spy::replace(orklib_update_sttr_offset, [](ork_handle*, uint32_t, void*, int32_t) {});
    const auto not_dropped = spy::answer(ork_hd_mapping_destroy, 0);
    spy::Log log;
    type.call("_offset_update", {word(h), instance, obj.word(), word(obj.state()), word(&h.err)});
    EXPECT_CALLS(log, told) << type.told.name;
    log.clear();
    type.call("_offset_remove", {word(h), instance, obj.word(), word(&h.err)});
    EXPECT_CALLS(log, dropped) << type.told.name;
  }
  EXPECT_EQ(parents, 13u);
}

TEST(Mark, a_set_whose_mark_fails_has_written_and_tells_the_database_nothing) {
  SpiedHandle h({.tracking = ORK_TRACKING_OFF, .recording = true});
  for_each_field([&](const Field& f) {
    if (f.told.cls != Class::value && f.told.cls != Class::object) {
      return;
    }
    SpiedObject obj(h, f.type);
    Source src(h, f);
    unsigned seen = f.value_offset() - f.told.offset;
    std::vector<std::string> expected = {"ork_store_err(22)",
                                         "trace(error,The object is not state tracked)"};
    if (f.is_record()) { /* refused by its own set first */
      seen = touch(h, type(f.told.type), src.get());
      expected.insert(expected.end(), {expected[0], expected[1]});
    } else if (f.told.cls == Class::object) {
      seen = 11;
    }
    ork_handle_set_tracking(h, ORK_TRACKING_ON);
    spy::Log log;
    f.call("_set", {word(h), instance, obj.word(), src.word(), word(&h.err)});
    EXPECT_EQ(std::exchange(h.err, 0), 22u) << f.name();
    EXPECT_CALLS(log.calls_of({"ork_store_err", "trace", "orkdb_record_containment2"}), expected)
        << f.name();
    EXPECT_NE(bytes(obj.get())[f.told.offset + seen], 0) << f.name();
    ork_handle_set_tracking(h, ORK_TRACKING_OFF);
  });
}

}  // namespace frame
