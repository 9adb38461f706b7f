#include "tools/look/path.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "tools/look/mistake.h"
#include "tools/look/nearest.h"

namespace look {
namespace {

// A name of a path and the brackets behind it.
struct Part {
  size_t position;
  std::string_view name;
  std::optional<std::string_view> bracket;  // "*" or digits, between the brackets
};

const wayfind_field* field_named(const wayfind_record& record, std::string_view name) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    if (record.fields[i].name == name) return &record.fields[i];
  }
  return nullptr;
}

// Paths in the record that end in the name.
void find_deeper(const wayfind_record& record, std::string_view name, const std::string& before,
                 std::vector<std::string>& found) {
  for (unsigned i = 0; i < record.field_count; ++i) {
    const wayfind_field& field = record.fields[i];
    const std::string here = before + field.name + (is_array(field) ? "[*]" : "");
    if (field.name == name) found.push_back(here);
    if (field.record != nullptr) find_deeper(*field.record, name, here + ".", found);
  }
}

class Resolver {
 public:
  Resolver(std::string_view text, const wayfind_message& message)
      : text_(text), message_(message) {}

  std::variant<Path, NoPath> run() {
    Path path;
    path.text = text_;
    Part part = next();
    for (unsigned slot = 0; slot < message_.record_count; ++slot) {
      const wayfind_record& record = *message_.records[slot];
      const bool is_named = part.name == record.name && !part.bracket && !at_end();
      if (!is_named && field_named(record, part.name) == nullptr) continue;
      path.slot = slot;
      return walk(record, is_named ? next() : part, std::move(path));
    }
    return unknown(part, {message_.records, message_.record_count});
  }

 private:
  std::variant<Path, NoPath> walk(const wayfind_record& first, Part part, Path path) {
    const wayfind_record* record = &first;
    for (;; part = next()) {
      const wayfind_field* field = field_named(*record, part.name);
      if (field == nullptr) return unknown(part, {&record, 1});
      path.steps.push_back({field});
      if (auto wrong = take_bracket(part, path.steps.back())) return *wrong;
      record = field->record;
      if (at_end()) break;
      if (record == nullptr) return wrong_at(position_, part_text(part) + " holds no fields");
    }
    if (record == nullptr) return path;
    return wrong_at(part.position, part_text(part) + " is a record; go on to a field of it, like " +
                                       part_text(part) + "." + record->fields[0].name);
  }

  // What is wrong with the part's brackets, if anything is.
  std::optional<NoPath> take_bracket(const Part& part, Step& step) const {
    const std::string name(part.name);
    if (!is_array(*step.field)) {
      if (!part.bracket) return std::nullopt;
      return wrong_at(part.position + name.size(), name + " is no array; leave out the brackets");
    }
    if (!part.bracket)
      return wrong_at(part.position,
                      name + " is an array; write " + name + "[*] or " + name + "[0]");
    step.every = *part.bracket == "*";
    if (step.every) return std::nullopt;
    const char* const end = part.bracket->data() + part.bracket->size();
    const auto read = std::from_chars(part.bracket->data(), end, step.index);
    if (!part.bracket->empty() && read.ec == std::errc() && read.ptr == end) return std::nullopt;
    return wrong_at(part.position + name.size(), "between the brackets stands * or an index");
  }

  // Takes the next part, and the dot behind it.
  Part next() {
    const size_t begin = position_;
    const std::string_view whole = text_.substr(begin, text_.find('.', begin) - begin);
    position_ = std::min(begin + whole.size() + 1, text_.size() + 1);
    const size_t open = whole.find('[');
    if (open == std::string_view::npos || whole.back() != ']') return {begin, whole, std::nullopt};
    return {begin, whole.substr(0, open), whole.substr(open + 1, whole.size() - open - 2)};
  }
  bool at_end() const { return position_ > text_.size(); }

  static std::string part_text(const Part& part) {
    return std::string(part.name) + (part.bracket ? "[" + std::string(*part.bracket) + "]" : "");
  }
  static NoPath wrong_at(size_t position, std::string problem) {
    return {position, std::move(problem), "", {}};
  }

  // A name that stands deeper is meant before one that is merely like it.
  static NoPath unknown(const Part& part, std::span<const wayfind_record* const> records) {
    NoPath none{
        part.position, "there is no field " + std::string(part.name), std::string(part.name), {}};
    for (const wayfind_record* record : records) find_deeper(*record, part.name, "", none.names);
    for (const wayfind_record* record : records) {
      for (unsigned i = 0; i < record->field_count; ++i)
        none.names.emplace_back(record->fields[i].name);
    }
    return none;
  }

  std::string_view text_;
  const wayfind_message& message_;
  size_t position_ = 0;
};

// Tells of the message in which the path goes farthest.
Messages with_path(const Word& path, const Messages& messages) {
  Messages having;
  NoPath farthest{0, "there is nothing with such a path", "", {}};
  for (const wayfind_message* message : messages) {
    const std::variant<Path, NoPath> resolved = resolve(path.text, *message);
    const auto* none = std::get_if<NoPath>(&resolved);
    if (none == nullptr) {
      having.push_back(message);
    } else if (none->position > farthest.position || farthest.names.empty()) {
      farthest = *none;
    } else if (none->position == farthest.position) {
      farthest.names.insert(farthest.names.end(), none->names.begin(), none->names.end());
    }
  }
  if (!having.empty()) return having;
  throw Mistake(path.position + farthest.position,
                farthest.problem + nearest(farthest.word, farthest.names));
}

}  // namespace

bool Path::is_many() const {
  return std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.every; });
}

std::variant<Path, NoPath> resolve(std::string_view text, const wayfind_message& message) {
  return Resolver(text, message).run();
}

Messages with_paths(const std::vector<Word>& paths, const Messages& messages) {
  Messages having = messages;
  for (const Word& path : paths) {
    const Messages some = with_path(path, messages);
    std::erase_if(having, [&](const wayfind_message* message) {
      return std::find(some.begin(), some.end(), message) == some.end();
    });
    if (having.empty())
      throw Mistake(path.position, "no message has " + path.text + " and all paths before it");
  }
  return having;
}

Path path_in(std::string_view text, const wayfind_message& message) {
  return std::get<Path>(resolve(text, message));
}

}  // namespace look
