// Every field of every record, to be walked with what is told of it and the functions to call.
#pragma once

#include <functional>
#include <map>

#include "support/spied.h"

namespace frame {

using namespace kit;
using told::Class;

// A record type: what is told of it, and its functions.
struct Type {
  const told::Record& told;
  const wayfind_record& schema;

  operator const wayfind_record&() const { return schema; }
  void* create(SpiedHandle& h) const {
    return kit::function<void*(ork_handle*, uint32_t)>(schema.functions, "_create")(h, instance);
  }
  void destroy(SpiedHandle& h, void* obj) const {
    kit::function<void(ork_handle*, uint32_t, void*)>(schema.functions, "_destroy")(h, instance,
                                                                                    obj);
  }
  uint64_t call(const std::string& suffix, const std::vector<uint64_t>& words) const {
    return kit::call_words(kit::function<void()>(schema.functions, suffix), words);
  }
  unsigned size(const SpiedHandle& h) const {
    return told.newest().body + (h.tracking() ? told.newest().state : 0);
  }
};

// A field of a record type.
struct Field {
  const Type& type;
  const told::Field& told;
  const wayfind_field& schema;

  std::string name() const { return type.told.name + "." + told.name; }
  uint64_t call(const std::string& suffix, const std::vector<uint64_t>& words) const {
    return kit::call_words(kit::function<void()>(schema.functions, suffix), words);
  }
  bool has(const std::string& suffix) const { return kit::has_function(schema.functions, suffix); }
  bool is_enum() const { return told::small(told.type) && !told::small(told.type)->flags; }
  bool is_record() const { return told::is_record(told); }
  bool is_array() const {
    return told.cls == Class::value_array || told.cls == Class::record_array;
  }

  // What the functions of its primitive are called by: "u_int32"; empty for enums, flag sets and
  // records.
  std::string primitive() const {
    return told.type.rfind("fwe_", 0) == 0 || told.type == "char" ? "" : told.type;
  }

  // The bytes of the value itself, which is not all of the field where it is an object.
  unsigned value_width() const { return is_enum() || told.type == "link_type" ? 4 : told.width; }
  unsigned value_offset() const {
    return told.offset + (is_enum() || told.type == "link_type" ? 12 : 0);
  }

  uint64_t mask() const {
    return value_width() >= 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * value_width())) - 1;
  }

  // Values worth trying.
  std::vector<uint64_t> boundary_values() const {
    if (is_enum()) {
      return {told::small(told.type)->values.size() - 1, 0, 1};
    }
    if (told.type == "ork_boolean") {
      return {1, 0};
    }
    return {mask(), 0, 1, mask() >> 1, (mask() >> 1) + 1};
  }
};

inline const std::vector<Type>& types() {
  static const std::vector<Type> all = [] {
    std::vector<Type> types;
    for (const told::Record& told : told::tables().records) {
      for (unsigned i = 0; i < wayfind_record_count; ++i) {
        if (told.name == wayfind_records[i].name) {
          types.push_back({told, wayfind_records[i]});
        }
      }
    }
    return types;
  }();
  return all;
}

inline const Type& type(const std::string& name) {
  for (const Type& candidate : types()) {
    if (candidate.told.name == name) {
      return candidate;
    }
  }
  throw std::runtime_error("no type " + name);
}

inline Field field(const Type& type, const std::string& name) {
  for (size_t i = 0; i < type.told.fields.size(); ++i) {
    if (type.told.fields[i].name == name && name == type.schema.fields[i].name) {
      return {type, type.told.fields[i], type.schema.fields[i]};
    }
  }
  throw std::runtime_error(type.told.name + " has no field " + name);
}

inline void for_each_field(const std::function<void(const Field&)>& visit) {
  for (const Type& type : types()) {
    for (const told::Field& told : type.told.fields) {
      visit(field(type, told.name));
    }
  }
}

inline void for_each_array(const std::function<void(const Field&)>& visit) {
  for_each_field([&](const Field& f) {
    if (f.is_array()) {
      visit(f);
    }
  });
}

// Makes a value of a field's type to be set from, and takes it away again. A scalar of 1, an enum
// of 1, an address, or an object.
class Source {
 public:
  Source(SpiedHandle& handle, const Field& field, const std::string& name = "src") {
    if (field.is_record()) {
      object_ = std::make_unique<SpiedObject>(handle, type(field.told.type), name);
      address_ = object_->get();
      return;
    }
    if (field.told.type.rfind("fwe_", 0) ==
        0) { /* an enum or the flag set, made as a parent makes it */
      header(block_).variant = 0;
      store<const ork_type_info*>(block_, field.schema.type->type);
      block_[field.is_enum() ? 12 : 11] = 1;
    } else if (field.told.type == "link_type") {
      block_[12] = 1;
    } else {
      std::memset(block_, 'a', sizeof block_);
      store<uint64_t>(block_, 1);
    }
    address_ = block_;
    spy::name(block_, sizeof block_, name);
  }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  uint64_t word() const { return kit::word(address_); }
  uint8_t* get() const { return static_cast<uint8_t*>(address_); }

 private:
  alignas(8) uint8_t block_[64] = {};
  std::unique_ptr<SpiedObject> object_;
  void* address_;
};

// Gives a record something to see, its first value or three elements of its array, and tells where:
// a byte that is not 0 from now on.
inline unsigned touch(SpiedHandle& h, const Type& type, void* obj) {
  for (const told::Field& told : type.told.fields) {
    const Field f = field(type, told.name);
    if (told.cls == Class::value) {
      bytes(obj)[f.value_offset()] = 1;
      return f.value_offset();
    }
    if (f.is_array()) {
      const Source element(h, f, "element");
      f.call("_set", {word(h), instance, word(obj), 2, element.word(), word(&h.err)});
      return type.told.fields[0].offset;
    }
  }
  throw std::runtime_error(type.told.name + " has nothing to touch");
}

inline std::string offset_text(const std::string& name, size_t offset) {
  return offset ? name + "+" + std::to_string(offset) : name;
}

}  // namespace frame
