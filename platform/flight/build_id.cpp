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

bool covers(const dl_phdr_info &info, uintptr_t address) {
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const ElfW(Phdr) &segment = info.dlpi_phdr[i];
        const uintptr_t start = info.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD && address >= start && address - start < segment.p_memsz) {
            return true;
        }
    }
    return false;
}

void read_notes(const uint8_t *notes, size_t length, std::vector<uint8_t> &build_id) {
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
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 && std::memcmp(notes + name, "GNU", 4) == 0) {
            build_id.assign(notes + description, notes + description + note.n_descsz);
            return;
        }
        notes += next;
        length -= next;
    }
}

int examine(dl_phdr_info *info, size_t, void *data) {
    auto &search = *static_cast<Search *>(data);
    if (!covers(*info, search.address)) {
        return 0;
    }
    search.found.base = reinterpret_cast<const void *>(info->dlpi_addr);
    search.found.path = info->dlpi_name;
    for (int i = 0; i < info->dlpi_phnum && search.found.build_id.empty(); ++i) {
        const ElfW(Phdr) &segment = info->dlpi_phdr[i];
        if (segment.p_type == PT_NOTE) {
            read_notes(reinterpret_cast<const uint8_t *>(info->dlpi_addr + segment.p_vaddr), segment.p_memsz,
                       search.found.build_id);
        }
    }
    return 1;
}

}  // namespace

LoadedFile loaded_file_at(const void *address) {
    Search search{reinterpret_cast<uintptr_t>(address), {}};
    dl_iterate_phdr(examine, &search);
    return search.found;
}

}  // namespace flight
