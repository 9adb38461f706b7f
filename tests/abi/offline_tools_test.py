"""The offline subcommands of wayfind, on the built file, on changed copies of it and on trace files made by hand."""
import json
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest

from subject import LIBRARY, built, types

COMMAND = os.environ["WAYFIND_COMMAND"]
SECTION = bytes.fromhex("9e8b28a9eb796d25a381ca4855746a0f")
PRINTING = 18 * 14 + 30  # index of a text with one %s: the first message's, behind all bundles


def run(*arguments):
    return subprocess.run([COMMAND, *map(str, arguments)], capture_output=True, text=True)


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


class Types(unittest.TestCase):
    def test_types_are_listed_as_a_release_file_has_them(self):
        told = [f"{t.name} {t.luid} {len(t.variants)}" for t in types]
        self.assertEqual(run("types").stdout.splitlines(), told)


if __name__ == "__main__":
    unittest.main()
