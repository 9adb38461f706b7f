// Where every trace entry stands: each function of each type has its entries in one run, and the
// runs follow each other in one order. A site is a function's run plus the place of a form in it,
// so that nobody numbers anything by hand.
#pragma once

#include "model/message_rows.h"
#include "model/trace_forms.h"

namespace model {

// Functions that trace, grouped by what a site of theirs belongs to.
enum class Function : uint8_t {
  // a field
  set,
  set_value,
  state_flag_get,
  state_flag_set,
  array_set,
  array_set_record,
  array_set_mem,
  whole_get,
  whole_set,
  states_get,
  states_set,
  destroy_field,
  field_end_,
  // a record, an enum, the flag set
  create_internal = field_end_,
  initialize,
  set_instance_embedded,
  get_oid_count,
  get_object_references,
  size_of,
  destroy_mapping,
  destroy_internal,
  record_set,
  marshal,
  unmarshal,
  len,
  to_xml,
  small_create_internal,
  small_initialize,
  small_set_instance_embedded,
  small_destroy_internal,
  flag_set_unmarshal,
  variant_dump,
  type_end_,
  // a bundle
  start_handler = type_end_,
  abort_handler,
  commit_handler,
  bundle_end_,
  // a message
  message_create_shallow = bundle_end_,
  message_create,
  message_destroy,
  message_marshal,
  message_unmarshal,
  message_default_handler,
  message_unmarshal_only,
  message_record,
  message_print,
  message_to_xml,
  message_from_xml,
  message_end_,
  // a record that a message carries
  carried_get = message_end_,
  carried_detach,
  carried_set,
  carried_replace,
  end_
};

inline constexpr size_t max_forms = 8;

struct Run {
  Function function;
  Form forms[max_forms];
  size_t count;
};

template <class... Forms>
constexpr Run run(Function function, Forms... forms) {
  return {function, {forms...}, sizeof...(forms)};
}

// The forms of each function, in the order of its steps.
inline constexpr Run runs[] = {
    run(Function::set, Form::corrupted_handle, Form::not_tracked),
    run(Function::set_value, Form::corrupted_handle, Form::not_tracked),
    run(Function::state_flag_get, Form::corrupted_handle, Form::non_tracked),
    run(Function::state_flag_set, Form::corrupted_handle, Form::not_tracked),
    run(Function::array_set_mem, Form::corrupted_handle, Form::not_tracked),
    run(Function::array_set, Form::corrupted_handle, Form::not_tracked, Form::reallocating,
        Form::corrupted_handle, Form::not_tracked, Form::corrupted_handle, Form::not_tracked),
    run(Function::array_set_record, Form::corrupted_handle, Form::not_tracked,
        Form::value_not_tracked, Form::reallocating, Form::corrupted_handle, Form::not_tracked,
        Form::corrupted_handle, Form::not_tracked),
    run(Function::whole_get, Form::corrupted_handle, Form::non_tracked),
    run(Function::states_get, Form::corrupted_handle, Form::non_tracked),
    run(Function::whole_set, Form::corrupted_handle, Form::not_tracked),
    run(Function::states_set, Form::corrupted_handle, Form::not_tracked),
    run(Function::destroy_field, Form::references_failed, Form::reference_stays),
    run(Function::create_internal, Form::create_failed),
    run(Function::initialize, Form::corrupted_handle, Form::no_variants, Form::variant_beyond,
        Form::no_state_base),
    run(Function::set_instance_embedded, Form::embed_object),
    run(Function::get_oid_count, Form::oid_count_error, Form::oid_count_object),
    run(Function::get_object_references, Form::references_error, Form::references_object),
    run(Function::size_of, Form::corrupted_handle),
    run(Function::destroy_mapping, Form::mapping_stays, Form::has_references,
        Form::mapping_removed),
    run(Function::destroy_internal, Form::corrupted_handle, Form::type_corrupted, Form::no_variants,
        Form::variant_beyond, Form::mapping_stays),
    run(Function::record_set, Form::corrupted_handle, Form::not_tracked),
    run(Function::marshal, Form::corrupted_handle),
    run(Function::unmarshal, Form::tracking_mismatch, Form::corrupted_handle, Form::jump),
    run(Function::len, Form::corrupted_handle),
    run(Function::to_xml, Form::corrupted_handle),
    run(Function::small_create_internal, Form::small_create_failed),
    run(Function::small_initialize, Form::no_variants, Form::variant_beyond, Form::stats_failed),
    run(Function::small_set_instance_embedded, Form::small_embed_object),
    run(Function::small_destroy_internal, Form::type_corrupted, Form::no_variants,
        Form::variant_beyond, Form::stats_failed),
    run(Function::flag_set_unmarshal, Form::jump),
    run(Function::variant_dump, Form::dump_without_variants),
    run(Function::start_handler, Form::start_inside, Form::starting, Form::starting_unnamed),
    run(Function::abort_handler, Form::abort_error, Form::outside_bundle, Form::aborting),
    run(Function::commit_handler, Form::commit_error, Form::outside_bundle,
        Form::calling_dispatch_handler, Form::calling_handle_handler,
        Form::calling_dispatch_handler, Form::calling_registered_handler,
        Form::calling_linked_handler, Form::no_handler),
    run(Function::message_create_shallow, Form::no_variants, Form::variant_beyond,
        Form::stats_failed, Form::corrupted_handle),
    run(Function::message_create, Form::no_variants, Form::variant_beyond, Form::stats_failed,
        Form::corrupted_handle),
    run(Function::message_destroy, Form::no_variants, Form::variant_beyond, Form::stats_failed,
        Form::type_corrupted),
    run(Function::message_marshal, Form::marshal_error, Form::domain_refuses, Form::bundle_refuses,
        Form::marshal_failed, Form::marshal_failed, Form::bundle_uncounted),
    run(Function::message_unmarshal, Form::unmarshal_error, Form::recording_error),
    run(Function::message_default_handler, Form::default_handler),
    run(Function::message_unmarshal_only, Form::unmarshal_only_error, Form::record_in_error),
    run(Function::message_record, Form::recorder_memory, Form::recorder_stream, Form::not_recorded),
    run(Function::message_print, Form::print_error),
    run(Function::message_to_xml, Form::to_xml_error),
    run(Function::message_from_xml, Form::from_xml_error),
    run(Function::carried_get, Form::get_error),
    run(Function::carried_detach, Form::detach_error),
    run(Function::carried_set, Form::set_error),
    run(Function::carried_replace, Form::replace_error),
};

constexpr const Run& run_of(Function function) {
  for (const Run& run : runs) {
    if (run.function == function) return run;
  }
  __builtin_unreachable();  // not constant: a function without a run does not compile
}

// Place of the Nth entry of a form within its function's run.
constexpr uint16_t position(Function function, Form form, size_t nth) {
  const Run& run = run_of(function);
  for (size_t i = 0; i < run.count; ++i) {
    if (run.forms[i] == form && nth-- == 0) return static_cast<uint16_t>(i);
  }
  // not constant: asking for an entry that the function has not does not compile
  __builtin_unreachable();
}

// Which functions trace for a type, in the order of its functions. ------------

// Those of the fields stand between the head and the tail: function by function, each over all
// fields.
inline constexpr Function record_head_functions[] = {Function::create_internal,
                                                     Function::initialize,
                                                     Function::set_instance_embedded,
                                                     Function::get_oid_count,
                                                     Function::get_object_references,
                                                     Function::destroy_mapping,
                                                     Function::destroy_internal,
                                                     Function::size_of,
                                                     Function::len,
                                                     Function::record_set};
inline constexpr Function field_function_order[] = {
    Function::set,        Function::set_value,      Function::array_set_mem,
    Function::whole_get,  Function::whole_set,      Function::states_get,
    Function::states_set, Function::state_flag_get, Function::state_flag_set};
inline constexpr Function record_tail_functions[] = {Function::marshal, Function::unmarshal,
                                                     Function::to_xml};
inline constexpr Function small_functions[] = {
    Function::small_create_internal,       Function::small_initialize,
    Function::small_set_instance_embedded, Function::get_oid_count,
    Function::get_object_references,       Function::small_destroy_internal};
inline constexpr Function bundle_functions[] = {Function::start_handler, Function::abort_handler,
                                                Function::commit_handler};
inline constexpr Function message_head_functions[] = {
    Function::message_create_shallow, Function::message_create, Function::message_destroy};
inline constexpr Function carried_functions[] = {Function::carried_get, Function::carried_detach,
                                                 Function::carried_set, Function::carried_replace};
inline constexpr Function message_tail_functions[] = {
    Function::message_marshal,         Function::message_unmarshal,
    Function::message_default_handler, Function::message_unmarshal_only,
    Function::message_record,          Function::message_print,
    Function::message_to_xml,          Function::message_from_xml};

// Whose entry it is.
enum class Owner : uint8_t { module, record, field, small_type, bundle, message, carried };

template <size_t N, class Visit>
constexpr void walk(const Function (&functions)[N], uint8_t section, Owner owner, size_t index,
                    Visit&& visit) {
  for (Function function : functions) visit(section, owner, index, function);
}

// A field whose object may hold references.
constexpr bool may_refer(const FieldRow& field) {
  return field.cls == Class::object &&
         (field.kind == Kind::record || field.kind == Kind::ip_address);
}

constexpr bool has_function(const FieldRow& field, Function function) {
  const bool array = field.array != no_type;
  switch (function) {
    case Function::set:
    case Function::state_flag_get:
    case Function::state_flag_set: return field.cls != Class::counter;
    case Function::set_value: return field.cls == Class::value || field.cls == Class::value_array;
    case Function::array_set_mem: return field.cls == Class::value_array;
    default: return array;  // what only arrays have
  }
}
// An array's set has entries of its own: for growth, and for the report that it had to move.
constexpr Function set_function(const FieldRow& field) {
  if (field.array == no_type) return Function::set;
  return field.cls == Class::value_array ? Function::array_set : Function::array_set_record;
}

template <class Visit>
constexpr void walk_fields(const RecordRow& record, uint8_t section, Visit&& visit) {
  for (Function function : field_function_order) {
    for (const FieldRow& field : fields_of(record)) {
      if (!has_function(field, function)) continue;
      visit(section, Owner::field, field.index,
            function == Function::set ? set_function(field) : function);
    }
  }
}

template <class Visit>
constexpr void walk_record(const RecordRow& record, uint8_t section, Visit&& visit) {
  for (Function function : record_head_functions) {
    visit(section, Owner::record, record.index, function);
    if (function != Function::destroy_mapping) continue;
    for (const FieldRow& field : fields_of(record)) {
      if (may_refer(field)) visit(section, Owner::field, field.index, Function::destroy_field);
    }
  }
  walk_fields(record, section, visit);
  walk(record_tail_functions, section, Owner::record, record.index, visit);
}

// The first section holds the module's own entry and the records from this one on to the other.
inline constexpr size_t first_group_begin = row_of(hop_chan_serv_st, records);
inline constexpr size_t first_group_end = row_of(intf_sum, records) + size_t{1};
constexpr uint8_t section_of_record(size_t record) {
  return record >= first_group_begin && record < first_group_end ? 0 : 1;
}

// All runs in the order of their entries: section, owner, the owner's row, function.
template <class Visit>
constexpr void walk_plan(Visit&& visit) {
  for (size_t r = first_group_begin; r < first_group_end; ++r)
    walk_record(record_rows[r], 0, visit);
  visit(uint8_t{0}, Owner::module, 0, Function::variant_dump);
  for (size_t r = 0; r < record_count; ++r) {
    if (section_of_record(r) == 1) walk_record(record_rows[r], 1, visit);
  }
  for (const SmallRow& type : small_rows) {
    walk(small_functions, 1, Owner::small_type, type.index, visit);
    if (type.is_flag_set)
      visit(uint8_t{1}, Owner::small_type, type.index, Function::flag_set_unmarshal);
  }
  for (size_t b = 0; b < bundle_count; ++b) walk(bundle_functions, 2, Owner::bundle, b, visit);
  for (const MessageRow& message : message_rows) {
    walk(message_head_functions, 2, Owner::message, message.index, visit);
    for (size_t c = message.carried; c < size_t{message.carried} + message.records; ++c)
      walk(carried_functions, 2, Owner::carried, c, visit);
    walk(message_tail_functions, 2, Owner::message, message.index, visit);
  }
}

// First entry of each run. ----------------------------------------------------

constexpr size_t number(Function function, Function first) {
  return static_cast<size_t>(function) - static_cast<size_t>(first);
}

inline constexpr size_t field_functions = number(Function::field_end_, Function::set);
inline constexpr size_t type_functions = number(Function::type_end_, Function::create_internal);
inline constexpr size_t bundle_function_count =
    number(Function::bundle_end_, Function::start_handler);
inline constexpr size_t message_functions =
    number(Function::message_end_, Function::message_create_shallow);
inline constexpr size_t carried_function_count = number(Function::end_, Function::carried_get);

struct Runs {
  uint16_t fields[field_total][field_functions];
  uint16_t records[record_count][type_functions];
  uint16_t small_types[small_type_count][type_functions];
  uint16_t bundles[bundle_count][bundle_function_count];
  uint16_t messages[message_count][message_functions];
  uint16_t carried[carried_count][carried_function_count];
  uint16_t module;
  uint16_t entries[3];  // of each section
};

constexpr Runs make_runs() {
  Runs all{};
  walk_plan([&](uint8_t section, Owner owner, size_t index, Function function) {
    const uint16_t first = all.entries[section];
    switch (owner) {
      case Owner::module: all.module = first; break;
      case Owner::record:
        all.records[index][number(function, Function::create_internal)] = first;
        break;
      case Owner::field: all.fields[index][number(function, Function::set)] = first; break;
      case Owner::small_type:
        all.small_types[index][number(function, Function::create_internal)] = first;
        break;
      case Owner::bundle:
        all.bundles[index][number(function, Function::start_handler)] = first;
        break;
      case Owner::message:
        all.messages[index][number(function, Function::message_create_shallow)] = first;
        break;
      case Owner::carried:
        all.carried[index][number(function, Function::carried_get)] = first;
        break;
    }
    all.entries[section] = static_cast<uint16_t>(first + run_of(function).count);
  });
  return all;
}
inline constexpr Runs first_entries = make_runs();

struct Site {
  uint8_t section;
  uint16_t index;
};
constexpr Site place(uint8_t section, uint16_t first, uint16_t position) {
  return {section, static_cast<uint16_t>(first + position)};
}

inline Site site(const FieldRow& row, Function f, uint16_t at) {
  return place(section_of_record(row.record),
               first_entries.fields[row.index][number(f, Function::set)], at);
}
inline Site site(const RecordRow& row, Function f, uint16_t at) {
  return place(section_of_record(row.index),
               first_entries.records[row.index][number(f, Function::create_internal)], at);
}
inline Site site(const SmallRow& row, Function f, uint16_t at) {
  return place(1, first_entries.small_types[row.index][number(f, Function::create_internal)], at);
}
inline Site site(const BundleRow& row, Function f, uint16_t at) {
  return place(2, first_entries.bundles[row.index][number(f, Function::start_handler)], at);
}
inline Site site(const MessageRow& row, Function f, uint16_t at) {
  return place(2, first_entries.messages[row.index][number(f, Function::message_create_shallow)],
               at);
}
inline Site site(const CarriedRow& row, Function f, uint16_t at) {
  return place(2, first_entries.carried[row.index][number(f, Function::carried_get)], at);
}
inline Site site(const ModuleRow&, Function, uint16_t at) {
  return place(0, first_entries.module, at);
}

}  // namespace model
