#include <sstream>

#include "generator/function.h"
#include "generator/output.h"

namespace generator {
namespace {

constexpr size_t line_width = 110;

// A text as a comment, each line behind " * ".
std::string comment(const std::string& text) {
  std::string out = "/*\n * ";
  for (const char c : text) out += c == '\n' ? std::string("\n * ") : std::string(1, c);
  return out + "\n */\n";
}

// A prototype, broken between parameters where it is too long.
std::string prototype(const Function& function) {
  const bool pointer = function.result.back() == '*';
  const std::string head = function.result + (pointer ? "" : " ") + function.name + "(";
  std::string out = head;
  size_t column = head.size();
  std::istringstream parameters(function.parameters);
  bool first = true;
  for (std::string parameter; std::getline(parameters, parameter, ',');) {
    if (parameter.front() == ' ') parameter.erase(0, 1);
    if (!first) {
      out += ",";
      const bool fits = column + parameter.size() + 3 <= line_width;
      out += fits ? std::string(" ") : std::string("\n    ");
      column = fits ? column + 2 : 4;
    }
    out += parameter;
    column += parameter.size();
    first = false;
  }
  return out + ");\n\n";
}

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
  void add(const Functions& functions) {
    for (const Function& function : functions) text_ += comment(function.doc) + prototype(function);
  }
  void title(const std::string& text) {
    text_ += "/* ---- " + text + " " + std::string(text.size() < 90 ? 90 - text.size() : 1, '-') +
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
  if (row.variant != 0) what += ", from variant " + std::to_string(row.variant) + " on";
  return std::string(field.name) + ": " + field.meaning + " (" + what + ")";
}

void descriptor_line(Header& header, const std::string& type) {
  header.say(
      "The type's descriptor, constant but for the statistics behind it. The library's; never "
      "written by a user.");
  header.line("extern const struct ork_type_info _" + type + "_type_info_internal;\n");
}

void write_types(const std::string& folder) {
  Header header(
      folder, "types",
      "The object types of fwe_ui_wayfind, and what holds for every function of the library.\n\n"
      "handle is the runtime's context. A handle and the objects reached through it are used by "
      "one thread at a\n"
      "time. instance is handed on to the handle's functions; 0xFFFFFFFF means none.\n\n"
      "err is a sticky error slot with an errno number, 0 for none: a function that finds *err set "
      "does nothing\n"
      "and gives 0 or null. So a sequence of calls can share one slot that is looked at once. A "
      "failure writes\n"
      "the slot and is stored on the handle as well; the numbers named at a function are those "
      "that it adds.\n"
      "Functions in _cr take the handle's cr_instance and cr_error instead.\n\n"
      "Objects are opaque. What a function hands out belongs to the object it was asked of, unless "
      "its text says\n"
      "that the caller owns it.");
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

void write_record(const std::string& folder, size_t index) {
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
  descriptor_line(header, record.name);
  header.title("The record as a whole");
  header.add(record_functions(index));
  number = 0;
  for (const model::FieldRow& field : model::fields_of(row)) {
    header.title(field.name);
    header.say(field_line(field, record.fields[number++]));
    header.line("");
    header.add(field_functions(field));
  }
  header.write();
}

void write_small(const std::string& folder, size_t index) {
  const bool flags = index >= model::enum_count;
  const std::string name = small_name(index);
  const char* const* texts = small_texts(index);
  const char* meaning =
      flags ? model::flag_sets[index - model::enum_count]->meaning : model::enums[index]->meaning;
  Header header(folder, name, name + ": " + meaning);
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.say(flags ? "Flag numbers; flag n is bit n." : "Values.");
  header.line("enum {");
  for (size_t v = 0; v < model::small_rows[index].values; ++v) {
    const bool last = v + 1 == model::small_rows[index].values;
    header.line(std::string("    ") + texts[v] + " = " + std::to_string(v) + (last ? "" : ","));
  }
  header.line("};\n");
  descriptor_line(header, name);
  header.add(small_functions(index));
  header.write();
}

void luid_lines(Header& header, const std::string& message) {
  header.say(
      "The message's identifier, as bytes and as text, and the name it has in bundle tables.");
  header.line("extern const uint8_t message_" + message + "_luid[16];");
  header.line("extern const char message_" + message + "_luid_text[33];");
  header.line("extern const char message_" + message + "_name[];\n");
}

void write_message(const std::string& folder, size_t index) {
  const model::Message& message = *model::messages[index];
  const std::string name = message.name;
  std::string about = name + ": " + message.meaning + "\n\nCarries";
  for (size_t slot = 0; slot < model::message_rows[index].records; ++slot) {
    about += std::string(slot == 0 ? " " : ", then ") + message.load.records[slot]->name;
  }
  Header header(folder, name + "_message", about + ".");
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  descriptor_line(header, name + "_message");
  luid_lines(header, name);
  header.say(
      "A process may define this function: it is then given every message of this kind that no "
      "other handler was\n"
      "named for, and owns it. The library only refers to it.");
  header.line("void fwe_ui_wayfind_" + name +
              "_message_handler(struct ork_handle *handle, uint32_t instance, void *ctx, void "
              "*msg, uint32_t *err);\n");
  header.add(message_functions(index));
  header.write();
}

void write_bundle(const std::string& folder, size_t index) {
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
  for (const char* kind : {"start", "abort", "commit"})
    luid_lines(header, name + "_bundle_" + kind);
  header.say(
      "The bundle's own handler, null when none is registered. Written by the two registration "
      "functions.");
  header.line("extern ork_bundle_handler fwe_ui_wayfind_" + name + "_bundle_registered_handler;\n");
  header.say(
      "A process may define this function: a committed bundle goes to it when no handler is "
      "registered anywhere. The\n"
      "library only refers to it.");
  header.line(
      "void fwe_ui_wayfind_" + name +
      "_bundle_handler(struct ork_handle *handle, uint32_t instance, void *ctx, uint32_t *err);\n");
  header.add(bundle_functions(index));
  header.write();
}

void write_module(const std::string& folder) {
  Header header(folder, "module", "Functions and data of the module as a whole.");
  header.include("\"fwe_ui_wayfind/types.h\"");
  header.open();
  header.say(
      "The number under which the trace library knows this module; 0 until the first record is "
      "created.");
  header.line("extern uint16_t g_ork_fwe_ui_wayfind_trace_module_id;\n");
  header.say("Kept for those that name it; the library never touches it.");
  header.line("extern uint16_t g_ork_fwe_ui_wayfind_stub_trace_module_id;\n");
  header.say(
      "The handler for all bundles, null when none is registered. Written by the two registration "
      "functions.");
  header.line("extern ork_bundle_handler fwe_ui_wayfind_bundle_registered_handler;\n");
  header.say(
      "Starts the trace channel; may be called any number of times. Gives back what the trace "
      "library says.");
  header.line("int32_t ork_fwe_ui_wayfind_trace_init(void);\n");
  header.add(module_functions());
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

void write_headers(const std::string& folder) {
  write_types(folder);
  for (size_t i = 0; i < model::record_count; ++i) write_record(folder, i);
  for (size_t i = 0; i < model::small_type_count; ++i) write_small(folder, i);
  for (size_t i = 0; i < model::message_count; ++i) write_message(folder, i);
  for (size_t i = 0; i < model::bundle_count; ++i) write_bundle(folder, i);
  write_module(folder);
  write_umbrella(folder);
}

}  // namespace generator
