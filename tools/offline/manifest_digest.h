// The build manifest of a library: what it defines, and the build that it comes from. Any bytes may
// stand in the section.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/offline/library_file.h"

namespace wayfind {

// A type or message.
struct Definition {
  std::string luid;
  std::string hash;
  std::string kind;  // "type", "enum", "flag", "mess"
  unsigned newest;   // variant
  unsigned size;     // bytes up to which the newest variant reaches; 0 for a message
  std::string name;  // what the library's descriptor calls it, else the LUID
};

struct Manifest {
  std::string module;
  std::vector<Definition> definitions;  // in the manifest's order
  std::string build;                    // lines
};

// Fails when the section is not there or not whole.
Manifest read_manifest(const LibraryFile& library);

Manifest parse_manifest(Bytes section, const TypeNames& names, const std::string& origin);

}  // namespace wayfind
