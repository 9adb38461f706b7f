// The functions of messages, of bundles, and of the module itself.
#include "generator/function.h"

namespace generator {
namespace {

#define HANDLE "struct ork_handle *handle, uint32_t instance, "

constexpr Family message_objects[] = {
    {"_create", "struct $M *", "struct ork_handle *handle, uint32_t instance",
     "messages::create(handle, instance, $R)",
     "Makes a new message with its record or records, which it owns. The caller owns the message.\n"
     "Null when there is no memory; no error is stored then."},
    {"_create_shallow", "struct $M *", "struct ork_handle *handle, uint32_t instance",
     "messages::create_shallow(handle, instance, $R)", "As $M_create, without a record."},
    {"_create_cr", "struct $M *", "struct ork_handle *handle", "messages::create_cr(handle, $R)",
     "As $M_create with the handle's cr_instance; the message's sentinel without memory or with "
     "cr_error set."},
    {"_destroy", "void", HANDLE "struct $M *msg", "messages::destroy(handle, instance, msg, $R)",
     "Gives a message back, and the records that it still holds. Null and the sentinel are "
     "ignored."},
    {"_destroy_cr", "void", "struct ork_handle *handle, struct $M *msg",
     "messages::destroy(handle, handle->cr_instance, msg, $R)",
     "As $M_destroy with the handle's cr_instance."},
    {"_len", "uint32_t", HANDLE "const struct $M *msg",
     "messages::length(handle, instance, msg, $R)",
     "Bytes to reserve for the message on the wire: 43 of frame and its records."},
    {"_len_cr", "uint32_t", "struct ork_handle *handle, const struct $M *msg",
     "messages::length_cr(handle, msg, $R)",
     "As $M_len with the handle's cr_instance; 0 when cr_error is set."},
};
constexpr Family carried_records[] = {
    {"_get", "struct $T *", HANDLE "struct $M *msg, uint32_t *err",
     "static_cast<void>(handle), static_cast<void>(instance), static_cast<struct $T "
     "*>(messages::get(msg, err, $C))",
     "The record; the message keeps it. Null, and only a trace, for a null msg or with *err set."},
    {"_get_detach", "struct $T *", HANDLE "struct $M *msg, uint32_t *err",
     "static_cast<void>(handle), static_cast<void>(instance), static_cast<struct $T "
     "*>(messages::get_detach(msg, err, $C))",
     "As the getter, but from now on the caller owns the record and the message holds none."},
    {"_set", "void", HANDLE "struct $M *msg, struct $T *record, uint32_t *err",
     "static_cast<void>(handle), static_cast<void>(instance), messages::set(msg, record, err, $C)",
     "Gives the message a record, which it owns from now on. The one before is not destroyed."},
    {"_free_and_set", "void", HANDLE "struct $M *msg, struct $T *record, uint32_t *err",
     "messages::free_and_set(handle, instance, msg, record, err, $C)",
     "As the setter, after destroying the record before."},
};
constexpr Family message_forms[] = {
    {"_is_valid_cr", "uint32_t", "struct ork_handle *handle", "messages::is_valid_cr(handle, $R)",
     "Nonzero when the handle's domain takes the message. Errors go to cr_error."},
    {"_marshal", "uint32_t",
     HANDLE "uint8_t *buffer, struct $M *msg, int32_t length, uint32_t *err",
     "messages::marshal(handle, instance, buffer, msg, length, err, $R)",
     "Writes the message's frame into length bytes and gives the bytes written. The header comes "
     "last: a frame that\n"
     "cannot be finished keeps 27 zero bytes. Errors: 52 when the domain refuses the message, the "
     "runtime's when an\n"
     "open bundle does, 90 for a short buffer."},
    {"_marshal_cr", "uint32_t",
     "struct ork_handle *handle, struct $M *msg, uint8_t *buffer, int32_t length",
     "messages::marshal_cr(handle, msg, buffer, length, $R)",
     "As $M_marshal with the handle's cr_instance and cr_error; all ones on an error."},
    {"_unmarshal", "uint32_t",
     HANDLE "void *ctx, void **out_msg, const uint8_t *buffer, int32_t length, ork_message_handler "
            "handler, uint32_t *err",
     "messages::unmarshal(handle, instance, {ctx, out_msg, handler, fwe_ui_wayfind_$M_handler}, "
     "buffer, length, err, $R)",
     "Reads a frame, records the message if recording is on, and hands it to handler, or else to\n"
     "fwe_ui_wayfind_$M_handler, who owns it from then on. out_msg may be null. Gives the\n"
     "bytes consumed. Errors: 38 without a handler, 12 for no memory, 90 for a short buffer."},
    {"_unmarshal_only", "uint32_t",
     HANDLE "void **out_msg, const uint8_t *buffer, int32_t length, uint32_t *err",
     "messages::unmarshal_only(handle, instance, out_msg, buffer, length, err, $R)",
     "Reads a frame into a new message, which the caller owns, and gives the bytes consumed. After "
     "an error\n"
     "*out_msg is what there is of it, to be destroyed by the caller."},
    {"_print", "uint32_t",
     HANDLE "char *buffer, const struct $M *msg, uint32_t length, uint32_t *err",
     "messages::print({handle, instance, err}, buffer, msg, length, $R)",
     "Writes the message as text and gives the characters written. The buffer has length bytes and "
     "must begin with\n"
     "a NUL. Errors: 90 when something in front of a record does not fit."},
    {"_print_cr", "uint32_t",
     "struct ork_handle *handle, const struct $M *msg, char *buffer, uint32_t length",
     "messages::print_cr(handle, msg, buffer, length, $R)",
     "As $M_print with the handle's cr_instance and cr_error; all ones on an error."},
    {"_to_xml", "uint32_t",
     HANDLE "char *buffer, const struct $M *msg, uint32_t length, uint32_t *err",
     "messages::to_xml({handle, instance, err}, buffer, msg, length, $R)",
     "Writes the message as an XML element of its name and gives the characters written."},
    {"_toxml_cr", "uint32_t",
     "struct ork_handle *handle, const struct $M *msg, char *buffer, uint32_t length",
     "messages::to_xml_cr(handle, msg, buffer, length, $R)",
     "As $M_to_xml with the handle's cr_instance and cr_error; all ones on an error."},
    {"_from_xml", "struct $M *",
     HANDLE "struct ork_xml *xml, uint32_t *err, char *err_text, uint32_t err_text_len",
     "messages::from_xml({handle, instance, err}, {xml, err_text, err_text_len}, $R)",
     "Makes a message from a parsed document; a record that is not in it keeps its defaults. The "
     "caller owns the\n"
     "message. Null on an error: 12 for no memory, else the runtime's."},
};

constexpr Family control_family[] = {
    {"_create", "void *", "struct ork_handle *handle, uint32_t instance",
     "messages::control_create(handle, instance)", "An allocation of no bytes; may be null."},
    {"_create_cr", "void *", "struct ork_handle *handle",
     "messages::control_create_cr(handle, $K, $R)",
     "As $C_create with the handle's cr_instance; the sentinel without memory or with cr_error "
     "set."},
    {"_destroy", "void", HANDLE "void *msg", "messages::control_destroy(handle, instance, msg)",
     "Gives it back. Null is ignored."},
    {"_destroy_cr", "void", "struct ork_handle *handle, void *msg",
     "messages::control_destroy_cr(handle, msg, $K, $R)",
     "As $C_destroy with the handle's cr_instance; the sentinel is ignored too."},
    {"_len", "uint32_t", "void", "messages::control_length()", "Bytes of the frame: 43."},
    {"_len_cr", "uint32_t", "struct ork_handle *handle", "messages::control_length_cr(handle)",
     "As $C_len; 0 when the handle's cr_error is set."},
    {"_marshal", "uint32_t",
     HANDLE "uint8_t *buffer, const void *msg, int32_t length, uint32_t *err",
     "static_cast<void>(msg), messages::control_marshal(handle, instance, buffer, length, err, $K, "
     "$R)",
     "$D"},
    {"_marshal_cr", "uint32_t",
     "struct ork_handle *handle, const void *msg, uint8_t *buffer, int32_t length",
     "static_cast<void>(msg), messages::control_marshal_cr(handle, buffer, length, $K, $R)",
     "As $C_marshal with the handle's cr_instance and cr_error; all ones on an error."},
    {"_unmarshal", "uint32_t",
     HANDLE "void *ctx, void **out_msg, const uint8_t *buffer, int32_t length, ork_message_handler "
            "handler, uint32_t *err",
     "static_cast<void>(buffer), static_cast<void>(length), messages::control_unmarshal(handle, "
     "instance, {ctx, out_msg, handler, $H}, "
     "err)",
     "Runs handler, or else the library's own, and gives 43 without looking at the buffer. A "
     "handler that is\n"
     "given takes over the bookkeeping of the bundle."},
    {"_unmarshal_only", "uint32_t", "void", "0", "Does nothing and gives 0."},
    {"_print", "uint32_t", HANDLE "char *buffer, const void *msg, uint32_t length, uint32_t *err",
     "static_cast<void>(msg), messages::control_print({handle, instance, err}, buffer, length, $K, "
     "$R)",
     "Writes one line of text and gives the characters written."},
    {"_print_cr", "uint32_t",
     "struct ork_handle *handle, const void *msg, char *buffer, uint32_t length",
     "static_cast<void>(msg), messages::control_print_cr(handle, buffer, length, $K, $R)",
     "As $C_print with the handle's cr_instance and cr_error; all ones on an error."},
    {"_to_xml", "uint32_t", HANDLE "char *buffer, const void *msg, uint32_t length, uint32_t *err",
     "static_cast<void>(msg), messages::control_to_xml({handle, instance, err}, buffer, length, "
     "$K, $R)",
     "Writes an empty XML element with the bundle's name and gives the characters written."},
    {"_toxml_cr", "uint32_t",
     "struct ork_handle *handle, const void *msg, char *buffer, uint32_t length",
     "static_cast<void>(msg), messages::control_to_xml_cr(handle, buffer, length, $K, $R)",
     "As $C_to_xml with the handle's cr_instance and cr_error; all ones on an error."},
    {"_from_xml", "void *",
     HANDLE "struct ork_xml *xml, uint32_t *err, char *err_text, uint32_t err_text_len",
     "static_cast<void>(xml), static_cast<void>(err_text), static_cast<void>(err_text_len), "
     "messages::control_from_xml(handle, instance, "
     "err)",
     "As $C_create; the document is not looked at. Null with *err set."},
    {"_valid_cr", "uint32_t", "void", "1", "Always 1."},
};

struct ControlKind {
  const char* word;
  const char* enumerator;
  const char* marshal_doc;
  const char* handler_call;
  const char* handler_doc;
};
constexpr ControlKind control_kinds[] = {
    {"start", "messages::Control::start",
     "Writes the 43 bytes that open the bundle, and opens it on the handle. Gives the bytes "
     "written. Errors: 17 when\n"
     "a bundle is open already, 90 for a short buffer (none is opened then).",
     "static_cast<void>(ctx), messages::handle_start(handle, instance, msg, err, $R)",
     "Opens the received bundle on the handle. Errors: 17 when one is open already. A msg is "
     "freed."},
    {"abort", "messages::Control::abort",
     "Writes the 43 bytes that give the bundle up, and closes it on the handle even when they do "
     "not fit. Gives the\n"
     "bytes written. Errors: 2 when no bundle is open, 90 for a short buffer.",
     "static_cast<void>(ctx), messages::handle_abort(handle, instance, msg, err, $R)",
     "Drops the received bundle. Errors: 74 when none is open. A msg is freed."},
    {"commit", "messages::Control::commit",
     "Writes the 43 bytes that complete the bundle, and closes it on the handle even when they do "
     "not fit. Gives the\n"
     "bytes written. Errors: 2 when no bundle is open, 90 for a short buffer.",
     "messages::handle_commit(handle, instance, ctx, msg, err, fwe_ui_wayfind_$B_bundle_handler, "
     "$R)",
     "Calls the first bundle handler that exists of: the dispatch information's, the handle's, the "
     "module's, the\n"
     "bundle's registered one, fwe_ui_wayfind_$B_bundle_handler; then drops the\n"
     "received bundle. Errors: 74 when none is open. A msg is freed."},
};

constexpr Family registration[] = {
    {"_bundle_handler_register", "ork_bundle_handler", "ork_bundle_handler handler",
     "messages::exchange(fwe_ui_wayfind_$B_bundle_registered_handler, handler)",
     "Stores the bundle's own handler and gives back the one before."},
    {"_bundle_handler_unregister", "ork_bundle_handler", "void",
     "messages::exchange(fwe_ui_wayfind_$B_bundle_registered_handler, nullptr)",
     "Takes the bundle's own handler away and gives it back."},
};

#undef HANDLE

}  // namespace

Functions message_functions(size_t index) {
  const std::string stem = std::string(model::messages[index]->name) + "_message";
  const model::MessageRow& row = model::message_rows[index];
  Places places = {{"$M", stem}, {"$R", "message_" + std::string(model::messages[index]->name)}};
  Functions functions;
  add(functions, message_objects, stem, places);
  for (size_t c = row.carried; c < size_t{row.carried} + row.records; ++c) {
    const char* record = model::records[model::carried_rows[c].record]->name;
    Places carried = places;
    carried.push_back({"$T", record});
    carried.push_back({"$C", "model::carried<" + message_table(index) + ", " +
                                 std::to_string(c - row.carried) + ">"});
    add(functions, carried_records, stem + "_" + record, carried);
  }
  add(functions, message_forms, stem, places);
  return functions;
}

Functions bundle_functions(size_t index) {
  const std::string bundle = model::bundles[index]->name;
  const std::string row = "bundle_" + bundle;
  Functions functions;
  for (const ControlKind& kind : control_kinds) {
    const std::string stem = bundle + "_bundle_" + kind.word + "_message";
    const std::string handler = "fwe_ui_wayfind_" + stem + "_handler";
    const Places places = {{"$D", kind.marshal_doc}, {"$C", stem},
                           {"$K", kind.enumerator},  {"$R", row},
                           {"$H", handler},          {"$B", bundle}};
    add(functions, control_family, stem, places);
    functions.push_back(
        {handler, "void",
         "struct ork_handle *handle, uint32_t instance, void *ctx, void *msg, uint32_t *err",
         fill(kind.handler_call, places), fill(kind.handler_doc, places)});
  }
  add(functions, registration, "fwe_ui_wayfind_" + bundle, {{"$B", bundle}});
  return functions;
}

Functions module_functions() {
  return {
      {"fwe_ui_wayfind_typeinfo_initialize", "void",
       "struct ork_handle *handle, uint32_t instance, uint32_t *err", "-",
       "Enters every type of the module that is not there yet into the handle's shared type table, "
       "and brings the\n"
       "others up to date. Errors: 12 when the shared pool is exhausted; types entered by then "
       "stay."},
      {"fwe_ui_wayfind_type_variant_dump", "void", "int (*print_fn)(const char *format, ...)",
       "frame::type_variant_dump(print_fn)",
       "Prints the variants of all types, a block each, through a function that works like "
       "printf."},
      {"fwe_ui_wayfind_bundle_handler_register", "ork_bundle_handler", "ork_bundle_handler handler",
       "messages::register_for_module(handler)",
       "Makes handler the one for all bundles of this module and of the seven that it is built on; "
       "null takes it away.\n"
       "Gives back the one before."},
      {"fwe_ui_wayfind_bundle_handler_unregister", "ork_bundle_handler", "void",
       "messages::unregister_for_module()",
       "Takes the handler for all bundles away, here and in the seven modules, and gives it back."},
  };
}

}  // namespace generator
