// A library as a file that is read and never loaded. Any bytes may stand in it.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wayfind {

using Bytes = std::span<const uint8_t>;

// Little-endian numbers; the caller has seen to it that the bytes are there.
uint16_t u16_at(Bytes bytes, size_t at);
uint32_t u32_at(Bytes bytes, size_t at);
uint64_t u64_at(Bytes bytes, size_t at);

std::string hex(Bytes bytes);

// Of a text that outlives them.
Bytes bytes_of(const std::string& text);

// What the descriptors of a library call its types, by LUID as text.
using TypeNames = std::map<std::string_view, std::string_view>;

// Bytes, names and texts that it hands out live as long as it does.
class LibraryFile {
 public:
  explicit LibraryFile(const std::string& path);
  LibraryFile(std::string bytes, const std::string& name);
  LibraryFile(const LibraryFile&) = delete;
  LibraryFile& operator=(const LibraryFile&) = delete;

  const std::string& name() const { return name_; }

  // Hexadecimal; empty when the file has none.
  const std::string& build_id() const { return build_id_; }

  // Fails when there is none of that name.
  Bytes section(std::string_view name) const;

  // The sections whose names begin so, in the order of their names.
  std::vector<Bytes> sections_named(std::string_view prefix) const;

  const TypeNames& type_names() const { return type_names_; }

 private:
  void read();

  std::string bytes_;
  std::string name_;
  std::map<std::string_view, Bytes> sections_;
  std::string build_id_;
  TypeNames type_names_;
};

}  // namespace wayfind
