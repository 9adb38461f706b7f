// A library as a file that is read and never loaded. Any bytes may stand in it.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace wayfind {

using Bytes = std::span<const uint8_t>;

// The whole of a file, at most this many bytes.
inline constexpr size_t max_file_size = size_t{1} << 30;
std::vector<uint8_t> read_file(const std::string& path);

// Little-endian numbers; the caller has seen to it that the bytes are there.
uint16_t u16_at(Bytes bytes, size_t at);
uint32_t u32_at(Bytes bytes, size_t at);
uint64_t u64_at(Bytes bytes, size_t at);

std::string hex(Bytes bytes);

class LibraryFile {
 public:
  explicit LibraryFile(const std::string& path);
  LibraryFile(std::vector<uint8_t> bytes, const std::string& name);

  const std::string& name() const { return name_; }

  // Hexadecimal; empty when the file has none.
  const std::string& build_id() const { return build_id_; }

  // Fails when there is none of that name. The bytes live as long as this object.
  Bytes section(const std::string& name) const;

  // Names of the sections that begin so.
  std::vector<std::string> sections_named(const std::string& prefix) const;

  // What the descriptors call the types, by LUID as text.
  const std::map<std::string, std::string>& type_names() const { return type_names_; }

 private:
  void read();

  std::vector<uint8_t> bytes_;
  std::string name_;
  std::map<std::string, Bytes> sections_;
  std::string build_id_;
  std::map<std::string, std::string> type_names_;
};

}  // namespace wayfind
