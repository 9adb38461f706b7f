"""Runs the offline subcommands of wayfind, on files made by hand."""
import bz2
import os
import pathlib
import resource
import struct
import subprocess
import tempfile
import unittest

from subject import LIBRARY, built, types

COMMAND = os.environ["WAYFIND_COMMAND"]
SECTIONS = [bytes.fromhex(name) for name in ("d8386ffc9b58056dfed00107189c605a", "865a9f4b483b8238b89d4ae9c97bf0ff",
                                             "9e8b28a9eb796d25a381ca4855746a0f")]
PRINTING = 18 * 14 + 30  # index of a text with one %s in the last section: the first message's, behind all bundles
CHAN_ST = "fwe_cl_wayfind_chan_st"


def run(*arguments, output=subprocess.PIPE, before=None):
    return subprocess.run([COMMAND, *map(str, arguments)], stdout=output, stderr=subprocess.PIPE, text=True, preexec_fn=before)


def bounded(what, amount):
    """For a command that would otherwise take all there is, of RLIMIT_CPU in seconds or RLIMIT_AS in bytes."""
    return lambda: resource.setrlimit(what, (amount, amount))


def record(kind, body):
    checksum = 0x811C9DC5
    for byte in body:
        checksum = (checksum ^ byte) * 0x01000193 & 0xFFFFFFFF
    return struct.pack("<IHBBI", 0x54464C46, len(body), kind, 0, checksum) + body


class Pointer(int):
    pass


def argument(value):
    if isinstance(value, bytes):
        return bytes([1, len(value)]) + value
    return struct.pack("<BQ", 5, value) if isinstance(value, Pointer) else struct.pack("<BI", 4, value)


def trace(index, *arguments, section=2, file=0):
    body = struct.pack("<QIHHII", 1_000_000_000, 77, file, 1, 0x7000000, index) + SECTIONS[section] + bytes([len(arguments)])
    return record(3, body + b"".join(map(argument, arguments)))


def traced_file(number, own, path):
    return record(1, struct.pack("<HB", number, len(own)) + own + path)


def build_id():
    notes = built.sections[".note.gnu.build-id"].data
    return notes[16:16 + struct.unpack_from("<I", notes, 4)[0]]


def trace_file(*records, own=None):
    own = own or build_id()
    head = b"FLIGHT1\n" + bytes([len(own)]) + own
    return head + record(2, struct.pack("<H", 1) + b"the module") + traced_file(0, own, b"/lib") + b"".join(records)


NULL, DATA, STRINGS, NOTE, SYMBOLS = 0, 1, 3, 7, 11  # types of sections
CONTENT_AT = 64


def section_header(name_at, kind, place, size, link=0, address=0):
    """place counts from the begin of the content."""
    return struct.pack("<IIQQQQIIQQ", name_at, kind, 2, address, CONTENT_AT + place, size, link, 0, 1, 0)


def elf_file(content, headers):
    """Content and section headers: the null section's is made here, number 1 names the sections. From 0xff00 on the null section counts them."""
    count = 1 + len(headers)
    head = struct.pack("<HHIQQQIHHHHHH", 3, 62, 1, 0, 0, CONTENT_AT + len(content), 0, 64, 0, 0, 64, count if count < 0xFF00 else 0, 1)
    null = bytes(32) + struct.pack("<Q", count if count >= 0xFF00 else 0) + bytes(24)
    return b"\x7fELF\2\1\1" + bytes(9) + head + content + null + b"".join(headers)


def made_library(*sections):
    """A library of these sections alone: name, type, content, and where they differ from 0 the section linked to, of which they count from 2 on,
    and the address. Equal contents stand in the file once."""
    content, places = bytearray(), {}

    def header(name_at, kind, data, link=0, address=0):
        if data not in places:
            places[data] = len(content)
            content.extend(data + bytes(-len(data) % 8))
        return section_header(name_at, kind, places[data], len(data), link, address)

    headers = [header(0, STRINGS, b"".join(b"\0" + name.encode() for name, *_ in sections) + b"\0")]
    name_at = 1
    for name, *rest in sections:
        headers.append(header(name_at, *rest))
        name_at += len(name) + 1
    return elf_file(bytes(content), headers)


def trace_index(number, *entries):
    """An index section: its entries are patterns of arguments by number, with the length of the text."""
    return struct.pack("<HH", 1, number) + SECTIONS[2] + b"".join(struct.pack("<IH", pattern << 16, length) for pattern, length in entries)


def traced_library(text):
    """A library with one trace, which takes a text."""
    return made_library((".flight_luids_0", DATA, trace_index(0, (0, len(text)))), (".flight_format_strings", DATA, bz2.compress(text)))


def line_of(name):
    """The type's line in the digest."""
    luid = next(t for t in types if t.name == name).luid.encode()
    at = built.data.index(b"\n" + luid + b":") + 1
    return built.data[at:built.data.index(b"\n", at)]


class Offline(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def file(self, content):
        path = pathlib.Path(self.folder.name) / "file"
        path.write_bytes(content)
        return path

    def decode(self, content, *options):
        return run("trace", "decode", LIBRARY, self.file(content), *options)

    def assert_refused(self, done, reason):
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", f"wayfind: {self.folder.name}/file: {reason}\n", 1))
