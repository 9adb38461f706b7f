// The build id of a loaded file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace flight {

struct LoadedFile {
  const void* base = nullptr;  // null: the address lies in no loaded file
  std::string path;
  std::vector<uint8_t> build_id;

  bool operator==(const LoadedFile&) const = default;
};

LoadedFile loaded_file_at(const void* address);

}  // namespace flight
