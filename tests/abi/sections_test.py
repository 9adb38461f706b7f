"""The sections for offline tools, in the built file and in a copy after strip."""
import bz2
import collections
import functools
import re
import struct
import unittest

from elf import ALLOC, EXECUTE, WRITE
from subject import HERE, built, facts, rows, stripped, types

INDEX = [(traces.luid, traces.entries) for traces in facts().traces]
PATTERNS = ["1", "0", "44", "444", "51", "15", "111", "11", "4"]
DIGITS = {"s": "1", "d": "4", "u": "4", "p": "5"}
DECODER = ("01 03 04 01 01 03 04 04 04 04 04 04 04 05 04 01 04 04 01 05 07 04 01 04 01 04 01 05 04 01 04 01 02 04")


def pattern_of(text):
    return "".join(DIGITS[letter] for letter in re.findall("%([sdup])", text)) or "0"


def form_of(text):
    """The text with names put back in the places where each entry has its own."""
    text = re.sub(r"(?<=value for )fwe_\w+", "{record}", text)
    text = re.sub(r"(?<=detached )fwe_\w+", "{record}", text)
    text = re.sub(r"detached {record} value for {record}", "detached {record} value for {message}", text)
    text = re.sub(r"fwe_\w+(?= message)|(?<=fwe_ui_wayfind_)fwe_\w+(?=_message)|(?<=for message )fwe_\w+", "{message}", text)
    text = re.sub(r"(?<=when printing )fwe_\w+|(?<=rendering XML for )fwe_\w+|(?<=when rendering )fwe_\w+", "{message}", text)
    return re.sub(r"\bfwe_(cl|dp|pal)_\w+", "{type}", text)


def section(file, name):
    assert name in file.sections, f"no section {name}"
    return file.sections[name]


def texts(file):
    try:
        return bz2.decompress(section(file, ".flight_format_strings").data).decode()
    except (OSError, ValueError) as error:
        raise AssertionError(f"the packed texts are damaged: {error}") from error


def entries_of(file):
    """(pattern, text) of every entry, section by section."""
    stream = texts(file)
    place = 0
    for luid, _ in INDEX:
        data = section(file, ".flight_luids_" + luid).data
        assert len(data) % 6 == 2, f"{len(data)} bytes are no head and entries"
        for identity, length in struct.iter_unpack("<IH", data[20:]):
            assert identity >> 16 < len(PATTERNS), f"pattern {identity >> 16} of {len(PATTERNS)}"
            yield PATTERNS[identity >> 16], stream[place:place + length]
            place += length
    assert place == len(stream), f"entries take {place} of {len(stream)} characters"


FILES = {"built": built, "stripped": stripped()}


def for_each_file(test):
    """Runs the test on every file, so that each one that fails is a failure of its own."""
    @functools.wraps(test)
    def run(self):
        for name, file in FILES.items():
            with self.subTest(name):
                test(self, file)
    return run


class Sections(unittest.TestCase):
    @for_each_file
    def test_the_lower_half_of_each_message_id_is_its_index(self, file):
        for luid, entries in INDEX:
            data = section(file, ".flight_luids_" + luid).data
            ids = [identity & 0xFFFF for identity, _ in struct.iter_unpack("<IH", data[20:])]
            self.assertEqual(ids, [index & 0xFFFF for index in range(entries)])

    def test_strip_takes_the_symbol_table(self):
        self.assertNotIn(".symtab", FILES["stripped"].sections)

    @for_each_file
    def test_index_sections_are_loaded_read_only_data_with_their_head_and_entries(self, file):
        self.assertEqual([n for n in file.sections if n.startswith(".flight_luids_")], [".flight_luids_" + luid for luid, _ in INDEX])
        for number, (luid, entries) in enumerate(INDEX):
            index = section(file, ".flight_luids_" + luid)
            self.assertEqual(index.kind, 1)
            self.assertEqual(index.flags & (ALLOC | WRITE | EXECUTE), ALLOC)
            self.assertTrue(file.loaded(index))
            self.assertEqual(index.size, 20 + 6 * entries)
            self.assertEqual(index.data[:20], struct.pack("<HH", 1, number) + bytes.fromhex(luid))

    @for_each_file
    def test_texts_decoder_and_manifest_are_not_loaded(self, file):
        for name, size in ((".flight_format_strings", 4101), (".flight_decoder", 34), (".manifest", 8000)):
            held = section(file, name)
            self.assertEqual((held.kind, held.flags, held.address, held.size), (1, 0, 0, size), name)
            self.assertFalse(file.loaded(held), name)

    @for_each_file
    def test_texts_are_packed_to_the_told_bytes(self, file):
        packed = section(file, ".flight_format_strings").data
        self.assertEqual(packed[:4], b"BZh9")
        self.assertEqual(len(texts(file)), 214548)
        self.assertEqual(texts(file), bz2.decompress((HERE / "trace_texts.bz2").read_bytes()).decode())
        self.assertEqual(packed, (HERE / "trace_texts.bz2").read_bytes())

    @for_each_file
    def test_each_form_has_its_number_of_entries(self, file):
        told = {text: int(entries) for entries, _, _, text in rows("trace_forms.tsv")}
        self.assertEqual((len(told), sum(told.values())), (58, 5656))
        self.assertEqual(dict(collections.Counter(form_of(text[1:]) for _, text in entries_of(file))), told)

    @for_each_file
    def test_each_entry_has_the_pattern_of_its_conversions_and_begins_with_a_blank(self, file):
        told = {text: pattern for _, pattern, _, text in rows("trace_forms.tsv")}
        for pattern, text in entries_of(file):
            self.assertEqual(text[:1], " ")
            self.assertEqual(pattern, pattern_of(text))
            self.assertEqual(pattern, told.get(form_of(text[1:]), text))

    @for_each_file
    def test_decoder_section(self, file):
        self.assertEqual(section(file, ".flight_decoder").data, bytes.fromhex(DECODER))

    @for_each_file
    def test_manifest_is_a_digest_and_a_build_record(self, file):
        words = {"type": "type", "enum": "enum", "flag": "flag", "message": "mess"}

        def line(t):
            size = 0 if t.kind == "message" else (t.variants[-1][0] + 7) // 8 * 8
            return f"{t.luid}:{t.definition}{words[t.kind]}{len(t.variants) - 1:03}:{size:05}N\n"
        lines = [line(t) for t in sorted((t for t in types if t.kind != "message"), key=lambda t: t.name)]
        lines += [line(t) for t in sorted((t for t in types if t.kind == "message"), key=lambda t: t.luid)]
        digest = ("# fwe_ui_wayfind.digest\n" + "".join(lines)).encode() + b"\0"
        self.assertEqual((len(lines), len(digest)), (96, 7705))
        data = section(file, ".manifest").data
        self.assertEqual(data[:8 + 7705 + 3], struct.pack("<II", 7705, 2) + digest + bytes(3))
        self.assertEqual(data[7716:7724], struct.pack("<II", 276, 1))
        self.assertTrue(data[7724:8000].isascii())
        self.assertRegex(data[7724:8000].decode(), r"\Afwe_ui_wayfind\npkg_id: 0{40}\nbuilt by: .+\non host: .+\npid: .+\nat: .+\n"
                                                   r"comment: .*\n\0\Z")


if __name__ == "__main__":
    unittest.main()
