// The names that the library exports: as a version script for the linker, and as a plain list.
#include <algorithm>

#include "generator/names.h"
#include "generator/output.h"

namespace generator {
namespace {

std::vector<std::string> exported_data() {
  std::vector<std::string> names = {"g_ork_fwe_ui_wayfind_trace_module_id",
                                    "g_ork_fwe_ui_wayfind_stub_trace_module_id",
                                    "fwe_ui_wayfind_bundle_registered_handler"};
  const auto descriptor = [&](const std::string& type) {
    names.push_back("_" + type + "_type_info_internal");
  };
  const auto identity = [&](const std::string& name) {
    for (const char* what : {"_luid", "_luid_text", "_name"})
      names.push_back("message_" + name + what);
  };
  for (const model::Record* record : model::records) descriptor(record->name);
  for (size_t i = 0; i < model::small_type_count; ++i) descriptor(small_name(i));
  for (const model::Message* message : model::messages) {
    descriptor(std::string(message->name) + "_message");
    identity(message->name);
  }
  for (const model::Bundle* bundle : model::bundles) {
    names.push_back(std::string("fwe_ui_wayfind_") + bundle->name + "_bundle_registered_handler");
    for (const char* kind : {"start", "abort", "commit"})
      identity(std::string(bundle->name) + "_bundle_" + kind);
  }
  return names;
}

std::vector<std::string> exported_functions(const Interfaces& all) {
  // Those that an engine defines under its exported name come first.
  std::vector<std::string> names = {"ork_fwe_ui_wayfind_trace_init",
                                    "fwe_ui_wayfind_typeinfo_initialize"};
  const auto take = [&](const Interface& interface) {
    for (const Function& function : interface.functions) names.push_back(function.name);
  };
  take(all.module);
  for (const auto* things :
       {&all.records, &all.fields, &all.small_types, &all.messages, &all.bundles}) {
    for (const Interface& interface : *things) take(interface);
  }
  return names;
}

}  // namespace

void write_exports(const std::string& folder, const Interfaces& all) {
  std::vector<std::string> functions = exported_functions(all);
  std::vector<std::string> data = exported_data();
  std::sort(functions.begin(), functions.end());
  std::sort(data.begin(), data.end());
  std::string script = "{\n  global:\n";
  std::string list;
  for (const std::string& name : functions) {
    script += "    " + name + ";\n";
    list += "T " + name + "\n";
  }
  for (const std::string& name : data) {
    script += "    " + name + ";\n";
    list += "D " + name + "\n";
  }
  write_file(folder + "/exports.map", script + "  local:\n    *;\n};\n");
  write_file(folder + "/exports.txt", list);
}

}  // namespace generator
