"""The offline subcommands of wayfind, on the built file, on changed copies of it and on trace files made by hand."""
import json
import os
import struct
import unittest

from offline import CHAN_ST, PRINTING, Offline, Pointer, build_id, line_of, record, run, trace, trace_file, traced_file, traced_library
from sections_test import INDEX, entries_of
from subject import LIBRARY, built, types


class Traces(Offline):
    def test_texts_are_all_listed(self):
        entries = entries_of(built)
        told = [f"{section}\t{index}\t%s\t%s" % next(entries) for section, (_, count) in enumerate(INDEX) for index in range(count)]
        self.assertEqual(len(told), 5656)
        self.assertEqual(run("trace", "texts", LIBRARY).stdout.splitlines(), told)

    def test_a_trace_becomes_a_line_of_words(self):
        done = self.decode(trace_file(trace(PRINTING, b"a reason")))
        self.assertEqual(done.stdout, "1970-01-01T00:00:01.000000000Z 77 the module debug "
                                      "Already have error when printing fwe_pal_wayfind_site_prefix_msg: a reason\n")
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    def test_json_has_an_object_on_a_line(self):
        def line(section, index, words, text, arguments):
            return (f'{{"time":"1970-01-01T00:00:01.000000000Z","time_ns":1000000000,"thread":77,"module":"the module","module_id":1,'
                    f'"level":"debug","section":{section},"index":{index},"words":"{words}","text":"{text}","arguments":[{arguments}]}}\n')

        reference = "fwe_cl_wayfind_hop_chan_data destroy: Failed to decrement ref count of oid {}. Error {}"
        variant = "variant {} requested only {} variants present"
        done = self.decode(trace_file(trace(129, Pointer(0x7F0123456789), b"a reason", section=0), trace(253, 9, 0xFFFFFFFF)), "--json")
        self.assertEqual(done.stdout, line(0, 129, reference.format("0x7f0123456789", "a reason"), reference.format("%p", "%s"),
                                           '{"pointer":139642863445897},"a reason"') +
                         line(2, 253, variant.format(9, 4294967295), variant.format("%u", "%u"), "9,4294967295"))
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    def test_arguments_in_json_are_ascii(self):
        line, = self.decode(trace_file(trace(PRINTING, b"\xff\x1b")), "--json").stdout.splitlines()
        self.assertRegex(line, r"\A[ -~]+\Z")
        self.assertEqual(json.loads(line)["arguments"], ["\ufffd\x1b"])

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

    def test_damaged_neighbours_count_each(self):
        good, damaged = trace(PRINTING, b"x"), trace(PRINTING, b"x")[:-1] + b"y"
        for records, count in (((good, damaged, damaged, damaged, good), 3), ((damaged, damaged), 2), ((good, b"junk", damaged, good), 2)):
            done = self.decode(trace_file(*records))
            self.assertEqual((len(done.stdout.splitlines()), done.stderr, done.returncode),
                             (records.count(good), f"{count} damaged records skipped\n", 0))

    def test_a_file_that_nobody_traced_to_is_empty(self):
        for content in (b"", b"FLIGHT1\n\0"):
            done = self.decode(content)
            self.assertEqual((done.stdout, done.stderr, done.returncode), ("", "", 0))

    def test_builds_that_are_not_known_are_not_the_same(self):
        library = self.file(traced_library(b" x"))
        traces = library.with_name("traces")
        traces.write_bytes(b"FLIGHT1\n\0" + traced_file(0, b"", b"/l") + trace(0, b"x"))
        done = run("trace", "decode", library, traces)
        self.assertEqual((done.stdout, done.returncode), ("", 1))
        self.assertIn("the traces are of build unknown, the library is build unknown; --force decodes them all the same", done.stderr)
        done = run("trace", "decode", library, traces, "--force")
        self.assertEqual((len(done.stdout.splitlines()), done.returncode), (1, 0))

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

    def test_each_trace_is_of_the_build_that_its_file_number_names(self):
        ours, theirs, unknown = trace(PRINTING, b"ours"), trace(PRINTING, b"theirs", file=1), trace(PRINTING, b"unknown", file=7)
        content = trace_file(ours, traced_file(1, bytes(20), b"/other"), theirs, unknown)
        done = self.decode(content)
        self.assertEqual([line.split()[-1] for line in done.stdout.splitlines()], ["ours"])
        self.assertEqual((done.stderr, done.returncode), ("1 traces of other libraries skipped\n"
                                                          "1 traces of an unknown build skipped; --force decodes them\n", 0))
        forced = self.decode(content, "--force")
        self.assertEqual([line.split()[-1] for line in forced.stdout.splitlines()], ["ours", "theirs", "unknown"])
        self.assertEqual((forced.stderr, forced.returncode), ("", 0))

    def test_what_is_no_trace_file_or_library_is_refused(self):
        self.assertEqual(self.decode(b"something else").returncode, 1)
        self.assertEqual(self.decode(b"").returncode, 0)
        self.assertEqual(run("trace", "texts", self.file(b"something else")).returncode, 1)
        self.assertEqual(run("trace", "texts", self.file(built.data[:100000])).returncode, 1)


FINE, BROKEN = "compatible", "not compatible"


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

    def test_a_manifest_is_shown_whole(self):
        words = {"type": "type", "enum": "enum", "flag": "flag", "message": "mess"}
        small = sorted((t for t in types if t.kind != "message"), key=lambda t: t.name)
        told = ["module fwe_ui_wayfind, 96 definitions"]
        for t in small + sorted((t for t in types if t.kind == "message"), key=lambda t: t.luid):
            size = 0 if t.kind == "message" else (t.variants[-1][0] + 7) // 8 * 8
            told.append(f"{t.luid} {words[t.kind]} {len(t.variants) - 1} {size:5} {t.definition} {t.name}")
        told += built.sections[".manifest"].data.rstrip(b"\0").rpartition(b"\0")[2].decode().split("\n")
        done = run("manifest", LIBRARY)
        self.assertEqual((done.stdout.split("\n"), done.stderr, done.returncode), (told, "", 0))

    def test_a_build_is_compatible_with_itself(self):
        self.assert_told(run("manifest", "diff", LIBRARY, LIBRARY), [], FINE, FINE)

    def test_more_variants_are_an_addition(self):
        self.assert_told(self.diff(CHAN_ST, b"type003:00392", b"type004:00400"),
                         [f"addition type {CHAN_ST}: more variants, 5 variants for 4 variants"], FINE, FINE)

    def test_fewer_bytes_in_more_variants_break_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b"type003:00392", b"type004:00391"),
                         [f"addition type {CHAN_ST}: more variants, 5 variants for 4 variants",
                          f"break    type {CHAN_ST}: fewer bytes in more variants"], BROKEN, BROKEN)

    def test_more_bytes_in_fewer_variants_break_both_ways(self):
        self.assert_told(self.diff(CHAN_ST, b"type003:00392", b"type002:00400"),
                         [f"break    type {CHAN_ST}: variants lost, 3 variants of 4 variants",
                          f"break    type {CHAN_ST}: more bytes in fewer variants"], BROKEN, BROKEN)

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
