// Objects that an older release laid out, in blocks of exactly their size: nothing outside is
// written, nor read. And where the runtime upgrades such an object in place although it is tracked,
// with room for the state bytes, those are read where they are written.
#include "laws/frame/calls.h"
#include "support/guarded_blocks.h"

namespace frame {

namespace {

using namespace kit;

// An object as the release left it whose newest variant of the type was `cap`, in a block that has
// room for the state bytes of variant `room`. The object is the block's owner.
class OlderObject {
 public:
  OlderObject(SpiedHandle& h, const Type& type, unsigned cap, unsigned room)
      : h_(h), type_(type), layout_(type.told.layouts[cap]) {
    const size_t size = layout_.body + (h.tracking() ? type.told.layouts[room].state : 0);
    block_ = static_cast<uint8_t*>(h->alloc_fn(h->mem_pool, instance, size));
    std::memset(block_, 0, size);
    void* const fresh = type.create(h);
    std::memcpy(block_, fresh, layout_.used);
    type.destroy(h, fresh);
    header(block_).variant = static_cast<int8_t>(cap);
    header(block_).variant_cap = static_cast<uint8_t>(cap);
    if (h.tracking()) call("_offset_update", {word(state())});
    EXPECT_EQ(h.err, 0u) << type.told.name;
  }
  OlderObject(SpiedHandle& h, const Type& type, unsigned cap) : OlderObject(h, type, cap, cap) {}
  ~OlderObject() { type_.destroy(h_, block_); }
  OlderObject(const OlderObject&) = delete;
  OlderObject& operator=(const OlderObject&) = delete;

  // A function of the record that has its error slot last.
  uint64_t call(const std::string& suffix, std::vector<uint64_t> arguments) const {
    arguments.insert(arguments.begin(), {word(h_), instance, word(block_)});
    arguments.push_back(word(&h_.err));
    return type_.call(suffix, arguments);
  }
  uint64_t call(const Field& f, const char* suffix, std::vector<uint64_t> arguments = {}) const {
    arguments.insert(arguments.begin(), {word(h_), instance, word(block_)});
    arguments.push_back(word(&h_.err));
    return f.call(suffix, arguments);
  }
  uint8_t* get() const { return block_; }
  uint8_t* state() const { return block_ + layout_.body; }
  int8_t& variant() const { return header(block_).variant; }

 private:
  SpiedHandle& h_;
  const Type& type_;
  const told::Layout& layout_;
  uint8_t* block_;
};

void for_each_older_layout(const std::function<void(const Type&, unsigned)>& visit) {
  for (const Type& type : types()) {
    for (unsigned cap = 0; cap < type.told.newest_variant(); ++cap) visit(type, cap);
  }
}

// ---- Every function of every record ----

// What comes of a call, as far as it is the same for objects in other places.
using Outcomes = std::vector<std::string>;

// All that a record of an older layout can be asked and told, in every form that it has.
class EveryCall {
 public:
  EveryCall(SpiedHandle& h, const Type& type, unsigned cap) : h_(h), type_(type), cap_(cap) {}

  Outcomes run() {
    const OlderObject obj(h_, type_, cap_);
    const OlderObject other(h_, type_, cap_);
    accessors_of(obj);
    whole_record(obj, other);
    forms_of(obj, other);
    read_into(obj);
    obj.variant() = -1;
    accessors_of(obj);
    forms_of(obj, other);
    obj.variant() = static_cast<int8_t>(cap_);
    if (h_.tracking()) {
      type_.call("_set_all_state_tracking_flag", {word(h_), instance, word(obj.get()), 3});
      forms_of(obj, other);
    }
    obj.call("_offset_remove", {});
    if (h_.tracking()) obj.call("_offset_update", {word(obj.state())});
    return outcomes_;
  }

 private:
  void note(const std::string& what, uint64_t result, const std::string& text = {}) {
    outcomes_.push_back(type_.told.name + what + " " +
                        std::to_string(static_cast<uint32_t>(result)) + " err " +
                        std::to_string(h_.err) + " " + text);
    h_.err = 0;
    h_->cr_error = 0;
  }

  // Of what an accessor leaves in the result register, its answer: plain setters and what writes to
  // the caller's memory have none.
  static uint64_t answer(const Field& f, const std::string& suffix, uint64_t result) {
    if (suffix == "_get") return f.told.cls == Class::text ? 0 : result != 0;
    if (suffix == "_get_value") return result & f.mask();
    if (suffix.ends_with("_cr")) return result & 0xFFFFFFFF;
    if (suffix == "_state_flag_get" || suffix == "_state_flag_whole_get") return result & 0xFF;
    return 0;
  }

  void accessors_of(const OlderObject& obj) {
    for (const told::Field& told : type_.told.fields) {
      const Field f = field(type_, told.name);
      const Source src(h_, f);
      Outputs out;
      for (const FieldCall& call : accessors(f, h_, obj.get(), src, 0, out)) {
        const uint64_t result = f.call(call.suffix, call.words);
        note("." + told.name + call.suffix, answer(f, call.suffix, result),
             std::string(out.bytes, out.bytes + sizeof out.bytes));
      }
    }
  }

  void whole_record(const OlderObject& obj, const OlderObject& other) {
    std::vector<uint64_t> got(type_.told.fields.size());
    std::vector<uint64_t> outs;
    std::vector<uint64_t> values;
    for (const told::Field& told : type_.told.fields) {
      if (told.cls == Class::value) values.push_back(1);
      if (told.cls == Class::value || told.cls == Class::counter)
        outs.push_back(word(&got[outs.size()]));
    }
    obj.call("_set_all", values);
    obj.call("_get_all", outs);
    note("_get_all", got[0]);
    other.call("_set", {word(obj.get())});
    note("_set", 0);
    other.call("_post_copyout_cleanup", {word(obj.get())});
    type_.call("_set_instance_embedded", {word(h_), instance, word(obj.get())});
    note("_adjust_variant", obj.call("_adjust_variant", {}));
    note("_get_oid_count", obj.call("_get_oid_count", {}));
    for (unsigned number = 0; number <= type_.told.newest().bound; ++number)
      note("_is_valid_cr", type_.call("_is_valid_cr", {word(h_), word(obj.get()), number, 0}));
  }

  void forms_of(const OlderObject& obj, const OlderObject& other) {
    for (const char* const suffix : {"_marshal", "_marshal_for_clone"}) {
      std::string image(room, '\0');
      const uint64_t length = type_.call(suffix, {word(h_), instance, word(image.data()),
                                                  word(obj.get()), room - 1, word(&h_.err)});
      note(suffix, length, image);
    }
    std::string text(room, '\0');
    note("_print",
         type_.call("_print", {word(h_), instance, word(text.data()), 0, word("obj"),
                               word(obj.get()), room, word(&h_.err)}),
         text.c_str());
    text.assign(room, '\0');
    note("_to_xml",
         type_.call("_to_xml", {word(h_), instance, word("obj"), word(text.data()), word(obj.get()),
                                room, 0, word(&h_.err)}),
         text.c_str());
    from_xml(obj, text);
    note("_len", type_.call("_len", {word(h_), instance, word(obj.get())}));
    note("_hash", type_.call("_hash", {word(obj.get()), 1}));
    note("_compare", type_.call("_compare", {word(obj.get()), word(other.get())}));
    clone(obj);
  }

  // Of what the object itself has: the caller of from_xml answers for the room of later fields.
  void from_xml(const OlderObject& obj, const std::string& text) {
    uint32_t err = 0;
    ork_xml* const document =
        ork_xml_parse(text.c_str(), std::strlen(text.c_str()), &err, nullptr, 0);
    ASSERT_NE(document, nullptr) << text.c_str();
    type_.call("_from_xml", {word(h_), instance, word("/obj"), word(document), word(obj.get()),
                             word(&h_.err), 0, 0});
    note("_from_xml", 0);
    ork_xml_free(document);
  }

  void clone(const OlderObject& obj) {
    std::vector<uint8_t> workspace(room);
    void* made = nullptr;
    type_.call("_clone_internal", {word(h_), instance, word(obj.get()), word(&made),
                                   word(workspace.data()), room - 1, word(&h_.err)});
    note("_clone_internal", made != nullptr);
    if (made != nullptr) type_.destroy(h_, made);
  }

  // From a peer of the newest release.
  void read_into(const OlderObject& obj) {
    void* const newest = type_.create(h_);
    std::vector<uint8_t> image(room);
    const uint64_t length = type_.call("_marshal", {word(h_), instance, word(image.data()),
                                                    word(newest), room - 1, word(&h_.err)});
    type_.destroy(h_, newest);
    note("_unmarshal", type_.call("_unmarshal", {word(h_), instance, word(image.data()),
                                                 word(obj.get()), length, 0, word(&h_.err)}));
    EXPECT_EQ(obj.variant(), static_cast<int>(cap_)) << type_.told.name;
  }

  static constexpr size_t room = 1 << 14;
  SpiedHandle& h_;
  const Type& type_;
  unsigned cap_;
  Outcomes outcomes_;
};

}  // namespace

TEST(OlderLayouts, nothing_outside_of_the_block_is_written_and_nothing_depends_on_it) {
  unsigned layouts = 0;
  for (const Mode& mode : kit::all_modes()) {
    for_each_older_layout([&](const Type& type, unsigned cap) {
      ++layouts;
      Outcomes outcomes[2];
      for (const bool second : {false, true}) {
        SpiedHandle h(mode);
        const GuardedBlocks blocks(h, second ? 0x5A : 0xA5);
        outcomes[second] = EveryCall(h, type, cap).run();
        EXPECT_TRUE(blocks.whole()) << type.told.name << " " << cap << ", " << mode.text();
      }
      EXPECT_TRUE(spy::same_calls(outcomes[0], outcomes[1]))
          << type.told.name << " " << cap << ", " << mode.text();
    });
  }
  EXPECT_EQ(layouts, 16u * kit::all_modes().size())
      << "11 records of two variants, one of three, one of four";
}

// ---- Upgraded in place although tracked ----

namespace {

// Upgrades of an older layout for which its body has room.
struct Upgrade {
  const char* record;
  unsigned cap, variant;
};
constexpr Upgrade upgrades[] = {
    {"fwe_cl_wayfind_chan_st", 0, 1},           {"fwe_cl_wayfind_chan_st", 2, 3},
    {"fwe_cl_wayfind_global_info_data", 0, 1},  {"fwe_cl_wayfind_chan_stats_st", 0, 1},
    {"fwe_cl_wayfind_select_state_data", 0, 1}, {"fwe_cl_wayfind_global_state_data", 0, 1},
    {"fwe_cl_wayfind_global_state_data", 1, 2},
};

// The runtime of a platform that upgrades tracked objects too. The caller gives them the room.
spy::Replacement upgrades_to(unsigned variant) {
  return spy::replace(orklib_adjust_variant,
                      [variant](ork_handle*, uint32_t, void* obj, const ork_type_info*,
                                int32_t newest, uint32_t*) -> uint32_t {
                        if (newest == 0) return 0;  // of an enum
                        header(obj).variant = static_cast<int8_t>(variant);
                        return 1;
                      });
}

// Each field with a state byte of its own, up to that variant.
std::vector<Field> tracked_fields(const Type& type, unsigned variant) {
  std::vector<Field> fields;
  for (const told::Field& told : type.told.fields) {
    if (told.state >= 0 && told.variant <= variant) fields.push_back(field(type, told.name));
  }
  return fields;
}

std::vector<uint8_t> marshalled(SpiedHandle& h, const Type& type, const OlderObject& obj) {
  std::vector<uint8_t> image(1 << 14);
  image.resize(type.call("_marshal", {word(h), instance, word(image.data()), word(obj.get()),
                                      image.size() - 1, word(&h.err)}));
  return image;
}

}  // namespace

TEST(OlderLayouts, upgraded_while_tracked_have_their_states_read_where_they_are_written) {
  for (const Upgrade& upgrade : upgrades) {
    SpiedHandle h(kit::tracked);
    const GuardedBlocks blocks(h);
    const Type& type = frame::type(upgrade.record);
    const OlderObject obj(h, type, upgrade.cap, upgrade.variant);
    const auto upgraded = upgrades_to(upgrade.variant);
    obj.call("_adjust_variant", {});
    const std::vector<uint8_t> without = marshalled(h, type, obj);

    std::vector<uint8_t> states;
    for (const Field& f : tracked_fields(type, upgrade.variant)) {
      states.push_back(static_cast<uint8_t>(states.size() + 1));
      obj.call(f, "_state_flag_set", {states.back()});
      EXPECT_EQ(obj.state()[f.told.state], states.back()) << f.name();
      EXPECT_EQ(static_cast<uint8_t>(obj.call(f, "_state_flag_get")), states.back()) << f.name();
    }
    const std::vector<uint8_t> with = marshalled(h, type, obj);
    ASSERT_EQ(with.size(), without.size()) << upgrade.record;
    std::vector<uint8_t> sent;
    for (size_t i = 0; i < with.size(); ++i) {
      if (with[i] != without[i]) sent.push_back(with[i]);
    }
    EXPECT_EQ(sent, states) << upgrade.record << " of layout " << upgrade.cap
                            << ", in the order of the fields";

    for (const Field& f : tracked_fields(type, upgrade.variant)) {
      if (f.told.cls != Class::value) continue;
      obj.call(f, "_set_value", {1});
      EXPECT_EQ(static_cast<uint8_t>(obj.call(f, "_state_flag_get")), 2) << f.name();
    }
    EXPECT_EQ(h.err, 0u) << upgrade.record;
  }
}

TEST(OlderLayouts, answer_0_for_the_state_of_a_field_that_neither_layout_nor_variant_has) {
  for_each_older_layout([](const Type& type, unsigned cap) {
    for (const int variant : {static_cast<int>(cap), -1}) {
      SpiedHandle h(kit::tracked);
      const GuardedBlocks blocks(h);
      const OlderObject obj(h, type, cap);
      std::memset(obj.state(), 0x33, 1);
      obj.variant() = static_cast<int8_t>(variant);
      for (const Field& f : tracked_fields(type, type.told.newest_variant())) {
        const uint64_t answer = obj.call(f, "_state_flag_get");
        EXPECT_EQ(static_cast<uint8_t>(answer), f.told.state == 0 ? 0x33 : 0) << f.name();
      }
      EXPECT_EQ(h.err, 0u) << type.told.name;
    }
  });
}

}  // namespace frame
