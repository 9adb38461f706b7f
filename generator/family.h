// Families of functions as their files describe them: see families/README.md.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "generator/function.h"

namespace generator {

// What stands for the names in braces.
using Places = std::map<std::string, std::string>;

class Family {
 public:
  // `groups` are the words that may stand behind @. Throws a std::runtime_error that begins with
  // file and line.
  explicit Family(const std::string& path, const std::vector<std::string>& groups = {});

  // Adds the entries that are there for `group`, or those that are there for all, to an interface.
  void add(Interface& interface, const Places& places, const std::string& group = {}) const;

 private:
  struct Entry {
    size_t line = 0;
    std::vector<std::string> groups;  // none: it is there for all
    std::string doc;
    std::string text;  // a prototype, or declarations
    std::vector<std::string> statements;
  };

  void read(std::istream& file, const std::vector<std::string>& known_groups);
  void check(const Entry& entry) const;
  std::string filled(const std::string& text, const Places& places, size_t line) const;
  [[noreturn]] void fail(size_t line, const std::string& what) const;

  std::string path_;
  std::vector<Entry> entries_;
};

}  // namespace generator
