// A whole record set from another: every field and state byte arrives, arrays move.
#include "laws/frame/fields.h"

namespace frame {

namespace {

// Writes a value of its own, other than 0, to every field that the object's variant has, down to
// the elements' fields, and to every state byte.
class Filler {
 public:
  explicit Filler(SpiedHandle& h) : h_(h) {}

  void fill(const Type& type, void* obj) {
    for (const told::Field& told : type.told.fields) {
      if (told.cls != Class::counter && static_cast<int>(told.variant) <= header(obj).variant) {
        fill_field(field(type, told.name), obj);
      }
    }
  }

 private:
  uint64_t next() { return next_ = next_ % 255 + 1; }

  uint64_t call(const Field& f, const std::string& suffix, void* obj,
                std::vector<uint64_t> arguments) {
    arguments.insert(arguments.begin(), {word(h_), instance, word(obj)});
    arguments.push_back(word(&h_.err));
    const uint64_t result = f.call(suffix, arguments);
    EXPECT_EQ(h_.err, 0u) << f.name() << suffix;
    return result;
  }

  void fill_field(const Field& f, void* obj) {
    const Source src(h_, f);
    if (f.told.cls == Class::text) {
      call(f, "_set", obj, {src.word(), next() % f.told.width + 1});
    } else if (f.is_array()) {
      call(f, "_set", obj, {1, src.word()});
      for (uint64_t i = 0; i < 2; ++i) {
        f.is_record() ? fill(type(f.told.type), reinterpret_cast<void*>(call(f, "_get", obj, {i})))
                      : static_cast<void>(call(f, "_set_value", obj, {i, next()}));
      }
    } else if (f.is_record()) {
      fill(type(f.told.type), reinterpret_cast<void*>(call(f, "_get", obj, {})));
    } else if (f.is_enum() || f.told.cls == Class::object || f.told.type == "ork_boolean") {
      call(f, "_set", obj, {src.word()});
    } else {
      call(f, "_set_value", obj, {next()});
    }
    if (!h_.tracking()) {
      return;
    }
    if (!f.is_array()) {
      call(f, "_state_flag_set", obj, {next()});
      return;
    }
    call(f, "_state_flag_whole_set", obj, {next()});
    for (uint64_t i = 0; i < 2; ++i) {
      call(f, "_state_flag_set", obj, {i, next()});
    }
  }

  SpiedHandle& h_;
  uint64_t next_ = 0;
};

// What an object's bytes become when its arrays leave it: no block, no count, no element bytes.
void leave(const told::Record& record, uint8_t* body, uint8_t* state) {
  for (const told::Field& field : record.fields) {
    if (field.cls == Class::value_array || field.cls == Class::record_array) {
      const told::Field& count = record.fields[0];
      std::fill_n(body + count.offset, count.width, uint8_t{0});
      std::fill_n(body + field.offset, 8, uint8_t{0});
      if (state) {
        std::fill_n(state + field.state + 8, 8, uint8_t{0});
      }
    } else if (field.nested >= 0) {
      leave(*told::record(field.type), body + field.offset, state ? state + field.nested : nullptr);
    }
  }
}

}  // namespace

TEST(RecordSet, every_field_and_state_byte_arrives_and_arrays_move) {
  for (const Mode& mode : kit::all_modes()) {
    SpiedHandle h(mode);
    for (const Type& type : types()) {
      for (unsigned variant = 0; variant < type.told.layouts.size(); ++variant) {
        const std::string where =
            type.told.name + " variant " + std::to_string(variant) + ", " + mode.text();
        SpiedObject dst(h, type, "dst");
        const auto domain = h.domain({{type.told.name, static_cast<int8_t>(variant)}});
        const auto stay = spy::answer(orklib_adjust_variant, 0);
        SpiedObject src(h, type, "src");
        Filler(h).fill(type, src.get());
        std::vector<uint8_t> expected = src.snapshot().before();
        std::vector<std::string> announced = {"write_notify_fn(dst," +
                                              std::to_string(type.told.newest().body) + ",7,dst)"};
        if (h.tracking()) {
          announced.push_back("write_notify_fn(dst_state," +
                              std::to_string(type.told.newest().state) + ",7,dst_state)");
        }
        spy::Log log;
        type.call("_set", {word(h), instance, dst.word(), src.word(), word(&h.err)});
        EXPECT_EQ(h.err, 0u) << where;
        EXPECT_EQ(h.last_error(), 0u) << where;
        std::vector<std::string> calls = log.calls_of({"write_notify_fn"});
        calls.resize(std::min(calls.size(), announced.size()));
        EXPECT_CALLS(calls, announced) << where;
        // Nothing in a header differs either: the variant comes down to the source's.
        EXPECT_EQ(header(dst.get()).variant, static_cast<int>(variant)) << where;
        EXPECT_EQ(dst.snapshot().before(), expected) << where;
        leave(type.told, expected.data(),
              h.tracking() ? expected.data() + type.told.newest().body : nullptr);
        EXPECT_EQ(src.snapshot().before(), expected) << where;
      }
    }
  }
}

}  // namespace frame
