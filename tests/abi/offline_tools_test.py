"""The offline subcommands of wayfind, on the built file, on changed copies of it and on trace files made by hand."""
import bz2
import json
import os
import pathlib
import resource
import struct
import subprocess
import tempfile
import unittest

from subject import LIBRARY, built, types

COMMAND = os.environ["WAYFIND_COMMAND"]
SECTION = bytes.fromhex("9e8b28a9eb796d25a381ca4855746a0f")
PRINTING = 18 * 14 + 30  # index of a text with one %s: the first message's, behind all bundles


def run(*arguments, output=subprocess.PIPE, before=None):
    return subprocess.run([COMMAND, *map(str, arguments)], stdout=output, stderr=subprocess.PIPE, text=True, preexec_fn=before)


def record(kind, body):
    checksum = 0x811C9DC5
    for byte in body:
        checksum = (checksum ^ byte) * 0x01000193 & 0xFFFFFFFF
    return struct.pack("<IHBBI", 0x54464C46, len(body), kind, 0, checksum) + body


def trace(index, *texts):
    body = struct.pack("<QIHHII", 1_000_000_000, 77, 0, 1, 0x7000000, index) + SECTION + bytes([len(texts)])
    return record(3, body + b"".join(bytes([1, len(text)]) + text for text in texts))


def build_id():
    notes = built.sections[".note.gnu.build-id"].data
    return notes[16:16 + struct.unpack_from("<I", notes, 4)[0]]


def trace_file(*records, own=None):
    own = own or build_id()
    head = b"FLIGHT1\n" + bytes([len(own)]) + own
    return head + record(2, struct.pack("<H", 1) + b"the module") + record(1, struct.pack("<HB", 0, len(own)) + own + b"/lib") + b"".join(records)


def made_library(*sections):
    """A library of these sections alone: name, type, content, and the section linked to, of which they count from 2 on. Equal contents stand in
    the file once."""
    content, places = bytearray(), {}

    def header(name_at, kind, data, link):
        if data not in places:
            places[data] = 64 + len(content)
            content.extend(data + bytes(-len(data) % 8))
        return struct.pack("<IIQQQQIIQQ", name_at, kind, 2, 0, places[data], len(data), link, 0, 1, 0)

    headers = [bytes(64), header(0, 3, b"".join(b"\0" + name.encode() for name, *_ in sections) + b"\0", 0)]
    name_at = 1
    for name, *rest in sections:
        headers.append(header(name_at, *rest))
        name_at += len(name) + 1
    head = struct.pack("<HHIQQQIHHHHHH", 3, 62, 1, 0, 0, 64 + len(content), 0, 64, 0, 0, 64, len(headers), 1)
    return b"\x7fELF\2\1\1" + bytes(9) + head + content + b"".join(headers)


def trace_index(number, *entries):
    """An index section: its entries are patterns of arguments by number, with the length of the text."""
    return struct.pack("<HH", 1, number) + SECTION + b"".join(struct.pack("<IH", pattern << 16, length) for pattern, length in entries)


def traced_library(text):
    """A library with one trace, which takes a text."""
    return made_library((".flight_luids_0", 1, trace_index(0, (0, len(text))), 0), (".flight_format_strings", 1, bz2.compress(text), 0))


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


class Traces(Offline):
    def test_texts_are_all_listed(self):
        lines = run("trace", "texts", LIBRARY).stdout.splitlines()
        self.assertEqual(len(lines), 5656)
        self.assertEqual(lines[0], "0\t0\t1\t error in fwe_cl_wayfind_hop_chan_serv_st create: %s")

    def test_a_trace_becomes_a_line_of_words(self):
        done = self.decode(trace_file(trace(PRINTING, b"a reason")))
        self.assertEqual(done.stdout, "1970-01-01T00:00:01.000000000Z 77 the module debug "
                                      "Already have error when printing fwe_pal_wayfind_site_prefix_msg: a reason\n")
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    def test_json_has_an_object_on_a_line(self):
        line = json.loads(self.decode(trace_file(trace(PRINTING, b"\xff\x1b")), "--json").stdout)
        self.assertEqual((line["section"], line["index"], line["level"], line["thread"], line["module"]), (2, PRINTING, "debug", 77, "the module"))
        self.assertEqual(line["text"], "Already have error when printing fwe_pal_wayfind_site_prefix_msg: %s")
        self.assertEqual(len(line["arguments"]), 1)

    def test_arguments_cannot_steer_the_terminal(self):
        self.assertIn(": \\x1b[2J\n", self.decode(trace_file(trace(PRINTING, b"\x1b[2J"))).stdout)

    def test_a_missing_argument_shows_as_such(self):
        self.assertIn(": <?>\n", self.decode(trace_file(trace(PRINTING))).stdout)

    def test_a_damaged_record_is_skipped_and_counted(self):
        good = trace(PRINTING, b"good")
        for damage in (trace(PRINTING, b"bad!")[:-1] + b"?", good[:20], b"FLFT" + bytes(8), bytes(5), record(9, b""), record(3, b"short")):
            done = self.decode(trace_file(good, damage, good))
            self.assertEqual(done.stdout.count(": good\n"), 2, damage)
            self.assertEqual((done.stderr, done.returncode), ("1 damaged records skipped\n", 0))

    def test_another_build_is_refused_unless_forced(self):
        content = trace_file(trace(PRINTING, b"x"), own=bytes(20))
        refused = self.decode(content)
        self.assertEqual((refused.stdout, refused.returncode), ("", 1))
        self.assertIn("--force", refused.stderr)
        self.assertIn(": x\n", self.decode(content, "--force").stdout)

    def test_another_build_is_refused_without_a_whole_record_too(self):
        for rest in (b"", trace(PRINTING, b"x")[:-1]):
            content = b"FLIGHT1\n\x14" + bytes(20) + rest
            refused = self.decode(content)
            self.assertEqual((refused.stdout, refused.returncode), ("", 1))
            self.assertIn(f"are of build {bytes(20).hex()}, the library is build {build_id().hex()}; --force", refused.stderr)
            self.assertEqual(self.decode(content, "--force").returncode, 0)
        done = self.decode(b"FLIGHT1\n\x14" + build_id())
        self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))

    def test_traces_of_other_libraries_are_counted(self):
        done = self.decode(trace_file(trace(5000, b"x")))
        self.assertEqual((done.stdout, done.stderr), ("", "1 traces of other libraries skipped\n"))

    def test_what_is_no_trace_file_or_library_is_refused(self):
        self.assertEqual(self.decode(b"something else").returncode, 1)
        self.assertEqual(self.decode(b"").returncode, 0)
        self.assertEqual(run("trace", "texts", self.file(b"something else")).returncode, 1)
        self.assertEqual(run("trace", "texts", self.file(built.data[:100000])).returncode, 1)


CHAN_ST = "fwe_cl_wayfind_chan_st"
FINE, BROKEN = "compatible", "not compatible"


def line_of(name):
    """The type's line in the digest."""
    luid = next(t for t in types if t.name == name).luid.encode()
    at = built.data.index(b"\n" + luid + b":") + 1
    return built.data[at:built.data.index(b"\n", at)]


def without(line):
    """The file with a line of the digest taken out. The build record behind it is longer by as much, so that all else stays in its place."""
    section = built.sections[".manifest"].data
    digest_size, = struct.unpack_from("<I", section)
    record_at = 8 + (digest_size + 3 & ~3)
    record_size, = struct.unpack_from("<I", section, record_at)
    digest, padding, record = section[8:8 + digest_size], section[8 + digest_size:record_at], section[record_at + 8:][:record_size]
    taken = digest.replace(line + b"\n", b"")
    more = digest_size - len(taken)
    longer = struct.pack("<II", record_size + more, 1) + record[:-1] + b" " * more + record[-1:]
    changed = struct.pack("<II", len(taken), 2) + taken + padding + longer
    assert more == 80 and len(changed) == record_at + 8 + record_size
    return built.data.replace(section[:len(changed)], changed)


class Manifests(Offline):
    def changed(self, of, to):
        self.assertEqual((built.data.count(of), len(of)), (1, len(to)))
        return self.file(built.data.replace(of, to))

    def diff(self, name, of, to):
        """Of the build and one with another line for that type."""
        line = line_of(name)
        self.assertIn(of, line)
        return run("manifest", "diff", LIBRARY, self.changed(line, line.replace(of, to)))

    def assert_told(self, done, changes, new_sender, old_sender):
        told = [*changes, f"new sender, old reader: {new_sender}", f"old sender, new reader: {old_sender}"]
        self.assertEqual((done.stdout.splitlines(), done.stderr), (told, ""))
        self.assertEqual(done.returncode, 0 if {new_sender, old_sender} == {FINE} else 1)

    def test_every_definition_is_listed_with_its_name(self):
        lines = run("manifest", LIBRARY).stdout.splitlines()
        self.assertEqual({(line.split()[0], line.split()[-1]) for line in lines[1:97]}, {(t.luid, t.name) for t in types})

    def test_a_build_is_compatible_with_itself(self):
        self.assert_told(run("manifest", "diff", LIBRARY, LIBRARY), [], FINE, FINE)

    def test_more_variants_are_an_addition(self):
        self.assert_told(self.diff(CHAN_ST, b"type003:00392", b"type004:00400"),
                         [f"addition type {CHAN_ST}: more variants, 5 variants for 4 variants"], FINE, FINE)

    def test_fewer_bytes_in_more_variants_break_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b"type003:00392", b"type004:00391"),
                         [f"addition type {CHAN_ST}: more variants, 5 variants for 4 variants",
                          f"break    type {CHAN_ST}: fewer bytes in more variants"], BROKEN, BROKEN)

    def test_another_definition_at_the_same_variant_breaks_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b":dba0", b":dba1"),
                         [f"break    type {CHAN_ST}: another definition at the same variant"], BROKEN, BROKEN)

    def test_another_size_at_the_same_definition_breaks_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b":00392", b":00400"),
                         [f"break    type {CHAN_ST}: another size at the same definition"], BROKEN, BROKEN)

    def test_another_kind_breaks_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b"type003", b"flag003"), [f"break    type {CHAN_ST}: another kind, flag for type"], BROKEN, BROKEN)

    def test_lost_variants_break_the_old_sender(self):
        self.assert_told(self.diff(CHAN_ST, b"type003", b"type002"),
                         [f"break    type {CHAN_ST}: variants lost, 3 variants of 4 variants"], FINE, BROKEN)
        name = "fwe_cl_wayfind_chan_stats_st"
        self.assert_told(self.diff(name, b"type001", b"type000"), [f"break    type {name}: variants lost, 1 variant of 2 variants"], FINE, BROKEN)

    def test_what_is_lost_breaks_the_old_sender_and_what_is_added_nobody(self):
        for what, name in (("type", CHAN_ST), ("type", "fwe_cl_wayfind_chan_state_e"), ("type", "fwe_cl_wayfind_hop_chan_flags"),
                           ("message", "fwe_cl_wayfind_hop_chan_msg")):
            less = self.file(without(line_of(name)))
            self.assert_told(run("manifest", "diff", LIBRARY, less), [f"break    {what} {name}: lost"], FINE, BROKEN)
            self.assert_told(run("manifest", "diff", less, LIBRARY), [f"addition {what} {name}: added"], FINE, FINE)

    def test_another_luid_is_another_type(self):
        luid = line_of(CHAN_ST)[:32]
        self.assert_told(self.diff(CHAN_ST, luid, b"d" + luid[1:]),
                         [f"break    type {CHAN_ST}: lost", f"addition type d{luid[1:].decode()}: added"], FINE, BROKEN)

    def test_a_manifest_of_another_module_ends_with_status_2(self):
        done = run("manifest", "diff", LIBRARY, self.changed(b"# fwe_ui_wayfind.digest", b"# fwe_ui_wayford.digest"))
        self.assertEqual((done.stdout, done.returncode), ("", 2))
        self.assertIn("the manifest of fwe_ui_wayford, not of fwe_ui_wayfind", done.stderr)

    def test_an_unreadable_file_ends_with_status_2(self):
        self.assertEqual(run("manifest", "diff", LIBRARY, self.file(b"nothing")).returncode, 2)
        self.assertEqual(run("manifest", "diff", self.file(b"nothing"), LIBRARY).returncode, 2)
        self.assertEqual(self.diff(CHAN_ST, b"type", b"tipe").returncode, 2)


class Hostile(Offline):
    """Files made to harm whoever looks at them."""

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

    def test_many_tables_of_names_cost_no_more_than_one(self):
        names = b"\0_type_info_internal\0"
        symbols = struct.pack("<IBBHQQ", 1, 0x11, 0, 1, 0x7FFFFFFFFFFF, 272) * 4000
        library = self.file(made_library((".dynstr", 3, names, 0), *[(".dynsym", 11, symbols, 2)] * 3500))
        # Reading each of them would take minutes.
        done = run("manifest", library, before=lambda: resource.setrlimit(resource.RLIMIT_CPU, (30, 30)))
        self.assert_refused(done, "no section .manifest")

    def test_more_trace_entries_than_any_library_has_are_refused(self):
        entry = (1, 0)
        most = [(f".flight_luids_{n}", 1, trace_index(0, *[entry] * 1024), 0) for n in range(1024)]
        one_more = (".flight_luids_more", 1, trace_index(1, entry), 0)
        texts = (".flight_format_strings", 1, b"", 0)
        self.assert_refused(run("trace", "texts", self.file(made_library(*most, texts))), "the packed trace texts are damaged")
        self.assert_refused(run("trace", "texts", self.file(made_library(*most, one_more, texts))),
                            "the trace sections claim more than 1048576 entries")


class Output(Offline):
    """Nothing counts as done that nobody could read."""

    def commands(self):
        traces = self.file(trace_file(trace(PRINTING, b"x")))
        return {("types",): 1, ("manifest", LIBRARY): 1, ("manifest", "diff", LIBRARY, LIBRARY): 2, ("trace", "texts", LIBRARY): 1,
                ("trace", "decode", LIBRARY, traces): 1, ("trace", "decode", LIBRARY, traces, "--json"): 1, ("--help",): 1}

    def assert_failing(self, reason, **how):
        for command, status in self.commands().items():
            done = run(*command, **how)
            self.assertEqual((done.stderr, done.returncode), (f"wayfind: cannot write standard output: {reason}\n", status), command)

    def test_to_a_full_disk_fails(self):
        with open("/dev/full", "wb") as full:
            self.assert_failing("No space left on device", output=full)

    def test_to_a_reader_that_has_gone_fails(self):
        reader, writer = os.pipe()
        os.close(reader)
        with open(writer, "wb") as pipe:
            self.assert_failing("Broken pipe", output=pipe)

    def test_to_a_closed_descriptor_fails(self):
        self.assert_failing("Bad file descriptor", output=None, before=lambda: os.close(1))


class Types(unittest.TestCase):
    def test_types_are_listed_as_a_release_file_has_them(self):
        told = [f"{t.name} {t.luid} {len(t.variants)}" for t in types]
        self.assertEqual(run("types").stdout.splitlines(), told)


if __name__ == "__main__":
    unittest.main()
