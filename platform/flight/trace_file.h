// The file that traces go to. docs/platform.md tells its form byte for byte.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "build_id.h"
#include "ork/platform.h"

namespace flight {

// A module that has a number, and the file that its number lies in.
struct Module {
  std::string name;
  LoadedFile file;
};

class TraceFile {
 public:
  // modules are all that have a number, in its order from 1 up, and live longer than this.
  TraceFile(std::FILE* stream, const std::vector<Module>& modules);
  ~TraceFile();
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  // The newest of the modules is to be told.
  void write_newest_module();

  // section is the address that the trace was raised with; it tells which loaded file the texts
  // belong to.
  void write_trace(const flight_trace& trace, const void* section, uint32_t thread);

 private:
  void begin(const LoadedFile& first);
  void write_module(size_t index);
  uint16_t number_of(const LoadedFile& file);
  void write_record(uint8_t kind, const std::vector<uint8_t>& body);

  std::FILE* stream_;
  const std::vector<Module>& modules_;
  bool begun_ = false;
  // The index is the file's number. An address alone does not tell a file: one that is loaded
  // later may lie where another did.
  std::vector<LoadedFile> traced_files_;
};

}  // namespace flight
