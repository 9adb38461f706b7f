#!/usr/bin/env python3
"""Growth costs rows: a field is one row, its size check and a new definition hash, a record its table and one line in the order.

Copies the tree, adds both, touches nothing else, builds the library, and looks for what was added in the headers, among the
exports and in the ledger of definitions; probe.cpp, compiled against the new headers, finds it on the wire, in text and in XML.

Usage: growth_test.py BUILD_FOLDER C_COMPILER CXX_COMPILER
"""

import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tests/abi"))
import definitions  # noqa: E402

BUILD, C_COMPILER, CXX_COMPILER = Path(sys.argv[1]).resolve(), sys.argv[2], sys.argv[3]
COPY = BUILD / "tree"
OUT = BUILD / "out"

SUBJECT = "model/subjects/hop_channels.h"
ORDER = "model/order.h"

FIELD_ROW = '        value ("moves",    u_int32,           2, "How often the hop channel moved."),\n'
# A u_int32 behind byte 584, and its state byte.
FIELD_SIZES = """static_assert(layout_is<hop_chan_data, Manifest{.size = 592},
    Sizes{.used = 400, .slop = 208, .body = 416, .state = 38, .bound = 5},
    Sizes{.used = 584, .slop = 24, .body = 600, .state = 51, .bound = 7},
    Sizes{.used = 588, .slop = 20, .body = 608, .state = 52, .bound = 9}>());"""

OLD_HASH, NEW_HASH = "6f75ed8552a07a4a954d9a318dc27c0b", "0123456789abcdef0123456789abcdef"

RECORD = """
inline constexpr Record grown_st{
    "fwe_cl_wayfind_grown_st",
    {.luid = "00112233445566778899aabbccddeeff", .definition = "ffeeddccbbaa99887766554433221100"},
    "A record that the tree has grown.",
    {
        value      ("width",      u_int16,     0, "A value."),
        text       ("label",      12,          0, "A text."),
        counter    ("num_rings",  u_int32,     0, "Count of rings."),
        value_array("rings",      u_int32,     0, "An array."),
        object     ("mem",        mem_st,      0, "A record inside."),
        value      ("evergreen",  ork_boolean, 1, "A later value."),
    }};
static_assert(layout_is<grown_st, Manifest{.size = 88},
    Sizes{.used = 80, .slop = 24, .body = 96, .state = 32, .bound = 5},
    Sizes{.used = 84, .slop = 20, .body = 104, .state = 32, .bound = 7}>());
"""


def replace_once(name, old, new):
    path = COPY / name
    before = path.read_text()
    assert before.count(old) == 1, f"{name}: {old!r} stands {before.count(old)} times"
    path.write_text(before.replace(old, new))


def copy_tree():
    """Only what a build reads, and only what changed, so that a second run builds little."""
    shutil.rmtree(COPY, ignore_errors=True)
    for folder in ("encoders", "frame", "generator", "include", "messages", "model", "platform", "tools"):
        if (ROOT / folder).is_dir():
            shutil.copytree(ROOT / folder, COPY / folder)
    for file in ROOT.glob("CMake*"):
        shutil.copy2(file, COPY)


def grow():
    # Behind the last row of hop_chan_data.
    table = (COPY / SUBJECT).read_text()
    start = table.index("inline constexpr Record hop_chan_data{")
    end = table.index("    }};\n", start)
    table = table[:end] + FIELD_ROW + table[end:]
    table, count = re.subn(r"static_assert\(layout_is<hop_chan_data,.*?;", FIELD_SIZES, table, flags=re.S)
    assert count == 1
    (COPY / SUBJECT).write_text(table)
    replace_once(SUBJECT, OLD_HASH, NEW_HASH)
    replace_once(SUBJECT, "\n}  // namespace model\n", RECORD + "\n}  // namespace model\n")
    # At the end of the records.
    order = (COPY / ORDER).read_text()
    start = order.index("inline constexpr const Record* records[] = {")
    end = order.index("};", start)
    (COPY / ORDER).write_text(order[:end] + "    &grown_st,\n" + order[end:])


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}\n{done.stdout[-8000:]}")
    return done.stdout


def build():
    BUILD.mkdir(parents=True, exist_ok=True)
    copy_tree()
    grow()
    run("cmake", "-S", COPY, "-B", OUT, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", "-DBUILD_TESTING=OFF",
        f"-DCMAKE_C_COMPILER={C_COMPILER}", f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}")
    run("cmake", "--build", OUT, "--parallel", "2", "--target", "fwe_ui_wayfind", "wayfind_schema")


def program(name, source, *options):
    """One of this tree's sources, compiled against the grown library."""
    libraries = OUT / "lib", OUT / "model"
    run(CXX_COMPILER, "-std=c++20", "-Wall", "-Wextra", "-Werror", f"-I{COPY}", f"-I{COPY}/include", f"-I{OUT}/generated/include",
        ROOT / source, "-o", BUILD / name, *[f"-L{folder}" for folder in libraries], *options, "-lfwe_ui_wayfind", "-lorklib",
        f"-Wl,-rpath,{OUT / 'lib'}")
    return BUILD / name


class Growth(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        build()
        library = OUT / "lib/libfwe_ui_wayfind.so"
        cls.exports = {line.split()[-1] for line in run("nm", "-D", "--defined-only", library).splitlines()}
        cls.headers = OUT / "generated/include/fwe_ui_wayfind"

    def test_a_new_field_has_its_accessors(self):
        header = (self.headers / "fwe_cl_wayfind_hop_chan_data.h").read_text()
        self.assertIn("moves: How often the hop channel moved.", header)
        for suffix in ("get", "get_value", "set", "set_value", "state_flag_get", "state_flag_set"):
            self.assertIn(f"fwe_cl_wayfind_hop_chan_data_moves_{suffix}", self.exports)
            self.assertIn(f"fwe_cl_wayfind_hop_chan_data_moves_{suffix}(", header)

    def test_a_new_record_has_its_family(self):
        header = (self.headers / "fwe_cl_wayfind_grown_st.h").read_text()
        self.assertIn("A record that the tree has grown.", header)
        self.assertIn('#include "fwe_ui_wayfind/fwe_cl_wayfind_grown_st.h"', (self.headers / "fwe_ui_wayfind.h").read_text())
        family = {name for name in self.exports if "fwe_cl_wayfind_mem_st" in name}
        family = {name for name in family if not re.search(r"_(fwe_num|ppe_addr|exmem_addr)_", name)}
        self.assertGreater(len(family), 35)
        self.assertEqual({name.replace("mem_st", "grown_st") for name in family} - self.exports, set())
        self.assertIn("fwe_cl_wayfind_grown_st_rings_set_mem", self.exports)

    def test_the_manifest_follows(self):
        # A variant more and the new size, 588 bytes in whole eights; the new record has two variants, the newer of 84 bytes.
        manifest = (OUT / "lib/libfwe_ui_wayfind.so").read_bytes()
        for luid, rest in (("00e3b2fbd11cb82176dc46293dcfde58", "type002:00592N"), ("00112233445566778899aabbccddeeff", "type001:00088N")):
            lines = re.findall(luid.encode() + rb":[0-9a-f]{32}(.*)\n", manifest)
            self.assertEqual(lines, [rest.encode()])

    def test_the_ledger_of_definitions_takes_one_row_for_each(self):
        schema_json = program("schema_json", "tests/abi/schema_json.cpp", "-lwayfind_schema")
        types = list(definitions.built_types(OUT / "lib/libfwe_ui_wayfind.so", schema_json))
        ledger = definitions.read_ledger()
        self.assertEqual(list(definitions.refusals(ledger, types)), [])
        field = next(type_ for type_ in types if type_.name == "fwe_cl_wayfind_hop_chan_data")
        record = next(type_ for type_ in types if type_.name == "fwe_cl_wayfind_grown_st")
        self.assertEqual(definitions.problems(ledger, types),
                         [f"{type_.name}: the ledger is behind; {definitions.UPDATE}" for type_ in (field, record)])
        rows = definitions.updated("", types).splitlines()
        self.assertEqual([row for row in rows if row not in ledger.values()], [field.row(), record.row()])
        listed = ledger[field.name].split()
        self.assertEqual(field.row().split()[:-1], [*listed[:2], NEW_HASH, *listed[3:]])
        field.definition = OLD_HASH
        self.assertEqual(list(definitions.refusals(ledger, types)),
                         [f"{field.name}: has changed and its definition hash has not; give it a new one in its table"])

    def test_wire_text_and_xml_carry_both(self):
        self.assertEqual(run(program("probe", "tests/tree/growth/probe.cpp")), "grown\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
