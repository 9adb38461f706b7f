#include "tests/support/sample.h"

#include <string>

#include "tests/support/exports.h"

namespace sample {
namespace {

using kit::function;

constexpr uint32_t instance = 1;

using Reach = void* (*)(ork_handle*, uint32_t, void*, uint32_t*);

// The value of the nth field: its low bytes fit every width.
uint64_t value_of(uint32_t nth) { return 0x0101010101010101u * (nth % 100 + 1); }

template <class Value>
void set_value(ork_handle* handle, const wayfind_field& field, void* object, uint64_t value) {
  uint32_t err = 0;
  function<void (*)(ork_handle*, uint32_t, void*, Value, uint32_t*)>(field.functions, "_set_value")(
      handle, instance, object, static_cast<Value>(value), &err);
}

void fill_value(ork_handle* handle, const wayfind_field& field, void* object, uint64_t value) {
  switch (field.kind) {
    case WAYFIND_U_INT8: return set_value<uint8_t>(handle, field, object, value);
    case WAYFIND_U_INT16: return set_value<uint16_t>(handle, field, object, value);
    case WAYFIND_U_INT64: return set_value<uint64_t>(handle, field, object, value);
    case WAYFIND_ORK_BOOLEAN:
    case WAYFIND_ENUM: return set_value<uint32_t>(handle, field, object, 1);
    case WAYFIND_U_INT32:
    case WAYFIND_LINK_TYPE: return set_value<uint32_t>(handle, field, object, value);
    case WAYFIND_IP_ADDRESS:
    case WAYFIND_CHAR:
    case WAYFIND_FLAG_SET:
    case WAYFIND_RECORD: break;
  }
}

void fill_object(ork_handle* handle, const wayfind_field& field, void* object, uint32_t elements) {
  uint32_t err = 0;
  void* at = function<Reach>(field.functions, "_get")(handle, instance, object, &err);
  if (at == nullptr) return;
  if (field.kind == WAYFIND_RECORD) return fill(handle, *field.record, at, elements);
  if (field.kind != WAYFIND_IP_ADDRESS) return;
  auto* address = static_cast<ork_ip_address*>(at);
  address->family = 4;
  address->prefix_length = 24;
  address->address[0] = 192;
  address->address[2] = 2;
}

void fill_text(ork_handle* handle, const wayfind_field& field, void* object) {
  const std::string text =
      std::string("text of ").append(field.name).substr(0, field.width - size_t{1});
  uint32_t err = 0;
  function<void (*)(ork_handle*, uint32_t, void*, const char*, uint32_t, uint32_t*)>(
      field.functions, "_set")(handle, instance, object, text.c_str(),
                               static_cast<uint32_t>(text.size()), &err);
}

template <class Value>
void set_element(ork_handle* handle, const wayfind_field& field, void* object, uint32_t index) {
  uint32_t err = 0;
  function<void (*)(ork_handle*, uint32_t, void*, uint32_t, Value, uint32_t*)>(
      field.functions, "_set_value")(handle, instance, object, index,
                                     static_cast<Value>(value_of(index)), &err);
}

void fill_value_array(ork_handle* handle, const wayfind_field& field, void* object,
                      uint32_t elements) {
  for (uint32_t i = 0; i < elements; ++i) {
    if (field.kind == WAYFIND_U_INT8) set_element<uint8_t>(handle, field, object, i);
    if (field.kind == WAYFIND_U_INT16) set_element<uint16_t>(handle, field, object, i);
    if (field.kind == WAYFIND_U_INT32) set_element<uint32_t>(handle, field, object, i);
  }
}

// A new element is set from a scratch record: while tracking, a source has to be there.
void fill_record_array(ork_handle* handle, const wayfind_field& field, void* object,
                       uint32_t elements) {
  using SetElement = void (*)(ork_handle*, uint32_t, void*, uint32_t, const void*, uint32_t*);
  for (uint32_t i = 0; i < elements; ++i) {
    void* element = create(handle, *field.record);
    if (element == nullptr) return;
    fill(handle, *field.record, element, elements);
    uint32_t err = 0;
    function<SetElement>(field.functions, "_set")(handle, instance, object, i, element, &err);
    destroy(handle, *field.record, element);
  }
}

}  // namespace

void* create(ork_handle* handle, const wayfind_record& type) {
  return function<void* (*)(ork_handle*, uint32_t)>(type.functions, "_create")(handle, instance);
}

void destroy(ork_handle* handle, const wayfind_record& type, void* object) {
  function<void (*)(ork_handle*, uint32_t, void*)>(type.functions, "_destroy")(handle, instance,
                                                                               object);
}

void fill(ork_handle* handle, const wayfind_record& type, void* object, uint32_t elements) {
  for (uint32_t i = 0; i < type.field_count; ++i) {
    const wayfind_field& field = type.fields[i];
    switch (field.cls) {
      case WAYFIND_VALUE: fill_value(handle, field, object, value_of(i)); break;
      case WAYFIND_OBJECT: fill_object(handle, field, object, elements); break;
      case WAYFIND_TEXT: fill_text(handle, field, object); break;
      case WAYFIND_COUNTER: break;
      case WAYFIND_VALUE_ARRAY: fill_value_array(handle, field, object, elements); break;
      case WAYFIND_RECORD_ARRAY: fill_record_array(handle, field, object, elements); break;
    }
  }
}

}  // namespace sample
