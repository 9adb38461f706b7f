#include "tools/wayfind/data/data_check.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <string_view>
#include <vector>

#include "tools/common/failure.h"
#include "tools/wayfind/data/message_type.h"

namespace wayfind {
namespace {

// What an element is; none of these for one that names a value and holds nothing.
struct Meaning {
  bool is_container = false;  // of records, messages and further containers
  bool is_text = false;
  const wayfind_message* message = nullptr;
  const wayfind_record* record = nullptr;
  const wayfind_small_type* type = nullptr;
};

// What a counter says of the array behind it.
struct Told {
  const wayfind_field* counter;
  const char* text;
  uint32_t line;
};

// An element on the way from the root to where the walk is.
struct Open {
  Meaning meaning;
  std::vector<std::string_view> once;  // elements seen of which it holds one
  std::vector<uint64_t> fields;        // of a record: elements seen of each field
  std::vector<Told> told;              // of a record: what its counters say
};

std::string tag(std::string_view name) { return "<" + std::string(name) + ">"; }

bool is_container(std::string_view name) {
  const auto* end = wayfind_bundles + wayfind_bundle_count;
  return name == "fwe_ui_wayfind" ||
         std::any_of(wayfind_bundles, end,
                     [&](const wayfind_bundle& bundle) { return bundle.name == name; });
}

const wayfind_record* record_in(const wayfind_message& message, std::string_view name) {
  const auto* end = message.records + message.record_count;
  const auto* found = std::find_if(
      message.records, end, [&](const wayfind_record* record) { return record->name == name; });
  return found != end ? *found : nullptr;
}

const wayfind_record* carried_record(std::string_view name) {
  const wayfind_record* record = nullptr;
  for (unsigned i = 0; i < wayfind_message_count && record == nullptr; ++i)
    record = record_in(wayfind_messages[i], name);
  return record;
}

const wayfind_field* field_of(const wayfind_record& record, std::string_view name) {
  const auto* end = record.fields + record.field_count;
  const auto* found = std::find_if(record.fields, end,
                                   [&](const wayfind_field& field) { return field.name == name; });
  return found != end ? found : nullptr;
}

bool has_value(const wayfind_small_type& type, std::string_view name) {
  return std::any_of(type.texts, type.texts + type.values,
                     [&](const char* text) { return text == name; });
}

std::string_view trimmed(std::string_view text) {
  constexpr const char* blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// The first words of a text, to be told.
std::string_view first_line_of(std::string_view text) {
  text = trimmed(text);
  return trimmed(text.substr(0, text.find('\n')));
}

// What to do about text in an element that holds none.
std::string advice(const Meaning& meaning, std::string_view text) {
  if (meaning.record != nullptr)
    return "write fields as elements, like " + tag(meaning.record->fields[0].name);
  if (meaning.type == nullptr) return "remove it";
  const std::string value(has_value(*meaning.type, text) ? text : meaning.type->texts[0]);
  return (meaning.type->is_flag_set != 0 ? "write flags as elements, like <"
                                         : "write the value as an element, like <") +
         value + "/>";
}

bool find(const Meaning& outer, std::string_view name, Meaning& meaning) {
  if (outer.is_container) {
    const MessageType* type = find_message_type(name);
    meaning.message = type != nullptr ? type->schema : nullptr;
    meaning.record = carried_record(name);
    meaning.is_container = is_container(name);
    return meaning.message != nullptr || meaning.record != nullptr || meaning.is_container;
  }
  if (outer.message != nullptr) {
    meaning.record = record_in(*outer.message, name);
    return meaning.record != nullptr;
  }
  if (outer.record != nullptr) {
    const wayfind_field* field = field_of(*outer.record, name);
    if (field == nullptr) return false;
    meaning.record = field->record;
    meaning.type = field->type;
    meaning.is_text = field->record == nullptr && field->type == nullptr;
    return true;
  }
  if (outer.type == nullptr) return false;
  // A value that its enum does not know is written under the enum's own name.
  return has_value(*outer.type, name) || (outer.type->is_flag_set == 0 && outer.type->name == name);
}

bool is_array(const wayfind_field& field) {
  return field.cls == WAYFIND_VALUE_ARRAY || field.cls == WAYFIND_RECORD_ARRAY;
}

bool stands_once(const Meaning& outer, std::string_view name) {
  if (outer.record == nullptr) return outer.type != nullptr || outer.message != nullptr;
  return !is_array(*field_of(*outer.record, name));
}

size_t place(const wayfind_record& record, const wayfind_field& field) {
  return static_cast<size_t>(&field - record.fields);
}

// A counter stands in front of its array.
const wayfind_field& array_of(const wayfind_field& counter) { return *(&counter + 1); }
uint64_t most_elements(const wayfind_field& array) {
  return (uint64_t{1} << 8 * (&array - 1)->width) - 1;
}

// Whether a text is this number, written as any number of a data file.
bool is_number(std::string_view text, uint64_t number) {
  const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (is_hexadecimal) text.remove_prefix(2);
  uint64_t value = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, is_hexadecimal ? 16 : 10);
  return error == std::errc() && end == text.data() + text.size() && value == number;
}

class Check {
 public:
  Check(const std::string& origin, uint32_t first_line)
      : origin_(origin), first_line_(first_line) {}

  void run(ork_xml& xml) {
    ork_xml_each(&xml, visit, this);
    if (failure_) std::rethrow_exception(failure_);
    close(0);
  }

 private:
  static uint32_t visit(void* ctx, const ork_xml_element* element) {
    auto& check = *static_cast<Check*>(ctx);
    try {
      check.enter(*element);
      return 0;
    } catch (...) {
      check.failure_ = std::current_exception();
      return 1;
    }
  }

  void enter(const ork_xml_element& element) {
    close(element.depth);
    Open top{{.is_container = true}, {}, {}, {}};
    Open& outer = open_.empty() ? top : open_.back();
    const std::string name = tag(element.name);
    const std::string inside =
        element.parent != nullptr ? " in " + tag(element.parent) : " at the root";
    Meaning meaning;
    if (element.space != nullptr)
      fail(element.line, name + " stands in a namespace; remove its xmlns");
    if (element.attribute != nullptr)
      fail(element.line,
           "attribute \"" + std::string(element.attribute) + "\" of " + name + "; remove it");
    if (!find(outer.meaning, element.name, meaning))
      fail(element.line, "unknown element " + name + inside + "; correct or remove it");
    if (stands_once(outer.meaning, element.name)) expect_first(outer, element, inside);
    if (element.text != nullptr && !meaning.is_text) {
      const std::string_view text = first_line_of(element.text);
      fail(element.line,
           "text in " + name + ", \"" + std::string(text) + "\"; " + advice(meaning, text));
    }
    if (outer.meaning.record != nullptr) count(outer, element);
    open_.push_back({meaning, {}, {}, {}});
  }

  void count(Open& outer, const ork_xml_element& element) const {
    const wayfind_record& record = *outer.meaning.record;
    const wayfind_field& field = *field_of(record, element.name);
    if (field.cls == WAYFIND_COUNTER)
      outer.told.push_back({&field, element.text != nullptr ? element.text : "", element.line});
    outer.fields.resize(record.field_count);
    const uint64_t elements = ++outer.fields[place(record, field)];
    if (is_array(field) && elements > most_elements(field)) {
      fail(element.line, "one more " + tag(element.name) + " in " + tag(record.name) +
                             ", which holds up to " + std::to_string(most_elements(field)) +
                             "; remove it");
    }
  }

  // Leaves the elements that lie deeper.
  void close(size_t depth) {
    for (; open_.size() > depth; open_.pop_back()) {
      const Open& left = open_.back();
      for (const Told& told : left.told)
        expect_count(told, left.fields[place(*left.meaning.record, array_of(*told.counter))]);
    }
  }

  void expect_count(const Told& told, uint64_t elements) const {
    if (is_number(trimmed(told.text), elements)) return;
    fail(told.line, tag(told.counter->name) + " is \"" + std::string(first_line_of(told.text)) +
                        "\" and there are " + std::to_string(elements) + " of " +
                        tag(array_of(*told.counter).name) + "; correct it or leave it out");
  }

  // An enum holds one value, whichever it is.
  void expect_first(Open& outer, const ork_xml_element& element, const std::string& inside) const {
    const bool is_enum = outer.meaning.type != nullptr && outer.meaning.type->is_flag_set == 0;
    if (is_enum && !outer.once.empty())
      fail(element.line,
           "a second value, " + tag(element.name) + "," + inside + "; remove one of them");
    if (std::find(outer.once.begin(), outer.once.end(), element.name) != outer.once.end()) {
      fail(element.line, "a second " + tag(element.name) + inside + "; remove one of them");
    }
    outer.once.emplace_back(element.name);
  }

  [[noreturn]] void fail(uint32_t line, const std::string& reason) const {
    throw Failure(origin_ + ":" + std::to_string(first_line_ - 1 + line) + ": " + reason);
  }

  const std::string& origin_;
  const uint32_t first_line_;
  std::vector<Open> open_;
  std::exception_ptr failure_;
};

}  // namespace

void check_elements(ork_xml& xml, const std::string& origin, uint32_t first_line) {
  Check(origin, first_line).run(xml);
}

}  // namespace wayfind
