// The sites of accessors and state functions: each raised for every field that has the function.
#include <span>

#include "stage.h"
#include "texts.h"

namespace trace_sites {
namespace {

constexpr uint8_t state_tracked = 0x08;

using namespace kit;

struct Field {
  const wayfind_record& record;
  const wayfind_field& schema;

  std::string name(const char* suffix) const {
    return std::string(record.name) + "_" + schema.name + suffix;
  }
  bool has(const char* suffix) const { return kit::has_function(schema.functions, suffix); }
  bool is_array() const {
    return schema.cls == WAYFIND_VALUE_ARRAY || schema.cls == WAYFIND_RECORD_ARRAY;
  }

  void* create(const TickingHandle& handle) const { return create_record(handle, record); }
  static void* create_record(const TickingHandle& handle, const wayfind_record& type) {
    return function<void*(ork_handle*, uint32_t)>(type.functions, "_create")(handle, instance);
  }

  // The function on an object; the arguments between it and the error slot.
  void call(const char* suffix, const TickingHandle& handle, void* object,
            std::vector<uint64_t> arguments) const {
    std::vector<uint64_t> words = {word(static_cast<ork_handle*>(handle)), instance, word(object)};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(word(&handle.err));
    kit::call_words(function<void()>(schema.functions, suffix), words);
  }

  // A field is set to itself: what lies in it has nothing to object.
  void set(const TickingHandle& handle, void* object) const {
    if (schema.cls == WAYFIND_TEXT) return call("_set", handle, object, {word("x"), 1});
    call("_set", handle, object, {word(kit::bytes(object) + schema.offset)});
  }
  void set_element(const TickingHandle& handle, void* object, uint32_t index,
                   const TickingHandle& source) const {
    static const uint64_t number = 0;
    const void* from =
        schema.cls == WAYFIND_RECORD_ARRAY ? create_record(source, *schema.record) : &number;
    call("_set", handle, object, {index, word(from)});
  }
};

std::vector<Field> fields_with(const char* suffix) {
  std::vector<Field> fields;
  for (const wayfind_record& record : std::span(wayfind_records, wayfind_record_count)) {
    for (const wayfind_field& schema : std::span(record.fields, record.field_count)) {
      const Field field{record, schema};
      if (field.has(suffix)) fields.push_back(field);
    }
  }
  return fields;
}

using Call = std::function<void(const TickingHandle&, void*)>;

// The two ways in which every function with a tracking test ends early: by a corrupted handle, and
// by an object without state bytes under a handle that tracks.
void expect_refusals(const Field& field, const char* suffix, const std::string& refusal,
                     const Call& prepare, const Call& call) {
  expect_trace({field.name(suffix), text::corrupted, "fatal", {}}, [&] {
    const TickingHandle handle;
    void* object = field.create(handle);
    prepare(handle, object);
    handle.corrupt();
    call(handle, object);
  });
  expect_trace({field.name(suffix), refusal, "error", {}}, [&] {
    const TickingHandle without;
    const TickingHandle tracking(ORK_TRACKING_ON);
    void* object = field.create(without);
    prepare(without, object);
    call(tracking, object);
  });
}

void nothing(const TickingHandle&, void*) {}

TEST(FieldSites, set) {
  for (const Field& field : fields_with("_set")) {
    expect_refusals(field, "_set", text::not_tracked, nothing,
                    [&](const TickingHandle& handle, void* object) {
                      if (field.is_array())
                        return field.set_element(handle, object, 0, TickingHandle());
                      field.set(handle, object);
                    });
  }
}

TEST(FieldSites, set_value) {
  for (const Field& field : fields_with("_set_value")) {
    const auto first_element = [&](const TickingHandle& handle, void* object) {
      if (field.is_array()) field.set_element(handle, object, 0, handle);
    };
    expect_refusals(
        field, "_set_value", text::not_tracked, first_element,
        [&](const TickingHandle& handle, void* object) {
          field.call("_set_value", handle, object,
                     field.is_array() ? std::vector<uint64_t>{0, 0} : std::vector<uint64_t>{0});
        });
  }
}

TEST(FieldSites, set_mem) {
  for (const Field& field : fields_with("_set_mem")) {
    expect_refusals(field, "_set_mem", text::not_tracked, nothing,
                    [&](const TickingHandle& handle, void* object) {
                      const uint64_t number = 0;
                      field.call("_set_mem", handle, object, {word(&number), 1});
                    });
  }
}

TEST(FieldSites, state_flag) {
  for (const Field& field : fields_with("_state_flag_get")) {
    expect_refusals(field, "_state_flag_get", text::non_tracked, nothing,
                    [&](const TickingHandle& handle, void* object) {
                      field.call(
                          "_state_flag_get", handle, object,
                          field.is_array() ? std::vector<uint64_t>{0} : std::vector<uint64_t>{});
                    });
    expect_refusals(
        field, "_state_flag_set", text::not_tracked, nothing,
        [&](const TickingHandle& handle, void* object) {
          field.call("_state_flag_set", handle, object,
                     field.is_array() ? std::vector<uint64_t>{0, 2} : std::vector<uint64_t>{2});
        });
  }
}

TEST(FieldSites, state_of_an_array) {
  for (const Field& field : fields_with("_state_flag_whole_get")) {
    uint8_t bytes[16] = {};
    uint8_t* out = nullptr;
    const auto expect = [&](const char* suffix, const std::string& refusal,
                            std::vector<uint64_t> arguments) {
      expect_refusals(field, suffix, refusal, nothing,
                      [&](const TickingHandle& handle, void* object) {
                        field.call(suffix, handle, object, arguments);
                      });
    };
    expect("_state_flag_whole_get", text::non_tracked, {});
    expect("_state_flag_whole_set", text::not_tracked, {2});
    expect("_state_flag_get_arr", text::non_tracked, {word(&out)});
    expect("_state_flag_set_arr", text::not_tracked, {word(bytes), 0});
  }
}

TEST(FieldSites, growth_of_an_array) {
  for (const Field& field : fields_with("_state_flag_whole_get")) {
    expect_trace({field.name("_set"), text::reallocating(field.record.name), "error", {}}, [&] {
      const TickingHandle handle;
      void* object = field.create(handle);
      for (uint32_t index = 0; index < 4; ++index) field.set_element(handle, object, index, handle);
    });
    if (field.schema.cls != WAYFIND_RECORD_ARRAY) continue;
    expect_trace({field.name("_set"), text::value_not_tracked, "error", {}}, [&] {
      const TickingHandle without;
      const TickingHandle tracking(ORK_TRACKING_ON);
      field.set_element(tracking, field.create(tracking), 0, without);
    });
  }
}

// The mode is asked for again when an array has grown and when an element has been written; by then
// it can be another.
TEST(FieldSites, set_of_an_array_whose_handle_or_object_changes_under_way) {
  for (const Field& field : fields_with("_state_flag_whole_get")) {
    const TickingHandle* handle = nullptr;
    void* object = nullptr;
    const auto corrupt = [&] { handle->corrupt(); };
    const auto lose_states = [&] {
      kit::header(object).obj_flags &= static_cast<uint8_t>(~state_tracked);
    };
    const auto set = [&](bool has_element) {
      handle = new TickingHandle(ORK_TRACKING_ON);
      object = field.create(*handle);
      if (has_element) field.set_element(*handle, object, 0, *handle);
      static const uint64_t number = 0;
      const void* source = field.schema.cls == WAYFIND_RECORD_ARRAY
                               ? Field::create_record(*handle, *field.schema.record)
                               : &number;
      count_calls_from_now();
      field.call("_set", *handle, object, {0, word(source)});
    };
    const auto grow = [&] { set(false); };
    const auto write = [&] { set(true); };
    expect_trace_after_change({field.name("_set"), text::corrupted, "fatal", {}, 1}, grow, corrupt);
    expect_trace_after_change({field.name("_set"), text::not_tracked, "error", {}, 1}, grow,
                              lose_states);
    expect_trace_after_change({field.name("_set"), text::corrupted, "fatal", {}, 2}, write,
                              corrupt);
    expect_trace_after_change({field.name("_set"), text::not_tracked, "error", {}, 2}, write,
                              lose_states);
  }
}

// An element is measured when the count has been read; by then the mode can be another. Here the
// count is the image's first field.
TEST(FieldSites, unmarshal_of_a_record_array_whose_handle_changes_under_way) {
  static const uint8_t image[32] = {0, 0, 0, 0, 0, 0, 1, 1, 1, 1};
  for (const Field& field : fields_with("_state_flag_whole_get")) {
    if (field.schema.cls != WAYFIND_RECORD_ARRAY) continue;
    expect_trace({std::string(field.schema.record->name) + "_sizeof", text::corrupted, "fatal", {}},
                 [&] {
                   const TickingHandle handle;
                   void* object = field.create(handle);
                   const auto corrupting = [&](auto* read) {
                     return spy::replace(read, [&handle, read](auto... arguments) {
                       handle.corrupt();
                       return spy::next(read)(arguments...);
                     });
                   };
                   const spy::Replacement counters[] = {corrupting(u_int8_unmarshal),
                                                        corrupting(u_int32_unmarshal)};
                   function<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t,
                                     uint32_t, uint32_t*)>(field.record.functions, "_unmarshal")(
                       handle, instance, image, object, sizeof image, 0, &handle.err);
                 });
  }
}

}  // namespace
}  // namespace trace_sites
