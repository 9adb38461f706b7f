"""Reads what the tests of the built file look at: sections, segments, dynamic entries, symbols and relative relocations. 64-bit little-endian."""
import struct

ALLOC, WRITE, EXECUTE = 2, 1, 4
RELATIVE, ABSOLUTE = 8, 1  # relocations


class Section:
    def __init__(self, data, header):
        name, self.kind, self.flags, self.address, self.offset, self.size, self.link, _, self.align, self.entry = header
        self.name_offset = name
        self.data = b"" if self.kind == 8 else data[self.offset:self.offset + self.size]


def text_at(data, offset):
    return data[offset:data.index(b"\0", offset)].decode()


class File:
    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        assert data[:6] == b"\x7fELF\x02\x01", path
        self.data = data
        phoff, shoff = struct.unpack_from("<QQ", data, 32)
        phentsize, phnum, shentsize, shnum, shstrndx = struct.unpack_from("<HHHHH", data, 54)
        self.segments = [struct.unpack_from("<IIQQQQQQ", data, phoff + i * phentsize) for i in range(phnum)]
        sections = [Section(data, struct.unpack_from("<IIQQQQIIQQ", data, shoff + i * shentsize)) for i in range(shnum)]
        for section in sections:
            section.name = text_at(sections[shstrndx].data, section.name_offset)
        self.list = sections
        self.sections = {section.name: section for section in sections}

    def dynamic(self):
        strings = self.sections[".dynstr"].data
        entries = []
        for tag, value in struct.iter_unpack("<qQ", self.sections[".dynamic"].data):
            if tag == 0:
                break
            entries.append((tag, text_at(strings, value) if tag in (1, 14) else value))
        return entries

    def symbols(self, table=".dynsym"):
        """(name, binding, type, section index, value, size); a missing table has none."""
        if table not in self.sections:
            return
        section = self.sections[table]
        strings = self.list[section.link].data
        for name, info, _, index, value, size in struct.iter_unpack("<IBBHQQ", section.data[24:]):
            yield text_at(strings, name), info >> 4, info & 15, index, value, size

    def address_of(self, name):
        return next(value for symbol, _, _, index, value, _ in self.symbols() if symbol == name and index)

    def at(self, address, size):
        """Bytes of the image before relocation; what the file does not hold is zero."""
        for section in self.list:
            if section.flags & ALLOC and section.address <= address and address + size <= section.address + section.size:
                start = address - section.address
                return section.data[start:start + size] or bytes(size)
        raise AssertionError(f"no section holds {address:#x}")

    def pointers(self):
        """Where the loader stores an address of this file, and which."""
        symbols = list(self.symbols())
        found = {}
        for place, info, addend in struct.iter_unpack("<QQq", self.sections[".rela.dyn"].data):
            if info & 0xFFFFFFFF == RELATIVE:
                found[place] = addend
            elif info & 0xFFFFFFFF == ABSOLUTE:
                found[place] = symbols[(info >> 32) - 1][4] + addend
        return found

    def loaded(self, section):
        return any(kind == 1 and offset < section.offset + section.size and section.offset < offset + size
                   for kind, _, offset, _, _, size, _, _ in self.segments)
