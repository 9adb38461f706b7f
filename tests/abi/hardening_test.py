"""What the built files bring against mistakes in them: where they look for libraries, and the checks that compiler and linker add."""
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest

import elf
from subject import LIBRARY, SANITIZED

COMMAND = pathlib.Path(os.environ["WAYFIND_COMMAND"])
PLATFORM = sorted(path for path in LIBRARY.parent.glob("lib*.so.1") if not path.name.startswith("libfwe_ui_wayfind"))
HARDENED = [COMMAND, *PLATFORM]

NEEDED, RPATH, RUNPATH, FLAGS, FLAGS_1 = 1, 15, 29, 30, 0x6FFFFFFB
BIND_NOW, NOW, PIE = 8, 1, 0x08000000
READ_ONLY_AFTER_LOAD, STACK = 0x6474E552, 0x6474E551
SHADOW_STACK = 2
SHARED_OBJECT = 3


def values(file, tag):
    """Of the dynamic section; the strings of search paths too."""
    strings = file.sections[".dynstr"].data
    return [elf.text_at(strings, value) if tag in (RPATH, RUNPATH) else value for entry, value in file.dynamic() if entry == tag]


def imports(file):
    return {name for name, _, _, section, _, _ in file.symbols() if section == 0}


def control_flow_features(file):
    """Of the note that the loader reads: 1 indirect branches, 2 shadow stack."""
    note = file.sections[".note.gnu.property"].data if ".note.gnu.property" in file.sections else b""
    at = 16
    while at + 12 <= len(note):
        kind, size = struct.unpack_from("<II", note, at)
        if kind == 0xC0000002:
            return struct.unpack_from("<I", note, at + 8)[0]
        at += 8 + (size + 7 & ~7)
    return 0


class SearchPath(unittest.TestCase):
    def test_has_no_empty_and_no_relative_entry_in_any_binary(self):
        self.assertEqual(len(PLATFORM), 11)
        for path in [LIBRARY, *HARDENED]:
            file = elf.File(path)
            for text in values(file, RPATH) + values(file, RUNPATH):
                for entry in text.split(":"):
                    self.assertTrue(entry == "$ORIGIN" or entry.startswith("$ORIGIN/"), f"{path.name}: {text!r}")

    @unittest.skipIf(SANITIZED, "a sanitizer brings its run-time library")
    def test_leads_to_no_library_planted_in_the_current_folder(self):
        folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, folder)
        planted = folder / "planted"
        source = "#include <unistd.h>\n__attribute__((constructor)) static void run(void) { _exit(66); }\n"
        subprocess.run(["gcc", "-shared", "-fPIC", "-x", "c", "-", "-o", planted], input=source, text=True, check=True)
        listed = subprocess.run(["ldd", COMMAND], capture_output=True, text=True, check=True).stdout
        for name in {line.split()[0] for line in listed.splitlines()}:
            if name.startswith("lib"):
                shutil.copy(planted, folder / name)
        self.assertEqual(subprocess.run([COMMAND, "types"], cwd=folder, stdout=subprocess.DEVNULL, check=False).returncode, 0)


@unittest.skipIf(SANITIZED, "a sanitizer checks more than these")
class Hardening(unittest.TestCase):
    def each(self):
        for path in HARDENED:
            with self.subTest(file=path.name):
                yield path, elf.File(path)

    def test_functions_are_bound_at_load_and_their_table_is_read_only_then(self):
        for _, file in self.each():
            self.assertTrue(sum(values(file, FLAGS)) & BIND_NOW or sum(values(file, FLAGS_1)) & NOW)
            self.assertEqual(sum(kind == READ_ONLY_AFTER_LOAD for kind, *_ in file.segments), 1)

    def test_stack_is_not_executable(self):
        for _, file in self.each():
            self.assertEqual([flags & 1 for kind, flags, *_ in file.segments if kind == STACK], [0])

    def test_command_lies_where_the_loader_chooses(self):
        file = elf.File(COMMAND)
        self.assertEqual(struct.unpack_from("<H", file.data, 16), (SHARED_OBJECT,))
        self.assertTrue(sum(values(file, FLAGS_1)) & PIE)

    def test_shadow_stack_is_asked_for(self):
        for _, file in self.each():
            self.assertTrue(control_flow_features(file) & SHADOW_STACK)

    def test_exported_functions_are_marked_as_targets_of_indirect_branches(self):
        for path in PLATFORM:
            file = elf.File(path)
            functions = [(name, value) for name, _, kind, section, value, _ in file.symbols() if kind == 2 and section]
            self.assertTrue(functions, path.name)
            for name, value in functions:
                self.assertEqual(file.at(value, 4), b"\xf3\x0f\x1e\xfa", f"{path.name}: {name}")

    def test_arrays_on_the_stack_are_guarded(self):
        for path in (COMMAND, *(p for p in PLATFORM if p.name.startswith(("liborklib", "libflight")))):
            self.assertIn("__stack_chk_fail", imports(elf.File(path)), path.name)

    @unittest.skipIf(os.environ["WAYFIND_BUILD_TYPE"] == "Debug", "without optimisation no size is known")
    def test_calls_of_the_c_library_are_checked_where_the_size_is_known(self):
        for path in (COMMAND, LIBRARY.with_name("liborklib.so.1")):
            self.assertTrue([name for name in imports(elf.File(path)) if name.endswith("_chk")], path.name)


if __name__ == "__main__":
    unittest.main()
