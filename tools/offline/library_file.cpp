#include "tools/offline/library_file.h"

#include <gelf.h>
#include <libelf.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "ork/handle.h"
#include "tools/common/failure.h"
#include "tools/common/file.h"

namespace wayfind {
namespace {

struct Closed {
  void operator()(Elf* elf) const { elf_end(elf); }
};
using ElfImage = std::unique_ptr<Elf, Closed>;

struct Section {
  std::string_view name;
  GElf_Shdr header;
  Bytes bytes;  // what the file holds of it
};

Bytes part(Bytes bytes, uint64_t offset, uint64_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) return {};
  return bytes.subspan(offset, size);
}

// Longer names are cut: no name of use is longer, and a file of overlapping ones must not cost
// minutes.
constexpr size_t longest_name = 1024;

std::string_view text_in(Bytes strings, uint64_t offset) {
  if (offset >= strings.size()) return {};
  const auto* begin = reinterpret_cast<const char*>(strings.data()) + offset;
  return {begin, strnlen(begin, std::min(strings.size() - offset, longest_name))};
}

std::vector<Section> sections_of(Elf* elf, Bytes bytes) {
  std::vector<Section> sections;
  for (Elf_Scn* scn = nullptr; (scn = elf_nextscn(elf, scn)) != nullptr;) {
    Section section{};
    if (gelf_getshdr(scn, &section.header) == nullptr)
      section.header = {};  // it keeps its place: others count on theirs
    if (section.header.sh_type != SHT_NOBITS)
      section.bytes = part(bytes, section.header.sh_offset, section.header.sh_size);
    sections.push_back(section);
  }
  size_t names = 0;
  if (elf_getshdrstrndx(elf, &names) != 0 || names == 0 || names > sections.size()) return sections;
  const Bytes strings = sections[names - 1].bytes;
  for (Section& section : sections) section.name = text_in(strings, section.header.sh_name);
  return sections;
}

// The notes are a sequence of three words, a name and a description, each padded to four bytes.
std::string build_id_in(Bytes notes) {
  constexpr auto padded = [](uint64_t size) { return (size + 3) & ~uint64_t{3}; };
  while (notes.size() >= 12) {
    const uint64_t name = u32_at(notes, 0);
    const uint64_t description = u32_at(notes, 4);
    const Bytes owner = part(notes, 12, name);
    const Bytes value = part(notes, 12 + padded(name), description);
    if (u32_at(notes, 8) == NT_GNU_BUILD_ID && owner.size() == 4 &&
        std::memcmp(owner.data(), "GNU", 4) == 0)
      return hex(value);
    const uint64_t next = 12 + padded(name) + padded(description);
    notes = part(notes, next, notes.size() > next ? notes.size() - next : 0);
  }
  return {};
}

// What the file holds of the loaded image, section by section.
class Image {
 public:
  explicit Image(const std::vector<Section>& sections) {
    for (const Section& section : sections) {
      if ((section.header.sh_flags & SHF_ALLOC) != 0 && !section.bytes.empty())
        parts_.emplace(section.header.sh_addr, section.bytes);
    }
  }

  // Sections of a library never overlap; where they do, the one that begins last is looked at
  // alone, so that no address costs a walk.
  Bytes at(uint64_t address, size_t size) const {
    const auto behind = parts_.upper_bound(address);
    if (behind == parts_.begin()) return {};
    const auto& [begin, bytes] = *std::prev(behind);
    return part(bytes, address - begin, size);
  }

 private:
  std::map<uint64_t, Bytes> parts_;  // by address
};

TypeNames names_in(const std::vector<Section>& sections) {
  constexpr size_t luid_text_at = offsetof(ork_type_info, luid_text);
  constexpr size_t name_at = offsetof(ork_type_info, name);
  const Image image(sections);
  TypeNames names;
  for (const Section& table : sections) {
    if (table.header.sh_type != SHT_DYNSYM || table.header.sh_link == 0 ||
        table.header.sh_link > sections.size())
      continue;
    const Bytes strings = sections[table.header.sh_link - 1].bytes;
    for (size_t at = 0; at + sizeof(Elf64_Sym) <= table.bytes.size(); at += sizeof(Elf64_Sym)) {
      if (!text_in(strings, u32_at(table.bytes, at)).ends_with("_type_info_internal")) continue;
      const Bytes descriptor =
          image.at(u64_at(table.bytes, at + offsetof(Elf64_Sym, st_value)), sizeof(ork_type_info));
      if (descriptor.empty() || u32_at(descriptor, 0) != ORK_TYPE_INFO_MAGIC) continue;
      names.emplace(text_in(descriptor.subspan(luid_text_at, sizeof(ork_type_info::luid_text)), 0),
                    text_in(descriptor.subspan(name_at, sizeof(ork_type_info::name)), 0));
    }
    break;  // a library has one; more of them could all be the same bytes, read again and again
  }
  return names;
}

}  // namespace

uint16_t u16_at(Bytes bytes, size_t at) {
  return static_cast<uint16_t>(bytes[at] | bytes[at + 1] << 8);
}
uint32_t u32_at(Bytes bytes, size_t at) {
  return u16_at(bytes, at) | static_cast<uint32_t>(u16_at(bytes, at + 2)) << 16;
}
uint64_t u64_at(Bytes bytes, size_t at) {
  return u32_at(bytes, at) | static_cast<uint64_t>(u32_at(bytes, at + 4)) << 32;
}

Bytes bytes_of(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string hex(Bytes bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

LibraryFile::LibraryFile(const std::string& path)
    : LibraryFile(read_file_or_input(path, largest_input), path) {}

LibraryFile::LibraryFile(std::string bytes, const std::string& name)
    : bytes_(std::move(bytes)), name_(name) {
  read();
}

void LibraryFile::read() {
  if (bytes_.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0 ||
      bytes_[EI_CLASS] != ELFCLASS64 || bytes_[EI_DATA] != ELFDATA2LSB) {
    throw Failure(name_ + ": not a 64-bit little-endian library");
  }
  elf_version(EV_CURRENT);
  const ElfImage elf(elf_memory(bytes_.data(), bytes_.size()));
  if (elf == nullptr) throw Failure(name_ + ": " + elf_errmsg(-1));
  if (elf_kind(elf.get()) != ELF_K_ELF)
    throw Failure(name_ + ": not an ELF file of the known version");
  const std::vector<Section> sections = sections_of(elf.get(), bytes_of(bytes_));
  for (const Section& section : sections) sections_.emplace(section.name, section.bytes);
  if (const auto notes = sections_.find(".note.gnu.build-id"); notes != sections_.end())
    build_id_ = build_id_in(notes->second);
  type_names_ = names_in(sections);
}

Bytes LibraryFile::section(std::string_view name) const {
  const auto found = sections_.find(name);
  if (found == sections_.end()) throw Failure(name_ + ": no section " + std::string(name));
  return found->second;
}

std::vector<Bytes> LibraryFile::sections_named(std::string_view prefix) const {
  std::vector<Bytes> named;
  for (auto at = sections_.lower_bound(prefix);
       at != sections_.end() && at->first.starts_with(prefix); ++at)
    named.push_back(at->second);
  return named;
}

}  // namespace wayfind
