#include "build_id.h"

#include <elf.h>
#include <link.h>

#include <cstring>

namespace flight {
namespace {

struct Search {
  uintptr_t address;
  LoadedFile found;
};

// The start of the file in memory if the address lies in one of its segments, else 0.
uintptr_t start_of(const dl_phdr_info& info, uintptr_t address) {
  uintptr_t first = 0;
  bool covers = false;
  for (int i = 0; i < info.dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info.dlpi_phdr[i];
    const uintptr_t start = info.dlpi_addr + segment.p_vaddr;
    if (segment.p_type != PT_LOAD) {
      continue;
    }
    first = first != 0 ? first : start;  // segments stand in ascending order
    covers = covers || (address >= start && address - start < segment.p_memsz);
  }
  return covers ? first : 0;
}

void read_notes(const uint8_t* notes, size_t length, std::vector<uint8_t>& build_id) {
  constexpr auto padded = [](size_t n) { return (n + 3) & ~size_t{3}; };
  while (length >= sizeof(ElfW(Nhdr))) {
    ElfW(Nhdr) note;
    std::memcpy(&note, notes, sizeof note);
    const size_t name = sizeof note;
    const size_t description = name + padded(note.n_namesz);
    const size_t next = description + padded(note.n_descsz);
    if (next > length) {
      return;
    }
    if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 &&
        std::memcmp(notes + name, "GNU", 4) == 0) {
      build_id.assign(notes + description, notes + description + note.n_descsz);
      return;
    }
    notes += next;
    length -= next;
  }
}

int examine(dl_phdr_info* info, size_t, void* data) {
  auto& search = *static_cast<Search*>(data);
  const uintptr_t start = start_of(*info, search.address);
  if (start == 0) {
    return 0;
  }
  search.found.base = reinterpret_cast<const void*>(start);
  search.found.path = info->dlpi_name;
  for (int i = 0; i < info->dlpi_phnum && search.found.build_id.empty(); ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    if (segment.p_type == PT_NOTE) {
      read_notes(reinterpret_cast<const uint8_t*>(info->dlpi_addr + segment.p_vaddr),
                 segment.p_memsz, search.found.build_id);
    }
  }
  return 1;
}

}  // namespace

LoadedFile loaded_file_at(const void* address) {
  Search search{reinterpret_cast<uintptr_t>(address), {}};
  dl_iterate_phdr(examine, &search);
  return search.found;
}

}  // namespace flight
