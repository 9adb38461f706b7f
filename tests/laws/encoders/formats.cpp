// The formats that texts are printed with: names and values come as arguments, never as a format of
// their own.
#include <bit>

#include "behaviour/encoders/values.h"
#include "support/spied.h"

namespace {

using namespace encoders;
using Formats = std::vector<std::string>;

uint32_t print_small(const SpiedHandle& h, const wayfind_small_type& type, const void* object) {
  char text[400] = "";
  uint32_t err = 0;
  return function<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*, const void*,
                           uint32_t, uint32_t*)>(type.functions, "_print")(
      h, instance, text, 0, "100%s", object, sizeof text, &err);
}

TEST(Formats, of_enums_and_the_flag_set_are_told_and_take_texts_as_arguments) {
  const SpiedHandle h;
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    const wayfind_small_type& type = wayfind_small_types[i];
    void* const object =
        function<void*(ork_handle*, uint32_t)>(type.functions, "_create")(h, instance);
    for (uint32_t value = 0; value < (type.is_flag_set != 0 ? 32u : type.values + 2u); ++value) {
      Formats expected = {"%s@%s:"};
      if (type.is_flag_set != 0) {
        kit::bytes(object)[11] = static_cast<uint8_t>(value);
        expected.insert(expected.end(), static_cast<size_t>(std::popcount(value)), "%s");
        expected.emplace_back("\n");
      } else {
        kit::store(kit::bytes(object) + 12, value);
        expected.emplace_back(value < type.values ? "%s\n" : "Enum value out of range");
      }
      spy::Log log;
      print_small(h, type, object);
      EXPECT_EQ(log.formats(), expected) << type.name << " " << value;
    }
    function<void(ork_handle*, uint32_t, void*)>(type.functions, "_destroy")(h, instance, object);
  }
}

// What the record and those inside it are printed with, in order, without what the flag set has for
// its flags.
void append_formats(const wayfind_record& record, uint32_t elements, Formats& out) {
  out.emplace_back("%s@%s: {\n");
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    for (uint32_t n = field.cls == WAYFIND_RECORD_ARRAY ? elements
                      : field.record != nullptr         ? 1
                                                        : 0;
         n > 0; --n) {
      append_formats(*field.record, elements, out);
    }
    if (field.type != nullptr) {
      out.emplace_back("%s@%s:");
      out.emplace_back(field.type->is_flag_set != 0 ? "\n" : "%s\n");
    }
  }
  out.emplace_back("}\n");
}

TEST(Formats, of_every_record_are_told) {
  const SpiedHandle h;
  for (const Calls& calls : all_records()) {
    const Object object = filled(h, calls, 2);
    Formats expected;
    append_formats(*calls.schema, 2, expected);
    spy::Log log;
    printed(h, calls, object.get());
    Formats got = log.formats();
    std::erase(got, "%s");
    EXPECT_EQ(got, expected) << calls.name();
  }
}

}  // namespace
