"""The offline subcommands of wayfind on files made to harm whoever reads them."""
import bz2
import os
import pathlib
import resource
import struct
import unittest

from offline import (CHAN_ST, DATA, NOTE, PRINTING, STRINGS, SYMBOLS, Offline, bounded, elf_file, line_of, made_library, record, run,
                     section_header, trace, trace_file, trace_index, traced_library)
from subject import LIBRARY, SANITIZED, built

HALF_A_MINUTE = bounded(resource.RLIMIT_CPU, 30)


class Texts(Offline):

    STEERING = b"\x1b[2J\x9b\xc2\x9b\n\x7f"
    SHOWN = "\\x1b[2J\\x9b\\xc2\\x9b\\x0a\\x7f"

    def test_texts_of_traces_cannot_steer_the_terminal(self):
        library = self.file(traced_library(self.STEERING + "ä".encode()))
        self.assertEqual(run("trace", "texts", library).stdout, f"0\t0\t1\t{self.SHOWN}ä\n")

    def test_decoded_traces_cannot_steer_the_terminal(self):
        traces = pathlib.Path(self.folder.name) / "traces"
        traces.write_bytes(trace_file(record(2, struct.pack("<H", 1) + b"module" + self.STEERING), trace(0, self.STEERING)))
        decode = ("trace", "decode", self.file(traced_library(b" text" + self.STEERING + b"%s")), traces, "--force")
        self.assertEqual(run(*decode).stdout, f"1970-01-01T00:00:01.000000000Z 77 module{self.SHOWN} debug text{self.SHOWN}{self.SHOWN}\n")
        self.assertRegex(run(*decode, "--json").stdout, r"\A[ -~]+\n\Z")

    def test_manifests_cannot_steer_the_terminal(self):
        steering = built.data
        for of, to in ((b"# fwe_ui_wayfind.digest", b"# fwe_ui_\x1b[2Jind.digest"), (b"built by: wayfind", b"built by: \x1b[2Jind"),
                       (CHAN_ST.encode() + b"\0", CHAN_ST[:-4].encode() + b"\x1b[2J\0")):
            self.assertIn(of, steering)
            steering = steering.replace(of, to)
        library = self.file(steering)
        shown = run("manifest", library).stdout
        self.assertRegex(shown, r"\A[ -~\n]+\Z")
        for text in ("module fwe_ui_\\x1b[2Jind, ", f" {CHAN_ST[:-4]}\\x1b[2J\n", "\nbuilt by: \\x1b[2Jind\n"):
            self.assertIn(text, shown)
        self.assertIn("the manifest of fwe_ui_\\x1b[2Jind, not of", run("manifest", "diff", LIBRARY, library).stderr)
        less = pathlib.Path(self.folder.name) / "less"
        less.write_bytes(steering.replace(line_of(CHAN_ST), line_of(CHAN_ST).replace(b"type003", b"type002")))
        self.assertIn(f"type {CHAN_ST[:-4]}\\x1b[2J: variants lost", run("manifest", "diff", library, less).stdout)


def descriptor(luid, name):
    return struct.pack("<I16s33s64s64s64s3xiIQII", 0xBEEFF00D, bytes.fromhex(luid), luid.encode(), name, b"", b"type", -1, 0, 0, 0, 0)


def manifest(*luids):
    digest = b"# small.digest\n" + b"".join(f"{luid}:{luid}type000:00008N\n".encode() for luid in luids) + b"\0"
    return struct.pack("<II", len(digest), 2) + digest


class Names(Offline):
    """Of types, found by the symbols of their descriptors."""

    LUID = "0123456789abcdef" * 2

    def library(self, places, *loaded):
        """With symbols at these addresses."""
        symbols = b"".join(struct.pack("<IBBHQQ", 1, 0x11, 0, 1, place, 272) for place in places)
        return self.file(made_library((".dynstr", STRINGS, b"\0_type_info_internal\0"), (".dynsym", SYMBOLS, symbols, 2),
                                      (".manifest", DATA, manifest(self.LUID)), *loaded))

    def assert_named(self, name, library):
        done = run("manifest", library, before=HALF_A_MINUTE)
        told = f"module small, 1 definitions\n{self.LUID} type 0     8 {self.LUID} {name}\n"
        self.assertEqual((done.stdout, done.stderr, done.returncode), (told, "", 0))

    def test_are_found_behind_many_sections(self):
        first, size, many = 1 << 32, 16, 65000
        behind = first + many * size
        fillers = [("", DATA, bytes(size), 0, first + i * size) for i in range(many)]
        found = ("", DATA, descriptor(self.LUID, b"behind"), 0, behind)
        # A walk over all sections for each symbol would take minutes.
        self.assert_named("behind", self.library([behind] * 1000000, *fillers, found))

    def test_are_found_in_the_section_that_begins_last(self):
        image = descriptor(self.LUID, b"inside")
        around = ("", DATA, bytes(0x20) + image + bytes(0x20), 0, 0x1000)
        self.assert_named("inside", self.library([0x1020], around))
        self.assert_named("inside", self.library([0x1020], around, ("", DATA, bytes(1), 0, 0x1021)))
        self.assert_named(self.LUID, self.library([0x1020], around, ("", DATA, bytes(1), 0, 0x1020)))
        self.assert_named(self.LUID, self.library([0xFFF, 0x1041, 2**64 - 1], around))


class Cost(Offline):
    """A small file takes neither minutes nor gigabytes."""

    def test_many_tables_of_names_cost_no_more_than_one(self):
        names = b"\0_type_info_internal\0"
        symbols = struct.pack("<IBBHQQ", 1, 0x11, 0, 1, 0x7FFFFFFFFFFF, 272) * 4000
        library = self.file(made_library((".dynstr", STRINGS, names), *[(".dynsym", SYMBOLS, symbols, 2)] * 3500))
        done = run("manifest", library, before=HALF_A_MINUTE)  # reading each of them would take minutes
        self.assert_refused(done, "no section .manifest")

    def test_many_notes_over_the_same_bytes_cost_no_more_than_one(self):
        notes = bytes(12) * 500000  # as many without name and content
        library = self.file(made_library(*[(".note", NOTE, notes)] * 60000))
        self.assert_refused(run("manifest", library, before=HALF_A_MINUTE), "no section .manifest")

    def test_many_trace_sections_cost_no_trace_a_walk(self):
        nobodys = struct.pack("<HH", 1, 0) + bytes(16)
        many = [(f".flight_luids_{n}", DATA, nobodys) for n in range(50000)]
        library = self.file(made_library(*many, (".flight_format_strings", DATA, bz2.compress(b""))))
        traces = library.with_name("traces")
        traces.write_bytes(trace_file(trace(PRINTING) * 200000))
        done = run("trace", "decode", library, traces, "--force", before=HALF_A_MINUTE)
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "200000 traces of other libraries skipped\n", 0))

    def test_a_text_longer_than_any_library_has_is_refused(self):
        for size, is_refused in ((4096, False), (4097, True)):
            library = self.file(traced_library(b"x" * size))
            done = run("trace", "texts", library)
            if is_refused:
                self.assert_refused(done, f"a trace entry claims a text of {size} bytes")
            else:
                self.assertEqual((done.stderr, done.returncode), ("", 0))

    @unittest.skipIf(SANITIZED, "a sanitizer takes terabytes of addresses itself")
    def test_names_of_sections_that_overlap_are_not_copied(self):
        many = 1000000
        names = b"".join(b"%07d." % i for i in range(many))  # each begins one, all behind it belongs to it as well
        headers = [section_header(0, STRINGS, 0, len(names))]
        headers += [section_header(8 * i, DATA, 0, 0) for i in range(many)]
        done = run("manifest", self.file(elf_file(names, headers)), before=bounded(resource.RLIMIT_AS, 1 << 30))
        self.assert_refused(done, "no section .manifest")

    def test_more_trace_entries_than_any_library_has_are_refused(self):
        entry = (1, 0)
        most = [(f".flight_luids_{n}", DATA, trace_index(0, *[entry] * 1024)) for n in range(1024)]
        one_more = (".flight_luids_more", DATA, trace_index(1, entry))
        texts = (".flight_format_strings", DATA, b"")
        self.assert_refused(run("trace", "texts", self.file(made_library(*most, texts))), "the packed trace texts are damaged")
        self.assert_refused(run("trace", "texts", self.file(made_library(*most, one_more, texts))),
                            "the trace sections claim more than 1048576 entries")

    def decoded(self, *records):
        done = self.decode(trace_file(*records))
        return [line.split()[-1] for line in done.stdout.splitlines()], done.stderr

    def test_no_byte_is_added_up_for_more_than_sixteen_wrong_records(self):
        head = struct.pack("<4sHBB", b"FLFT", 4353, 3, 0)  # the next one is its checksum
        good, covered, damaged = trace(PRINTING, b"good"), trace(PRINTING, b"covered"), "1 damaged records skipped\n"
        self.assertEqual(self.decoded(good, head * 16, covered, bytes(4353), good), (["good", "good"], damaged))
        self.assertEqual(self.decoded(good, head * 15, good, bytes(4353), good), (["good"] * 3, damaged.replace("1", "2")))
        self.assertEqual(self.decoded(good, head * 100000, bytes(4353), good), (["good", "good"], damaged))

    def test_a_record_is_found_behind_torn_ones_that_reach_over_it(self):
        torn, good = trace(PRINTING, bytes(255))[:20], trace(PRINTING, b"good")
        self.assertEqual(self.decoded(*[torn] * 12, good, *[torn] * 12, good, bytes(300), good),
                         (["good"] * 3, "3 damaged records skipped\n"))

    @unittest.skipIf(SANITIZED, "a sanitizer takes terabytes of addresses itself")
    def test_a_comparison_that_memory_does_not_suffice_for_has_no_answer(self):
        large = self.file(b"")
        os.truncate(large, 400 << 20)
        for files in ((LIBRARY, large), (large, LIBRARY)):
            done = run("manifest", "diff", *files, before=bounded(resource.RLIMIT_AS, 300 << 20))
            self.assertEqual((done.stdout, done.returncode), ("", 2))
            self.assertEqual(done.stderr, "wayfind: out of memory; give it less to do, or more memory\n")


class Heads(Offline):
    def test_an_unknown_version_of_the_file_format_is_refused_in_words(self):
        library = bytearray(built.data)
        library[6] = 0
        self.assert_refused(run("manifest", self.file(library)), "not an ELF file of the known version")


if __name__ == "__main__":
    unittest.main()
