// The file that a process writes its traces to, read back. Any bytes may stand in it: a record that
// is not whole is passed over.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/offline/library_file.h"
#include "tools/offline/trace_texts.h"

namespace wayfind {

// A library that traced, by the number that its traces carry.
struct TracedFile {
  uint16_t number;
  std::string build_id;  // hexadecimal
  std::string path;
};

struct TracedModule {
  uint16_t id;
  std::string name;
};

// A pointer stands in the record as 64 bits.
struct TracePointer {
  uint64_t address;
};
using TraceArgument = std::variant<std::string, uint32_t, TracePointer>;

struct Trace {
  uint64_t time;  // nanoseconds since the epoch
  uint32_t thread;
  uint16_t file;
  uint16_t module;
  uint32_t level_word;
  uint32_t index;
  SectionId section;
  std::vector<TraceArgument> arguments;
};

using TraceRecord = std::variant<TracedFile, TracedModule, Trace>;

class TraceFile {
 public:
  // The bytes have to outlive it. Fails when they do not begin as a trace file does; no bytes at
  // all are a file without traces.
  TraceFile(Bytes bytes, const std::string& name);

  // Of the library that made itself known first, hexadecimal; empty when the process could not
  // tell, none in a file without a record of whom it is.
  const std::optional<std::string>& build_id() const { return build_id_; }

  // The next whole record; none at the end.
  std::optional<TraceRecord> next();

  // Records passed over because their bodies are damaged, and stretches of bytes in which no record
  // stands.
  size_t damaged() const { return damaged_; }

 private:
  bool is_right(Bytes body, uint32_t checksum);
  // Whether the next record stands at that place, or nothing any more.
  bool ends_a_record(size_t place) const;

  std::optional<std::string> build_id_;
  Bytes records_;
  size_t front_ = 0;  // of what is still to be read

  // Where wrong bodies end. What looks like a record's head may stand in the body of another: while
  // all of these lie behind the front, no further body is added up, so no byte counts towards more
  // wrong ones than there are places.
  std::array<size_t, 16> wrong_ends_{};
  size_t damaged_ = 0;
  bool in_damage_ = false;
};

}  // namespace wayfind
