// Reads every field of a record through its getters and compares it with the value that the field's
// path stands for.
#pragma once

#include "behaviour/encoders/values.h"

namespace shared_test {

class Reader {
 public:
  Reader(ork_handle* handle, uint32_t elements) : handle_(handle), elements_(elements) {}

  void read(const wayfind_record& record, void* object, const std::string& path) {
    expect(std::string(ork_get_manifested_type_info(object)->name) == record.name, path);
    expect(ork_get_manifested_type_info(object) != record.type,
           path + ": a descriptor of this process alone");
    for (unsigned i = 0; i < record.field_count; ++i) {
      const wayfind_field& field = record.fields[i];
      read_field(field, object, path + "/" + field.name);
    }
  }

  uint32_t fields = 0;               // compared
  std::vector<std::string> strange;  // paths of those that were not as they should be

 private:
  void expect(bool right, const std::string& path) {
    if (!right || err_ != 0) {
      strange.push_back(path + (err_ != 0 ? ": error " + std::to_string(err_) : ""));
      err_ = 0;
    }
  }

  template <class Result, class... Arguments>
  Result call(const wayfind_function* functions, const char* suffix, void* object,
              Arguments... arguments) {
    return kit::function<Result(ork_handle*, uint32_t, void*, Arguments..., uint32_t*)>(
        functions, suffix)(handle_, kit::instance, object, arguments..., &err_);
  }

  void read_field(const wayfind_field& field, void* object, const std::string& path) {
    fields += 1;
    switch (field.cls) {
      case WAYFIND_VALUE: expect_value(field, path, object); break;
      case WAYFIND_OBJECT:
        read_object(field, call<void*>(field.functions, "_get", object), path);
        break;
      case WAYFIND_TEXT: {
        char text[256] = "";
        call<void>(field.functions, "_get", object, static_cast<char*>(text),
                   uint32_t{sizeof text});
        expect(encoders::text_of(path, field.width) == text, path);
        break;
      }
      case WAYFIND_COUNTER:
        // Arrays of records, and of values, have as many elements as the writer was told.
        expect(number(field, object) == elements_, path);
        return;
      case WAYFIND_VALUE_ARRAY:
      case WAYFIND_RECORD_ARRAY: read_array(field, object, path); return;
    }
    if (tracking()) {
      expect(call<uint8_t>(field.functions, "_state_flag_get", object) == encoders::state_of(path),
             path + "#state");
    }
  }

  void read_array(const wayfind_field& field, void* object, const std::string& path) {
    for (uint32_t i = 0; i < elements_; ++i) {
      const std::string element = path + "[" + std::to_string(i) + "]";
      if (field.cls == WAYFIND_VALUE_ARRAY) {
        expect_value(field, element, object, i);
      } else {
        read(*field.record, call<void*>(field.functions, "_get", object, i), element);
      }
      if (tracking()) {
        expect(call<uint8_t>(field.functions, "_state_flag_get", object, i) ==
                   encoders::state_of(element),
               element + "#state");
      }
    }
  }

  void read_object(const wayfind_field& field, void* child, const std::string& path) {
    if (field.kind == WAYFIND_RECORD) {
      return read(*field.record, child, path);
    }
    if (field.kind == WAYFIND_IP_ADDRESS) {
      const ork_ip_address wanted = encoders::address_of(path);
      const auto* found = static_cast<const ork_ip_address*>(child);
      return expect(found->family == wanted.family &&
                        found->prefix_length == wanted.prefix_length &&
                        std::memcmp(found->address, wanted.address, sizeof wanted.address) == 0,
                    path);
    }
    for (uint32_t flag = 0; flag < field.type->values; ++flag) {
      const uint32_t wanted = static_cast<uint32_t>(encoders::hash_of(path) >> flag & 1);
      expect(call<uint32_t>(field.type->functions, "_get_value", child, flag) == wanted, path);
    }
  }

  // As wide as the getter's result: what lies above it in the register is nobody's.
  template <class... Where>
  uint64_t number(const wayfind_field& field, void* object, Where... where) {
    switch (field.kind) {
      case WAYFIND_U_INT8: return call<uint8_t>(field.functions, "_get_value", object, where...);
      case WAYFIND_U_INT16: return call<uint16_t>(field.functions, "_get_value", object, where...);
      case WAYFIND_U_INT64: return call<uint64_t>(field.functions, "_get_value", object, where...);
      default: return call<uint32_t>(field.functions, "_get_value", object, where...);
    }
  }

  template <class... Where>
  void expect_value(const wayfind_field& field, const std::string& path, void* object,
                    Where... where) {
    const uint64_t value = encoders::hash_of(path);
    uint64_t wanted = static_cast<uint32_t>(value);
    switch (field.kind) {
      case WAYFIND_U_INT8: wanted = static_cast<uint8_t>(value); break;
      case WAYFIND_U_INT16: wanted = static_cast<uint16_t>(value); break;
      case WAYFIND_U_INT64: wanted = value; break;
      case WAYFIND_ORK_BOOLEAN: wanted = value & 1; break;
      case WAYFIND_ENUM: wanted = value % field.type->values; break;
      default: break;
    }
    expect(number(field, object, where...) == wanted, path);
  }

  bool tracking() const {
    return handle_->sttr_info != nullptr && handle_->sttr_info->sttr_mode == ORK_STTR_ON;
  }

  ork_handle* handle_;
  uint32_t elements_;
  uint32_t err_ = 0;
};

inline std::string hexadecimal(const encoders::Bytes& bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) {
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 15]);
  }
  return text;
}

// Storage and a handle on it whose hooks are written down.
class Process {
 public:
  Process(const char* name, size_t size, ork_tracking tracking, uint32_t db_recording = 1) {
    storage = ork_storage_open(name, size, nullptr, &err);
    if (storage == nullptr) {
      return;
    }
    handle = kit::Handle([&](ork_options& options) {
               options.storage = storage;
               options.tracking = tracking;
               options.db_recording = db_recording;
               options.observers.ctx = this;
               options.observers.containment = [](void* ctx, uint32_t, const void* child,
                                                  const void* parent) {
                 static_cast<Process*>(ctx)->contained.emplace_back(child, parent);
               };
               options.observers.set_dirty = [](void* ctx, uint32_t, const void* obj) {
                 static_cast<Process*>(ctx)->dirty.push_back(obj);
               };
               options.observers.set_destroy = [](void* ctx, uint32_t, const void* obj) {
                 static_cast<Process*>(ctx)->destroyed.push_back(obj);
               };
             }).release();
  }
  ~Process() {
    ork_handle_destroy(handle, nullptr);
    ork_storage_destroy(storage);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  ork_memory_report memory() const {
    ork_memory_report report{};
    ork_handle_memory(handle, &report);
    return report;
  }

  uint32_t err = 0;
  ork_storage* storage = nullptr;
  ork_handle* handle = nullptr;
  std::vector<std::pair<const void*, const void*>> contained;
  std::vector<const void*> dirty;
  std::vector<const void*> destroyed;
};

}  // namespace shared_test
