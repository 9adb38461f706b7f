#!/usr/bin/env python3
"""The form of generated text, the errors that public headers name, and what the generator says of a faulty family file."""

import errno
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FAMILIES = ROOT / "generator" / "families"
GENERATOR = os.environ["WAYFIND_GENERATOR"]
WIDTH = 100

scratch = tempfile.TemporaryDirectory()
GENERATED = Path(scratch.name)


def run_generator(families, out):
    command = [GENERATOR, families, out, out, out, "2026-11-21", "2"]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def setUpModule():
    done = run_generator(FAMILIES, GENERATED)
    assert done.returncode == 0, done.stderr


def generated():
    files = [path for pattern in ("*.h", "*.cpp", "*.c") for path in sorted(GENERATED.glob(pattern))]
    assert len(files) > 100, f"{GENERATED} holds {len(files)} files"
    return files


def lines_of(path):
    return list(enumerate(path.read_text().splitlines(), 1))


def could_be_broken(line):
    """Whether a blank at which to break stands in front of the limit: outside strings, behind indentation and star."""
    text = re.sub(r'"(?:\\.|[^"\\])*"', lambda string: "x" * len(string.group()), line)
    text = re.sub(r"^ *(\* *)?", lambda head: "x" * len(head.group()), text)
    return " " in text[:WIDTH]


class GeneratedText(unittest.TestCase):
    def test_no_line_ends_in_a_blank(self):
        wrong = [f"{path}:{n}" for path in generated() for n, line in lines_of(path) if line != line.rstrip()]
        self.assertEqual(wrong, [])

    def test_lines_keep_to_the_limit_wherever_a_blank_leaves_room(self):
        wrong = [
            f"{path}:{n}: {line}"
            for path in generated()
            for n, line in lines_of(path)
            if len(line) > WIDTH and could_be_broken(line)
        ]
        self.assertEqual(wrong[:5], [])

    def test_the_rule_for_long_lines_tells_them_apart(self):
        name = "x" * WIDTH
        self.assertTrue(could_be_broken(f"  return f(a, {name});"))
        self.assertTrue(could_be_broken(f" * see {name}"))
        self.assertFalse(could_be_broken(f"    {name}(a, b);"))
        self.assertFalse(could_be_broken(f' *   {name}'))
        self.assertFalse(could_be_broken(f'    "{"x " * WIDTH}"'))


class PublicDocumentation(unittest.TestCase):
    def comments(self):
        for path in sorted((ROOT / "include").rglob("*.h")) + sorted(GENERATED.glob("*.h")):
            for comment in re.findall(r"/\*.*?\*/", path.read_text(), flags=re.S):
                yield path, re.sub(r"\s*\n \*\s*|\s+", " ", comment)

    def test_named_errors_have_the_number_of_the_system(self):
        named = {pair for _, text in self.comments() for pair in re.findall(r"\b(E[A-Z]+) \((\d+)\)", text)}
        self.assertGreaterEqual(len(named), 10)
        self.assertEqual({pair for pair in named if getattr(errno, pair[0]) != int(pair[1])}, set())

    def test_errors_are_named(self):
        """No list of errors, and nothing said of the slot, has a bare number but 0."""
        bare = re.compile(r"(?:Errors:|\*err|\*err is|\*err to|stores) [1-9]\d?\b", flags=re.I)
        self.assertTrue(bare.search("sets *err to 22") and bare.search("Errors: 43 when") and bare.search("stores 12"))
        wrong = [f"{path.name}: {text}" for path, text in self.comments() if bare.search(text)]
        self.assertEqual(wrong[:5], [])


class Families(unittest.TestCase):
    def refused(self, name, text):
        """What the generator says, without the path, when one family file holds this text."""
        with tempfile.TemporaryDirectory() as folder:
            families = Path(folder) / "families"
            shutil.copytree(FAMILIES, families)
            (families / name).write_text(text)
            out = Path(folder) / "out"
            out.mkdir()
            done = run_generator(families, out)
            self.assertEqual((done.returncode, done.stdout, list(out.iterdir())), (1, "", []))
            path, said = done.stderr.strip().split(name, 1)
            self.assertEqual(path, f"{families}/")
            return name + said

    def test_a_place_that_nobody_fills(self):
        self.assertEqual(
            self.refused("bundle.family", "/* One. */\nint a_{bundle}(void)\n  => 1\n\n/* Two. */\nint {bundel}(void)\n  => 2\n"),
            "bundle.family:5: nothing is known of {bundel}",
        )

    def test_a_group_that_does_not_exist(self):
        self.assertEqual(
            self.refused("field.family", "// Remark.\n\n@ value\n\n@ value vaule\n"),
            "field.family:5: nothing is in the group vaule",
        )

    def test_a_function_without_a_statement(self):
        self.assertEqual(
            self.refused("module.family", "\n/* Does nothing. */\nint f(void)\n"),
            'module.family:2: a function needs "=> statement", a declaration ends with ";"',
        )

    def test_a_declaration_with_a_statement(self):
        self.assertEqual(
            self.refused("module.family", "/* Data. */\nextern int f;\n  => 1\n"),
            'module.family:1: a declaration with ";" has no statement',
        )

    def test_an_entry_without_documentation(self):
        self.assertEqual(
            self.refused("module.family", "// Remark.\nint f(void)\n  => 1\n"),
            "module.family:2: an entry begins with its documentation, /* ... */",
        )

    def test_a_documentation_that_does_not_end(self):
        self.assertEqual(
            self.refused("module.family", "/* Returns 1.\nint f(void)\n  => 1\n"),
            "module.family:1: the documentation is empty or does not end",
        )

    def test_a_statement_behind_no_prototype(self):
        self.assertEqual(
            self.refused("module.family", "/* Returns 1. */\nint f\n  => 1\n"),
            "module.family:1: neither a prototype nor declarations that end with a semicolon",
        )

    def test_a_missing_file(self):
        with tempfile.TemporaryDirectory() as folder:
            done = run_generator(folder, folder)
            self.assertEqual((done.returncode, done.stderr), (1, f"{folder}/record.family: cannot be opened\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
