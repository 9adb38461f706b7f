#include "trace_order.h"

#include <span>
#include <stdexcept>

#include "texts.h"
#include "tools/schema/wayfind_schema.h"

namespace trace_sites {

struct TraceOrder::Writer {
  TraceOrder& order;
  unsigned section;
  unsigned index = 0;

  void add(const std::string& function, std::initializer_list<std::string> texts) {
    for (const std::string& text : texts) {
      const Place place{section, index++};
      order.entries_[place] = {function, text};
      order.places_[{function, text}].push_back(place);
    }
  }

  // Function by function, each over all fields that have it.
  void fields(const wayfind_record& record) {
    const auto each = [&](const char* suffix, auto has, std::initializer_list<std::string> texts) {
      for (const wayfind_field& field : std::span(record.fields, record.field_count)) {
        if (has(field)) add(std::string(record.name) + "_" + field.name + suffix, texts);
      }
    };
    const auto is_array = [](const wayfind_field& f) {
      return f.cls == WAYFIND_VALUE_ARRAY || f.cls == WAYFIND_RECORD_ARRAY;
    };
    const auto has_values = [](const wayfind_field& f) {
      return f.cls == WAYFIND_VALUE || f.cls == WAYFIND_VALUE_ARRAY;
    };
    const auto is_settable = [](const wayfind_field& f) { return f.cls != WAYFIND_COUNTER; };
    const std::string reallocating = text::reallocating(record.name);
    for (const wayfind_field& field : std::span(record.fields, record.field_count)) {
      const std::string set = std::string(record.name) + "_" + field.name + "_set";
      if (!is_settable(field)) continue;
      add(set, {text::corrupted, text::not_tracked});
      if (field.cls == WAYFIND_RECORD_ARRAY) add(set, {text::value_not_tracked});
      if (is_array(field))
        add(set,
            {reallocating, text::corrupted, text::not_tracked, text::corrupted, text::not_tracked});
    }
    each("_set_value", has_values, {text::corrupted, text::not_tracked});
    each("_set_mem", [](const wayfind_field& f) { return f.cls == WAYFIND_VALUE_ARRAY; },
         {text::corrupted, text::not_tracked});
    each("_state_flag_whole_get", is_array, {text::corrupted, text::non_tracked});
    each("_state_flag_whole_set", is_array, {text::corrupted, text::not_tracked});
    each("_state_flag_get_arr", is_array, {text::corrupted, text::non_tracked});
    each("_state_flag_set_arr", is_array, {text::corrupted, text::not_tracked});
    each("_state_flag_get", is_settable, {text::corrupted, text::non_tracked});
    each("_state_flag_set", is_settable, {text::corrupted, text::not_tracked});
  }

  void record(const wayfind_record& record) {
    const std::string name = record.name;
    add(name + "_create_internal", {"error in " + name + " create: %s"});
    add(name + "_initialize",
        {text::corrupted, text::no_variants, text::variant_beyond, text::no_state_base});
    add(name + "_set_instance_embedded", {text::embed_object});
    add(name + "_get_oid_count", {text::oid_count_error, text::oid_count_object});
    add(name + "_get_object_references", {text::references_error, text::references_object});
    const std::string destroy = name + "_destroy_internal";
    add(destroy,
        {text::mapping_stays(name), text::has_references(name), text::mapping_removed(name)});
    for (const wayfind_field& field : std::span(record.fields, record.field_count)) {
      if (field.cls != WAYFIND_OBJECT || field.kind == WAYFIND_FLAG_SET) continue;
      add(destroy + "." + field.name, {text::references_failed(name), text::reference_stays(name)});
    }
    add(destroy, {text::corrupted, text::type_corrupted, text::no_variants, text::variant_beyond,
                  text::mapping_stays(name)});
    add(name + "_sizeof", {text::corrupted});
    add(name + "_len", {text::corrupted});
    add(name + "_set", {text::corrupted, text::not_tracked});
    fields(record);
    add(name + "_marshal", {text::corrupted});
    add(name + "_unmarshal", {text::tracking_mismatch, text::corrupted, text::jump});
    add(name + "_to_xml", {text::corrupted});
  }

  void small_type(const wayfind_small_type& type) {
    const std::string name = type.name;
    add(name + "_create_internal", {"error in " + name + " create %s"});
    add(name + "_initialize", {text::no_variants, text::variant_beyond, text::stats_failed});
    add(name + "_set_instance_embedded", {text::small_embed_object});
    add(name + "_get_oid_count", {text::oid_count_error, text::oid_count_object});
    add(name + "_get_object_references", {text::references_error, text::references_object});
    add(name + "_destroy_internal",
        {text::type_corrupted, text::no_variants, text::variant_beyond, text::stats_failed});
    if (type.is_flag_set) add(name + "_unmarshal", {text::jump});
  }

  void bundle(const wayfind_bundle& bundle) {
    const std::string name = bundle.name;
    add(name + "_start", {text::start_inside, text::starting, text::starting_unnamed});
    add(name + "_abort", {text::abort_error, text::outside_bundle, text::aborting});
    add(name + "_commit",
        {text::commit_error, text::outside_bundle, text::calling_dispatch_handler,
         text::calling_handle_handler, text::calling_dispatch_handler,
         text::calling_registered_handler, text::calling_linked_handler, text::no_handler});
  }

  void message(const wayfind_message& message) {
    const std::string name = message.name;
    const std::string family = name + "_message";
    add(family + "_create_shallow",
        {text::no_variants, text::variant_beyond, text::stats_failed, text::corrupted});
    add(family + "_create",
        {text::no_variants, text::variant_beyond, text::stats_failed, text::corrupted});
    add(family + "_destroy",
        {text::no_variants, text::variant_beyond, text::stats_failed, text::type_corrupted});
    for (const wayfind_record* record : std::span(message.records, message.record_count)) {
      const std::string carried = record->name;
      add(family + "_" + carried,
          {"Error present when getting value for " + carried + ": %s",
           "Error present getting detached " + carried + " value for " + name + ": %s",
           "Error present when setting value for " + carried + ": %s",
           "Error present when freeing and setting value for " + carried + ": %s"});
    }
    add(family + "_marshal", {text::marshal_error, text::domain_refuses, text::bundle_refuses,
                              text::marshal_failed, text::marshal_failed, text::bundle_uncounted});
    add(family + "_unmarshal", {text::unmarshal_error, text::recording_error(name)});
    add(family + "_default", {text::default_handler(name)});
    add(family + "_unmarshal_only", {text::unmarshal_only_error, text::record_in_error(name)});
    add(family + "_record",
        {text::recorder_memory, text::recorder_stream(name), text::not_recorded(name)});
    add(family + "_print", {"Already have error when printing " + name + ": %s"});
    add(family + "_to_xml", {"Already have error when rendering XML for " + name + ": %s"});
    add(family + "_from_xml", {"Already have error when rendering " + name + " to XML: %s"});
  }
};

TraceOrder::TraceOrder() {
  const std::span records(wayfind_records, wayfind_record_count);
  const size_t first_group = 8;  // the records of section 0 stand last in the order of registration
  Writer section0{*this, 0};
  for (const wayfind_record& record : records.last(first_group)) section0.record(record);
  section0.add("fwe_ui_wayfind_type_variant_dump", {text::dump_without_variants});
  Writer section1{*this, 1};
  for (const wayfind_record& record : records.first(records.size() - first_group))
    section1.record(record);
  for (const wayfind_small_type& type : std::span(wayfind_small_types, wayfind_small_type_count))
    section1.small_type(type);
  Writer section2{*this, 2};
  for (const wayfind_bundle& bundle : std::span(wayfind_bundles, wayfind_bundle_count))
    section2.bundle(bundle);
  for (const wayfind_message& message : std::span(wayfind_messages, wayfind_message_count))
    section2.message(message);
}

Place TraceOrder::place(const std::string& function, const std::string& text, size_t nth) const {
  const auto found = places_.find({function, text});
  if (found == places_.end() || nth >= found->second.size())
    throw std::runtime_error("no entry " + function + ": " + text);
  return found->second[nth];
}

const TraceOrder& told_order() {
  static const TraceOrder order;
  return order;
}

}  // namespace trace_sites
