// Calls into the family of any enum, and probes for a value that fail.
#pragma once

#include "behaviour/encoders/records.h"
#include "support/spy.h"

namespace encoders {

// The bytes of an enum object that tests look at.
struct EnumObject {
  ork_object header;
  uint8_t gap;
  uint32_t value;
};

class Enum {
 public:
  Enum(ork_handle* handle, const wayfind_small_type& schema) : handle_(handle), schema_(&schema) {
    object_ = call<void*(ork_handle*, uint32_t)>("_create")(handle, instance);
  }
  ~Enum() { call<void(ork_handle*, uint32_t, void*)>("_destroy")(handle_, instance, object_); }
  Enum(const Enum&) = delete;
  Enum& operator=(const Enum&) = delete;

  template <class Prototype>
  Prototype* call(const char* suffix) const {
    return function<Prototype>(schema_->functions, suffix);
  }

  void* get() const { return object_; }
  EnumObject& object() const { return *static_cast<EnumObject*>(object_); }
  void set_value(uint32_t value, uint32_t* err) const {
    call<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>("_set_value")(
        handle_, instance, object_, value, err);
  }
  uint32_t marshal(uint8_t* buffer, int32_t length, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, uint8_t*, const void*, int32_t, uint32_t*)>(
        "_marshal")(handle_, instance, buffer, object_, length, err);
  }
  uint32_t unmarshal(const Bytes& bytes, uint32_t* err) const {
    return call<uint32_t(ork_handle*, uint32_t, const uint8_t*, void*, int32_t, uint32_t,
                         uint32_t*)>("_unmarshal")(handle_, instance, bytes.data(), object_,
                                                   static_cast<int32_t>(bytes.size()), 0, err);
  }
  std::string print(const char* name, uint32_t indent) const {
    char text[400] = "";
    uint32_t err = 0;
    const uint32_t length = call<uint32_t(ork_handle*, uint32_t, char*, uint32_t, const char*,
                                          const void*, uint32_t, uint32_t*)>("_print")(
        handle_, instance, text, indent, name, object_, sizeof text, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(length, std::strlen(text));
    return text;
  }
  std::string to_xml(const char* tag) const {
    char text[400] = "";
    uint32_t err = 0;
    const uint32_t length = call<uint32_t(ork_handle*, uint32_t, const char*, char*, const void*,
                                          uint32_t, uint8_t, uint32_t*)>("_to_xml")(
        handle_, instance, tag, text, object_, sizeof text, 5, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(length, std::strlen(text));
    return text;
  }
  void from_xml(const std::string& text, const char* path, uint32_t* err, char* reason,
                uint32_t reason_size) const {
    const Document document = parsed(text);
    call<void(ork_handle*, uint32_t, const char*, ork_xml*, void*, uint32_t*, char*, uint32_t)>(
        "_from_xml")(handle_, instance, path, document.get(), object_, err, reason, reason_size);
  }

 private:
  ork_handle* handle_;
  const wayfind_small_type* schema_;
  void* object_;
};

inline std::vector<const wayfind_small_type*> all_enums() {
  std::vector<const wayfind_small_type*> enums;
  for (unsigned i = 0; i < wayfind_small_type_count; ++i) {
    if (wayfind_small_types[i].is_flag_set == 0) {
      enums.push_back(&wayfind_small_types[i]);
    }
  }
  return enums;
}

// The nth element asked for from now on, counted from 1, is answered by 5; the others go through.
[[nodiscard]] inline spy::Replacement failing_probe(unsigned nth) {
  return spy::replace(xml_get_element_value, [nth, seen = 0U](auto... arguments) mutable {
    return ++seen == nth ? 5U : spy::next(xml_get_element_value)(arguments...);
  });
}

}  // namespace encoders
