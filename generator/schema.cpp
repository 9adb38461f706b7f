// The schema's description for tools and tests: names, classes, sizes, and the exported functions
// by their family names.
#include "generator/names.h"
#include "generator/output.h"
#include "generator/wrap.h"

namespace generator {
namespace {

std::string quoted(const std::string& text) { return "\"" + text + "\""; }
std::string number(size_t n) { return std::to_string(n); }

const char* class_word(model::Class cls) {
  switch (cls) {
    case model::Class::value: return "WAYFIND_VALUE";
    case model::Class::object: return "WAYFIND_OBJECT";
    case model::Class::text: return "WAYFIND_TEXT";
    case model::Class::counter: return "WAYFIND_COUNTER";
    case model::Class::value_array: return "WAYFIND_VALUE_ARRAY";
    case model::Class::record_array: return "WAYFIND_RECORD_ARRAY";
  }
  return "";
}
const char* kind_word(model::Kind kind) {
  switch (kind) {
    case model::Kind::u_int8: return "WAYFIND_U_INT8";
    case model::Kind::u_int16: return "WAYFIND_U_INT16";
    case model::Kind::u_int32: return "WAYFIND_U_INT32";
    case model::Kind::u_int64: return "WAYFIND_U_INT64";
    case model::Kind::ork_boolean: return "WAYFIND_ORK_BOOLEAN";
    case model::Kind::link_type: return "WAYFIND_LINK_TYPE";
    case model::Kind::ip_address: return "WAYFIND_IP_ADDRESS";
    case model::Kind::character: return "WAYFIND_CHAR";
    case model::Kind::enumeration: return "WAYFIND_ENUM";
    case model::Kind::flag_set: return "WAYFIND_FLAG_SET";
    case model::Kind::record: return "WAYFIND_RECORD";
  }
  return "";
}

// The functions of one stem, by what stands behind it.
std::string function_table(const std::string& symbol, const Interface& interface,
                           const std::string& stem) {
  std::string text = "static const struct wayfind_function " + symbol + "[] = {\n";
  for (const Function& function : interface.functions) {
    const std::string suffix = function.name.compare(0, stem.size(), stem) == 0
                                   ? function.name.substr(stem.size())
                                   : function.name;
    text += "    {" + quoted(suffix) + ", (void (*)(void))" + function.name + "},\n";
  }
  return text + "    {0, 0}};\n";
}

// A message by its name, as the tables of fields have it.
std::string counted_message(const model::Field& field) {
  for (size_t m = 0; m < model::message_count; ++m) {
    if (field.roles.counted != nullptr &&
        model::same_text(model::messages[m]->name, field.roles.counted))
      return "&wayfind_messages[" + number(m) + "]";
  }
  return "0";
}

std::string key_list(const model::Key& key) {
  std::string list;
  size_t count = 0;
  for (; count < model::max_key && key.paths[count] != nullptr; ++count)
    list += (count == 0 ? "" : ", ") + quoted(key.paths[count]);
  return number(count) + ", {" + (list.empty() ? "0" : list) + "}";
}

std::string field_tables(const Interfaces& all) {
  std::string text;
  for (const model::FieldRow& field : model::field_rows) {
    text += function_table("field_functions_" + number(field.index), all.fields[field.index],
                           std::string(model::records[field.record]->name) + "_" + field.name);
  }
  text += "static const struct wayfind_field fields[] = {\n";
  for (const model::RecordRow& record : model::record_rows) {
    size_t n = 0;
    for (const model::FieldRow& row : model::fields_of(record)) {
      const model::Field& field = model::records[record.index]->fields[n++];
      const bool typed = row.type != model::no_type;
      const bool of_record = row.kind == model::Kind::record;
      text += "    {" + quoted(field.name) + ", " + quoted(field.meaning) + ", " +
              class_word(row.cls) + ", " + kind_word(row.kind) + ", " +
              (typed ? quoted(type_name(row)) : "0") + ", " + number(row.variant) + ", " +
              number(row.offset) + ", " + number(row.width) + ", " + number(row.state) + ", " +
              number(row.nested) + ", " +
              (of_record ? "&wayfind_records[" + number(row.type) + "]" : "0") + ", " +
              (typed && !of_record ? "&wayfind_small_types[" + number(row.type) + "]" : "0") +
              ", " + number(field.roles.bits) + ", " + counted_message(field) +
              ", field_functions_" + number(row.index) + "},\n";
    }
  }
  return text + "};\n";
}

std::string record_tables(const Interfaces& all) {
  std::string text;
  for (size_t r = 0; r < model::record_count; ++r) {
    text +=
        function_table("record_functions_" + number(r), all.records[r], model::records[r]->name);
  }
  text += "const struct wayfind_record wayfind_records[] = {\n";
  for (const model::RecordRow& row : model::record_rows) {
    const model::Record& record = *model::records[row.index];
    text += "    {" + quoted(record.name) + ", " + quoted(record.meaning) + ", " +
            quoted(record.identity.luid) + ", " + quoted(record.identity.definition) + ", &_" +
            record.name + "_type_info_internal, " + number(row.variants) + ", {";
    for (size_t v = 0; v < row.variants; ++v) {
      const model::Sizes size = model::sizes(record, v);
      text += std::string(v == 0 ? "" : ", ") + "{" + number(size.used) + ", " + number(size.slop) +
              ", " + number(size.body) + ", " + number(size.state) + ", " +
              number(row.layouts[v].fields) + ", " + number(row.layouts[v].bound) + "}";
    }
    text += "}, " + number(row.fields) + ", &fields[" + number(row.first) + "], record_functions_" +
            number(row.index) + "},\n";
  }
  return text + "};\nconst unsigned wayfind_record_count = " + number(model::record_count) + ";\n";
}

std::string small_tables(const Interfaces& all) {
  std::string text;
  for (size_t i = 0; i < model::small_type_count; ++i) {
    text += function_table("small_functions_" + number(i), all.small_types[i], small_name(i));
  }
  text += "const struct wayfind_small_type wayfind_small_types[] = {\n";
  for (size_t i = 0; i < model::small_type_count; ++i) {
    const model::SmallRow& row = model::small_rows[i];
    text += "    {" + quoted(small_name(i)) + ", " + quoted(small_identity(i).luid) + ", &_" +
            small_name(i) + "_type_info_internal, " + (row.is_flag_set ? "1" : "0") + ", " +
            number(row.size) + ", " + number(row.values) + ", {";
    for (size_t v = 0; v < row.values; ++v)
      text += std::string(v == 0 ? "" : ", ") + quoted(small_texts(i)[v]);
    text += "}, small_functions_" + number(i) + "},\n";
  }
  return text + "};\nconst unsigned wayfind_small_type_count = " + number(model::small_type_count) +
         ";\n";
}

std::string message_tables(const Interfaces& all) {
  std::string text;
  for (size_t m = 0; m < model::message_count; ++m) {
    text += function_table("message_functions_" + number(m), all.messages[m],
                           std::string(model::messages[m]->name) + "_message");
  }
  text += "const struct wayfind_message wayfind_messages[] = {\n";
  for (const model::MessageRow& row : model::message_rows) {
    const model::Message& message = *model::messages[row.index];
    const std::string name = message.name;
    text += "    {" + quoted(name) + ", " + quoted(message.meaning) + ", message_" + name +
            "_luid, message_" + name + "_luid_text, message_" + name + "_name, &_" + name +
            "_message_type_info_internal, " + number(row.records) + ", {";
    for (size_t c = 0; c < row.records; ++c) {
      text += std::string(c == 0 ? "" : ", ") + "&wayfind_records[" +
              number(model::carried_rows[row.carried + c].record) + "]";
    }
    text += "}, " + number(model::carried_rows[row.carried].tag) + "u, " + key_list(message.key) +
            ", message_functions_" + number(row.index) + "},\n";
  }
  return text + "};\nconst unsigned wayfind_message_count = " + number(model::message_count) +
         ";\n";
}

std::string bundle_tables(const Interfaces& all) {
  std::string text;
  for (size_t b = 0; b < model::bundle_count; ++b) {
    text +=
        function_table("bundle_functions_" + number(b), all.bundles[b], model::bundles[b]->name);
  }
  text += "const struct wayfind_bundle wayfind_bundles[] = {\n";
  for (size_t b = 0; b < model::bundle_count; ++b) {
    const model::Bundle& bundle = *model::bundles[b];
    const std::string name = bundle.name;
    text += "    {" + quoted(name) + ", " + quoted(bundle.meaning) + ", {";
    std::string luids;
    for (const char* kind : {"start", "abort", "commit"}) {
      luids += (luids.empty() ? "" : ", ") + std::string("message_") + name + "_bundle_" + kind +
               "_luid";
    }
    text += luids;
    text += "}, {";
    size_t members = 0;
    for (const model::Member& member : bundle.members) {
      if (member.message == nullptr) break;
      const uint8_t row = model::row_of(*member.message, model::messages);
      text += std::string(members++ == 0 ? "" : ", ") + "{&wayfind_messages[" + number(row) +
              "], " + (member.occurs == model::Occurs::repeatedly ? "1" : "0") + "}";
    }
    text += "}, " + number(members) + ", &fwe_ui_wayfind_" + name +
            "_bundle_registered_handler, bundle_functions_" + number(b) + "},\n";
  }
  return text + "};\nconst unsigned wayfind_bundle_count = " + number(model::bundle_count) + ";\n";
}

}  // namespace

void write_schema(const std::string& folder, const Interfaces& all) {
  write_file(folder + "/wayfind_schema.c",
             "#include \"tools/schema/wayfind_schema.h\"\n\n"
             "#include \"fwe_ui_wayfind/fwe_ui_wayfind.h\"\n\n" +
                 wrapped_lines(field_tables(all) + record_tables(all) + small_tables(all) +
                               message_tables(all) + bundle_tables(all)));
}

}  // namespace generator
