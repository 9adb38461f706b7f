// A main for builds without libFuzzer: runs a target on files and on folders of files, each as it
// is and then in a number of damaged forms that are the same in every run.
//
//   replay MUTATIONS PATH...
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzz/target.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

// One to four changes: a byte, a bit, a length.
Bytes damaged(Bytes bytes, std::mt19937& random) {
  for (unsigned changes = 1 + random() % 4; changes > 0 && !bytes.empty(); --changes) {
    const size_t place = random() % bytes.size();
    switch (random() % 5) {
      case 0: bytes[place] = static_cast<uint8_t>(random()); break;
      case 1: bytes[place] = static_cast<uint8_t>(bytes[place] ^ (1u << random() % 8)); break;
      case 2: bytes[place] = random() % 2 == 0 ? 0xFF : 0x00; break;
      case 3: bytes.resize(place); break;
      default:
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(place), 1 + random() % 9,
                     static_cast<uint8_t>(random()));
        break;
    }
  }
  return bytes;
}

size_t replay(const std::filesystem::path& path, unsigned mutations) {
  const Bytes whole = read(path);
  LLVMFuzzerTestOneInput(whole.data(), whole.size());
  std::mt19937 random(static_cast<uint32_t>(whole.size()));
  for (unsigned i = 0; i < mutations; ++i) {
    const Bytes other = damaged(whole, random);
    LLVMFuzzerTestOneInput(other.data(), other.size());
  }
  return mutations + size_t{1};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const auto mutations = static_cast<unsigned>(std::atoi(argv[1]));
  size_t runs = 0;
  for (int i = 2; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      runs += replay(argv[i], mutations);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
      runs += replay(entry.path(), mutations);
  }
  std::printf("%zu inputs\n", runs);
  return runs == 0 ? 1 : 0;
}
