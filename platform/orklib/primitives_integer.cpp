// u_int8, u_int16, u_int32, u_int64: one family for each width.
#include <limits>

#include "ork/superfasthash.h"
#include "primitive.h"
#include "support/export.h"

namespace ork {
namespace {

template <typename Number>
Number value_at(ork_handle* handle, const Number* address, uint32_t* err) {
  return all_given(handle, err, address) ? *address : Number{0};
}

template <typename Number>
Number* create(ork_handle* handle, uint32_t instance) {
  void* memory = handle->alloc_fn(handle->mem_pool, instance, sizeof(Number));
  return memory != nullptr ? new (memory) Number{0} : nullptr;
}

template <typename Number>
uint32_t print(ork_handle* handle, uint32_t instance, char* buffer, uint32_t indent,
               const char* name, const Number* value, int32_t remaining, uint32_t* err) {
  if (!can_write(handle, err, remaining, value)) {
    return 0;
  }
  return print_line(handle, instance, buffer, indent, name, Decimal(*value).text(), remaining, err);
}

template <typename Number>
uint32_t to_xml(ork_handle* handle, const char* name, char* buffer, const Number* value,
                int32_t remaining, uint8_t state, uint32_t* err) {
  if (!can_write(handle, err, remaining, value)) {
    return 0;
  }
  return write_element(handle, buffer, name, Decimal(*value).text(), remaining, state, err);
}

template <typename Number>
void from_xml(ork_handle* handle, const char* path, ork_xml* xml, Number* target, uint32_t* err,
              char* err_text, uint32_t err_text_len) {
  const auto text = element_text(handle, path, xml, err, err_text, err_text_len);
  if (!text) {
    return;
  }
  if (const auto value = parse_number(*text, std::numeric_limits<Number>::max())) {
    *target = static_cast<Number>(*value);
  } else {
    refuse_element(handle, path, EINVAL, err, err_text, err_text_len);
  }
}

}  // namespace
}  // namespace ork

#define ORK_INTEGER_FAMILY(PRIMITIVE, TYPE)                                                       \
  ORK_EXPORT TYPE* PRIMITIVE##_get(struct ork_handle*, uint32_t, const TYPE* address,             \
                                   uint32_t* err) {                                               \
    return ork::lend(address, err);                                                               \
  }                                                                                               \
  ORK_EXPORT TYPE PRIMITIVE##_get_value(struct ork_handle* handle, uint32_t, const TYPE* address, \
                                        uint32_t* err) {                                          \
    return ork::value_at(handle, address, err);                                                   \
  }                                                                                               \
  ORK_EXPORT void PRIMITIVE##_set(struct ork_handle* handle, uint32_t instance, TYPE* address,    \
                                  const TYPE* src, uint32_t* err) {                               \
    if (ork::all_given(handle, err, address, src)) {                                              \
      ork::store(handle, instance, address, *src);                                                \
    }                                                                                             \
  }                                                                                               \
  ORK_EXPORT void PRIMITIVE##_set_value(struct ork_handle* handle, uint32_t instance,             \
                                        TYPE* address, TYPE value, uint32_t* err) {               \
    if (ork::all_given(handle, err, address)) {                                                   \
      ork::store(handle, instance, address, value);                                               \
    }                                                                                             \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_len(struct ork_handle*, uint32_t, const TYPE*) {                \
    return sizeof(TYPE);                                                                          \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_marshal(struct ork_handle* handle, uint32_t, uint8_t* buffer,   \
                                          const TYPE* source, int32_t remaining, uint32_t* err) { \
    return ork::all_given(handle, err, source)                                                    \
               ? ork::marshal(handle, buffer, *source, remaining, err)                            \
               : 0;                                                                               \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_unmarshal(struct ork_handle* handle, uint32_t,                  \
                                            const uint8_t* buffer, TYPE* target,                  \
                                            int32_t remaining, uint32_t, uint32_t* err) {         \
    return ork::unmarshal(handle, buffer, target, remaining, err);                                \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_hash(const TYPE* value, uint32_t seed) {                        \
    return SuperFastHash(value, sizeof *value, seed);                                             \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_print(struct ork_handle* handle, uint32_t instance,             \
                                        char* buffer, uint32_t indent, const char* name,          \
                                        const TYPE* value, int32_t remaining, uint32_t* err) {    \
    return ork::print(handle, instance, buffer, indent, name, value, remaining, err);             \
  }                                                                                               \
  ORK_EXPORT uint32_t PRIMITIVE##_to_xml(struct ork_handle* handle, uint32_t, const char* name,   \
                                         char* buffer, const TYPE* value, int32_t remaining,      \
                                         uint8_t state, uint32_t* err) {                          \
    return ork::to_xml(handle, name, buffer, value, remaining, state, err);                       \
  }                                                                                               \
  ORK_EXPORT void PRIMITIVE##_from_xml(struct ork_handle* handle, uint32_t, const char* path,     \
                                       struct ork_xml* xml, TYPE* target, uint32_t* err,          \
                                       char* err_text, uint32_t err_text_len) {                   \
    ork::from_xml(handle, path, xml, target, err, err_text, err_text_len);                        \
  }

// The widths that arrays have as elements.
#define ORK_INTEGER_ELEMENT(PRIMITIVE, TYPE)                                                       \
  ORK_EXPORT uint32_t PRIMITIVE##_sizeof(struct ork_handle*) { return sizeof(TYPE); }              \
  ORK_EXPORT TYPE* PRIMITIVE##_create(struct ork_handle* handle, uint32_t instance) {              \
    return ork::create<TYPE>(handle, instance);                                                    \
  }                                                                                                \
  ORK_EXPORT void PRIMITIVE##_destroy(struct ork_handle* handle, uint32_t instance, TYPE* value) { \
    if (value != nullptr) {                                                                        \
      handle->free_fn(handle->mem_pool, instance, value);                                          \
    }                                                                                              \
  }

extern "C" {

ORK_INTEGER_FAMILY(u_int8, uint8_t)
ORK_INTEGER_FAMILY(u_int16, uint16_t)
ORK_INTEGER_FAMILY(u_int32, uint32_t)
ORK_INTEGER_FAMILY(u_int64, uint64_t)

ORK_INTEGER_ELEMENT(u_int8, uint8_t)
ORK_INTEGER_ELEMENT(u_int16, uint16_t)
ORK_INTEGER_ELEMENT(u_int32, uint32_t)

}  // extern "C"
