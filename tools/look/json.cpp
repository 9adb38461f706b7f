#include "tools/look/json.h"

#include "tools/look/shown.h"
#include "tools/look/small_type.h"
#include "tools/look/states.h"

namespace look {
namespace {

// Puts a comma in front of all members and elements but the first.
class Separator {
 public:
  void put(std::string& out) {
    if (!is_first_) out += ',';
    is_first_ = false;
  }

 private:
  bool is_first_ = true;
};

class Writer {
 public:
  Writer(std::string& out, ork_handle* handle, bool states)
      : out_(out), handle_(handle), states_(states) {}

  void put(const Message& message) {
    out_ += "{\"message\":\"";
    out_ += message.type->name;
    out_ += '"';
    for (unsigned slot = 0; slot < message.type->record_count; ++slot) {
      out_ += ',';
      put_name(message.type->records[slot]->name);
      put(message.record(slot));
    }
    out_ += '}';
  }

 private:
  void put_name(const char* name) {
    out_ += '"';
    out_ += name;
    out_ += "\":";
  }

  void put(const Object& object) {
    Separator separator;
    out_ += '{';
    for (const wayfind_field& field : fields(object)) {
      if (field.cls == WAYFIND_COUNTER) continue;
      separator.put(out_);
      put_name(field.name);
      if (is_array(field)) {
        put(elements(object, field));
      } else {
        put(value(object, field));
      }
    }
    if (states_ && !fields(object).empty() && is_tracked(handle_, object)) {
      separator.put(out_);
      put_states(object);
    }
    out_ += '}';
  }

  void put(const Elements& elements) {
    Separator separator;
    out_ += '[';
    for (uint32_t i = 0; i < elements.count; ++i) {
      separator.put(out_);
      put(elements[i]);
    }
    out_ += ']';
  }

  void put(const Value& value) {
    switch (value.field->kind) {
      case WAYFIND_U_INT8:
      case WAYFIND_U_INT16:
      case WAYFIND_U_INT32:
      case WAYFIND_LINK_TYPE: return put_number(out_, number(value));
      case WAYFIND_U_INT64: return put_long(number(value));
      case WAYFIND_ORK_BOOLEAN: out_ += number(value) != 0 ? "true" : "false"; return;
      case WAYFIND_ENUM: return put_named(*value.field->type, number(value));
      case WAYFIND_FLAG_SET: return put_flags(*value.field->type, number(value));
      case WAYFIND_CHAR: return put_text(value);
      case WAYFIND_IP_ADDRESS: return put_address(value);
      case WAYFIND_RECORD: return put(object(value));
    }
  }

  // More than many readers hold in a number.
  void put_long(uint64_t number) {
    out_ += '"';
    put_number(out_, number);
    out_ += '"';
  }

  void put_named(const wayfind_small_type& type, uint64_t number) {
    const auto name = full_name(type, number);
    if (!name) return put_number(out_, number);
    out_ += '"';
    out_ += *name;
    out_ += '"';
  }

  void put_flags(const wayfind_small_type& type, uint64_t bits) {
    Separator separator;
    out_ += '[';
    for (uint64_t bit = 0; bits >> bit != 0; ++bit) {
      if ((bits >> bit & 1) == 0) continue;
      separator.put(out_);
      put_named(type, bit);
    }
    out_ += ']';
  }

  // What is printed holds no control characters.
  void put_text(const Value& value) {
    out_ += '"';
    const size_t begin = out_.size();
    put_shown(out_, handle_, value);
    for (size_t i = begin; i < out_.size(); ++i) {
      if (out_[i] == '"' || out_[i] == '\\') out_.insert(i++, 1, '\\');
    }
    out_ += '"';
  }

  void put_address(const Value& value) {
    const ork_ip_address& from = address(value);
    if (from.family == 0) {
      out_ += "null";
    } else if (from.family == 4 || from.family == 6) {
      out_ += '"';
      put_shown(out_, handle_, value);
      out_ += '"';
    } else {
      put_foreign(from);
    }
  }

  void put_foreign(const ork_ip_address& from) {
    constexpr char digits[] = "0123456789abcdef";
    out_ += "{\"family\":";
    put_number(out_, from.family);
    out_ += ",\"bytes\":\"";
    for (const uint8_t byte : from.address) {
      out_ += digits[byte >> 4];
      out_ += digits[byte & 15];
    }
    out_ += "\"}";
  }

  // Those that are not 0; of an array all elements, when one of them is not.
  void put_states(const Object& object) {
    Separator separator;
    out_ += "\"@states\":{";
    for (const wayfind_field& field : fields(object)) {
      if (field.cls == WAYFIND_COUNTER) continue;
      if (is_array(field)) {
        put_element_states(object, field, separator);
      } else if (const uint8_t state = state_of(handle_, object, field); state != 0) {
        separator.put(out_);
        put_name(field.name);
        put_number(out_, state);
      }
    }
    out_ += '}';
  }

  void put_element_states(const Object& object, const wayfind_field& array, Separator& outer) {
    std::string list;
    bool is_any = false;
    const uint32_t count = elements(object, array).count;
    for (uint32_t i = 0; i < count; ++i) {
      const uint8_t state = state_of(handle_, object, array, i);
      is_any = is_any || state != 0;
      if (i > 0) list += ',';
      put_number(list, state);
    }
    if (!is_any) return;
    outer.put(out_);
    put_name(array.name);
    out_ += '[' + list + ']';
  }

  std::string& out_;
  ork_handle* handle_;
  bool states_;
};

}  // namespace

void JsonDocument::open(std::string& out) const {
  if (!style_.lines) out += '[';
}

void JsonDocument::put(std::string& out, const Message& message) {
  if (!style_.lines) out += is_empty_ ? "\n" : ",\n";
  is_empty_ = false;
  Writer(out, handle_, style_.states).put(message);
  if (style_.lines) out += '\n';
}

void JsonDocument::close(std::string& out) const {
  if (!style_.lines) out += "\n]\n";
}

}  // namespace look
