#include "tools/offline/trace_texts.h"

#include <bzlib.h>

#include <algorithm>
#include <iterator>

#include "tools/common/failure.h"

namespace wayfind {
namespace {

// Of an index section: version, number and id in front, then number and length of each entry.
constexpr size_t head_size = 20;
constexpr size_t entry_size = 6;
constexpr uint16_t version = 1;

constexpr const char* patterns[] = {"1", "0", "44", "444", "51", "15", "111", "11", "4"};

// More than any library has; what claims more is not unpacked.
constexpr size_t max_texts_size = size_t{64} << 20;
constexpr size_t max_entries = size_t{1} << 20;
constexpr size_t max_text_size = 4096;

std::string unpack(Bytes packed, size_t size, const std::string& origin) {
  std::string texts(size + 1, '\0');  // one more than told, to see a stream that is too long
  auto got = static_cast<unsigned>(texts.size());
  // The library takes its input as writable and does not write it.
  auto* input = const_cast<char*>(reinterpret_cast<const char*>(packed.data()));
  const int status = BZ2_bzBuffToBuffDecompress(texts.data(), &got, input,
                                                static_cast<unsigned>(packed.size()), 0, 0);
  if (status != BZ_OK || got != size)
    throw Failure(origin + ": the packed trace texts are damaged");
  texts.resize(size);
  return texts;
}

size_t length_of_texts(Bytes section) {
  size_t length = 0;
  for (size_t at = head_size; at < section.size(); at += entry_size)
    length += u16_at(section, at + 4);
  return length;
}

std::vector<Bytes> index_sections(const LibraryFile& library) {
  std::vector<Bytes> index = library.sections_named(".flight_luids_");
  if (index.empty()) throw Failure(library.name() + ": no trace sections");
  return index;
}

}  // namespace

TraceTexts::TraceTexts(const LibraryFile& library)
    : TraceTexts(index_sections(library), library.section(".flight_format_strings"),
                 library.name()) {}

TraceTexts::TraceTexts(const std::vector<Bytes>& index, Bytes packed, const std::string& origin) {
  std::vector<Bytes> sections = index;
  size_t size = 0;
  size_t entries = 0;
  for (const Bytes section : sections) {
    if (section.size() < head_size || (section.size() - head_size) % entry_size != 0 ||
        u16_at(section, 0) != version) {
      throw Failure(origin + ": a trace section is damaged");
    }
    entries += (section.size() - head_size) / entry_size;
    if (entries > max_entries)
      throw Failure(origin + ": the trace sections claim more than " + std::to_string(max_entries) +
                    " entries");
    size += length_of_texts(section);
  }
  if (size > max_texts_size)
    throw Failure(origin + ": the trace sections claim " + std::to_string(size) + " bytes of text");
  std::sort(sections.begin(), sections.end(),
            [](Bytes a, Bytes b) { return u16_at(a, 2) < u16_at(b, 2); });
  texts_ = unpack(packed, size, origin);
  size_t place = 0;
  for (const Bytes section : sections) {
    SectionId id;
    std::copy_n(section.begin() + 4, id.size(), id.begin());
    const size_t own_entries = (section.size() - head_size) / entry_size;
    sections_.emplace(id, Section{all_.size(), own_entries});
    for (uint32_t i = 0; i < own_entries; ++i) {
      const size_t at = head_size + i * entry_size;
      const size_t pattern = u32_at(section, at) >> 16;
      const size_t length = u16_at(section, at + 4);
      if (length > max_text_size)
        throw Failure(origin + ": a trace entry claims a text of " + std::to_string(length) +
                      " bytes");
      if (pattern >= std::size(patterns))
        throw Failure(origin + ": a trace entry has an unknown pattern of arguments");
      all_.push_back({u16_at(section, 2), i, patterns[pattern],
                      std::string_view(texts_).substr(place, length)});
      place += length;
    }
  }
}

const TraceTexts::Section* TraceTexts::section(const SectionId& id) const {
  const auto found = sections_.find(id);
  return found == sections_.end() ? nullptr : &found->second;
}

bool TraceTexts::has_section(const SectionId& id) const { return section(id) != nullptr; }

const TraceText* TraceTexts::find(const SectionId& id, uint32_t index) const {
  const Section* found = section(id);
  return found == nullptr || index >= found->entries ? nullptr : &all_[found->first + index];
}

}  // namespace wayfind
