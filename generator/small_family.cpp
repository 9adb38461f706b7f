// The functions of enums and of the flag set.
#include "generator/function.h"

namespace generator {
namespace {

#define HANDLE "struct ork_handle *handle, uint32_t instance, "

// What both have, in the order of their functions.
constexpr Family frame_family[] = {
    {"_variant_data_index_cap", "int32_t", "int32_t variant", "frame::small_index_cap(variant)",
     "Index of a variant in the type's variant table. The low byte of variant counts, signed: a "
     "negative one comes\n"
     "back as it is, any other as 0."},
    {"_create", "struct $T *", "struct ork_handle *handle, uint32_t instance",
     "frame::small_create_internal(handle, instance, $R)",
     "Makes a new object of value 0. The caller owns it. Null when there is no memory; no error is "
     "stored then."},
    {"_create_internal", "struct $T *", "struct ork_handle *handle, uint32_t instance",
     "frame::small_create_internal(handle, instance, $R)",
     "As $T_create. While a create in cr mode runs it gives the type's sentinel instead of null."},
    {"_create_cr", "struct $T *", "struct ork_handle *handle", "frame::small_create_cr(handle, $R)",
     "As $T_create with the handle's cr_instance; the type's sentinel without memory or with "
     "cr_error set."},
    {"_initialize", "void",
     HANDLE "struct $T *obj, const struct ork_type_info *tinfo, uint32_t notify, uint32_t "
            "no_stats, uint32_t flags, uint8_t *sttr_base, "
            "uint32_t *err",
     "frame::initialize({handle, instance, err}, obj, tinfo, {notify, no_stats, "
     "static_cast<uint8_t>(flags), sttr_base}, $R)",
     "Turns $b zero bytes at obj into a live object. notify nonzero announces every write to the "
     "header; no_stats\n"
     "nonzero leaves statistics out; flags are ORed into the object's flags; sttr_base is not "
     "used."},
    {"_set_instance_embedded", "void", HANDLE "struct $T *obj",
     "frame::set_instance_embedded(handle, instance, obj, $R)",
     "Marks the object as lying in another one. A null obj is traced and left alone."},
    {"_get_oid_count", "uint32_t", HANDLE "const struct $T *obj, uint32_t *err",
     "frame::get_oid_count({handle, instance, err}, obj, $R)",
     "How many references to other objects there are: always 0. Errors: 22 for a null obj."},
    {"_get_object_references", "void",
     HANDLE "const struct $T *obj, void **refs, uint32_t count, uint32_t *err",
     "static_cast<void>(refs), static_cast<void>(count), frame::get_object_references({handle, "
     "instance, err}, obj, $R)",
     "Tells them: none, so refs is not written. Errors: 22 for a null obj."},
    {"_destroy", "void", HANDLE "struct $T *obj", "frame::small_destroy(handle, instance, obj, $R)",
     "Gives the object back. Null and the sentinel are ignored."},
    {"_destroy_internal", "void", HANDLE "struct $T *obj, uint32_t free_storage",
     "frame::small_destroy_internal(handle, instance, obj, free_storage, $R)",
     "As $T_destroy; with free_storage 0 the object's own block stays."},
    {"_destroy_cr", "void", "struct ork_handle *handle, struct $T *obj",
     "frame::small_destroy_internal(handle, handle->cr_instance, obj, 1, $R)",
     "As $T_destroy with the handle's cr_instance."},
};

constexpr Family common_family[] = {
    {"_adjust_variant", "uint32_t", HANDLE "struct $T *obj, uint32_t *err",
     "frame::small_adjust_variant({handle, instance, err}, obj)",
     "Asks the runtime to raise obj to its one variant. obj may be null. Gives the runtime's "
     "answer."},
    {"_compare", "int32_t", "const struct $T *a, const struct $T *b",
     "encoders::small_compare(a, b, $R)",
     "The value of a minus that of b, cut to 32 bits. Null sorts before any object."},
    {"_hash", "uint32_t", "const struct $T *obj, uint32_t seed",
     "encoders::small_hash(obj, seed, $R)",
     "Hash of the value, continued from seed; the seed itself for a null obj."},
    {"_sizeof", "uint32_t", "void", "$b", "Bytes of an object."},
    {"_len", "uint32_t", "void", "encoders::$L", "Bytes of the wire image."},
    {"_len_cr", "uint32_t", "struct ork_handle *handle",
     "encoders::small_length_cr(handle, encoders::$L)",
     "As $T_len; 0 when the handle's cr_error is set."},
};

constexpr Family enum_values[] = {
    {"_map_to_user_value", "uint32_t", "uint32_t value", "value", "The value unchanged."},
    {"_map_to_internal_value", "uint32_t", "uint32_t value", "value", "The value unchanged."},
};
constexpr Family enum_family[] = {
    {"_get", "struct $T *", HANDLE "struct $T *obj", "frame::enum_get(handle, instance, obj)",
     "Gives obj back, after telling the database hook."},
    {"_get_value", "uint32_t", HANDLE "const struct $T *obj, uint32_t *err",
     "frame::enum_get_value({handle, instance, err}, obj)",
     "The enumerator's number; 0 on an error. Errors: 22 for a null obj."},
    {"_set", "void", HANDLE "struct $T *target, const struct $T *source, uint32_t *err",
     "frame::enum_set({handle, instance, err}, target, source, $R)",
     "Copies the whole object, header included. Errors: 43 for a value out of range; nothing is "
     "stored then."},
    {"_set_value", "void", HANDLE "struct $T *target, uint32_t value, uint32_t *err",
     "frame::enum_set_value({handle, instance, err}, target, value, $R)",
     "Stores the value. Errors: 43 for a value out of range."},
    {"_marshal", "uint32_t",
     HANDLE "uint8_t *buffer, const struct $T *obj, int32_t buffer_len, uint32_t *err",
     "encoders::enum_marshal({handle, instance, err}, buffer, obj, buffer_len)",
     "Writes 5 bytes, variant and value, and gives the bytes written. Errors: 90 when the buffer "
     "is too short."},
    {"_unmarshal", "uint32_t",
     HANDLE "const uint8_t *buffer, struct $T *obj, int32_t buffer_len, uint32_t reuse_storage, "
            "uint32_t *err",
     "encoders::enum_unmarshal({handle, instance, err}, buffer, obj, buffer_len, reuse_storage, "
     "$R)",
     "Reads them into an existing object; a value out of range is taken as it is. Errors: 90 for a "
     "short buffer."},
};
constexpr Family enum_validity[] = {
    {"_is_valid_cr", "uint32_t", "struct ork_handle *handle, int32_t value",
     "frame::enum_is_valid_cr(handle, value, $R)",
     "1 when value is below the count of values, as a signed number, else 0."},
};

constexpr Family flag_family[] = {
    {"_in_range", "uint32_t", "uint32_t flag", "frame::flag_in_range(flag, $R)",
     "1 when there is a flag of this number, else 0."},
    {"_get", "struct $T *", HANDLE "struct $T *obj",
     "(static_cast<void>(handle), static_cast<void>(instance), obj)", "Gives obj back."},
    {"_get_value", "uint32_t", HANDLE "const struct $T *obj, uint32_t flag, uint32_t *err",
     "frame::flag_get_value({handle, instance, err}, obj, flag, $R)",
     "Whether the flag is set: 1 or 0. Errors: 43 for a null obj or a flag that does not exist."},
    {"_get_cr", "uint32_t", "struct ork_handle *handle, const struct $T *obj, uint32_t flag",
     "frame::flag_get_cr(handle, obj, flag, $R)",
     "As $T_get_value with the handle's cr_error; 0 when it is set."},
    {"_set", "void", HANDLE "struct $T *target, const struct $T *source, uint32_t *err",
     "frame::flag_set_set({handle, instance, err}, target, source, $R)",
     "Copies the whole object, header included."},
    {"_set_value", "void", HANDLE "struct $T *obj, uint32_t flag, uint32_t on, uint32_t *err",
     "frame::flag_set_value({handle, instance, err}, obj, flag, on, $R)",
     "Sets the flag when on is nonzero, else clears it. Errors: 43 for a flag that does not "
     "exist."},
    {"_set_cr", "uint32_t", "struct ork_handle *handle, struct $T *obj, uint32_t flag, uint32_t on",
     "(frame::flag_set_value({handle, handle->cr_instance, &handle->cr_error}, obj, flag, on, $R), "
     "handle->cr_error)",
     "As $T_set_value with the handle's cr_instance and cr_error, which it gives back."},
    {"_marshal", "uint32_t",
     HANDLE "uint8_t *buffer, const struct $T *obj, int32_t buffer_len, uint32_t *err",
     "encoders::flag_set_marshal({handle, instance, err}, buffer, obj, buffer_len)",
     "Writes 6 bytes, variant, jump and flags, and gives the bytes written. Errors: 90 when the "
     "buffer is too short."},
    {"_unmarshal", "uint32_t",
     HANDLE "const uint8_t *buffer, struct $T *obj, int32_t buffer_len, uint32_t reuse_storage, "
            "uint32_t *err",
     "encoders::flag_set_unmarshal({handle, instance, err}, buffer, obj, buffer_len, "
     "reuse_storage, $R)",
     "Reads them into an existing object. The byte of flags is read without a length test: one "
     "byte behind a\n"
     "short buffer must be readable. Errors: 90 for a short buffer."},
};
constexpr Family flag_validity[] = {
    {"_is_valid_cr", "uint32_t", "struct ork_handle *handle, uint32_t flag",
     "frame::flag_is_valid_cr(handle, flag, $R)", "1 when there is a flag of this number, else 0."},
};

constexpr Family text_family[] = {
    {"_print", "uint32_t",
     HANDLE "char *buffer, uint32_t indent, const char *name, const struct $T *obj, uint32_t "
            "buffer_len, uint32_t *err",
     "encoders::small_print({handle, instance, err}, buffer, indent, name, obj, buffer_len, $R)",
     "Writes one line under name, indent blanks in, and gives the characters written. The buffer "
     "has buffer_len\n"
     "bytes and must begin with a NUL."},
    {"_print_cr", "uint32_t",
     "struct ork_handle *handle, const struct $T *obj, char *buffer, uint32_t buffer_len",
     "encoders::small_print_cr(handle, obj, buffer, buffer_len, $R)",
     "As $T_print under the type's name, with the handle's cr_instance and cr_error; all ones on "
     "an error."},
    {"_to_xml", "uint32_t",
     HANDLE "const char *tag, char *buffer, const struct $T *obj, uint32_t buffer_len, uint8_t "
            "state, uint32_t *err",
     "(static_cast<void>(state), encoders::small_to_xml({handle, instance, err}, tag, buffer, obj, "
     "buffer_len, $R))",
     "Writes an XML element named tag with one empty child per name; state is dropped. Gives the "
     "characters written."},
    {"_toxml_cr", "uint32_t",
     "struct ork_handle *handle, const struct $T *obj, char *buffer, uint32_t buffer_len",
     "encoders::small_to_xml_cr(handle, obj, buffer, buffer_len, $R)",
     "As $T_to_xml under the type's name, with the handle's cr_instance and cr_error; all ones on "
     "an error."},
    {"_from_xml", "void",
     HANDLE "const char *xpath, struct ork_xml *xml, struct $T *obj, uint32_t *err, char "
            "*err_text, uint32_t err_text_len",
     "encoders::small_from_xml({handle, instance, err}, xpath, {xml, err_text, err_text_len}, obj, "
     "$R)",
     "Takes the value from the child of the element at xpath; without one it stays. err_text may "
     "be null.\n"
     "Errors: the runtime's, but for 2."},
};

#undef HANDLE

}  // namespace

Functions small_functions(size_t index) {
  const bool flags = index >= model::enum_count;
  const std::string name = small_name(index);
  const Places places = {{"$T", name},
                         {"$R", row_of_table(small_table(index))},
                         {"$b", std::to_string(model::small_rows[index].size)},
                         {"$L", flags ? "flag_set_length" : "enum_length"}};
  Functions functions;
  functions.push_back(luid_function(name));
  add(functions, frame_family, name, places);
  if (!flags) add(functions, enum_values, name, places);
  add(functions, common_family, name, places);
  if (flags) {
    add(functions, flag_family, name, places);
  } else {
    add(functions, enum_family, name, places);
  }
  add(functions, text_family, name, places);
  if (flags) {
    add(functions, flag_validity, name, places);
  } else {
    add(functions, enum_validity, name, places);
  }
  return functions;
}

}  // namespace generator
