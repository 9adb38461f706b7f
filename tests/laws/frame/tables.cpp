// The library's tables with all derived numbers, line for line against facts.txt, which was worked
// out apart from it.
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "laws/frame/fields.h"

namespace frame {

namespace {

template <class... A>
std::string line(const char* format, A... arguments) {
  char text[512];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

std::string hex(const uint8_t* luid) {
  std::string text;
  for (int i = 0; i < 16; ++i) {
    text += line("%02x", luid[i]);
  }
  return text;
}

const char* word_of(wayfind_class cls) {
  const char* const words[] = {"value", "object", "text", "counter", "value_array", "record_array"};
  return words[cls];
}

const char* word_of(const wayfind_field& field) {
  const char* const words[] = {"u_int8",      "u_int16",   "u_int32",    "u_int64",
                               "ork_boolean", "link_type", "ip_address", "char"};
  return field.type_name ? field.type_name : words[field.kind];
}

void dump_identity(std::vector<std::string>& lines, const char* kind, const char* name,
                   const ork_type_info& type) {
  lines.push_back(line("%s %s", kind, name));
  lines.push_back("luid " + hex(type.luid));
}

void dump_record(std::vector<std::string>& lines, const wayfind_record& record) {
  dump_identity(lines, "record", record.name, *record.type);
  lines.push_back(line("definition %s", record.definition));
  for (int v = 0; v < record.type->varinfo->n_variants; ++v) {
    const wayfind_layout& layout = record.layouts[v];
    const ork_variant_entry& entry = record.type->varinfo->entries[v];
    lines.push_back(line("variant %" PRIu32 " used %" PRIu32 " slop %" PRIu32
                         " body %u state %u bound %u",
                         entry.variant, entry.used_length, entry.alloc_slop, layout.body,
                         layout.state, layout.bound));
  }
  unsigned number = 0;
  unsigned variant = 0;
  for (int i = 0; i < record.field_count; ++i, ++number) {
    const wayfind_field& field = record.fields[i];
    if (field.variant != variant) {
      ++number;
      variant = field.variant;
    }
    const bool counter = field.cls == WAYFIND_COUNTER;
    const bool embedded = field.cls == WAYFIND_OBJECT && field.kind == WAYFIND_RECORD;
    const bool array = field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
    lines.push_back(
        line("field %s %s %s%s %u %u %u %u %s %s", field.name, word_of(field.cls), word_of(field),
             array ? line("[%s]", record.fields[i - 1].name).c_str() : "", field.variant, number,
             field.offset, field.width, counter ? "-" : std::to_string(field.state).c_str(),
             embedded ? std::to_string(field.nested).c_str() : "-"));
  }
}

void dump_small(std::vector<std::string>& lines, const wayfind_small_type& small) {
  dump_identity(lines, small.is_flag_set ? "flags" : "enum", small.name, *small.type);
  const ork_variant_entry& entry = small.type->varinfo->entries[0];
  lines.push_back(line("variant %u size %u used %u slop %u", entry.variant, small.size,
                       entry.used_length, entry.alloc_slop));
  for (int v = 0; v < small.values; ++v) lines.push_back(line("value %d %s", v, small.texts[v]));
}

void dump_message(std::vector<std::string>& lines, const wayfind_message& message) {
  dump_identity(lines, "message", message.name, *message.type);
  const ork_variant_entry& entry = message.type->varinfo->entries[0];
  lines.push_back(
      line("variant %u used %u slop %u", entry.variant, entry.used_length, entry.alloc_slop));
  for (int r = 0; r < message.record_count; ++r) {
    lines.push_back(line("carries %s tag 0x%08x", message.records[r]->name,
                         message.call_site_tag + static_cast<unsigned>(r)));
  }
}

void dump_bundle(std::vector<std::string>& lines, const wayfind_bundle& bundle) {
  lines.push_back(line("bundle %s", bundle.name));
  lines.push_back("start " + hex(bundle.luids[0]));
  lines.push_back("abort " + hex(bundle.luids[1]));
  lines.push_back("commit " + hex(bundle.luids[2]));
  for (int m = 0; m < bundle.member_count; ++m) {
    lines.push_back(line("member %s %s", bundle.members[m].message->name,
                         bundle.members[m].repeatable ? "repeatable" : "once"));
  }
  lines.push_back("member ui_req_msg once");
}

std::vector<std::string> dump() {
  std::vector<std::string> lines;
  for (unsigned i = 0; i < wayfind_record_count; ++i) dump_record(lines, wayfind_records[i]);
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) dump_small(lines, wayfind_small_types[i]);
  for (unsigned i = 0; i < wayfind_message_count; ++i) dump_message(lines, wayfind_messages[i]);
  for (unsigned i = 0; i < wayfind_bundle_count; ++i) dump_bundle(lines, wayfind_bundles[i]);
  return lines;
}

// The facts line by line, one blank between words, without what the library's own tables do not
// have: definition hashes of other types than records and the index sections, which are read from
// the built file elsewhere, and what only the command knows, the subjects and counts of a show.
std::vector<std::string> facts() {
  std::vector<std::string> lines;
  std::ifstream file(told::path());
  std::string kind;
  for (std::string text; std::getline(file, text);) {
    std::istringstream words(text);
    std::string whole;
    for (std::string word; words >> word && word != "#" && word != "counts";)
      whole += whole.empty() ? word : " " + word;
    if (whole.empty()) continue;
    const std::string what = whole.substr(0, whole.find(' '));
    if (text[0] != ' ') kind = what;
    if (kind == "traces" || what == "show" || (what == "definition" && kind != "record")) continue;
    lines.push_back(whole);
  }
  return lines;
}

}  // namespace

TEST(Tables, agree_line_by_line_with_the_facts) {
  const std::vector<std::string> told = facts();
  ASSERT_GT(told.size(), 600u);
  const std::vector<std::string> made = dump();
  for (size_t i = 0; i < std::max(told.size(), made.size()); ++i) {
    ASSERT_EQ(i < made.size() ? made[i] : "nothing", i < told.size() ? told[i] : "nothing")
        << "line " << i + 1;
  }
}

TEST(Tables, count_what_there_is) {
  size_t fields = 0;
  for (const Type& type : types()) {
    fields += type.told.fields.size();
    EXPECT_EQ(type.schema.field_count, type.told.fields.size());
  }
  EXPECT_EQ(types().size(), 56u);
  EXPECT_EQ(fields, 352u);
  EXPECT_EQ(told::tables().smalls.size(), 12u);
  EXPECT_EQ(told::tables().messages.size(), 28u);
  EXPECT_EQ(told::tables().bundles.size(), 18u);
  unsigned traces = 0;
  for (const told::Traces& section : told::tables().traces) {
    traces += section.entries;
  }
  EXPECT_EQ(traces, 5656u);
}

TEST(Tables, each_field_has_exactly_the_accessors_of_its_class) {
  const std::map<Class, std::vector<std::string>> told = {
      {Class::value,
       {"_get", "_get_value", "_state_flag_get", "_set", "_set_value", "_state_flag_set"}},
      {Class::object, {"_get", "_state_flag_get", "_set", "_state_flag_set"}},
      {Class::text, {"_get", "_state_flag_get", "_set", "_set_cr", "_state_flag_set"}},
      {Class::counter, {"_get", "_get_value"}},
      {Class::value_array,
       {"_get_mem", "_get", "_get_value", "_state_flag_whole_get", "_state_flag_get_arr",
        "_state_flag_get", "_set_mem", "_set_mem_cr", "_set", "_set_cr", "_set_value",
        "_remove_elements", "_state_flag_whole_set", "_state_flag_set_arr", "_state_flag_set"}},
      {Class::record_array,
       {"_get", "_state_flag_whole_get", "_state_flag_get_arr", "_state_flag_get", "_set",
        "_set_cr", "_remove_elements", "_state_flag_whole_set", "_state_flag_set_arr",
        "_state_flag_set"}},
  };
  for_each_field([&](const Field& f) {
    std::vector<std::string> made;
    for (const wayfind_function* function = f.schema.functions; function->suffix; ++function) {
      made.push_back(function->suffix);
    }
    std::vector<std::string> expected = told.at(f.told.cls);
    std::sort(made.begin(), made.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(made, expected) << f.name();
  });
  for (const Type& type : types()) {
    size_t count = 0;
    for (const wayfind_function* function = type.schema.functions; function->suffix; ++function) {
      ++count;
    }
    EXPECT_EQ(count, 39u) << type.told.name;
  }
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    size_t count = 0;
    for (const wayfind_function* function = wayfind_small_types[i].functions; function->suffix;
         ++function) {
      ++count;
    }
    EXPECT_EQ(count, wayfind_small_types[i].is_flag_set ? 33u : 32u) << wayfind_small_types[i].name;
  }
}

}  // namespace frame
