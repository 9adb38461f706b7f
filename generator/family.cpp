#include "generator/family.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace generator {
namespace {

std::string trimmed(const std::string& line) {
  const size_t first = line.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

void append(std::string& text, const std::string& line, const char* between) {
  if (!text.empty()) text += between;
  text += line;
}

bool begins(const std::string& line, const char* with) { return line.rfind(with, 0) == 0; }

bool ends(const std::string& line, const std::string& with) {
  return line.size() >= with.size() && line.substr(line.size() - with.size()) == with;
}

// Lines of one paragraph of a documentation are one text.
std::string documentation(std::istream& file, std::string line, size_t& number) {
  std::string doc;
  line.erase(0, 2);
  for (bool open = true; open; ++number) {
    open = !ends(line, "*/");
    if (!open) line.resize(line.size() - 2);
    line = trimmed(line);
    if (line.empty() && open) doc += "\n\n";
    if (!line.empty()) doc += (doc.empty() || doc.back() == '\n' ? "" : " ") + line;
    if (open && !std::getline(file, line)) return {};
  }
  --number;
  return doc;
}

bool contains(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::string> split(const std::string& text) {
  std::istringstream words(text);
  std::vector<std::string> out;
  for (std::string word; words >> word;) out.push_back(word);
  return out;
}

}  // namespace

Family::Family(const std::string& path, const std::vector<std::string>& groups) : path_(path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be opened");
  read(file, groups);
  for (const Entry& entry : entries_) check(entry);
}

void Family::read(std::istream& file, const std::vector<std::string>& known_groups) {
  std::vector<std::string> groups;
  bool open = false;  // an entry, until the next empty line
  size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::string text = trimmed(line);
    if (text.empty()) {
      open = false;
    } else if (begins(line, "//")) {
      continue;
    } else if (begins(line, "@ ")) {
      groups = split(line.substr(2));
      for (const std::string& group : groups) {
        if (!contains(known_groups, group)) fail(number, "nothing is in the group " + group);
      }
    } else if (begins(line, "/*")) {
      Entry entry{number, groups, {}, {}, {}};
      entry.doc = documentation(file, line, number);
      entries_.push_back(entry);
      open = true;
    } else if (!open) {
      fail(number, "an entry begins with its documentation, /* ... */");
    } else if (begins(text, "=> ")) {
      entries_.back().statements.push_back(text.substr(3));
    } else if (!entries_.back().statements.empty()) {
      append(entries_.back().statements.back(), text, " ");
    } else {
      // Declarations keep their lines, a prototype does not.
      const bool declared = ends(entries_.back().text, ";");
      append(entries_.back().text, text, declared ? "\n" : " ");
    }
  }
}

void Family::check(const Entry& entry) const {
  if (entry.doc.empty()) fail(entry.line, "the documentation is empty or does not end");
  const bool declared = ends(entry.text, ";");
  if (declared == entry.statements.empty()) return;
  fail(entry.line, declared ? "a declaration with \";\" has no statement"
                            : "a function needs \"=> statement\", a declaration ends with \";\"");
}

void Family::fail(size_t line, const std::string& what) const {
  throw std::runtime_error(path_ + ":" + std::to_string(line) + ": " + what);
}

std::string Family::filled(const std::string& text, const Places& places, size_t line) const {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz_", at + 1);
    if (text[at] != '{' || end == at + 1 || end == std::string::npos || text[end] != '}') {
      out += text[at++];
      continue;
    }
    const auto place = places.find(text.substr(at + 1, end - at - 1));
    if (place == places.end()) fail(line, "nothing is known of " + text.substr(at, end + 1 - at));
    out += place->second;
    at = end + 1;
  }
  return out;
}

void Family::add(Interface& interface, const Places& places, const std::string& group) const {
  for (const Entry& entry : entries_) {
    if (!entry.groups.empty() && !contains(entry.groups, group)) continue;
    const std::string doc = filled(entry.doc, places, entry.line);
    const std::string text = filled(entry.text, places, entry.line);
    if (entry.statements.empty()) {
      interface.declarations.push_back({doc, text});
      continue;
    }
    try {
      interface.functions.push_back(parse_prototype(text));
    } catch (const std::invalid_argument& error) {
      fail(entry.line, error.what());
    }
    Function& function = interface.functions.back();
    function.doc = doc;
    for (const std::string& statement : entry.statements)
      function.statements.push_back(filled(statement, places, entry.line));
    if (begins(function.statements[0], "jump ")) {
      function.jump = function.statements[0].substr(5);
      function.statements.clear();
    }
  }
}

}  // namespace generator
