// Turns the tables of the model into everything that cannot be said in a table: public headers,
// exported functions and data, the version script, the trace sections, the manifest, and the
// schema's description for tools and tests.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "generator/output.h"

namespace generator {
namespace {

std::string text_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": cannot be opened");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// Folders that it reads and writes, as main() gets them.
void generate(const std::string& families, const std::string& headers, const std::string& sources,
              const std::string& schema, const std::string& date, size_t record_files) {
  const Interfaces all = make_interfaces(families);
  write_headers(headers, text_of(families + "/types.txt"), all);
  write_sources(sources, record_files, all);
  write_exports(sources, all);
  write_sections(sources, date);
  write_schema(schema, all);
}

}  // namespace

void write_file(const std::string& path, const std::string& text) {
  std::ifstream old(path, std::ios::binary);
  if (old && std::string(std::istreambuf_iterator<char>(old), {}) == text) return;
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace generator

int main(int argc, char** argv) {
  const int record_files = argc == 7 ? std::atoi(argv[6]) : 0;
  if (record_files < 1) {
    std::fprintf(stderr,
                 "usage: %s FAMILY_FOLDER HEADER_FOLDER SOURCE_FOLDER SCHEMA_FOLDER SOURCE_DATE "
                 "RECORD_FILES\n",
                 argv[0]);
    return 2;
  }
  try {
    generator::generate(argv[1], argv[2], argv[3], argv[4], argv[5],
                        static_cast<size_t>(record_files));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
