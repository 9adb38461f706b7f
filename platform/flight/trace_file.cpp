#include "trace_file.h"

#include <algorithm>
#include <cstring>

namespace flight {
namespace {

constexpr uint32_t sync_word = 0x54464c46;
constexpr uint16_t no_file = 0xFFFF;

class Body {
 public:
  template <typename Number>
  void number(Number value) {
    for (size_t i = 0; i < sizeof value; ++i) {
      bytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
    }
  }

  void append(const void* data, size_t length) {
    const auto* begin = static_cast<const uint8_t*>(data);
    bytes.insert(bytes.end(), begin, begin + length);
  }

  std::vector<uint8_t> bytes;
};

uint32_t fnv1a(const std::vector<uint8_t>& bytes) {
  uint32_t hash = 0x811c9dc5;
  for (const uint8_t byte : bytes) {
    hash = (hash ^ byte) * 0x01000193;
  }
  return hash;
}

}  // namespace

TraceFile::TraceFile(std::FILE* stream, const std::vector<Module>& modules)
    : stream_(stream), modules_(modules) {
  const auto known = std::find_if(modules.begin(), modules.end(),
                                  [](const Module& module) { return module.file.base != nullptr; });
  if (known != modules.end()) {
    begin(known->file);
  }
}

TraceFile::~TraceFile() {
  if (!begun_) {
    begin({});
  }
  std::fclose(stream_);
}

void TraceFile::begin(const LoadedFile& first) {
  begun_ = true;
  const auto length = static_cast<uint8_t>(first.build_id.size());
  Body head;
  head.append("FLIGHT1\n", 8);
  head.number(length);
  head.append(first.build_id.data(), length);
  std::fwrite(head.bytes.data(), 1, head.bytes.size(), stream_);
  for (size_t i = 0; i < modules_.size(); ++i) {
    write_module(i);
  }
}

void TraceFile::write_newest_module() {
  if (begun_) {
    write_module(modules_.size() - 1);
  } else if (modules_.back().file.base != nullptr) {
    begin(modules_.back().file);
  }
}

void TraceFile::write_module(size_t index) {
  const std::string& name = modules_[index].name;
  Body body;
  body.number(static_cast<uint16_t>(index + 1));
  body.append(name.data(), std::min<size_t>(name.size(), 1024));
  write_record(2, body.bytes);
}

void TraceFile::write_trace(const flight_trace& trace, const void* section, uint32_t thread) {
  const LoadedFile traced = loaded_file_at(section);
  if (!begun_) {
    begin(traced);
  }
  const uint16_t file = number_of(traced);
  Body body;
  body.number(trace.time_ns);
  body.number(thread);
  body.number(file);
  body.number(trace.module_id);
  body.number(trace.level_word);
  body.number(trace.index);
  body.append(trace.section_id, sizeof trace.section_id);
  body.number(trace.n_arguments);
  for (size_t i = 0; i < trace.n_arguments; ++i) {
    body.number(trace.kind[i]);
    if (trace.kind[i] == 1) {
      const auto length = static_cast<uint8_t>(std::strlen(trace.text[i]));
      body.number(length);
      body.append(trace.text[i], length);
    } else if (trace.kind[i] == 4) {
      body.number(static_cast<uint32_t>(trace.number[i]));
    } else {
      body.number(trace.number[i]);
    }
  }
  write_record(3, body.bytes);
  // A fatal trace is followed by abort, which flushes nothing.
  std::fflush(stream_);
}

uint16_t TraceFile::number_of(const LoadedFile& file) {
  if (file.base == nullptr) {
    return no_file;
  }
  const auto known = std::find(traced_files_.begin(), traced_files_.end(), file);
  const auto number = static_cast<uint16_t>(known - traced_files_.begin());
  if (number == no_file) {
    return no_file;  // all numbers are given
  }
  if (known == traced_files_.end()) {
    traced_files_.push_back(file);
    Body body;
    body.number(number);
    body.number(static_cast<uint8_t>(file.build_id.size()));
    body.append(file.build_id.data(), static_cast<uint8_t>(file.build_id.size()));
    body.append(file.path.data(), std::min<size_t>(file.path.size(), 4096));
    write_record(1, body.bytes);
  }
  return number;
}

void TraceFile::write_record(uint8_t kind, const std::vector<uint8_t>& body) {
  Body head;
  head.number(sync_word);
  head.number(static_cast<uint16_t>(body.size()));
  head.number(kind);
  head.number(uint8_t{0});
  head.number(fnv1a(body));
  std::fwrite(head.bytes.data(), 1, head.bytes.size(), stream_);
  std::fwrite(body.data(), 1, body.size(), stream_);
}

}  // namespace flight
