#include "generator/interfaces.h"

#include "generator/family.h"
#include "generator/names.h"

namespace generator {
namespace {

using model::Class;
using model::FieldRow;
using model::Kind;

std::string number(size_t n) { return std::to_string(n); }

// The fields themselves as parameters, and as a list.
struct Listed {
  std::string parameters;  // each with a comma behind it
  std::string names;
  void add(const std::string& type, const char* name) {
    parameters += type + name + ", ";
    names += (names.empty() ? "" : ", ") + std::string(name);
  }
};

Interface of_record(const Family& family, size_t index) {
  const model::RecordRow& row = model::record_rows[index];
  const model::Layout& newest = row.newest_layout();
  Listed outs;
  Listed values;
  for (const FieldRow& field : model::fields_of(row)) {
    const bool value = field.cls == Class::value;
    if (value || field.cls == Class::counter) outs.add(value_type(field) + " *", field.name);
    if (value) values.add(value_type(field) + " ", field.name);
  }
  const std::string table = record_table(index);
  Interface interface;
  family.add(interface, {{"type", model::records[index]->name},
                         {"table", table},
                         {"row", row_of_table(table)},
                         {"variants", number(row.variants)},
                         {"newest", number(row.variants - size_t{1})},
                         {"body", number(newest.body)},
                         {"state", number(newest.state)},
                         {"body_and_state", number(size_t{newest.body} + newest.state)},
                         {"out_parameters", outs.parameters},
                         {"outs", outs.names},
                         {"value_parameters", values.parameters},
                         {"values", values.names}});
  return interface;
}

const char* group_of(const FieldRow& field) {
  switch (field.cls) {
    case Class::value: return field.kind == Kind::enumeration ? "enumeration" : "value";
    case Class::object: return "object";
    case Class::text: return "text";
    case Class::counter: return "counter";
    case Class::value_array: return "value_array";
    case Class::record_array: return "record_array";
  }
  return "";
}

const char* kind_name(Kind kind) {
  switch (kind) {
    case Kind::u_int8: return "u_int8";
    case Kind::u_int16: return "u_int16";
    case Kind::u_int32: return "u_int32";
    case Kind::u_int64: return "u_int64";
    case Kind::ork_boolean: return "ork_boolean";
    case Kind::link_type: return "link_type";
    case Kind::ip_address: return "ip_address";
    case Kind::character: return "character";
    case Kind::enumeration: return "enumeration";
    case Kind::flag_set: return "flag_set";
    case Kind::record: return "record";
  }
  return "";
}

Interface of_field(const Family& family, const FieldRow& field) {
  const std::string row =
      "model::field<" + record_table(field.record) + ", \"" + field.name + "\">";
  Places places = {{"type", model::records[field.record]->name},
                   {"field", field.name},
                   {"row", row},
                   {"storage_type", storage_type(field)},
                   {"value_type", value_type(field)},
                   {"kind", kind_name(field.kind)},
                   {"size", number(field.width)},
                   {"size_with_nul", number(field.width + size_t{1})}};
  if (field.kind == Kind::record) places["element_table"] = record_table(field.type);
  Interface interface;
  family.add(interface, places, group_of(field));
  return interface;
}

Interface of_small_type(const Family& family, size_t index) {
  const model::SmallRow& row = model::small_rows[index];
  Interface interface;
  family.add(interface,
             {{"type", small_name(index)},
              {"row", row_of_table(small_table(index))},
              {"body", number(row.size)}},
             row.is_flag_set ? "flag_set" : "enumeration");
  return interface;
}

Interface of_message(const Family& family, size_t index) {
  const model::MessageRow& row = model::message_rows[index];
  const std::string name = model::messages[index]->name;
  const Places places = {
      {"name", name}, {"message", name + "_message"}, {"description", "message_" + name}};
  Interface interface;
  family.add(interface, places, "object");
  for (size_t slot = 0; slot < row.records; ++slot) {
    Places carried = places;
    carried["record"] = model::messages[index]->load.records[slot]->name;
    carried["carried"] = "model::carried<" + message_table(index) + ", " + number(slot) + ">";
    family.add(interface, carried, "record");
  }
  family.add(interface, places, "form");
  return interface;
}

Interface of_bundle(const Family& control, const Family& family, size_t index) {
  const std::string name = model::bundles[index]->name;
  Interface interface;
  for (const char* kind : {"start", "abort", "commit"}) {
    control.add(interface,
                {{"bundle", name},
                 {"kind", kind},
                 {"name", name + "_bundle_" + kind},
                 {"description", "bundle_" + name}},
                kind);
  }
  family.add(interface, {{"bundle", name}});
  return interface;
}

}  // namespace

Interfaces make_interfaces(const std::string& folder) {
  const Family record(folder + "/record.family");
  const Family field(folder + "/field.family", {"value", "enumeration", "object", "text", "counter",
                                                "value_array", "record_array"});
  const Family small_type(folder + "/small_type.family", {"enumeration", "flag_set"});
  const Family message(folder + "/message.family", {"object", "record", "form"});
  const Family control(folder + "/control.family", {"start", "abort", "commit"});
  const Family bundle(folder + "/bundle.family");
  const Family module(folder + "/module.family");
  Interfaces all;
  for (size_t r = 0; r < model::record_count; ++r) all.records.push_back(of_record(record, r));
  for (const FieldRow& row : model::field_rows) all.fields.push_back(of_field(field, row));
  for (size_t i = 0; i < model::small_type_count; ++i)
    all.small_types.push_back(of_small_type(small_type, i));
  for (size_t m = 0; m < model::message_count; ++m) all.messages.push_back(of_message(message, m));
  for (size_t b = 0; b < model::bundle_count; ++b)
    all.bundles.push_back(of_bundle(control, bundle, b));
  module.add(all.module, {});
  return all;
}

}  // namespace generator
