#include "data_check.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <vector>

#include "failure.h"
#include "message_type.h"

namespace wayfind {
namespace {

// What an element is; all null for one that holds text alone.
struct Meaning {
  bool is_container = false;
  const wayfind_record* record = nullptr;
  const wayfind_small_type* type = nullptr;
};

// An element on the way from the root to where the walk is.
struct Open {
  Meaning meaning;
  std::vector<std::string_view> once;  // fields seen that may stand in it once
};

bool is_container(std::string_view name) {
  if (name == "fwe_ui_wayfind" || find_message_type(name) != nullptr) return true;
  const auto* end = wayfind_bundles + wayfind_bundle_count;
  return std::any_of(wayfind_bundles, end, [&](const wayfind_bundle& bundle) { return bundle.name == name; });
}

const wayfind_record* carried_record(std::string_view name) {
  for (unsigned i = 0; i < wayfind_message_count; ++i) {
    for (unsigned slot = 0; slot < wayfind_messages[i].record_count; ++slot) {
      if (wayfind_messages[i].records[slot]->name == name) return wayfind_messages[i].records[slot];
    }
  }
  return nullptr;
}

const wayfind_field* field_of(const wayfind_record& record, std::string_view name) {
  const auto* end = record.fields + record.field_count;
  const auto* found = std::find_if(record.fields, end, [&](const wayfind_field& field) { return field.name == name; });
  return found != end ? found : nullptr;
}

bool has_value(const wayfind_small_type& type, std::string_view name) {
  return std::any_of(type.texts, type.texts + type.values, [&](const char* text) { return text == name; });
}

class Check {
 public:
  Check(const std::string& origin, uint32_t first_line) : origin_(origin), first_line_(first_line) {}

  static uint32_t visit(void* ctx, uint32_t depth, const char* name, const char* parent, uint32_t line) {
    auto& check = *static_cast<Check*>(ctx);
    try {
      check.enter(depth, name, parent, line);
      return 0;
    } catch (...) {
      check.failure_ = std::current_exception();
      return 1;
    }
  }

  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void enter(uint32_t depth, std::string_view name, const char* parent, uint32_t line) {
    open_.resize(depth);
    Open top{{.is_container = true}, {}};
    Open& outer = depth == 0 ? top : open_.back();
    const std::string where = origin_ + ":" + std::to_string(first_line_ - 1 + line) + ": ";
    const std::string element = "<" + std::string(name) + ">";
    const std::string inside = parent != nullptr ? " in <" + std::string(parent) + ">" : " at the root";
    Meaning meaning;
    if (!find(outer, name, meaning)) throw Failure(where + "unknown element " + element + inside + "; correct or remove it");
    if (is_single(outer.meaning, name)) {
      if (std::find(outer.once.begin(), outer.once.end(), name) != outer.once.end()) {
        throw Failure(where + "a second " + element + inside + "; remove one of them");
      }
      outer.once.push_back(name);
    }
    open_.push_back({meaning, {}});
  }

  static bool find(const Open& outer, std::string_view name, Meaning& meaning) {
    if (outer.meaning.is_container) {
      meaning.record = carried_record(name);
      meaning.is_container = meaning.record == nullptr;
      return meaning.record != nullptr || is_container(name);
    }
    if (outer.meaning.record != nullptr) {
      const wayfind_field* field = field_of(*outer.meaning.record, name);
      if (field == nullptr) return false;
      meaning.record = field->record;
      meaning.type = field->type;
      return true;
    }
    // A value that its enum does not know is written under the enum's own name.
    return outer.meaning.type != nullptr && (has_value(*outer.meaning.type, name) || outer.meaning.type->name == name);
  }

  static bool is_single(const Meaning& outer, std::string_view name) {
    if (outer.record == nullptr) return false;
    const wayfind_field& field = *field_of(*outer.record, name);
    return field.cls != WAYFIND_VALUE_ARRAY && field.cls != WAYFIND_RECORD_ARRAY;
  }

  const std::string& origin_;
  const uint32_t first_line_;
  std::vector<Open> open_;
  std::exception_ptr failure_;
};

}  // namespace

void check_elements(ork_xml& xml, const std::string& origin, uint32_t first_line) {
  Check check(origin, first_line);
  ork_xml_each(&xml, Check::visit, &check);
  check.rethrow();
}

}  // namespace wayfind
