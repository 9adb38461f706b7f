#include "spy.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>
#include <unordered_map>

#include "spy_recorder.h"

namespace spy {

namespace {

thread_local Log* current = nullptr;
thread_local int depth = 0;

struct Name {
  const uint8_t* start;
  size_t size; /* 0: the address alone */
  std::string text;
};
std::vector<Name> names;

std::unordered_map<const void*, std::any> replacements;

std::string function_of(const std::string& call) { return call.substr(0, call.find('(')); }

}  // namespace

// ---- Names ----

void name(const void* address, size_t size, const std::string& text) {
  names.push_back({static_cast<const uint8_t*>(address), size, text});
}

void name_at(const void* address, const std::string& text) { name(address, 0, text); }

void forget_names() { names.clear(); }

std::string symbol(const void* address) {
  if (!address) {
    return "null";
  }
  const auto* const at = static_cast<const uint8_t*>(address);
  const auto exact = std::find_if(names.rbegin(), names.rend(),
                                  [&](const Name& n) { return n.size == 0 && n.start == at; });
  if (exact != names.rend()) {
    return exact->text;
  }
  const auto range = std::find_if(names.rbegin(), names.rend(), [&](const Name& n) {
    return at >= n.start && at < n.start + n.size;
  });
  if (range == names.rend()) {
    return "?";
  }
  return at == range->start ? range->text : range->text + "+" + std::to_string(at - range->start);
}

// ---- Arguments ----

std::string text_of(const ork_type_info* type) {
  if (!type) {
    return "null";
  }
  if (type->magic != ORK_TYPE_INFO_MAGIC) {
    return "?";
  }
  return (type->shared ? "shared(" : "type(") +
         std::string(type->name, strnlen(type->name, sizeof type->name)) + ")";
}

std::string text_of(const char* text) {
  const std::string place = symbol(text);
  return place == "?" ? "'" + std::string(text) + "'" : place;
}

std::string text_of_function(const void* function) {
  Dl_info info{};
  return function && dladdr(function, &info) != 0 && info.dli_sname ? info.dli_sname
                                                                    : symbol(function);
}

std::string joined(const char* function, std::initializer_list<std::string> arguments) {
  std::string line = std::string(function) + "(";
  for (const std::string& argument : arguments) {
    if (!argument.empty()) {
      line += (line.back() == '(' ? "" : ",") + argument;
    }
  }
  return line + ")";
}

// ---- The log ----

Inside::Inside() { ++depth; }

Inside::~Inside() { --depth; }

bool Recorder::active() { return current != nullptr; }

void Recorder::call(const std::string& text) {
  if (current) {
    current->entries_.push_back({depth, text});
  }
}

void Recorder::format(const char* text) {
  if (current && depth == 0) {
    current->formats_.emplace_back(text);
  }
}

void Recorder::announcement(const Announcement& announcement) {
  if (current) {
    if (current->on_announcement) {
      current->on_announcement(announcement);
    }
    current->announcements_.push_back(announcement);
  }
}

void Recorder::freed(const void* block) {
  if (current && current->on_free) {
    current->on_free(block);
  }
}

std::string Recorder::name_block(const void* block, size_t size) {
  if (!block) {
    return "null";
  }
  const std::string text = "new" + std::to_string(++current->blocks_);
  name(block, std::max<size_t>(size, 1), text);
  return text;
}

Log::Log() {
  current = this;
  depth = 0;
}

Log::~Log() { current = nullptr; }

std::vector<std::string> Log::calls() const {
  std::vector<std::string> lines;
  for (const Entry& entry : entries_) {
    if (entry.depth == 0) {
      lines.push_back(entry.text);
    }
  }
  return lines;
}

std::vector<std::string> Log::calls_of(std::initializer_list<std::string> functions) const {
  std::vector<std::string> lines = calls();
  std::erase_if(lines, [&](const std::string& line) {
    return std::find(functions.begin(), functions.end(), function_of(line)) == functions.end();
  });
  return lines;
}

std::vector<std::string> Log::all() const {
  std::vector<std::string> lines;
  for (const Entry& entry : entries_) {
    lines.push_back(std::string(static_cast<size_t>(2 * entry.depth), ' ') + entry.text);
  }
  return lines;
}

size_t Log::count(const std::string& function) const { return calls_of({function}).size(); }

void Log::clear() {
  entries_.clear();
  announcements_.clear();
  formats_.clear();
}

testing::AssertionResult same_calls(const std::vector<std::string>& got,
                                    const std::vector<std::string>& expected) {
  if (got == expected) {
    return testing::AssertionSuccess();
  }
  // The longest common subsequence from each pair of positions to the ends.
  std::vector<std::vector<size_t>> common(got.size() + 1,
                                          std::vector<size_t>(expected.size() + 1, 0));
  for (size_t g = got.size(); g-- > 0;) {
    for (size_t e = expected.size(); e-- > 0;) {
      common[g][e] = got[g] == expected[e] ? common[g + 1][e + 1] + 1
                                           : std::max(common[g + 1][e], common[g][e + 1]);
    }
  }
  std::ostringstream diff;
  diff << "calls differ, - expected, + made:\n";
  for (size_t g = 0, e = 0; g < got.size() || e < expected.size();) {
    if (g < got.size() && e < expected.size() && got[g] == expected[e]) {
      diff << "    " << got[g] << "\n";
      ++g, ++e;
    } else if (e < expected.size() && (g == got.size() || common[g][e + 1] >= common[g + 1][e])) {
      diff << "  - " << expected[e++] << "\n";
    } else {
      diff << "  + " << got[g++] << "\n";
    }
  }
  return testing::AssertionFailure() << diff.str();
}

// ---- Scripted answers ----

Replacement::Replacement(const void* function, std::any body)
    : function_(function), before_(std::move(replacements[function])) {
  replacements[function] = std::move(body);
}

Replacement::Replacement(Replacement&& other) noexcept
    : function_(other.function_), before_(std::move(other.before_)) {
  other.function_ = nullptr;
}

Replacement::~Replacement() {
  if (function_) {
    replacements[function_] = std::move(before_);
  }
}

const std::any* replacement_of(const void* function) {
  const auto found = replacements.find(function);
  return found != replacements.end() && found->second.has_value() ? &found->second : nullptr;
}

const void* next_of(const void* function) {
  Dl_info info{};
  dladdr(function, &info);
  return dlsym(RTLD_NEXT, info.dli_sname);
}

}  // namespace spy
