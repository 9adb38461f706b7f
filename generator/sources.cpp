#include "generator/function.h"
#include "generator/output.h"

namespace generator {
namespace {

std::string include(const std::string& header) {
  return "#include \"fwe_ui_wayfind/" + header + ".h\"\n";
}

// One statement. Objects are plain memory inside the library and typed outside.
std::string definition(const Function& function) {
  if (function.call == "-") return {};
  if (function.call.empty()) {
    return "[[gnu::naked]] " + function.result + function.name +
           "(struct ork_handle *, uint32_t, const void *, uint32_t *) {\n" +
           "  asm(\"jmp ork_get_luid@PLT\");\n}\n";
  }
  const bool pointer = function.result.back() == '*' && function.result != "void *";
  const std::string call =
      pointer ? "static_cast<" + function.result + ">(" + function.call + ")" : function.call;
  return function.result + (function.result.back() == '*' ? "" : " ") + function.name + "(" +
         (function.parameters == "void" ? "" : function.parameters) + ") { return " + call +
         "; }\n";
}

std::string definitions(const Functions& functions) {
  std::string text;
  for (const Function& function : functions) text += definition(function);
  return text;
}

std::string file(const std::string& includes, const std::string& data,
                 const std::string& exported) {
  return "#include \"model/exports.h\"\n" + includes + "\n" + data +
         "\nextern \"C\" {\n#pragma GCC visibility push(default)\n\n" + exported +
         "\n#pragma GCC visibility pop\n}\n";
}

// A part of the records, counted from 1.
void write_records(const std::string& folder, size_t part, size_t parts) {
  const size_t per_file = (model::record_count + parts - 1) / parts;
  std::string includes;
  std::string code;
  for (size_t r = (part - 1) * per_file; r < part * per_file && r < model::record_count; ++r) {
    includes += include(model::records[r]->name);
    code += definitions(record_functions(r));
    for (const model::FieldRow& field : model::fields_of(model::record_rows[r]))
      code += definitions(field_functions(field));
  }
  write_file(folder + "/exports_records_" + std::to_string(part) + ".cpp",
             file(includes, "using frame::Kind;\n", code));
}

std::string descriptor(const std::string& symbol, const std::string& described) {
  return "constinit const ork_type_info _" + symbol + "_type_info_internal = frame::" + described +
         ";\n";
}

// Data alone, so that the engines need nothing from the files with functions.
void write_descriptors(const std::string& folder) {
  std::string includes;
  std::string code;
  std::string list;
  const auto describe = [&](const std::string& symbol, const std::string& described) {
    code += descriptor(symbol, described);
    list += "    &_" + symbol + "_type_info_internal,\n";
  };
  for (size_t r = 0; r < model::record_count; ++r) {
    includes += include(model::records[r]->name);
    describe(model::records[r]->name, "record_descriptor<" + record_table(r) + ">");
  }
  for (size_t i = 0; i < model::small_type_count; ++i) {
    includes += include(small_name(i));
    describe(small_name(i), "small_descriptor<" + small_table(i) + ">");
  }
  for (size_t m = 0; m < model::message_count; ++m) {
    includes += include(std::string(model::messages[m]->name) + "_message");
    describe(std::string(model::messages[m]->name) + "_message",
             "message_descriptor<" + message_table(m) + ">");
  }
  write_file(folder + "/descriptors.cpp",
             file("#include \"frame/descriptor.h\"\n" + includes,
                  "namespace frame {\nconst ork_type_info* const descriptors[] = {\n" + list +
                      "    nullptr};\n}\n",
                  code));
}

// Enums and the flag set.
void write_types(const std::string& folder) {
  std::string includes;
  std::string code;
  for (size_t i = 0; i < model::small_type_count; ++i) {
    includes += include(small_name(i));
    code += definitions(small_functions(i));
  }
  write_file(folder + "/exports_types.cpp", file(includes, "", code));
}

std::string identity(const std::string& name, const std::string& luid) {
  return "const uint8_t message_" + name + "_luid[16] = {" + luid_bytes(luid) + "};\n" +
         "const char message_" + name + "_luid_text[33] = \"" + luid + "\";\n" +
         "const char message_" + name + "_name[] = \"message " + name + "\";\n";
}

void write_messages(const std::string& folder) {
  std::string includes;
  std::string data;
  std::string code;
  for (size_t m = 0; m < model::message_count; ++m) {
    const std::string name = model::messages[m]->name;
    const model::MessageRow& row = model::message_rows[m];
    includes += include(name + "_message");
    data += "extern \"C\" [[gnu::weak]] decltype(fwe_ui_wayfind_" + name +
            "_message_handler) fwe_ui_wayfind_" + name + "_message_handler;\n";
    data += "constexpr messages::Message message_" + name + "{" + row_of_table(message_table(m)) +
            ", message_" + name + "_luid, message_" + name + "_name, {";
    for (size_t c = row.carried; c < size_t{row.carried} + row.records; ++c) {
      data += std::string(c == row.carried ? "" : ", ") + "messages::record_wire<" +
              record_table(model::carried_rows[c].record) + ">()";
    }
    data += "}};\n";
    code += identity(name, model::messages[m]->identity.luid) + definitions(message_functions(m));
  }
  write_file(folder + "/exports_messages.cpp", file(includes, data, code));
}

std::string table(const model::Bundle& bundle) {
  std::string text =
      std::string("constexpr ork_bundle_message_row table_") + bundle.name + "[] = {\n";
  for (const model::Member& member : bundle.members) {
    if (member.message == nullptr) break;
    const std::string name = member.message->name;
    text += "    {message_" + name + "_luid, message_" + name + "_name, " +
            (member.occurs == model::Occurs::repeatedly ? "1" : "0") + "},\n";
  }
  return text +
         "    {message_ui_req_msg_luid, message_ui_req_msg_name, 0},\n    {nullptr, nullptr, "
         "0}};\n";
}

void write_bundles(const std::string& folder) {
  std::string includes = "#include \"ork/show_core.h\"\n";
  std::string data;
  std::string code;
  for (const model::Message* message : model::messages)
    includes += include(std::string(message->name) + "_message");
  for (size_t b = 0; b < model::bundle_count; ++b) {
    const model::Bundle& bundle = *model::bundles[b];
    const std::string name = bundle.name;
    const std::string prefix = "message_" + name + "_bundle_";
    includes += include(name + "_bundle");
    data += "extern \"C\" [[gnu::weak]] decltype(fwe_ui_wayfind_" + name +
            "_bundle_handler) fwe_ui_wayfind_" + name + "_bundle_handler;\n";
    data += table(bundle);
    const std::string full_name = "fwe_ui_wayfind_" + name;
    data += "constexpr messages::Bundle bundle_" + name + "{\n    " +
            row_of_table(bundle_table(b)) + ", \"" + name + "\", \"" + full_name + "\", \"" +
            full_name + "_bundle_start_message\",\n    {" + prefix + "start_luid, " + prefix +
            "abort_luid, " + prefix + "commit_luid}, table_" + name + ", &" + full_name +
            "_bundle_registered_handler};\n";
    code += "ork_bundle_handler fwe_ui_wayfind_" + name + "_bundle_registered_handler;\n";
    code += identity(name + "_bundle_start", bundle.luids.start) +
            identity(name + "_bundle_abort", bundle.luids.abort) +
            identity(name + "_bundle_commit", bundle.luids.commit);
    code += definitions(bundle_functions(b));
  }
  write_file(folder + "/exports_bundles.cpp", file(includes, data, code));
}

}  // namespace

std::string luid_bytes(const std::string& luid) {
  std::string text;
  for (size_t i = 0; i < luid.size(); i += 2)
    text += std::string(i == 0 ? "" : ", ") + "0x" + luid.substr(i, 2);
  return text;
}

void write_sources(const std::string& folder, size_t record_files) {
  for (size_t part = 1; part <= record_files; ++part) write_records(folder, part, record_files);
  write_descriptors(folder);
  write_types(folder);
  write_messages(folder);
  write_bundles(folder);
  write_file(folder + "/exports_module.cpp",
             file(include("module"), "", definitions(module_functions())));
}

}  // namespace generator
