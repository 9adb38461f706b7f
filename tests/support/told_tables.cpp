#include "told_tables.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <type_traits>

namespace told {

namespace {

// One line, word by word.
class Line {
 public:
  explicit Line(const std::string& text) : words_(text), text_(text) {}

  std::string word() {
    std::string next;
    if (!(words_ >> next)) throw std::runtime_error("too short: " + text_);
    return next;
  }
  unsigned number() { return static_cast<unsigned>(std::stoul(word(), nullptr, 0)); }
  int number_or_none() {
    const std::string next = word();
    return next == "-" ? -1 : std::stoi(next);
  }
  // The number behind its name.
  unsigned number(const std::string& label) {
    if (word() != label) throw std::runtime_error("no " + label + " where it should be: " + text_);
    return number();
  }
  bool empty() { return (words_ >> std::ws).eof() || words_.peek() == '#'; }

 private:
  std::istringstream words_;
  std::string text_;
};

Class class_of(const std::string& word) {
  static const std::map<std::string, Class> classes = {{"value", Class::value},
                                                       {"object", Class::object},
                                                       {"text", Class::text},
                                                       {"counter", Class::counter},
                                                       {"value_array", Class::value_array},
                                                       {"record_array", Class::record_array}};
  return classes.at(word);
}

Field read_field(Line& line) {
  Field field{};
  field.name = line.word();
  field.cls = class_of(line.word());
  field.type = line.word();
  if (const size_t bracket = field.type.find('['); bracket != std::string::npos) {
    field.counter = field.type.substr(bracket + 1, field.type.size() - bracket - 2);
    field.type.resize(bracket);
  }
  field.variant = line.number();
  field.number = line.number();
  field.offset = line.number();
  field.width = line.number();
  field.state = line.number_or_none();
  field.nested = line.number_or_none();
  return field;
}

// The lines behind a name, by the kind of what it names.
void read_line(Record& record, const std::string& what, Line& line) {
  if (what == "variant") {
    line.word();
    Layout layout{};
    layout.used = line.number("used");
    layout.slop = line.number("slop");
    layout.body = line.number("body");
    layout.state = line.number("state");
    layout.bound = line.number("bound");
    record.layouts.push_back(layout);
  } else {
    record.fields.push_back(read_field(line));
    for (size_t v = record.fields.back().variant; v < record.layouts.size(); ++v)
      ++record.layouts[v].fields;
  }
}

void read_line(Small& small, const std::string& what, Line& line) {
  line.word();
  if (what == "variant") {
    small.size = line.number("size");
    small.used = line.number("used");
    small.slop = line.number("slop");
  } else {
    small.values.push_back(line.word());
  }
}

void read_line(Message& message, const std::string& what, Line& line) {
  if (what == "variant") {
    line.word();
    message.used = line.number("used");
    message.slop = line.number("slop");
  } else {
    Carried carried{line.word(), 0};
    carried.tag = line.number("tag");
    message.records.push_back(carried);
  }
}

void read_line(Bundle& bundle, const std::string& what, Line& line) {
  if (what == "member") {
    Member member{line.word(), false};
    member.repeatable = line.word() == "repeatable";
    bundle.members.push_back(member);
  } else {
    (what == "show"    ? bundle.show
     : what == "start" ? bundle.start
     : what == "abort" ? bundle.abort
                       : bundle.commit) = line.word();
  }
}

// What the lines behind a name go to.
using Rest = std::function<void(const std::string& what, Line& line)>;

template <class Row>
Rest begin(std::vector<Row>& rows, const std::string& name) {
  rows.emplace_back();
  rows.back().name = name;
  return [&rows](const std::string& what, Line& line) {
    Row& row = rows.back();
    if constexpr (!std::is_same_v<Row, Bundle>) {
      if (what == "luid" || what == "definition") {
        (what == "luid" ? row.luid : row.definition) = line.word();
        return;
      }
    }
    read_line(row, what, line);
  };
}

Rest begin_traces(std::vector<Traces>& rows, unsigned section) {
  rows.push_back({section, {}, 0});
  return [&rows](const std::string& what, Line& line) {
    if (what == "luid") {
      rows.back().id = line.word();
    } else {
      rows.back().entries = line.number();
    }
  };
}

void read_line(Tables& all, Rest& rest, Line line) {
  if (line.empty()) return;
  const std::string what = line.word();
  if (what == "record") {
    rest = begin(all.records, line.word());
  } else if (what == "enum" || what == "flags") {
    rest = begin(all.smalls, line.word());
    all.smalls.back().flags = what == "flags";
  } else if (what == "message") {
    rest = begin(all.messages, line.word());
  } else if (what == "bundle") {
    rest = begin(all.bundles, line.word());
  } else if (what == "traces") {
    rest = begin_traces(all.traces, line.number());
  } else {
    rest(what, line);
  }
}

template <class Rows>
auto find_by_name(const Rows& rows, const std::string& name) {
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
  return found == rows.end() ? nullptr : &*found;
}

}  // namespace

const char* path() { return WAYFIND_FACTS; }

const Tables& tables() {
  static const Tables all = [] {
    Tables read;
    Rest rest;
    std::ifstream file(path());
    for (std::string text; std::getline(file, text);) read_line(read, rest, Line(text));
    return read;
  }();
  return all;
}

const Record* record(const std::string& name) { return find_by_name(tables().records, name); }

const Small* small(const std::string& name) { return find_by_name(tables().smalls, name); }

const Field& Record::field(const std::string& field_name) const {
  const Field* const found = find_by_name(fields, field_name);
  if (!found) {
    throw std::runtime_error(name + " has no field " + field_name);
  }
  return *found;
}

bool has_array(const Record& record) {
  return std::any_of(record.fields.begin(), record.fields.end(), [](const Field& f) {
    return f.cls == Class::value_array || f.cls == Class::record_array;
  });
}

}  // namespace told
