// Fills any record through its accessors with values that follow from the path of each field alone:
// the record's name, then field names with slashes between them, an element with its index, as
// "fwe_cl_wayfind_channel_data/chan/path/path_id[0]". The golden files were made by the same rule.
#pragma once

#include <string>

#include "behaviour/encoders/records.h"

namespace encoders {

// FNV-1a, 64 bits.
inline uint64_t hash_of(const std::string& path) {
  uint64_t value = 0xcbf29ce484222325;
  for (const char byte : path) {
    value = (value ^ static_cast<uint8_t>(byte)) * 0x100000001b3;
  }
  return value;
}

// Pseudo-random bytes that begin from the path's hash.
inline Bytes bytes_of(const std::string& path, size_t length) {
  uint64_t state = hash_of(path);
  Bytes result(length);
  for (uint8_t& byte : result) {
    state = state * 6364136223846793005 + 1442695040888963407;
    byte = static_cast<uint8_t>(state >> 56);
  }
  return result;
}

// One in four is 0.
inline uint8_t state_of(const std::string& path) {
  const uint64_t value = hash_of(path + "#state");
  return value % 4 != 0 ? static_cast<uint8_t>(value >> 8) : uint8_t{0};
}

// Letters, markup, the escape character, and two bytes that are no text.
inline std::string text_of(const std::string& path, size_t size) {
  static constexpr std::string_view alphabet =
      "abcdefghijklmnopqrstuvwxyz0123456789-_.: <>&\"'\\\x07\xff";
  std::string result;
  for (const uint8_t byte : bytes_of(path, hash_of(path) % (size + 1))) {
    result.push_back(alphabet[byte % alphabet.size()]);
  }
  return result;
}

inline ork_ip_address address_of(const std::string& path) {
  const uint64_t value = hash_of(path);
  Bytes octets = bytes_of(path, 16);
  ork_ip_address address{};
  if (value % 3 == 1) {
    address.family = 4;
    address.prefix_length = static_cast<uint8_t>((value >> 8) % 33);
    std::memcpy(address.address, octets.data(), 4);
  } else if (value % 3 == 2) {
    address.family = 6;
    address.prefix_length = static_cast<uint8_t>((value >> 8) % 129);
    if ((value >> 16 & 1) != 0) {
      std::memset(octets.data() + 4, 0, 8);
    }
    std::memcpy(address.address, octets.data(), 16);
  }
  return address;
}

class Filler {
 public:
  // elements: the length of every array. States are written if the handle tracks.
  Filler(ork_handle* handle, uint32_t elements) : handle_(handle), elements_(elements) {}

  // Every field that the object's variant has.
  void fill(const wayfind_record& record, void* object, const std::string& path) {
    const int8_t variant = ork_get_instance_variant(object, 1, 0);
    for (unsigned i = 0; i < record.field_count; ++i) {
      const wayfind_field& field = record.fields[i];
      if (field.variant <= variant && field.cls != WAYFIND_COUNTER) {
        fill_field(field, object, path + "/" + field.name);
      }
    }
  }

  // One field alone, under a root of its own.
  void fill_one(const wayfind_field& field, void* object, const std::string& root) {
    fill_field(field, object, root + "/" + field.name);
  }

  uint32_t err = 0;

 private:
  template <class... Arguments>
  void call(const wayfind_field& field, const char* suffix, Arguments... arguments) {
    function<void(ork_handle*, uint32_t, Arguments..., uint32_t*)>(field.functions, suffix)(
        handle_, instance, arguments..., &err);
    EXPECT_EQ(err, 0u) << field.name << suffix;
  }

  bool tracking() const {
    return handle_->sttr_info != nullptr && handle_->sttr_info->sttr_mode == ORK_STTR_ON;
  }

  void fill_field(const wayfind_field& field, void* object, const std::string& path) {
    switch (field.cls) {
      case WAYFIND_VALUE: set_value(field, path, object); break;
      case WAYFIND_OBJECT: set_object(field, object, path); break;
      case WAYFIND_TEXT: {
        const std::string text = text_of(path, field.width);
        call(field, "_set", object, text.data(), static_cast<uint32_t>(text.size()));
        break;
      }
      case WAYFIND_VALUE_ARRAY:
        for (uint32_t i = 0; i < elements_; ++i) {
          set_value(field, path + "[" + std::to_string(i) + "]", object, i);
        }
        set_states(field, object, path);
        return;
      case WAYFIND_RECORD_ARRAY:
        fill_elements(field, object, path);
        set_states(field, object, path);
        return;
      case WAYFIND_COUNTER: return;
    }
    if (tracking()) {
      call(field, "_state_flag_set", object, state_of(path));
    }
  }

  template <class... Where>
  void set_value(const wayfind_field& field, const std::string& path, Where... where) {
    const uint64_t value = hash_of(path);
    switch (field.kind) {
      case WAYFIND_U_INT8: return call(field, "_set_value", where..., static_cast<uint8_t>(value));
      case WAYFIND_U_INT16:
        return call(field, "_set_value", where..., static_cast<uint16_t>(value));
      case WAYFIND_U_INT64: return call(field, "_set_value", where..., value);
      case WAYFIND_ORK_BOOLEAN:
        return call(field, "_set_value", where..., static_cast<uint32_t>(value & 1));
      case WAYFIND_ENUM:
        return call(field, "_set_value", where...,
                    static_cast<uint32_t>(value % field.type->values));
      default: return call(field, "_set_value", where..., static_cast<uint32_t>(value));
    }
  }

  void set_object(const wayfind_field& field, void* object, const std::string& path) {
    if (field.kind == WAYFIND_IP_ADDRESS) {
      const ork_ip_address address = address_of(path);
      return call(field, "_set", object, &address);
    }
    void* const child = function<void*(ork_handle*, uint32_t, void*, uint32_t*)>(
        field.functions, "_get")(handle_, instance, object, &err);
    ASSERT_NE(child, nullptr) << field.name;
    if (field.kind == WAYFIND_RECORD) {
      return fill(*field.record, child, path);
    }
    for (uint32_t flag = 0; flag < field.type->values; ++flag) {
      function<void(ork_handle*, uint32_t, void*, uint32_t, uint32_t, uint32_t*)>(
          field.type->functions, "_set_value")(
          handle_, instance, child, flag, static_cast<uint32_t>(hash_of(path) >> flag & 1), &err);
    }
  }

  // The array is emptied first: an element set over another one with arrays of its own would lose
  // those.
  void fill_elements(const wayfind_field& field, void* object, const std::string& path) {
    function<void(ork_handle*, uint32_t, void*)>(field.functions, "_remove_elements")(
        handle_, instance, object);
    if (elements_ == 0) {
      return;
    }
    const Object element(handle_, calls_of(field.record->name));
    call(field, "_set", object, elements_ - 1, static_cast<const void*>(element.get()));
    for (uint32_t i = 0; i < elements_; ++i) {
      void* const inside = function<void*(ork_handle*, uint32_t, void*, uint32_t, uint32_t*)>(
          field.functions, "_get")(handle_, instance, object, i, &err);
      ASSERT_NE(inside, nullptr) << field.name;
      fill(*field.record, inside, path + "[" + std::to_string(i) + "]");
    }
  }

  void set_states(const wayfind_field& field, void* object, const std::string& path) {
    if (!tracking()) {
      return;
    }
    call(field, "_state_flag_whole_set", object, state_of(path));
    for (uint32_t i = 0; i < elements_; ++i) {
      call(field, "_state_flag_set", object, i, state_of(path + "[" + std::to_string(i) + "]"));
    }
  }

  ork_handle* handle_;
  uint32_t elements_;
};

inline Object filled(ork_handle* handle, const Calls& calls, uint32_t elements) {
  Object object(handle, calls);
  Filler(handle, elements).fill(*calls.schema, object.get(), calls.name());
  return object;
}

// The highest variant of a record and of all that it holds.
inline unsigned deepest_variant(const wayfind_record& record) {
  unsigned deepest = record.variants - 1U;
  for (unsigned i = 0; i < record.field_count; ++i) {
    if (record.fields[i].record != nullptr) {
      deepest = std::max(deepest, deepest_variant(*record.fields[i].record));
    }
  }
  return deepest;
}

inline bool holds_arrays(const wayfind_record& record) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.cls == WAYFIND_VALUE_ARRAY ||
        (field.record != nullptr &&
         (field.cls == WAYFIND_RECORD_ARRAY || holds_arrays(*field.record)))) {
      return true;
    }
  }
  return false;
}

// Whether an element of an array owns storage itself. Unmarshal without reuse_storage gives back
// the blocks of old elements without destroying them, so a test that fills such a record twice
// would lose what they own.
inline bool nests_arrays(const wayfind_record& record) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    if (field.record != nullptr &&
        (field.cls == WAYFIND_RECORD_ARRAY ? holds_arrays(*field.record)
                                           : nests_arrays(*field.record))) {
      return true;
    }
  }
  return false;
}

}  // namespace encoders
