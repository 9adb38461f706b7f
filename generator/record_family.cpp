// The functions that every record has.
#include "generator/function.h"

namespace generator {
namespace {

constexpr Family before_values[] = {
    {"_variant_data_index_cap", "int32_t", "int32_t variant", "frame::index_cap(variant, $N)",
     "Index of a variant in the type's variant table. The low byte of variant counts, signed.\n"
     "Gives variant back if it is below $n, a negative one too; otherwise $N in the low byte."},
    {"_adjust_variant", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint32_t *err",
     "frame::adjust({handle, instance, err}, obj, $N)",
     "Asks the runtime to raise obj in place to the newest variant that its domain and its storage "
     "allow.\n"
     "obj may be null. Gives the runtime's answer; *err on entry is not looked at."},
    {"_create", "struct $T *", "struct ork_handle *handle, uint32_t instance",
     "frame::create(handle, instance, $R)",
     "Makes a new record, all fields 0. The caller owns it and gives it back with $T_destroy.\n"
     "Null when there is no memory; no error number is stored then."},
    {"_create_internal", "struct $T *", "struct ork_handle *handle, uint32_t instance",
     "frame::create_internal(handle, instance, $R)",
     "As $T_create, without starting the trace channel. While a create in cr mode runs it gives "
     "the type's\n"
     "sentinel instead of null, and stores 12 unless an error stands."},
    {"_create_cr", "struct $T *", "struct ork_handle *handle", "frame::create_cr(handle, $R)",
     "As $T_create with the handle's cr_instance. Without memory, or with cr_error set, it gives "
     "the type's\n"
     "sentinel: an object that is never written and that destroy ignores."},
    {"_initialize", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, const struct ork_type_info "
     "*tinfo, uint32_t notify, "
     "uint32_t no_stats, uint32_t flags, uint8_t *sttr_base, uint32_t *err",
     "frame::initialize({handle, instance, err}, obj, tinfo, {notify, no_stats, "
     "static_cast<uint8_t>(flags), sttr_base}, $R)",
     "Turns $b zero bytes at obj into a live record. notify nonzero announces every write to the "
     "header; no_stats\n"
     "nonzero leaves statistics and state base out; flags are ORed into the object's flags; "
     "sttr_base is its\n"
     "first state byte, or null. Errors: 22 for a nested object without sttr_base while tracking."},
    {"_set_instance_embedded", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj",
     "frame::set_instance_embedded(handle, instance, obj, $R)",
     "Marks the record, and before it every object inside it, as lying in another object's "
     "storage.\n"
     "A null obj is traced and left alone."},
    {"_sizeof", "uint32_t", "struct ork_handle *handle", "frame::size_of(handle, $R)",
     "Bytes to allocate for a record: $b, with state tracking on $w."},
    {"_sizeof_internal", "uint32_t",
     "struct ork_handle *handle, const struct $T *obj, uint32_t with_state, uint32_t state_only",
     "frame::size_of_internal(handle, obj, with_state, state_only, $R)",
     "Bytes of a record's body; with state tracking on, with_state nonzero adds its state bytes "
     "and state_only\n"
     "nonzero gives them alone (0 with tracking off). obj, if not null, says by its header which "
     "layout counts."},
    {"_destroy", "void", "struct ork_handle *handle, uint32_t instance, struct $T *obj",
     "frame::destroy(handle, instance, obj, $R)",
     "Gives a record and all that it owns back. Null and the sentinel are ignored. A record that "
     "the runtime\n"
     "still has references to stays; the runtime frees it later."},
    {"_destroy_internal", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint32_t free_storage",
     "frame::destroy_internal(handle, instance, obj, free_storage, $R)",
     "As $T_destroy; with free_storage 0 the record's own block stays, as for a record inside "
     "another."},
    {"_destroy_cr", "void", "struct ork_handle *handle, struct $T *obj",
     "frame::destroy_internal(handle, handle->cr_instance, obj, 1, $R)",
     "As $T_destroy with the handle's cr_instance."},
    {"_is_valid_cr", "uint32_t",
     "struct ork_handle *handle, const struct $T *obj, uint32_t field_number, uint32_t flags",
     "frame::is_valid_cr(handle, obj, field_number, flags, $R)",
     "Whether a field number is in use: 1 or 0. Numbers run from 0 in field order, with one number "
     "more at each\n"
     "step to a later variant; bit 0 of flags leaves the variant of obj out, and obj may then be "
     "null."},
    {"_get_oid_count", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, const struct $T *obj, uint32_t *err",
     "frame::get_oid_count({handle, instance, err}, obj, $R)",
     "How many references to other objects the record holds: always 0. Errors: 22 for a null obj."},
    {"_get_object_references", "void",
     "struct ork_handle *handle, uint32_t instance, const struct $T *obj, void **refs, uint32_t "
     "count, uint32_t *err",
     "static_cast<void>(refs), static_cast<void>(count), frame::get_object_references({handle, "
     "instance, err}, obj, $R)",
     "Tells the references that the record holds: none, so refs is not written. Errors: 22 for a "
     "null obj."},
    {"_post_copyout_cleanup", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *dst, struct $T *src, uint32_t *err",
     "frame::post_copyout_cleanup({handle, instance, err}, dst, src, $R)",
     "For a caller that has copied a record's bytes by itself: moves what src owns outside its "
     "block to dst."},
    {"_get", "struct $T *",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint32_t *err",
     "static_cast<void>(err), frame::record_get(handle, instance, obj, $R)",
     "Gives obj back, after telling the database hook."},
    {"_set", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *dst, const struct $T *src, uint32_t "
     "*err",
     "frame::record_set({handle, instance, err}, dst, src, $R)",
     "Copies a whole record, state bytes included. Variable arrays move: src is left with empty "
     "ones.\n"
     "Errors: 43 when dst is older than src or laid out otherwise (nothing copied), 22 when the "
     "handle tracks\n"
     "and a record does not (the fields are copied)."},
};

constexpr Family after_values[] = {
    {"_set_all_state_tracking_flag", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint8_t value",
     "frame::set_all_state_tracking_flag(handle, instance, obj, value, $R)",
     "Fills all $s state bytes with value. Not for a record whose arrays hold elements: the fill "
     "goes over the\n"
     "pointers that stand between the bytes."},
    {"_offset_update", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint8_t *sttr_ptr, uint32_t "
     "*err",
     "frame::offset_update({handle, instance, err}, obj, sttr_ptr, $R)",
     "Tells the runtime where the state bytes of the records inside obj lie, sttr_ptr being those "
     "of obj."},
    {"_offset_remove", "void",
     "struct ork_handle *handle, uint32_t instance, struct $T *obj, uint32_t *err",
     "frame::offset_remove({handle, instance, err}, obj, $R)",
     "Takes back what $T_offset_update told."},
    {"_marshal", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, uint8_t *buffer, const struct $T *obj, int32_t "
     "buffer_len, uint32_t *err",
     "encoders::marshal<$r>(handle, instance, buffer, obj, buffer_len, err)",
     "Writes the record's wire image into buffer_len bytes, lowered to what the peer's domain "
     "takes (43 is then\n"
     "stored on the handle). Gives the bytes written. With tracking on one byte behind the buffer "
     "may be\n"
     "written: keep it free. Errors: 90 when the buffer is too short."},
    {"_marshal_for_clone", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, uint8_t *buffer, const struct $T *obj, int32_t "
     "buffer_len, uint32_t *err",
     "encoders::marshal_for_clone<$r>(handle, instance, buffer, obj, buffer_len, err)",
     "As $T_marshal, but the record itself is not lowered; the records inside it are."},
    {"_unmarshal", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, const uint8_t *buffer, struct $T *obj, int32_t "
     "buffer_len, "
     "uint32_t reuse_storage, uint32_t *err",
     "encoders::unmarshal<$r>(handle, instance, buffer, obj, buffer_len, reuse_storage, err)",
     "Fills an existing record from a wire image and gives the bytes consumed; fields of variants "
     "newer than\n"
     "the record's layout are stepped over. reuse_storage nonzero keeps array blocks whose count "
     "has not\n"
     "changed. Errors: 90 for a short buffer, 12 for no memory; the record can always be "
     "destroyed."},
    {"_len", "uint32_t", "struct ork_handle *handle, uint32_t instance, const struct $T *obj",
     "encoders::length<$r>(handle, instance, obj)",
     "Bytes to reserve for the wire image of obj, or of an empty record when obj is null."},
    {"_len_cr", "uint32_t", "struct ork_handle *handle, const struct $T *obj",
     "encoders::length_cr<$r>(handle, obj)",
     "As $T_len with the handle's cr_instance; 0 when cr_error is set."},
    {"_compare", "int32_t", "const struct $T *a, const struct $T *b", "encoders::compare(a, b, $R)",
     "Orders two records by their fields: 0 when equal, negative when a sorts earlier. Only the "
     "sign counts.\n"
     "Null sorts before any record."},
    {"_hash", "uint32_t", "const struct $T *obj, uint32_t seed", "encoders::hash(obj, seed, $R)",
     "Hash of all fields, continued from seed; the seed itself for a null obj."},
    {"_print", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, char *buffer, uint32_t indent, const char "
     "*name, const struct $T *obj, "
     "uint32_t buffer_len, uint32_t *err",
     "encoders::print({handle, instance, err}, buffer, indent, name, obj, buffer_len, $R)",
     "Writes the record as text under name, indent blanks in, and gives the characters written. "
     "The buffer has\n"
     "buffer_len bytes and must begin with a NUL. Errors: as the runtime's text functions give "
     "them."},
    {"_print_cr", "uint32_t",
     "struct ork_handle *handle, const struct $T *obj, char *buffer, uint32_t buffer_len",
     "encoders::print_cr(handle, obj, buffer, buffer_len, $R)",
     "As $T_print under the type's name, with the handle's cr_instance and cr_error; all ones on "
     "an error."},
    {"_to_xml", "uint32_t",
     "struct ork_handle *handle, uint32_t instance, const char *tag, char *buffer, struct $T *obj, "
     "uint32_t buffer_len, "
     "uint8_t state, uint32_t *err",
     "encoders::to_xml({handle, instance, err}, tag, buffer, obj, buffer_len, state, $R)",
     "Writes the record as an XML element named tag, with state as its state byte, and gives the "
     "characters\n"
     "written."},
    {"_toxml_cr", "uint32_t",
     "struct ork_handle *handle, struct $T *obj, char *buffer, uint32_t buffer_len",
     "encoders::to_xml_cr(handle, obj, buffer, buffer_len, $R)",
     "As $T_to_xml under the type's name, with the handle's cr_instance and cr_error; all ones on "
     "an error."},
    {"_from_xml", "void",
     "struct ork_handle *handle, uint32_t instance, const char *xpath, struct ork_xml *xml, struct "
     "$T *obj, uint32_t *err, "
     "char *err_text, uint32_t err_text_len",
     "encoders::from_xml({handle, instance, err}, xpath, {xml, err_text, err_text_len}, obj, $R)",
     "Fills the record from the element at xpath of a parsed document. What the document lacks "
     "stays as it is.\n"
     "err_text may be null. Errors: 2 when there is no element at xpath, 12 for no memory, and the "
     "runtime's."},
    {"_clone", "void",
     "struct ork_handle *handle, uint32_t instance, const struct $T *src, struct $T **dst_slot, "
     "uint8_t *ws, int32_t ws_len, "
     "uint32_t *err",
     "encoders::clone({handle, instance, err}, src, reinterpret_cast<void **>(dst_slot), {ws, "
     "ws_len}, $R, encoders::wire_form<$r>)",
     "Makes a deep copy of src in *dst_slot by way of ws, a scratch buffer of ws_len bytes that "
     "holds the wire\n"
     "image. The caller owns the copy. Errors: 2 without slot or buffer, 12 for no memory, 90 for "
     "a short one."},
    {"_clone_internal", "void",
     "struct ork_handle *handle, uint32_t instance, const struct $T *src, struct $T **dst_slot, "
     "uint8_t *ws, int32_t ws_len, "
     "uint32_t *err",
     "encoders::clone_internal({handle, instance, err}, src, reinterpret_cast<void **>(dst_slot), "
     "{ws, ws_len}, $R, "
     "encoders::wire_form<$r>)",
     "As $T_clone, but a record that *dst_slot holds already is filled instead of a new one. When "
     "that fails\n"
     "it is destroyed and *dst_slot is null."},
    {"_clone_cr", "struct $T *", "struct ork_handle *handle, const struct $T *src",
     "encoders::clone_cr(handle, src, $R, encoders::wire_form<$r>)",
     "As $T_clone with the handle's workspace, cr_instance and cr_error; null on an error."},
};

std::string number(size_t n) { return std::to_string(n); }

bool is_value(const model::FieldRow& field) { return field.cls == model::Class::value; }
bool is_read(const model::FieldRow& field) {
  return is_value(field) || field.cls == model::Class::counter;
}

// The two calls whose parameters are the fields themselves.
Function get_all(const model::RecordRow& record, const std::string& name, const std::string& row) {
  std::string parameters = "struct ork_handle *handle, uint32_t instance, struct " + name + " *obj";
  std::string out;
  for (const model::FieldRow& field : model::fields_of(record)) {
    if (!is_read(field)) continue;
    parameters += ", " + value_type(field) + " *" + field.name;
    out += std::string(out.empty() ? "" : ", ") + field.name;
  }
  return {name + "_get_all", "void", parameters + ", uint32_t *err",
          "frame::get_all(handle, instance, obj, frame::Outs{{" + out + "}}.at, err, " + row + ")",
          "Reads all value and counter fields that obj has, in field order. Pointers of fields "
          "that its variant\n"
          "lacks are not written, and that is no error."};
}

Function set_all(const model::RecordRow& record, const std::string& name, const std::string& row) {
  std::string parameters = "struct ork_handle *handle, uint32_t instance, struct " + name + " *obj";
  std::string values;
  for (const model::FieldRow& field : model::fields_of(record)) {
    if (!is_value(field)) continue;
    parameters += ", " + value_type(field) + " " + field.name;
    values += std::string(values.empty() ? "" : ", ") + field.name;
  }
  return {
      name + "_set_all", "void", parameters + ", uint32_t *err",
      "frame::set_all(handle, instance, obj, frame::Values{{" + values + "}}.at, err, " + row + ")",
      "Writes all value fields that obj has, in field order; values of fields that its variant "
      "lacks are\n"
      "dropped. State bytes stay as they are. Errors: 43 for an enum value out of range."};
}

}  // namespace

Functions record_functions(size_t index) {
  const model::RecordRow& record = model::record_rows[index];
  const model::Layout& newest = record.newest_layout();
  const std::string name = model::records[index]->name;
  const std::string table = record_table(index);
  const std::string row = row_of_table(table);
  const Places places = {{"$T", name},
                         {"$R", row},
                         {"$r", table},
                         {"$N", number(static_cast<size_t>(record.newest()))},
                         {"$n", number(record.variants)},
                         {"$b", number(newest.body)},
                         {"$s", number(newest.state)},
                         {"$w", number(size_t{newest.body} + newest.state)}};
  Functions functions;
  functions.push_back(luid_function(name));
  add(functions, before_values, name, places);
  functions.push_back(get_all(record, name, row));
  functions.push_back(set_all(record, name, row));
  add(functions, after_values, name, places);
  return functions;
}

}  // namespace generator
