"""The names that the library gives and takes, against the ledger and the list of the platform's names."""
import re
import unittest

from subject import GENERATED, HERE, LEDGER, SANITIZED, built

GLOBAL, WEAK = 1, 2
OBJECT, FUNCTION = 1, 2


def ledger(kind):
    return [line[2:] for line in LEDGER.read_text().splitlines() if line[0] == kind]


def exported(kind):
    return sorted(name for name, _, symbol, index, _, _ in built.symbols() if index and symbol == kind)


class Exports(unittest.TestCase):
    maxDiff = None

    def test_ledger_has_6130_functions_363_objects_and_46_weak_references_each_once(self):
        self.assertEqual([len(ledger(kind)) for kind in "TDw"], [6130, 363, 46])
        self.assertEqual(sum(len(set(ledger(kind))) for kind in "TDw"), len(LEDGER.read_text().splitlines()))

    def test_functions_are_those_of_the_ledger(self):
        self.assertEqual(exported(FUNCTION), ledger("T"))

    def test_objects_are_those_of_the_ledger(self):
        self.assertEqual(exported(OBJECT), ledger("D"))

    def test_nothing_else_is_exported_and_nothing_exported_is_weak(self):
        for name, binding, kind, index, _, _ in built.symbols():
            if index:
                self.assertIn(kind, (OBJECT, FUNCTION), name)
                self.assertEqual(binding, GLOBAL, name)

    def test_version_script_and_list_of_the_build_are_the_ledger(self):
        script = re.search(r"global:(.*)local:", (GENERATED / "source/exports.map").read_text(), re.S).group(1)
        self.assertEqual(sorted(re.findall(r"(\w+);", script)), sorted(ledger("T") + ledger("D")))
        self.assertEqual((GENERATED / "source/exports.txt").read_text().splitlines(),
                         [f"{kind} {name}" for kind in "TD" for name in ledger(kind)])

    def test_each_name_is_declared_in_one_public_header(self):
        declared = {}
        for header in sorted((GENERATED / "include").rglob("*.h")):
            text = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
            for name in re.findall(r"\b(\w+)\((?!\*)", text) + re.findall(r"\bextern [^;(]*?\b(\w+)(?:\[\d*\])?;", text):
                declared.setdefault(name, set()).add(header.name)
        for name in ledger("T") + ledger("D"):
            self.assertEqual(len(declared.get(name, ())), 1, name)

    def test_objects_have_their_told_sizes(self):
        sizes = {name: size for name, _, kind, index, _, size in built.symbols() if index and kind == OBJECT}
        for name, size in sizes.items():
            if name.endswith("_type_info_internal"):
                self.assertEqual(size, 272, name)
            elif name.endswith("_luid"):
                self.assertEqual(size, 16, name)
            elif name.endswith("_luid_text"):
                self.assertEqual(size, 33, name)
            elif name.endswith("_name"):
                self.assertEqual(size, len("message ") + len(name.removeprefix("message_").removesuffix("_name")) + 1, name)
            elif name.endswith("_registered_handler"):
                self.assertEqual(size, 8, name)
            else:
                self.assertEqual(size, 2, name)


class Imports(unittest.TestCase):
    maxDiff = None

    @unittest.skipIf(SANITIZED, "the compiler's start files, which a sanitizer needs, have weak references of their own")
    def test_weak_references_are_those_of_the_ledger(self):
        self.assertEqual(sorted(name for name, binding, _, index, _, _ in built.symbols() if not index and binding == WEAK),
                         ledger("w"))

    @unittest.skipIf(SANITIZED, "a sanitizer has names of its own")
    def test_strong_references_are_the_platforms_names(self):
        self.assertEqual(sorted(name for name, binding, _, index, _, _ in built.symbols() if not index and binding == GLOBAL),
                         (HERE / "imports.txt").read_text().splitlines())


if __name__ == "__main__":
    unittest.main()
