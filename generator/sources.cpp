#include "generator/names.h"
#include "generator/output.h"
#include "generator/wrap.h"

namespace generator {
namespace {

std::string include(const std::string& header) {
  return "#include \"fwe_ui_wayfind/" + header + ".h\"\n";
}

std::string definitions(const Interface& interface) {
  std::string text;
  for (const Function& function : interface.functions)
    text += (text.empty() ? "" : "\n") + definition(function);
  return text;
}

std::string file(const std::string& includes, const std::string& data,
                 const std::string& exported) {
  return "#include \"model/exports.h\"\n" + includes + "\n" + data + (data.empty() ? "" : "\n") +
         "extern \"C\" {\n#pragma GCC visibility push(default)\n\n" + exported +
         "\n#pragma GCC visibility pop\n}\n";
}

// A part of the records, counted from 1.
void write_records(const std::string& folder, size_t part, size_t parts, const Interfaces& all) {
  const size_t per_file = (model::record_count + parts - 1) / parts;
  std::string includes;
  std::string code;
  for (size_t r = (part - 1) * per_file; r < part * per_file && r < model::record_count; ++r) {
    includes += include(model::records[r]->name);
    code += (code.empty() ? "" : "\n") + definitions(all.records[r]);
    for (const model::FieldRow& field : model::fields_of(model::record_rows[r]))
      code += "\n" + definitions(all.fields[field.index]);
  }
  write_file(folder + "/exports_records_" + std::to_string(part) + ".cpp",
             file(includes, "using frame::Kind;\n", code));
}

// Data alone, so that the engines need nothing from the files with functions.
void write_descriptors(const std::string& folder) {
  std::string includes;
  std::string code;
  std::string list;
  const auto describe = [&](const std::string& type, const std::string& described) {
    const std::string symbol = "_" + type + "_type_info_internal";
    includes += include(type);
    code +=
        wrapped_lines("constinit const ork_type_info " + symbol + " = frame::" + described + ";");
    list += "    &" + symbol + ",\n";
  };
  for (size_t r = 0; r < model::record_count; ++r)
    describe(model::records[r]->name, "record_descriptor<" + record_table(r) + ">");
  for (size_t i = 0; i < model::small_type_count; ++i)
    describe(small_name(i), "small_descriptor<" + small_table(i) + ">");
  for (size_t m = 0; m < model::message_count; ++m) {
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
void write_types(const std::string& folder, const Interfaces& all) {
  std::string includes;
  std::string code;
  for (size_t i = 0; i < model::small_type_count; ++i) {
    includes += include(small_name(i));
    code += (code.empty() ? "" : "\n") + definitions(all.small_types[i]);
  }
  write_file(folder + "/exports_types.cpp", file(includes, "", code));
}

// A function that a process may define.
std::string weak(const std::string& function) {
  return wrapped_lines("extern \"C\" [[gnu::weak]] decltype(" + function + ") " + function + ";");
}

std::string identity(const std::string& name, const std::string& luid) {
  return wrapped_lines("const uint8_t message_" + name + "_luid[16] = {" + luid_bytes(luid) +
                       "};") +
         wrapped_lines("const char message_" + name + "_luid_text[33] = \"" + luid + "\";") +
         wrapped_lines("const char message_" + name + "_name[] = \"message " + name + "\";");
}

void write_messages(const std::string& folder, const Interfaces& all) {
  std::string includes;
  std::string data;
  std::string code;
  for (size_t m = 0; m < model::message_count; ++m) {
    const std::string name = model::messages[m]->name;
    const model::MessageRow& row = model::message_rows[m];
    includes += include(name + "_message");
    std::string wire;
    for (size_t c = row.carried; c < size_t{row.carried} + row.records; ++c) {
      wire += (wire.empty() ? "" : ", ") + std::string("messages::record_wire<") +
              record_table(model::carried_rows[c].record) + ">()";
    }
    data += (data.empty() ? "" : "\n") + weak("fwe_ui_wayfind_" + name + "_message_handler");
    data += wrapped_lines("constexpr messages::Message message_" + name + "{" +
                          row_of_table(message_table(m)) + ", message_" + name + "_luid, message_" +
                          name + "_name, {" + wire + "}};");
    code += (code.empty() ? "" : "\n") + identity(name, model::messages[m]->identity.luid) + "\n" +
            definitions(all.messages[m]);
  }
  write_file(folder + "/exports_messages.cpp", file(includes, data, code));
}

std::string table(const model::Bundle& bundle) {
  std::string text = wrapped_lines(std::string("constexpr ork_bundle_message_row table_") +
                                   bundle.name + "[] = {");
  const auto row = [&](const std::string& message, bool repeatable) {
    text += wrapped_lines("    {message_" + message + "_luid, message_" + message + "_name, " +
                          (repeatable ? "1" : "0") + "},");
  };
  for (const model::Member& member : bundle.members) {
    if (member.message == nullptr) break;
    row(member.message->name, member.occurs == model::Occurs::repeatedly);
  }
  row("ui_req_msg", false);
  return text + "    {nullptr, nullptr, 0}};\n";
}

// What the engines need to know of a bundle.
std::string description(size_t index) {
  const std::string name = model::bundles[index]->name;
  const std::string full_name = "fwe_ui_wayfind_" + name;
  std::string luids;
  for (const char* kind : {"start", "abort", "commit"}) {
    luids +=
        (luids.empty() ? "" : ", ") + std::string("message_") + name + "_bundle_" + kind + "_luid";
  }
  return wrapped_lines("constexpr messages::Bundle bundle_" + name + "{" +
                       row_of_table(bundle_table(index)) + ", \"" + name + "\", \"" + full_name +
                       "\", \"" + full_name + "_bundle_start_message\", {" + luids + "}, table_" +
                       name + ", &" + full_name + "_bundle_registered_handler};");
}

void write_bundles(const std::string& folder, const Interfaces& all) {
  std::string includes = "#include \"ork/show_core.h\"\n";
  std::string data;
  std::string code;
  for (const model::Message* message : model::messages)
    includes += include(std::string(message->name) + "_message");
  for (size_t b = 0; b < model::bundle_count; ++b) {
    const model::Bundle& bundle = *model::bundles[b];
    const std::string name = bundle.name;
    const std::string full_name = "fwe_ui_wayfind_" + name;
    includes += include(name + "_bundle");
    data += (data.empty() ? "" : "\n") + weak(full_name + "_bundle_handler") + table(bundle) +
            description(b);
    code += (code.empty() ? "" : "\n") +
            wrapped_lines("ork_bundle_handler " + full_name + "_bundle_registered_handler;") +
            identity(name + "_bundle_start", bundle.luids.start) +
            identity(name + "_bundle_abort", bundle.luids.abort) +
            identity(name + "_bundle_commit", bundle.luids.commit) + "\n" +
            definitions(all.bundles[b]);
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

void write_sources(const std::string& folder, size_t record_files, const Interfaces& all) {
  for (size_t part = 1; part <= record_files; ++part)
    write_records(folder, part, record_files, all);
  write_descriptors(folder);
  write_types(folder, all);
  write_messages(folder, all);
  write_bundles(folder, all);
  write_file(folder + "/exports_module.cpp", file(include("module"), "", definitions(all.module)));
}

}  // namespace generator
