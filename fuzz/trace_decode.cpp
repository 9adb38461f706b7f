// Any bytes as what the offline tools read: the file of a library, its trace sections and manifest,
// and a file of stored traces. An input begins as such a file does; any other is taken apart by its
// first byte.
#include "tools/offline/trace_decode.h"

#include <bzlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/failure.h"
#include "tools/offline/manifest_diff.h"

namespace {

using wayfind::Bytes;

constexpr const char* build_id = "00112233";

// What a small library would hold: a section with an entry for each pattern of arguments, in the
// order of their numbers.
class SmallLibrary {
 public:
  SmallLibrary() {
    constexpr std::string_view texts[] = {" %s",    " a",        " %d %u", " %d %u %d", " %p %s",
                                          " %s %p", " %s %s %s", " %s %s", " %d"};
    std::string all;
    index_.assign(4, 0);
    index_[0] = 1;
    index_.insert(index_.end(), section_id.begin(), section_id.end());
    for (uint8_t pattern = 0; pattern < std::size(texts); ++pattern) {
      const auto length = static_cast<uint8_t>(texts[pattern].size());
      index_.insert(index_.end(), {0, 0, pattern, 0, length, 0});
      all += texts[pattern];
    }
    packed_.resize(all.size() + 600);
    auto size = static_cast<unsigned>(packed_.size());
    if (BZ2_bzBuffToBuffCompress(reinterpret_cast<char*>(packed_.data()), &size, all.data(),
                                 static_cast<unsigned>(all.size()), 9, 0, 0) != BZ_OK) {
      std::abort();
    }
    packed_.resize(size);
  }

  wayfind::TraceTexts texts() const {
    return wayfind::TraceTexts({Bytes(index_)}, packed_, "small");
  }

 private:
  static constexpr std::string_view section_id = "section of small";

  std::vector<uint8_t> index_;
  std::vector<uint8_t> packed_;
};

void decode(const wayfind::TraceTexts& texts, Bytes traces) {
  for (const bool forced : {false, true}) {
    try {
      wayfind::TraceFile file(traces, "input");
      wayfind::decode_traces(texts, build_id, file, forced, [](const wayfind::DecodedTrace&) {});
    } catch (const wayfind::Failure&) {  // an answer: the input is not what it seems
    }
  }
}

// The traces with a right checksum in each record: what lies behind the checksum has to stand
// anything as well.
std::vector<uint8_t> repaired(Bytes traces) {
  constexpr size_t head_size = 12;
  std::vector<uint8_t> bytes(traces.begin(), traces.end());
  const size_t id_size_at = std::string_view("FLIGHT1\n").size();
  size_t at = id_size_at + 1 + (bytes.size() > id_size_at ? bytes[id_size_at] : 0u);
  while (at + head_size <= bytes.size()) {
    const size_t length =
        std::min<size_t>(wayfind::u16_at(bytes, at + 4), bytes.size() - at - head_size);
    uint32_t hash = 0x811c9dc5;
    for (size_t i = 0; i < length; ++i) hash = (hash ^ bytes[at + head_size + i]) * 0x01000193;
    for (size_t i = 0; i < 4; ++i) bytes[at + 8 + i] = static_cast<uint8_t>(hash >> (8 * i));
    at += head_size + length;
  }
  return bytes;
}

void read_library(Bytes bytes) {
  const wayfind::LibraryFile library({bytes.begin(), bytes.end()}, "input");
  wayfind::compare_manifests(wayfind::read_manifest(library), wayfind::read_manifest(library));
}

void read_texts_of_library(Bytes bytes) {
  const wayfind::LibraryFile library({bytes.begin(), bytes.end()}, "input");
  const wayfind::TraceTexts texts(library);
  for (const wayfind::TraceText& text : texts.all()) wayfind::fill_text(text.text, {});
}

// The first byte says how much of the rest is an index section, in units of 16 bytes; the packed
// texts follow.
void read_texts(Bytes bytes) {
  const size_t split = std::min<size_t>(bytes[0] * size_t{16}, bytes.size() - 1);
  const wayfind::TraceTexts texts({bytes.subspan(1, split)}, bytes.subspan(1 + split), "input");
}

void read_manifests(Bytes bytes) {
  const wayfind::Manifest older =
      wayfind::parse_manifest(bytes.first(bytes.size() / 2), {}, "older");
  const wayfind::Manifest newer =
      wayfind::parse_manifest(bytes.subspan(bytes.size() / 2), {}, "newer");
  wayfind::compare_manifests(older, newer);
}

template <class Read>
void attempt(Read read, Bytes bytes) {
  try {
    read(bytes);
  } catch (const wayfind::Failure&) {  // an answer: the input is not what it seems
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const SmallLibrary library;
  static const wayfind::TraceTexts texts = library.texts();
  const Bytes bytes(data, size);
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (text.starts_with("\x7f"
                       "ELF")) {
    attempt(read_library, bytes);
    attempt(read_texts_of_library, bytes);
  } else if (text.starts_with("FLIGHT1\n")) {
    decode(texts, bytes);
    decode(texts, repaired(bytes));
  } else if (size != 0) {
    attempt(data[0] % 2 == 0 ? read_texts : read_manifests,
            bytes.subspan(1).empty() ? bytes : bytes.subspan(1));
  }
  return 0;
}
