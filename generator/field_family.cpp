// The accessors of a field, by class.
#include "generator/function.h"

namespace generator {
namespace {

using model::Class;
using model::Kind;

#define HANDLE "struct ork_handle *handle, uint32_t instance, "
#define OBJECT HANDLE "struct $T *obj, "

constexpr Family getters_of_state[] = {
    {"_state_flag_get", "uint8_t", OBJECT "uint32_t *err",
     "frame::state_flag_get(handle, instance, obj, err, $I)",
     "The field's state byte. Errors: 22 while tracking is off, or for an object without state "
     "bytes."},
};
constexpr Family setters_of_state[] = {
    {"_state_flag_set", "void", OBJECT "uint8_t value, uint32_t *err",
     "frame::state_flag_set(handle, instance, obj, value, err, $I)",
     "Writes the field's state byte. Errors: 22 as for the getter, 43 when the variant lacks the "
     "field."},
};

constexpr Family value_family[] = {
    {"_get", "$S *", OBJECT "uint32_t *err", "frame::get<Kind::$K>(handle, instance, obj, err, $I)",
     "Where the value lies in obj, good as long as obj is. Errors: 43 when the variant lacks the "
     "field."},
    {"_get_value", "$V", OBJECT "uint32_t *err",
     "frame::get_value<Kind::$K>(handle, instance, obj, err, $I)",
     "The value; 0 on an error. Errors: 43 when the variant lacks the field."},
    {"_set", "void", OBJECT "const $S *src, uint32_t *err",
     "frame::set<Kind::$K>(handle, instance, obj, src, err, $I)",
     "Copies the value from src. Errors: 43 when the variant lacks the field; 22, after the write, "
     "when the\n"
     "handle tracks and obj does not."},
    {"_set_value", "void", OBJECT "$V value, uint32_t *err",
     "frame::set_value<Kind::$K>(handle, instance, obj, value, err, $I)",
     "Writes the value. Errors: as $T_$F_set."},
};
constexpr Family enum_family[] = {
    {"_get", "$S *", OBJECT "uint32_t *err", "frame::object_get(handle, instance, obj, err, $I)",
     "The enum object inside obj, good as long as obj is. Errors: 43 when the variant lacks the "
     "field."},
    {"_get_value", "uint32_t", OBJECT "uint32_t *err",
     "frame::enum_field_get_value(handle, instance, obj, err, $I)",
     "The enumerator's number; 0 on an error. Errors: 43 when the variant lacks the field."},
    {"_set", "void", OBJECT "const $S *src, uint32_t *err",
     "frame::enum_field_set(handle, instance, obj, src, err, $I)",
     "Copies an enum object from src. Errors: 43 when the variant lacks the field, or for a value "
     "out of range\n"
     "(nothing is written then, but the field counts as touched); 22, after the write, when the "
     "handle tracks\n"
     "and obj does not."},
    {"_set_value", "void", OBJECT "uint32_t value, uint32_t *err",
     "frame::enum_field_set_value(handle, instance, obj, value, err, $I)",
     "Writes the enumerator's number. Errors: as $T_$F_set."},
};
constexpr Family object_family[] = {
    {"_get", "$S *", OBJECT "uint32_t *err", "frame::object_get(handle, instance, obj, err, $I)",
     "The object inside obj, good as long as obj is; obj keeps it. Errors: 43 when the variant "
     "lacks the field."},
    {"_set", "void", OBJECT "const $S *src, uint32_t *err",
     "frame::object_set(handle, instance, obj, src, err, $I)",
     "Copies an object from src; variable arrays inside it move. Errors: 43 when the variant lacks "
     "the field, or\n"
     "src is newer; 22, after the write, when the handle tracks and obj does not."},
};
constexpr Family text_family[] = {
    {"_get", "void", OBJECT "char *dst, uint32_t dst_size, uint32_t *err",
     "frame::text_get(handle, instance, obj, dst, dst_size, err, $I)",
     "Copies the text into dst, dst_size bytes with the end byte; $W + 1 always suffice. Errors: "
     "22 for a size of 0,\n"
     "28 for a size of at most $W (what fits is delivered, ended), 43 when the variant lacks the "
     "field."},
    {"_set", "void", OBJECT "const char *src, uint32_t length, uint32_t *err",
     "frame::text_set(handle, instance, obj, src, length, err, $I)",
     "Writes length characters from src; exactly $W leave no end byte. Errors: 22 for a length "
     "above $W (nothing\n"
     "is written), 43 when the variant lacks the field; 22, after the write, when the handle "
     "tracks and obj\n"
     "does not."},
    {"_set_cr", "uint32_t",
     "struct ork_handle *handle, struct $T *obj, const char *src, uint32_t length",
     "(frame::text_set(handle, handle->cr_instance, obj, src, length, &handle->cr_error, $I), "
     "handle->cr_error)",
     "As $T_$F_set with the handle's cr_instance and cr_error, which it gives back."},
};
constexpr Family counter_family[] = {
    {"_get", "$S *", OBJECT "uint32_t *err", "frame::get<Kind::$K>(handle, instance, obj, err, $I)",
     "Where the count lies in obj. It moves with its array only. Errors: 43 when the variant lacks "
     "the field."},
    {"_get_value", "$V", OBJECT "uint32_t *err",
     "frame::get_value<Kind::$K>(handle, instance, obj, err, $I)",
     "The count of elements. Errors: 43 when the variant lacks the field."},
};
constexpr Family array_readers[] = {
    {"_get", "$S *", OBJECT "uint32_t index, uint32_t *err",
     "frame::array_get(handle, instance, obj, index, err, $I)",
     "Element index, good until the array next grows; obj keeps it. Errors: 2 when there is no "
     "such element,\n"
     "43 when the variant lacks the field."},
};
constexpr Family value_array_family[] = {
    {"_get_value", "$V", OBJECT "uint32_t index, uint32_t *err",
     "static_cast<$V>(frame::array_get_value(handle, instance, obj, index, err, $I))",
     "The value of element index; 0 on an error. Errors: as $T_$F_get."},
    {"_get_mem", "void", OBJECT "$S *dst, uint32_t count, uint32_t *err",
     "frame::array_get_mem(handle, instance, obj, dst, count, err, $I)",
     "Copies the first count elements to dst. Errors: 22 when there are fewer (dst stays as it "
     "is), 43 when the\n"
     "variant lacks the field."},
    {"_set", "void", OBJECT "uint32_t index, const $S *src, uint32_t *err",
     "frame::array_set({handle, instance, err}, obj, index, src, $I)",
     "Writes element index from src. An index at or above the count makes the array grow to it, "
     "with 0 between;\n"
     "a null src only grows. Errors: 12 for no memory, 43 when the variant lacks the field, 22 "
     "when the handle\n"
     "tracks and obj does not."},
    {"_set_cr", "uint32_t", "struct ork_handle *handle, struct $T *obj, uint32_t index, $V value",
     "(frame::array_set({handle, handle->cr_instance, &handle->cr_error}, obj, index, &value, $I), "
     "handle->cr_error)",
     "As $T_$F_set of value, with the handle's cr_instance and cr_error, which it gives back."},
    {"_set_value", "void", OBJECT "uint32_t index, $V value, uint32_t *err",
     "frame::array_set_value({handle, instance, err}, obj, index, value, $I)",
     "Writes element index; grows and fails as $T_$F_set does."},
    {"_set_mem", "void", OBJECT "const $S *src, uint32_t count, uint32_t *err",
     "frame::array_set_mem(handle, instance, obj, src, count, err, $I)",
     "Replaces the whole array by count elements from src. The old array is gone even when that "
     "fails. Errors:\n"
     "12 for no memory, 43 when the variant lacks the field, 22 when the handle tracks and obj "
     "does not."},
    {"_set_mem_cr", "uint32_t",
     "struct ork_handle *handle, struct $T *obj, const $S *src, uint32_t count",
     "(frame::array_set_mem(handle, handle->cr_instance, obj, src, count, &handle->cr_error, $I), "
     "handle->cr_error)",
     "As $T_$F_set_mem with the handle's cr_instance and cr_error, which it gives back."},
};
constexpr Family record_array_family[] = {
    {"_set", "void", OBJECT "uint32_t index, const $S *src, uint32_t *err",
     "frame::array_set_record({handle, instance, err}, obj, index, src, frame::record_set, $I)",
     "Copies src into element index; arrays inside src move. An index at or above the count makes "
     "the array\n"
     "grow to it, with new records between; a null src only grows, and must not be given while the "
     "handle tracks.\n"
     "Errors: 12 for no memory, 43 when the variant lacks the field or src is newer, 22 when the "
     "handle tracks and\n"
     "obj or src does not."},
    {"_set_cr", "uint32_t",
     "struct ork_handle *handle, struct $T *obj, uint32_t index, const $S *src, uint32_t use_set",
     "(frame::array_set_record({handle, handle->cr_instance, &handle->cr_error}, obj, index, src, "
     "use_set != 0 ? frame::record_set : encoders::clone_into_element<$E>, $I), handle->cr_error)",
     "As $T_$F_set with the handle's cr_instance and cr_error, which it gives back. With use_set 0 "
     "the\n"
     "element is a deep copy and src keeps its arrays."},
};
constexpr Family array_states[] = {
    {"_remove_elements", "void", HANDLE "struct $T *obj",
     "frame::array_remove_elements(handle, instance, obj, $I)",
     "Empties the array and gives its elements back. A null obj is ignored."},
    {"_state_flag_whole_get", "uint8_t", OBJECT "uint32_t *err",
     "frame::array_whole_get(handle, instance, obj, err, $I)",
     "The state byte of the array as a whole. Errors: 22 while tracking is off, or for an object "
     "without state bytes."},
    {"_state_flag_whole_set", "void", OBJECT "uint8_t value, uint32_t *err",
     "frame::array_whole_set(handle, instance, obj, value, err, $I)",
     "Writes it. Errors: 22 as for the getter, 43 when the variant lacks the field."},
    {"_state_flag_get_arr", "void", OBJECT "uint8_t **out, uint32_t *err",
     "frame::array_states_get(handle, instance, obj, out, err, $I)",
     "Where the state bytes of the elements lie, one each; may be null. obj keeps them. Errors: 22 "
     "as above."},
    {"_state_flag_set_arr", "void", OBJECT "const uint8_t *src, uint32_t count, uint32_t *err",
     "frame::array_states_set(handle, instance, obj, src, count, err, $I)",
     "Writes count bytes to the start of the array's state entry, which is not where the getter of "
     "the same name\n"
     "reads; at most 16 are written. Errors: 2 when count is not the array's, 22 and 43 as above."},
    {"_state_flag_get", "uint8_t", OBJECT "uint32_t index, uint32_t *err",
     "frame::array_state_get(handle, instance, obj, index, err, $I)",
     "The state byte of element index. Errors: 2 when there is no such element, 22 as above."},
    {"_state_flag_set", "void", OBJECT "uint32_t index, uint8_t value, uint32_t *err",
     "frame::array_state_set(handle, instance, obj, index, value, err, $I)",
     "Writes it. Errors: 2 when there is no such element, 22 and 43 as above."},
};

#undef HANDLE
#undef OBJECT

const char* kind_name(Kind kind) {
  switch (kind) {
    case Kind::u_int8: return "u_int8";
    case Kind::u_int16: return "u_int16";
    case Kind::u_int32: return "u_int32";
    case Kind::u_int64: return "u_int64";
    case Kind::ork_boolean: return "ork_boolean";
    case Kind::link_type: return "link_type";
    case Kind::ip_address: return "ip_address";
    case Kind::character:
    case Kind::enumeration:
    case Kind::flag_set:
    case Kind::record: break;
  }
  return "";
}

}  // namespace

Functions field_functions(const model::FieldRow& field) {
  const std::string record = model::records[field.record]->name;
  const std::string stem = record + "_" + field.name;
  const Places places = {
      {"$T", record},
      {"$F", field.name},
      {"$I", "model::field<" + record_table(field.record) + ", \"" + field.name + "\">"},
      {"$S", storage_type(field)},
      {"$V", value_type(field)},
      {"$K", kind_name(field.kind)},
      {"$W", std::to_string(field.width)},
      {"$E", field.kind == Kind::record ? record_table(field.type) : ""}};
  Functions functions;
  switch (field.cls) {
    case Class::value:
      if (field.kind == Kind::enumeration) {
        add(functions, enum_family, stem, places);
      } else {
        add(functions, value_family, stem, places);
      }
      break;
    case Class::object: add(functions, object_family, stem, places); break;
    case Class::text: add(functions, text_family, stem, places); break;
    case Class::counter: add(functions, counter_family, stem, places); return functions;
    case Class::value_array:
      add(functions, array_readers, stem, places);
      add(functions, value_array_family, stem, places);
      add(functions, array_states, stem, places);
      return functions;
    case Class::record_array:
      add(functions, array_readers, stem, places);
      add(functions, record_array_family, stem, places);
      add(functions, array_states, stem, places);
      return functions;
  }
  add(functions, getters_of_state, stem, places);
  add(functions, setters_of_state, stem, places);
  return functions;
}

}  // namespace generator
