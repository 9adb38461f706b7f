#include "fuzz/small_library.h"

#include <bzlib.h>
#include <elf.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "ork/handle.h"

namespace fuzz {
namespace {

template <class Image>
std::string bytes_of(const Image& image) {
  return {reinterpret_cast<const char*>(&image), sizeof image};
}

// An ELF file under construction: sections in the order in which they are added, from number 1 on.
class Elf {
 public:
  void add(std::string_view name, uint32_t type, uint64_t address, const std::string& content,
           uint32_t link = 0) {
    Elf64_Shdr header{};
    header.sh_name = static_cast<uint32_t>(names_.size());
    header.sh_type = type;
    header.sh_flags = address != 0 ? uint64_t{SHF_ALLOC} : 0;
    header.sh_addr = address;
    header.sh_offset = sizeof(Elf64_Ehdr) + content_.size();
    header.sh_size = content.size();
    header.sh_link = link;
    header.sh_addralign = 1;
    names_.append(name) += '\0';
    content_ += content;
    headers_ += bytes_of(header);
    ++count_;
  }

  // To be called once: the section of names comes last.
  std::string file() {
    const std::string_view own = ".shstrtab";
    add(own, SHT_STRTAB, 0, names_ + std::string(own) + '\0');
    Elf64_Ehdr head{};
    std::memcpy(head.e_ident, ELFMAG, SELFMAG);
    head.e_ident[EI_CLASS] = ELFCLASS64;
    head.e_ident[EI_DATA] = ELFDATA2LSB;
    head.e_ident[EI_VERSION] = EV_CURRENT;
    head.e_type = ET_DYN;
    head.e_machine = EM_X86_64;
    head.e_version = EV_CURRENT;
    head.e_shoff = sizeof head + content_.size();
    head.e_ehsize = sizeof head;
    head.e_shentsize = sizeof(Elf64_Shdr);
    head.e_shnum = count_;
    head.e_shstrndx = static_cast<uint16_t>(count_ - 1);
    return bytes_of(head) + content_ + headers_;
  }

 private:
  std::string names_ = std::string(1, '\0');
  std::string content_;
  std::string headers_ = bytes_of(Elf64_Shdr{});
  uint16_t count_ = 1;
};

constexpr std::string_view luid_text = "00112233445566778899aabbccddeeff";
constexpr uint64_t descriptor_at = 0x1000;

std::string descriptor() {
  ork_type_info info{};
  info.magic = ORK_TYPE_INFO_MAGIC;
  luid_text.copy(info.luid_text, luid_text.size());
  std::string_view("small_type").copy(info.name, sizeof info.name);
  return bytes_of(info);
}

std::string symbols() {
  Elf64_Sym symbol{};
  symbol.st_name = 1;
  symbol.st_info = ELF64_ST_INFO(STB_GLOBAL, STT_OBJECT);
  symbol.st_shndx = 1;
  symbol.st_value = descriptor_at;
  symbol.st_size = sizeof(ork_type_info);
  return bytes_of(Elf64_Sym{}) + bytes_of(symbol);
}

std::string note() {
  return bytes_of(Elf64_Nhdr{sizeof "GNU", 4, NT_GNU_BUILD_ID}) + "GNU" + '\0' + "\x01\x23\x45\x67";
}

constexpr std::string_view texts[] = {" %s", " %d %u"};

// Version, number and id of the section, then the pattern of arguments and the length of each text.
std::string index() {
  std::string section = bytes_of(uint16_t{1}) + bytes_of(uint16_t{0}) + "section of small";
  for (const uint16_t pattern : {uint16_t{0}, uint16_t{2}}) {
    section += bytes_of(uint16_t{0}) + bytes_of(pattern) +
               bytes_of(static_cast<uint16_t>(texts[pattern / 2].size()));
  }
  return section;
}

std::string packed_texts() {
  std::string all;
  for (const std::string_view text : texts) all += text;
  std::string packed(all.size() + 600, '\0');
  auto size = static_cast<unsigned>(packed.size());
  if (BZ2_bzBuffToBuffCompress(packed.data(), &size, all.data(), static_cast<unsigned>(all.size()),
                               9, 0, 0) != BZ_OK)
    std::abort();
  packed.resize(size);
  return packed;
}

// Padded to four bytes.
std::string manifest_entry(uint32_t kind, std::string payload) {
  payload += '\0';
  const auto size = static_cast<uint32_t>(payload.size());
  payload.resize((payload.size() + 3) & ~size_t{3});
  return bytes_of(size) + bytes_of(kind) + payload;
}

std::string manifest() {
  const std::string luid(luid_text);
  return manifest_entry(2, "# small.digest\n" + luid + ":" + luid + "type000:00008N\n") +
         manifest_entry(1, "small\nat: 2026-11-21\n");
}

}  // namespace

std::string small_library() {
  Elf elf;
  elf.add(".rodata", SHT_PROGBITS, descriptor_at, descriptor());
  elf.add(".dynstr", SHT_STRTAB, 0x2000,
          std::string(1, '\0') + "_small_type_type_info_internal" + '\0');
  elf.add(".dynsym", SHT_DYNSYM, 0x3000, symbols(), 2);
  elf.add(".note.gnu.build-id", SHT_NOTE, 0x4000, note());
  elf.add(".flight_luids_small", SHT_PROGBITS, 0x5000, index());
  elf.add(".flight_format_strings", SHT_PROGBITS, 0, packed_texts());
  elf.add(".manifest", SHT_PROGBITS, 0, manifest());
  return elf.file();
}

}  // namespace fuzz
