#include "told_tables.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace told {

namespace {

// One line, word by word: a word that names what follows is passed over by expect.
class Line {
 public:
  explicit Line(const std::string& text) : words_(text), text_(text) {}

  std::string word() {
    std::string next;
    if (!(words_ >> next)) {
      throw std::runtime_error("too short: " + text_);
    }
    return next;
  }
  std::string after(const std::string& label) {
    if (word() != label) {
      throw std::runtime_error("no " + label + " where it should be: " + text_);
    }
    return word();
  }
  unsigned number(const std::string& label) {
    return static_cast<unsigned>(std::stoul(after(label), nullptr, 0));
  }
  int number_or_none(const std::string& label) {
    const std::string next = after(label);
    return next == "-" ? -1 : std::stoi(next);
  }
  bool empty() { return (words_ >> std::ws).eof(); }

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

void read_line(Tables& all, Line line) {
  if (line.empty()) {
    return;
  }
  const std::string what = line.word();
  if (what == "record") {
    Record& record = all.records.emplace_back();
    record.name = line.word();
    record.luid = line.after("luid");
    record.definition = line.after("definition");
  } else if (what == "variant") {
    Layout layout{};
    line.word();
    layout.used = line.number("used");
    layout.slop = line.number("slop");
    layout.body = line.number("body");
    layout.state = line.number("state");
    layout.fields = line.number("fields");
    layout.bound = line.number("bound");
    all.records.back().layouts.push_back(layout);
  } else if (what == "field") {
    Field field{};
    field.name = line.word();
    field.cls = class_of(line.word());
    field.type = line.word();
    field.number = line.number("number");
    field.variant = line.number("variant");
    field.offset = line.number("offset");
    field.width = line.number("width");
    field.state = line.number_or_none("state");
    field.nested = line.number_or_none("nested");
    all.records.back().fields.push_back(field);
  } else if (what == "enum" || what == "flags") {
    Small& small = all.smalls.emplace_back();
    small.flags = what == "flags";
    small.name = line.word();
    small.luid = line.after("luid");
    small.definition = line.after("definition");
    small.size = line.number("size");
    small.used = line.number("used");
    small.slop = line.number("slop");
  } else if (what == "value") {
    line.word();
    all.smalls.back().values.push_back(line.word());
  } else if (what == "message") {
    Message& message = all.messages.emplace_back();
    message.name = line.word();
    message.luid = line.after("luid");
    message.definition = line.after("definition");
    message.used = line.number("used");
    message.slop = line.number("slop");
  } else if (what == "carries") {
    Carried carried{line.word(), 0};
    carried.tag = line.number("tag");
    all.messages.back().records.push_back(carried);
  } else if (what == "bundle") {
    Bundle& bundle = all.bundles.emplace_back();
    bundle.name = line.word();
    bundle.start = line.after("start");
    bundle.abort = line.after("abort");
    bundle.commit = line.after("commit");
  } else if (what == "member") {
    Member member{line.word(), false};
    member.repeatable = line.number("repeatable") != 0;
    all.bundles.back().members.push_back(member);
  } else if (what == "traces") {
    Traces traces{};
    traces.section = static_cast<unsigned>(std::stoul(line.word()));
    traces.id = line.word();
    traces.entries = line.number("entries");
    all.traces.push_back(traces);
  } else {
    throw std::runtime_error("unknown line: " + what);
  }
}

template <class Rows>
auto find_by_name(const Rows& rows, const std::string& name) {
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
  return found == rows.end() ? nullptr : &*found;
}

}  // namespace

const char* path() { return WAYFIND_GOLDEN_DIR "/tables.txt"; }

const Tables& tables() {
  static const Tables all = [] {
    Tables read;
    std::ifstream file(path());
    for (std::string text; std::getline(file, text);) {
      read_line(read, Line(text));
    }
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
