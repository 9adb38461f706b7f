// Turns the tables of the model into everything that cannot be said in a table: public headers,
// exported functions and data, the version script, the trace sections, the manifest, and the
// schema's description for tools and tests.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "generator/output.h"

namespace generator {

void write_file(const std::string& path, const std::string& text) {
  std::ifstream old(path, std::ios::binary);
  if (old && std::string(std::istreambuf_iterator<char>(old), {}) == text) return;
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace generator

int main(int argc, char** argv) {
  const int record_files = argc == 6 ? std::atoi(argv[5]) : 0;
  if (record_files < 1) {
    std::fprintf(stderr,
                 "usage: %s HEADER_FOLDER SOURCE_FOLDER SCHEMA_FOLDER SOURCE_DATE RECORD_FILES\n",
                 argv[0]);
    return 2;
  }
  generator::write_headers(argv[1]);
  generator::write_sources(argv[2], static_cast<size_t>(record_files));
  generator::write_exports(argv[2]);
  generator::write_sections(argv[2], argv[4]);
  generator::write_schema(argv[3]);
  return 0;
}
