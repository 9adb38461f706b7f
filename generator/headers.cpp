#include "generator/names.h"
#include "generator/output.h"
#include "generator/wrap.h"

namespace generator {
namespace {

std::string guard(const std::string& name) {
  std::string out = "FWE_UI_WAYFIND_";
  for (const char c : name) out += c == '.' ? '_' : static_cast<char>(toupper(c));
  return out + "_H";
}

class Header {
 public:
  Header(const std::string& folder, const std::string& name, const std::string& about)
      : path_(folder + "/" + name + ".h"), guard_(guard(name)) {
    text_ = comment(about) + "#ifndef " + guard_ + "\n#define " + guard_ + "\n\n";
  }
  void include(const std::string& file) { text_ += "#include " + file + "\n"; }
  void open() { text_ += "\n#ifdef __cplusplus\nextern \"C\" {\n#endif\n\n"; }
  void say(const std::string& text) { text_ += comment(text); }
  void line(const std::string& text) { text_ += text + "\n"; }
  void add(const std::vector<Declaration>& declarations) {
    for (const Declaration& declaration : declarations)
      text_ += comment(declaration.doc) + wrapped_lines(declaration.text) + "\n";
  }
  void add(const Functions& functions) {
    for (const Function& function : functions)
      text_ += comment(function.doc) + prototype(function) + "\n";
  }
  void title(const std::string& text) {
    constexpr size_t frame = sizeof "/* ---- " + sizeof " */" - 1;
    const size_t used = frame + text.size();
    text_ += "/* ---- " + text + " " + std::string(used < line_width ? line_width - used : 1, '-') +
             " */\n\n";
  }
  void write() {
    text_ += "#ifdef __cplusplus\n}\n#endif\n\n#endif\n";
    write_file(path_, text_);
  }

 private:
  std::string path_;
  std::string guard_;
  std::string text_;
};

const char* class_word(model::Class cls) {
  switch (cls) {
    case model::Class::value: return "value";
    case model::Class::object: return "object";
    case model::Class::text: return "text";
    case model::Class::counter: return "counter";
    case model::Class::value_array: return "array of values";
    case model::Class::record_array: return "array of records";
  }
  return "";
}

std::string field_line(const model::FieldRow& row, const model::Field& field) {
  std::string what = class_word(row.cls);
  if (row.cls == model::Class::text) what += " of " + std::to_string(row.width) + " bytes";
  what += row.cls == model::Class::text ? "" : ", " + storage_type(row);
  if (row.variant != 0) what += ", from variant " + std::to_string(row.variant);
  return std::string(field.name) + ": " + field.meaning + " (" + what + ")";
}

void write_types(const std::string& folder, const std::string& about) {
  Header header(folder, "types", about);
  header.include("<stdint.h>");
  header.line("");
  header.include("\"ork/orklib.h\"");
  header.open();
  header.title("Records");
  for (const model::Record* record : model::records) {
    header.say(record->meaning);
    header.line(std::string("struct ") + record->name + ";\n");
  }
  header.title("Enums and the flag set");
  for (size_t i = 0; i < model::small_type_count; ++i)
    header.line(std::string("struct ") + small_name(i) + ";");
  header.line("");
  header.title("Messages");
  for (const model::Message* message : model::messages) {
    header.say(message->meaning);
    header.line(std::string("struct ") + message->name + "_message;\n");
  }
  header.write();
}

void write_record(const std::string& folder, size_t index, const Interfaces& all) {
  const model::Record& record = *model::records[index];
  const model::RecordRow& row = model::record_rows[index];
  std::string about = std::string(record.name) + ": " + record.meaning +
                      "\n\nFields, in the order of memory, wire, text and XML:";
  size_t number = 0;
  for (const model::FieldRow& field : model::fields_of(row))
    about += "\n  " + field_line(field, record.fields[number++]);
  Header header(folder, record.name, about);
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.add(all.records[index].declarations);
  header.title("The record as a whole");
  header.add(all.records[index].functions);
  number = 0;
  for (const model::FieldRow& field : model::fields_of(row)) {
    header.title(field.name);
    header.say(field_line(field, record.fields[number++]));
    header.line("");
    header.add(all.fields[field.index].functions);
  }
  header.write();
}

void write_small(const std::string& folder, size_t index, const Interfaces& all) {
  const std::string name = small_name(index);
  const char* const* texts = small_texts(index);
  Header header(folder, name, name + ": " + small_meaning(index));
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.say(model::small_rows[index].is_flag_set ? "Flag numbers; flag n is bit n." : "Values.");
  header.line("enum {");
  for (size_t v = 0; v < model::small_rows[index].values; ++v) {
    const bool last = v + 1 == model::small_rows[index].values;
    header.line(std::string("    ") + texts[v] + " = " + std::to_string(v) + (last ? "" : ","));
  }
  header.line("};\n");
  header.add(all.small_types[index].declarations);
  header.add(all.small_types[index].functions);
  header.write();
}

void write_message(const std::string& folder, size_t index, const Interfaces& all) {
  const model::Message& message = *model::messages[index];
  const std::string name = message.name;
  std::string about = name + ": " + message.meaning + "\n\nCarries";
  for (size_t slot = 0; slot < model::message_rows[index].records; ++slot) {
    about += std::string(slot == 0 ? " " : ", then ") + message.load.records[slot]->name;
  }
  Header header(folder, name + "_message", about + ".");
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.add(all.messages[index].declarations);
  header.add(all.messages[index].functions);
  header.write();
}

void write_bundle(const std::string& folder, size_t index, const Interfaces& all) {
  const model::Bundle& bundle = *model::bundles[index];
  const std::string name = bundle.name;
  std::string about = name + ": " + bundle.meaning + "\n\nMessages allowed inside:";
  for (const model::Member& member : bundle.members) {
    if (member.message == nullptr) break;
    about += std::string("\n  ") + member.message->name +
             (member.occurs == model::Occurs::repeatedly ? ", any number of times" : ", once");
  }
  Header header(folder, name + "_bundle", about + "\n  ui_req_msg of the show core, once");
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.add(all.bundles[index].declarations);
  header.add(all.bundles[index].functions);
  header.write();
}

void write_module(const std::string& folder, const Interface& module) {
  Header header(folder, "module", "Functions and data of the module as a whole.");
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.add(module.declarations);
  header.add(module.functions);
  header.write();
}

void write_umbrella(const std::string& folder) {
  Header header(folder, "fwe_ui_wayfind", "Everything of fwe_ui_wayfind.");
  header.include("\"fwe_ui_wayfind/module.h\"");
  const auto include = [&](const std::string& name) {
    header.include("\"fwe_ui_wayfind/" + name + ".h\"");
  };
  for (const model::Record* record : model::records) include(record->name);
  for (size_t i = 0; i < model::small_type_count; ++i) include(small_name(i));
  for (const model::Message* message : model::messages)
    include(std::string(message->name) + "_message");
  for (const model::Bundle* bundle : model::bundles) include(std::string(bundle->name) + "_bundle");
  header.open();
  header.write();
}

}  // namespace

void write_headers(const std::string& folder, const std::string& about_types,
                   const Interfaces& all) {
  write_types(folder, about_types);
  for (size_t i = 0; i < model::record_count; ++i) write_record(folder, i, all);
  for (size_t i = 0; i < model::small_type_count; ++i) write_small(folder, i, all);
  for (size_t i = 0; i < model::message_count; ++i) write_message(folder, i, all);
  for (size_t i = 0; i < model::bundle_count; ++i) write_bundle(folder, i, all);
  write_module(folder, all.module);
  write_umbrella(folder);
}

}  // namespace generator
