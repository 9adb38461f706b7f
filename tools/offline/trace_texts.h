// The words of a library's traces, as its file holds them: found by the section's id and the
// entry's index.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/offline/library_file.h"

namespace wayfind {

using SectionId = std::array<uint8_t, 16>;

struct TraceText {
  uint16_t section;
  uint32_t index;
  // of its arguments, one digit each: 1 a text, 4 a number, 5 a pointer; "0" is none
  std::string pattern;
  std::string_view text;
};

class TraceTexts {
 public:
  explicit TraceTexts(const LibraryFile& library);
  TraceTexts(const TraceTexts&) = delete;
  TraceTexts& operator=(const TraceTexts&) = delete;

  // Index sections in any order, and the texts of all packed together in the order of the sections'
  // numbers. origin is for failures.
  TraceTexts(const std::vector<Bytes>& index, Bytes packed, const std::string& origin);

  // All, in the order of sections and indices.
  const std::vector<TraceText>& all() const { return all_; }

  bool has_section(const SectionId& id) const;

  // Null when there is none.
  const TraceText* find(const SectionId& id, uint32_t index) const;

 private:
  struct Section {
    size_t first;  // in all_
    size_t entries;
  };
  const Section* section(const SectionId& id) const;

  std::string texts_;
  std::vector<TraceText> all_;
  std::map<SectionId, Section> sections_;
};

}  // namespace wayfind
