// What the generator writes; each writer fills one kind of file.
#pragma once

#include <string>

#include "generator/interfaces.h"

namespace generator {

// Writes a file, or leaves it alone when it says the same already, so that nothing that depends on
// it is built again.
void write_file(const std::string& path, const std::string& text);

// Public headers, one per type, message and bundle.
void write_headers(const std::string& folder, const std::string& about_types,
                   const Interfaces& all);
// The exported functions and data; those of the records in so many files.
void write_sources(const std::string& folder, size_t record_files, const Interfaces& all);
// Version script, and the plain list of names.
void write_exports(const std::string& folder, const Interfaces& all);
// Trace sections and the build manifest.
void write_sections(const std::string& folder, const std::string& date);
// The description of the schema for tools and tests.
void write_schema(const std::string& folder, const Interfaces& all);

// A LUID's bytes as "0x63, 0x47, ...".
std::string luid_bytes(const std::string& luid);

}  // namespace generator
